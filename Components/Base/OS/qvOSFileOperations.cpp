#include "Base/OS/qvOSFileOperations.h"

#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileFactory.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Utility/Internal/SystemErrorText.h"

#include <memory>

namespace qvOS {

using qvPlatform::FileFacts;
using qvPlatform::FileOutcome;
using qvPlatform::FileResult;
using qvString::IString;
using qvUtil::Error;

namespace {

class Descriptor {
public:
    Descriptor() = default;
    Descriptor(Descriptor const &) = delete;
    Descriptor & operator=(Descriptor const &) = delete;
    ~Descriptor() { static_cast<void>(close()); }

    qvPlatform::Descriptor & operator*() { return descriptor_; }
    FileResult close() {
        qvPlatform::Descriptor const descriptor = descriptor_;
        descriptor_ = qvPlatform::noDescriptor;
        return descriptor == qvPlatform::noDescriptor ? FileResult{} : qvPlatform::closeDescriptor(descriptor);
    }

private:
    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
};

// The target is another file than the source, or is not there.
FileResult copyInto(IString const & from, IString const & to, qvPlatform::OpenMode mode) {
    Descriptor source;
    FileResult result = qvPlatform::openFile(from, qvPlatform::OpenMode::read, *source);
    FileFacts facts;
    if (result.good())
        result = qvPlatform::queryDescriptor(*source, facts);
    if (result.good() && facts.kind == qvPlatform::FileKind::directory)
        result.outcome = FileOutcome::notUsable;
    Descriptor target;
    if (result.good())
        result = qvPlatform::openFile(to, mode, *target);
    if (!result.good())
        return result;
    result = qvPlatform::copyDescriptor(*source, *target);
    FileResult const closed = target.close();
    if (result.good())
        result = closed;
    if (!result.good()) {
        qvPlatform::removeFile(to);
        return result;
    }
    // That these do not stick on some file systems is no reason to lose the copy.
    qvPlatform::setPermissions(to, facts.permissions);
    qvPlatform::setModificationTime(to, facts.modificationTime);
    return result;
}

FileResult copyFile(IString const & from, IString const & to, bool overwrite) {
    FileFacts source;
    FileFacts target;
    FileResult const asked = qvPlatform::queryFile(from, qvPlatform::Links::follow, source);
    if (!asked.good())
        return asked;
    if (!overwrite)
        return copyInto(from, to, qvPlatform::OpenMode::create);
    bool const isThere = qvPlatform::queryFile(to, qvPlatform::Links::follow, target).good();
    if (isThere && target.identity == source.identity)
        return {FileOutcome::invalid, 0};
    return copyInto(from, to, qvPlatform::OpenMode::write);
}

IString textOf(FileResult result) {
    if (result.systemNumber != 0)
        return qvUtil::systemErrorText(static_cast<unsigned>(result.systemNumber));
    return IString(result.outcome == FileOutcome::notUsable ? L"Is a directory" : L"The two are the same file");
}

int numberOfCopying(FileOutcome outcome) {
    switch (outcome) {
    case FileOutcome::notFound:
        return 2;
    case FileOutcome::exists:
        return 3;
    default:
        return 1;
    }
}

IString wide(char const * text) { return IString(text); }
IString wide(wchar_t const * text) { return IString(text); }

} // namespace

Error fileCopy(Filename const & from, Filename const & to, bool overwrite) {
    FileResult const result = copyFile(from.name(), to.name(), overwrite);
    if (result.good())
        return Error();
    return Error(numberOfCopying(result.outcome), "Error copying %S to %S: %S", from.name().asWChar(),
                 to.name().asWChar(), textOf(result).asWChar());
}

Error fileMove(Filename const & from, Filename const & to, bool overwrite) {
    if (Error const error = fileCopy(from, to, overwrite))
        return error;
    static_cast<void>(fileDelete(from));
    return Error();
}

Error fileRename(Filename const & from, Filename const & to) {
    constexpr int number = 6;
    if (from.dirname() != to.dirname())
        return fileMove(from, to, true);
    switch (qvPlatform::renameFile(from.name(), to.name()).outcome) {
    case FileOutcome::good:
        return Error();
    case FileOutcome::notFound:
        return Error(number, "File or path specified by %S name not found.", to.name().asWChar());
    case FileOutcome::denied:
        return Error(number, "A component of either path prefix deniessearch permission");
    case FileOutcome::invalid:
        return Error(number, "source is a parent directory of target, or an attempt is made to rename the .  or ..  "
                             "directory.");
    default:
        return Error(number, "Unkown system error.");
    }
}

Error fileDelete(Filename const & name) {
    FileResult const result = qvPlatform::removeFile(name.name());
    return result.good() ? Error() : Error(1, qvUtil::systemErrorText(static_cast<unsigned>(result.systemNumber)));
}

Error fileCopy(char const * from, char const * to, bool overwrite) {
    return fileCopy(Filename(wide(from)), Filename(wide(to)), overwrite);
}
Error fileCopy(wchar_t const * from, wchar_t const * to, bool overwrite) {
    return fileCopy(Filename(wide(from)), Filename(wide(to)), overwrite);
}
Error fileMove(char const * from, char const * to, bool overwrite) {
    return fileMove(Filename(wide(from)), Filename(wide(to)), overwrite);
}
Error fileMove(wchar_t const * from, wchar_t const * to, bool overwrite) {
    return fileMove(Filename(wide(from)), Filename(wide(to)), overwrite);
}
Error fileRename(char const * from, char const * to) { return fileRename(Filename(wide(from)), Filename(wide(to))); }
Error fileRename(wchar_t const * from, wchar_t const * to) {
    return fileRename(Filename(wide(from)), Filename(wide(to)));
}
Error fileDelete(char const * name) { return fileDelete(Filename(wide(name))); }
Error fileDelete(wchar_t const * name) { return fileDelete(Filename(wide(name))); }

bool doesFileExist(Filename const & name) {
    FileStatus status;
    return !File::query(name, status) && status.exists();
}

bool isFileWritable(Filename const & name) {
    FileStatus status;
    return !File::query(name, status) && status.isWritable();
}

bool isWindowsReservedDeviceName(Filename const & name) {
    IString trunk = name.baseTrunk();
    trunk.toUpperCase();
    if (trunk.length() == 3)
        return trunk == L"CON" || trunk == L"PRN" || trunk == L"AUX" || trunk == L"NUL";
    if (trunk.length() != 4 || (trunk.find(L"COM") != 0 && trunk.find(L"LPT") != 0))
        return false;
    return trunk[3] >= L'1' && trunk[3] <= L'9';
}

} // namespace qvOS

