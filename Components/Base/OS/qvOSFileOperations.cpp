#include "Base/OS/qvOSFileOperations.h"

#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileFactory.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Platform/PlatformScopedDescriptor.h"
#include "Base/Utility/Internal/SystemErrorText.h"

#include <memory>

namespace qvOS {

using qvPlatform::FileFacts;
using qvPlatform::FileKind;
using qvPlatform::FileOutcome;
using qvPlatform::FileResult;
using qvPlatform::Links;
using qvString::IString;
using qvUtil::Error;

namespace {

// What a failure leaves of the copy. A device that was written to stays, and so does what a link leads to.
void removeCopy(IString const & to, FileFacts const & written) {
    FileFacts facts;
    if (written.kind == FileKind::file && qvPlatform::queryFile(to, Links::keep, facts).good() &&
        facts.identity == written.identity)
        static_cast<void>(qvPlatform::removeFile(to));
}

// The target is empty, or no file at all. A copy is never open to more users than its source.
FileResult fill(qvPlatform::ScopedDescriptor & source, FileFacts const & sourceFacts,
                qvPlatform::ScopedDescriptor & target, FileFacts const & targetFacts) {
    bool const isFile = targetFacts.kind == FileKind::file;
    if (isFile)
        static_cast<void>(qvPlatform::narrowPermissions(*target, targetFacts, sourceFacts));
    FileResult result = qvPlatform::copyDescriptor(*source, *target);
    // That these do not stick on some file systems is no reason to lose the copy.
    if (result.good() && isFile) {
        static_cast<void>(qvPlatform::setPermissions(*target, sourceFacts));
        static_cast<void>(qvPlatform::setModificationTime(*target, sourceFacts));
    }
    FileResult const closed = target.close();
    return result.good() ? closed : result;
}

FileResult copyFile(IString const & from, IString const & to, bool overwrite) {
    FileFacts facts;
    // Before it is opened: a pipe would wait for its other end.
    FileResult result = qvPlatform::queryFile(from, Links::follow, facts);
    if (result.good() && facts.kind != FileKind::file)
        result.outcome = facts.kind == FileKind::directory ? FileOutcome::notUsable : FileOutcome::failed;
    qvPlatform::ScopedDescriptor source;
    if (result.good())
        result = qvPlatform::openFile(from, qvPlatform::OpenMode::read, *source);
    if (result.good())
        result = qvPlatform::queryDescriptor(*source, facts);
    qvPlatform::ScopedDescriptor target;
    FileFacts targetFacts;
    if (result.good())
        result = overwrite ? qvPlatform::openForWriting(to, qvPlatform::Truncation::keep, *target)
                           : qvPlatform::openFile(to, qvPlatform::OpenMode::create, *target);
    if (result.good())
        result = qvPlatform::queryDescriptor(*target, targetFacts);
    if (result.good() && targetFacts.identity == facts.identity)
        result.outcome = FileOutcome::invalid;
    // Not before it is known to be another file.
    if (result.good() && targetFacts.kind == FileKind::file && targetFacts.size > 0)
        result = qvPlatform::emptyDescriptor(*target);
    if (!result.good())
        return result;
    result = fill(source, facts, target, targetFacts);
    if (!result.good())
        removeCopy(to, targetFacts);
    return result;
}

IString textOf(FileResult result) {
    if (result.systemNumber != 0)
        return qvUtil::systemErrorText(static_cast<unsigned>(result.systemNumber));
    switch (result.outcome) {
    case FileOutcome::notUsable:
        return IString(L"Is a directory");
    case FileOutcome::invalid:
        return IString(L"The two are the same file");
    default:
        return IString(L"Not a file of bytes");
    }
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
