// What is known of a file.

#ifndef qvOSFileStatus_h
#define qvOSFileStatus_h

#include "Base/Strings/qvStringCString.h"

#include <cstdint>

namespace qvOS {

/// The answer of File::query(), a plain value. Sizes are in bytes, dates in seconds since 1970.
class FileStatus {
public:
    FileStatus() = default;

    /// As a new one: nothing there.
    void reset() { *this = FileStatus(); }

    bool exists() const { return exists_; }
    bool isReadable() const { return readable_; }
    bool isWritable() const { return writable_; }
    bool isDirectory() const { return directory_; }
    bool isFile() const { return file_; }
    bool isRemote() const { return remote_; }
    bool isCheckedout() const { return checkedout_; }
    long getSize() const { return size_; }
    std::int64_t getCreationDate() const { return creationDate_; }
    std::int64_t getLastModifiedDate() const { return lastModification_; }
    qvString::CString const & getOwner() const { return owner_; }
    qvString::CString const & getGroup() const { return group_; }

    void setExists(bool exists) { exists_ = exists; }
    void setIsReadable(bool readable) { readable_ = readable; }
    void setIsWritable(bool writable) { writable_ = writable; }
    void setIsDirectory(bool directory) { directory_ = directory; }
    void setIsFile(bool file) { file_ = file; }
    void setIsRemote(bool remote) { remote_ = remote; }
    void setIsCheckedout(bool checkedout) { checkedout_ = checkedout; }
    void setSize(long size) { size_ = size; }
    void setCreationDate(std::int64_t date) { creationDate_ = date; }
    void setLastModification(std::int64_t date) { lastModification_ = date; }
    void setOwner(qvString::CString const & owner) { owner_ = owner; }
    void setGroup(qvString::CString const & group) { group_ = group; }

private:
    bool exists_ = false;
    bool readable_ = false;
    bool writable_ = false;
    bool directory_ = false;
    bool file_ = false;
    bool remote_ = false;
    bool checkedout_ = false;
    long size_ = 0;
    std::int64_t creationDate_ = 0;
    std::int64_t lastModification_ = 0;
    qvString::CString owner_;
    qvString::CString group_;
};

} // namespace qvOS

#endif
