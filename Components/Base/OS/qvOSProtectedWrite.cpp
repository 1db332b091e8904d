#include "Base/OS/qvOSProtectedWrite.h"

#include "Base/OS/Internal/ScopedDescriptor.h"
#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSTemporaryFiles.h"
#include "Base/Platform/PlatformFileSystem.h"

#include <cstdlib>

namespace qvOS {

using qvPlatform::FileFacts;
using qvPlatform::Links;
using qvString::IString;

namespace {

bool environmentWantsCopies() {
    static bool const wanted = std::getenv("ORVEN_PROTECTED_WRITE_USE_COPY") != nullptr;
    return wanted;
}

FileStatus statusOf(Filename const & name) {
    FileStatus status;
    static_cast<void>(File::query(name, status));
    return status;
}

// Leaves no file of that name; false when it resists.
bool makeRoom(Filename const & name) { return !doesFileExist(name) || !fileDelete(name); }

// On stable storage, with the permissions of the model if there is one.
bool makeDurable(Filename const & name, FileFacts const * model) {
    ScopedDescriptor file;
    if (!qvPlatform::openFile(name.name(), qvPlatform::OpenMode::read, *file).good())
        return false;
    if (model != nullptr)
        static_cast<void>(qvPlatform::setPermissions(*file, *model));
    bool const isSynced = qvPlatform::syncDescriptor(*file).good();
    return file.close().good() && isSynced;
}

// Within a directory a renaming. Between two, a copy that is on stable storage before the source is deleted.
bool move(Filename const & from, Filename const & to) {
    if (from.dirname() == to.dirname())
        return !fileRename(from, to);
    if (fileCopy(from, to, true) || !makeDurable(to, nullptr))
        return false;
    qvPlatform::syncDirectory(to.dirname());
    static_cast<void>(fileDelete(from));
    return true;
}

} // namespace

ProtectedWrite::ProtectedWrite(Filename const & main) : main_(main) {}

ProtectedWrite::~ProtectedWrite() {
    if (doesFileExist(temp_))
        static_cast<void>(fileDelete(temp_));
}

bool ProtectedWrite::init() {
    if (initialized_)
        return status_ == StatusOk;
    initialized_ = true;
    useCopy_ = useCopy_ || environmentWantsCopies();
    resolveLink();
    FileStatus const main = statusOf(target());
    if (main.exists() && (!main.isWritable() || main.isDirectory()))
        status_ = StatusNotWritable;
    if (status_ == StatusOk && useCopy_)
        prepareTempDirectory();
    if (status_ != StatusOk)
        return false;
    IString const base = target().basename();
    temp_ = createTmpFilename(L"0.tmp", base.asWChar());
    backup_ = createTmpFilename(L"1.tmp", base.asWChar());
    if (!useCopy_) {
        temp_ = Filename(target().dirname(), temp_.basename());
        backup_ = Filename(target().dirname(), backup_.basename());
    }
    if (!makeRoom(temp_) || !makeRoom(backup_))
        status_ = StatusOldTempFile;
    return status_ == StatusOk;
}

void ProtectedWrite::resolveLink() {
    FileFacts facts;
    if (!qvPlatform::queryFile(main_.name(), Links::keep, facts).good() ||
        facts.kind != qvPlatform::FileKind::symbolicLink)
        return;
    IString resolved;
    if (qvPlatform::resolvedName(main_.name(), resolved).good())
        resolved_ = Filename(resolved);
    else
        status_ = StatusNotWritable;
}

void ProtectedWrite::prepareTempDirectory() {
    Filename const directory = getTempDirectory();
    FileStatus const found = statusOf(directory);
    if (found.exists() && !found.isDirectory())
        status_ = StatusBadTempDirectory;
    else if (!found.exists() && !directory.makeDir())
        status_ = StatusNoTempDirectory;
}

bool ProtectedWrite::finalize() {
    if (!initialized_)
        return true;
    if (status_ == StatusOk && !valid_)
        status_ = StatusInvalidated;
    if (status_ == StatusOk && !doesFileExist(temp_))
        status_ = StatusNoNewFile;
    if (status_ == StatusOk)
        swapIn();
    clearAway();
    return status_ == StatusOk;
}

void ProtectedWrite::swapIn() {
    FileFacts facts;
    qvPlatform::FileResult const asked = qvPlatform::queryFile(target().name(), Links::follow, facts);
    bool const hasMain = asked.good();
    if (!hasMain && asked.outcome != qvPlatform::FileOutcome::notFound) {
        status_ = StatusNoBackup;
        return;
    }
    if (!makeDurable(temp_, hasMain ? &facts : nullptr)) {
        status_ = StatusNotWritable;
        return;
    }
    if (hasMain && !move(target(), backup_)) {
        status_ = StatusNoBackup;
        return;
    }
    if (!move(temp_, target())) {
        status_ = StatusNotWritable;
        // Only what is whole in the backup makes room for it.
        if (hasMain) {
            static_cast<void>(fileDelete(target()));
            static_cast<void>(move(backup_, target()));
        }
    }
    qvPlatform::syncDirectory(target().dirname());
}

// The backup is kept while it may hold the last whole contents.
void ProtectedWrite::clearAway() {
    if (doesFileExist(temp_))
        static_cast<void>(fileDelete(temp_));
    if (doesFileExist(backup_) && doesFileExist(target()))
        static_cast<void>(fileDelete(backup_));
}

} // namespace qvOS
