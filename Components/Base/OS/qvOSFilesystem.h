// The size of the disk that a path lies on.

#ifndef qvOSFilesystem_h
#define qvOSFilesystem_h

#include "Base/Utility/qvUtilError.h"

namespace qvOS {

/// The figures of a file system. Everything but the name is 0 until stat() has run.
///
///     qvOS::Filesystem disk(L"/home/projects/");
///     if (!disk.stat() && disk.avail() < neededKilobytes) ...
class QV_EXPORT Filesystem {
public:
    explicit Filesystem(qvString::IString const & path) { filename_.assign(path); }

    /// Asks the system, about the directory in which the path lies; a path that ends in a separator is a directory.
    /// Failure 1, with one of the texts "Filesystem::stat(): invalid path ..." and "Filesystem::stat():
    /// GetDiskFreeSpaceEx(...) failed: ..."; after the second isRemote() is set all the same where the name tells it.
    qvUtil::Error stat();

    qvString::IString const & filename() const { return filename_; }
    /// The unit of the two sizes in bytes: 1024.
    unsigned int blockSize() const { return blockSize_; }
    /// Of the whole disk, and what this process may still fill; both in blocks, cut to 32 bits.
    unsigned int size() const { return size_; }
    unsigned int avail() const { return avail_; }
    /// Whether the disk belongs to another machine, as the system says; a network name tells it where `\` separates.
    bool isRemote() const { return isRemote_; }

private:
    qvString::IString filename_;
    unsigned int blockSize_ = 0;
    unsigned int size_ = 0;
    unsigned int avail_ = 0;
    bool isRemote_ = false;
};

} // namespace qvOS

#endif
