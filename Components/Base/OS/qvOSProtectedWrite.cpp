#include "Base/OS/qvOSProtectedWrite.h"

#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSTemporaryFiles.h"
#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Platform/PlatformScopedDescriptor.h"

#include <cstdlib>

namespace qvOS {

using qvPlatform::FileFacts;
using qvPlatform::FileKind;
using qvPlatform::FileResult;
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

bool isOneDirectory(Filename const & a, Filename const & b) { return a.dirname() == b.dirname(); }

// On stable storage, with the permissions of the model if there is one.
bool makeDurable(Filename const & name, FileFacts const * model) {
    qvPlatform::ScopedDescriptor file;
    if (!qvPlatform::openFile(name.name(), qvPlatform::OpenMode::read, *file).good())
        return false;
    if (model != nullptr)
        static_cast<void>(qvPlatform::setPermissions(*file, *model));
    bool const isSynced = qvPlatform::syncDescriptor(*file).good();
    return file.close().good() && isSynced;
}

// Within a directory a renaming. Between two, a copy that is on stable storage before the source is deleted.
bool move(Filename const & from, Filename const & to) {
    if (isOneDirectory(from, to))
        return !fileRename(from, to);
    if (fileCopy(from, to, true) || !makeDurable(to, nullptr))
        return false;
    static_cast<void>(qvPlatform::syncDirectory(to.dirname()));
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
    lookAtMain();
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

// Only a file can be renamed away and replaced by a file: a device would be lost.
void ProtectedWrite::lookAtMain() {
    FileFacts facts;
    FileResult asked = qvPlatform::queryFile(main_.name(), Links::keep, facts);
    if (asked.good() && facts.kind == FileKind::symbolicLink) {
        IString resolved;
        asked = qvPlatform::resolvedName(main_.name(), resolved);
        if (asked.good())
            asked = qvPlatform::queryFile(resolved, Links::keep, facts);
        resolved_ = Filename(resolved);
        // A name that has another normal form is that of another file.
        if (!asked.good() || resolved_.name() != resolved)
            status_ = StatusNotWritable;
    }
    if (asked.good() && (facts.kind != FileKind::file || !qvPlatform::mayWrite(target().name())))
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
    if (doesFileExist(temp_))
        static_cast<void>(fileDelete(temp_));
    if (backupIsSpare_ && doesFileExist(backup_))
        static_cast<void>(fileDelete(backup_));
    return status_ == StatusOk;
}

void ProtectedWrite::swapIn() {
    FileFacts facts;
    FileResult const asked = qvPlatform::queryFile(target().name(), Links::follow, facts);
    bool const hasMain = asked.good();
    if (hasMain ? facts.kind != FileKind::file : asked.outcome != qvPlatform::FileOutcome::notFound) {
        status_ = StatusNoBackup;
        return;
    }
    if (!makeDurable(temp_, hasMain ? &facts : nullptr)) {
        status_ = StatusNotWritable;
        return;
    }
    backupIsSpare_ = hasMain; // at most a copy
    if (hasMain && !move(target(), backup_)) {
        status_ = StatusNoBackup;
        return;
    }
    backupIsSpare_ = false;
    bool const isIn = move(temp_, target());
    if (!isIn) {
        status_ = StatusNotWritable;
        // Where nothing was replaced, only a copy has left something: what a renaming met is somebody else's.
        if (hasMain || !isOneDirectory(temp_, target()))
            static_cast<void>(fileDelete(target()));
    }
    backupIsSpare_ = hasMain && (isIn || move(backup_, target()));
    static_cast<void>(qvPlatform::syncDirectory(target().dirname()));
}

} // namespace qvOS
