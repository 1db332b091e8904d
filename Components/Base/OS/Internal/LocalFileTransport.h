// The transport of the local disk.

#ifndef LocalFileTransport_h
#define LocalFileTransport_h

#include "Base/OS/Internal/LocalFileStream.h"
#include "Base/OS/qvOSFileTransport.h"

namespace qvOS {

class LocalFileTransport : public FileTransport {
public:
    explicit LocalFileTransport(qvString::IString const & name);
    ~LocalFileTransport() override;

    qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) override;
    qvUtil::Error write(void const * buffer, unsigned int size, unsigned int * count) override;
    qvUtil::Error open(int mode) override;
    qvUtil::Error openTemp(int mode) override;
    qvUtil::Error close() override;
    qvUtil::Error makeDirectory() override;
    qvUtil::Error makeTempDirectory() override;
    qvUtil::Error makeDirectoryAll() override;
    qvUtil::Error readDir(qv::vector<qvString::IString> & list, bool fullPaths) override;
    qvUtil::Error moveTo(FileTransport & target) override;
    qvUtil::Error deleteSelf() override;
    bool isDirectory() override;
    bool isOpen() override { return stream_.isOpen(); }
    qvString::IString getFullName() override;
    qvString::IString getNameTitle() override;
    qvString::IString getNameBase() override;
    wchar_t getSeparator() override;
    qvString::IString transportId() override;
    qvUtil::Error query(FileStatus & status) override;
    qvUtil::Error queryOwnerGroup(FileStatus & status) override;

    // Whether the name is a symbolic link, which deleting does not follow.
    bool isSymbolicLink() const;
    // Whether there is a file or a directory, and whether that is a directory and no link to one: what a walk asks of
    // each entry, with fewer calls of the system than query().
    bool isThere(bool & isRealDirectory) const;
    // Whether both names lead to one file that exists.
    bool isSameFileAs(LocalFileTransport const & other) const;
    // Whether it is a link to a directory in which it lies itself, seen along its own name.
    bool leadsBack() const;
    // Whether the other lies in this directory, or is it, under whatever names.
    bool holds(LocalFileTransport const & other) const;
    // What copyTo() does between two that it has opened.
    qvUtil::Error copyContentsTo(LocalFileTransport & target);

private:
    qvString::IString name_; // as the factory got it
    LocalFileStream stream_;
    // What isDirectory() found out, kept for good once it has found anything.
    bool directoryKnown_ = false;
    bool directoryValue_ = false;
};

// Takes every name.
class LocalFileTransportFactory : public FileTransportFactory {
public:
    FileTransport * create(qvString::IString const & name) override;

    // Does nothing; calling it makes a linker keep this source file.
    static bool s_forceTransportLoad();
};

} // namespace qvOS

#endif
