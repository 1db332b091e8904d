// The transport of the local disk.

#ifndef LocalFileTransport_h
#define LocalFileTransport_h

#include "Base/OS/Internal/LocalFileStream.h"
#include "Base/OS/qvOSFileTransport.h"

namespace qvOS {

// The name with a separator at its end, unless it is empty.
qvString::IString asDirectory(qvString::IString const & name, wchar_t separator);

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

    // Whether the name is a symbolic link, which deleting does not follow, not even behind a separator at its end.
    bool isSymbolicLink() const;
    // readDir() of a directory itself, not of what a link of that name leads to.
    qvUtil::Error readOwnDir(qv::vector<qvString::IString> & list, bool fullPaths);
    // Whether there is a file or a directory, and whether that is a directory and no link to one: what a walk asks of
    // each entry, with fewer calls of the system than query().
    bool isThere(bool & isRealDirectory) const;
    // Why it cannot be copied: as a special file, whose bytes may never come or never end; or because the copy would
    // read what it writes: by two names of one file it would empty it, and what a link leads back to would never end.
    // The target is null when it is not local.
    qvUtil::Error refuseCopyTo(LocalFileTransport const * target) const;
    // Whether the other lies in this directory, or is it, under whatever names.
    bool holds(LocalFileTransport const & other) const;
    // What copyTo() does between two that it has opened.
    qvUtil::Error copyContentsTo(LocalFileTransport & target);

private:
    // The name without separators at its end, which would lead through a link.
    qvString::IString entryName() const;
    qvUtil::Error listEntries(qvPlatform::Links links, qv::vector<qvString::IString> & list, bool fullPaths) const;
    // Whether it is a link to that directory and lies in it itself, seen along its own name.
    bool leadsBack(qvPlatform::FileIdentity const & directory) const;

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
