#include "Base/OS/qvOSFile.h"

#include "Base/OS/Internal/FileCodes.h"
#include "Base/OS/qvOSFileFactory.h"

#include <iterator>

namespace qvOS {

using qvString::IString;
using qvUtil::Error;

char const * const File::ErrMsgs[20] = {
    "",
    "Not Implemented",
    "File Exists",
    "End Of File",
    "An I/O problem has occurred",
    "No write permission",
    "No read permission",
    "No Overwrite permission",
    "File is not open",
    "File is open",
    "Resource is not a directory",
    "Resource is not a file",
    "The path is too long",
    "The directory is not empty",
    "ErrSyscall",
    "The URL is invalid",
    "Permission Denied",
    "Authentication Failed",
    "File does not exist",
    "Cannot become the parent of a root directory",
};

Error File::getError(int code) {
    bool const isKnown = code >= 0 && code < static_cast<int>(std::size(ErrMsgs));
    return Error(code, isKnown ? ErrMsgs[code] : "");
}

File::File(IString const & name) : transport_(FileFactory::getFileFactory()->createTransport(name)) {}

File::File(FileTransport * transport) : transport_(transport) {}

File::~File() = default;

Error File::read(void * buffer, unsigned int size, unsigned int * count) {
    return transport_->read(buffer, size, count);
}

Error File::write(void const * buffer, unsigned int size, unsigned int * count) {
    return transport_->write(buffer, size, count);
}

Error File::open(int mode) { return isOpen() ? getError(code::fileIsOpen) : transport_->open(mode); }

Error File::openTemp(int mode) { return isOpen() ? getError(code::fileIsOpen) : transport_->openTemp(mode); }

Error File::close() { return isOpen() ? transport_->close() : getError(code::fileIsNotOpen); }

Error File::readDir(qv::vector<IString> & list, bool fullPaths) {
    if (!isDirectory())
        return getError(code::notADirectory);
    list.clear();
    return transport_->readDir(list, fullPaths);
}

Error File::copyTo(File & target) {
    return isOpen() ? getError(code::fileIsOpen) : transport_->copyTo(*target.transport_);
}

Error File::moveTo(File & target) {
    return isOpen() ? getError(code::fileIsOpen) : transport_->moveTo(*target.transport_);
}

Error File::deleteSelf(int flags) {
    if (isOpen())
        return getError(code::fileIsOpen);
    bool const isWholeTree = isDirectory() && (flags & DeleteShallow) == 0;
    return isWholeTree ? transport_->recursiveDeleteSelf() : transport_->deleteSelf();
}

Error File::makeDirectory() { return isOpen() ? getError(code::fileIsOpen) : transport_->makeDirectory(); }

Error File::makeTempDirectory() { return isOpen() ? getError(code::fileIsOpen) : transport_->makeTempDirectory(); }

Error File::makeDirectoryAll() { return isOpen() ? getError(code::fileIsOpen) : transport_->makeDirectoryAll(); }

bool File::isDirectory() const { return transport_->isDirectory(); }
bool File::isOpen() const { return transport_->isOpen(); }
IString File::getFullName() const { return transport_->getFullName(); }
IString File::getNameTitle() const { return transport_->getNameTitle(); }
IString File::getNameBase() const { return transport_->getNameBase(); }
wchar_t File::getSeparator() const { return transport_->getSeparator(); }
IString File::transportId() const { return transport_->transportId(); }

Error File::query(FileStatus & status, bool ownerGroup) {
    status.reset();
    if (Error const error = transport_->query(status))
        return error;
    return ownerGroup ? transport_->queryOwnerGroup(status) : Error();
}

Error File::query(IString const & name, FileStatus & status) {
    File file(name);
    return file.isValid() ? file.query(status, false) : getError(code::notImplemented);
}

Error File::query(Filename const & name, FileStatus & status) { return query(name.name(), status); }

} // namespace qvOS