using qvOS::File;
using qvOS::FileFactory;
using qvOS::FileStatus;
using qvString::IString;

bool qvOS_DoesFileExistW(wchar_t const * name) {
    FileStatus status;
    return !File::query(IString(name), status) && status.exists();
}
bool qvOS_DoesFileExist(char const * name) { return qvOS_DoesFileExistW(IString(name).asWChar()); }

bool qvOS_IsFileWriteableW(wchar_t const * name) {
    FileStatus status;
    return !File::query(IString(name), status) && status.isWritable();
}
bool qvOS_IsFileWriteable(char const * name) { return qvOS_IsFileWriteableW(IString(name).asWChar()); }

bool qvOS_DoesDirectoryExist(char const * name) {
    FileStatus status;
    static_cast<void>(File::query(qvOS::Filename(IString(name)), status));
    return status.exists();
}

bool qvOS_CopyFileToW(wchar_t const * from, wchar_t const * to) {
    FileFactory * const factory = FileFactory::getFileFactory();
    std::unique_ptr<File> const source(factory->createFile(IString(from)));
    std::unique_ptr<File> const target(factory->createFile(IString(to)));
    return source != nullptr && target != nullptr && source->copyTo(*target);
}
bool qvOS_CopyFileTo(char const * from, char const * to) {
    return qvOS_CopyFileToW(IString(from).asWChar(), IString(to).asWChar());
}

int qvOS_ReadHeaderFromFileW(wchar_t const * name, void * buffer, int size) {
    if (buffer == nullptr || size < 0)
        return -1;
    if (size == 0)
        return 0;
    std::unique_ptr<File> const file(FileFactory::getFileFactory()->createFile(IString(name)));
    if (file == nullptr || file->open(qvOS::OpenRead))
        return -1;
    unsigned int count = 0;
    return file->read(buffer, static_cast<unsigned int>(size), &count) ? -1 : static_cast<int>(count);
}
int qvOS_ReadHeaderFromFile(char const * name, void * buffer, int size) {
    return qvOS_ReadHeaderFromFileW(IString(name).asWChar(), buffer, size);
}
