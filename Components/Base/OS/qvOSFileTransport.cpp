#include "Base/OS/qvOSFileTransport.h"

#include "Base/OS/Internal/FileCodes.h"
#include "Base/OS/Internal/LocalFileTransport.h"
#include "Base/OS/qvOSFile.h"

namespace qvOS {

using qvString::IString;
using qvUtil::Error;

namespace {

Error notImplemented() { return Error(-1, "This function is not implemented."); }

IString directoryName(FileTransport & transport) {
    return asDirectory(transport.getFullName(), transport.getSeparator());
}

bool isSelfOrParent(IString const & name) { return name == L"." || name == L".."; }

LocalFileTransport * asLocal(FileTransport & transport) { return dynamic_cast<LocalFileTransport *>(&transport); }

// Both are open. The result is the first failure of reading or writing.
Error copyContents(FileTransport & from, FileTransport & to) {
    LocalFileTransport * const source = asLocal(from);
    LocalFileTransport * const target = asLocal(to);
    if (source != nullptr && target != nullptr)
        return source->copyContentsTo(*target);
    char block[4096];
    for (;;) {
        unsigned int count = 0;
        Error const got = from.read(block, sizeof block, &count);
        if (got && got.num() != code::endOfFile)
            return got;
        if (count > 0) {
            if (Error const put = to.write(block, count, nullptr))
                return put;
        }
        // A stream that has nothing and does not say that it ends would be asked for ever.
        if (got || count == 0)
            return Error();
    }
}

Error copyFile(FileTransport & from, FileTransport & to) {
    if (to.open(OpenWrite | OpenCreate))
        return File::getError(code::ioProblem);
    if (Error const error = from.open(OpenRead | OpenBinary)) {
        static_cast<void>(to.close());
        return error;
    }
    Error const copied = copyContents(from, to);
    Error const closed = from.close();
    Error const targetClosed = to.close();
    return copied ? copied : closed ? closed : targetClosed;
}

} // namespace

FileTransport::~FileTransport() = default;

FileTransportFactory::~FileTransportFactory() = default;

Error FileTransport::openTemp(int) { return notImplemented(); }

Error FileTransport::makeTempDirectory() { return notImplemented(); }

Error FileTransport::makeDirectoryAll() { return notImplemented(); }

Error FileTransport::copyTo(FileTransport & target) {
    if (isOpen() || target.isOpen())
        return File::getError(code::fileIsOpen);
    if (getFullName() == target.getFullName())
        return File::getError(code::noOverwrite);
    if (LocalFileTransport const * const local = asLocal(*this)) {
        if (Error const refused = local->refuseCopyTo(asLocal(target)))
            return refused;
    }
    if (!isDirectory())
        return copyFile(*this, target);
    if (Error const error = target.makeDirectory(); error && error.num() != code::fileExists)
        return error;
    return recreateDirStructure(target, false);
}

Error FileTransport::moveTo(FileTransport & target) {
    if (isOpen())
        return File::getError(code::fileIsOpen);
    if (getFullName() == target.getFullName())
        return File::getError(code::noOverwrite);
    Error const copied = copyTo(target);
    return copied ? copied : deleteSelf();
}

Error FileTransport::queryOwnerGroup(FileStatus & status) {
    status.setOwner("Unknown");
    status.setGroup("Unknown");
    return Error(-1, "This function still not supported.");
}

Error FileTransport::recursiveDeleteSelf() {
    LocalFileTransport * const local = asLocal(*this);
    if (local != nullptr && local->isSymbolicLink())
        return deleteSelf();
    IString const directory = directoryName(*this);
    qv::vector<IString> list;
    if (Error const error = local != nullptr ? local->readOwnDir(list, false) : readDir(list, false))
        return error;
    for (IString const & name : list) {
        if (!isSelfOrParent(name))
            static_cast<void>(File(directory + name).deleteSelf(DeleteRecursing));
    }
    return deleteSelf();
}

Error FileTransport::recreateDirStructure(FileTransport & target, bool move) {
    if (!isDirectory() || !target.isDirectory())
        return File::getError(code::notADirectory);
    LocalFileTransport * const local = asLocal(*this);
    LocalFileTransport * const localTarget = asLocal(target);
    if (local != nullptr && localTarget != nullptr && local->holds(*localTarget))
        return File::getError(code::noOverwrite);
    qv::vector<IString> list;
    if (Error const error = readDir(list, false))
        return error;
    IString const from = directoryName(*this);
    IString const to = directoryName(target);
    Error first;
    for (IString const & name : list) {
        if (isSelfOrParent(name))
            continue;
        IString targetName = to + name;
        if (getSeparator() != target.getSeparator() && targetName[targetName.length() - 1] == getSeparator())
            targetName[targetName.length() - 1] = target.getSeparator();
        File source(from + name);
        File destination(targetName);
        Error error = source.copyTo(destination);
        if (!error && move)
            error = source.deleteSelf(DeleteShallow);
        if (error && !first)
            first = error;
    }
    return first;
}

} // namespace qvOS
