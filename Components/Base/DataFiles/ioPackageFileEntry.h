// One record in the table of a package file.

#ifndef ioPackageFileEntry_h
#define ioPackageFileEntry_h

#include "Base/Strings/qvStringIString.h"

#include <cstdint>

class ioPackageFile;

// A file in a package, a free part of it (with an empty name), or the end marker behind the last one (named ".").
// Records move inside the table: a pointer to one is good until the package is changed next.
class QV_EXPORT ioPackageFileEntry {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = ioPackageFileEntry;

    ioPackageFileEntry() = default;
    explicit ioPackageFileEntry(ioPackageFile * package) : package_(package) {}
    ioPackageFileEntry(ioPackageFileEntry const & other);
    ioPackageFileEntry(ioPackageFileEntry &&) = default;
    ioPackageFileEntry & operator=(ioPackageFileEntry const & other);
    ioPackageFileEntry & operator=(ioPackageFileEntry &&) = default;

    ioPackageFile * getPackage() const { return package_; }
    // The package's file; empty without a package, and while it is not open.
    qvString::IString const & getPackageName() const;
    qvString::IString const & getName() const { return name_; }
    // Where the stored bytes begin in the package, and how many they are: of a compressed entry the packed ones.
    std::int64_t getOffset() const { return offset_; }
    std::int64_t getSize() const { return size_; }
    // The last change of the file it was made from, in seconds since 1970; -1 for a record that never held a file.
    std::int64_t getTimeStamp() const { return timestamp_; }
    bool getCompressed() const { return compressed_; }

private:
    friend class ioPackageFile;

    ioPackageFile * package_ = nullptr; // not owned
    qvString::IString name_;
    std::int64_t offset_ = -1;
    std::int64_t size_ = -1;
    std::int64_t timestamp_ = -1;
    bool compressed_ = false;
};

#endif
