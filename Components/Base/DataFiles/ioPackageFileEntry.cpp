#include "Base/DataFiles/ioPackageFileEntry.h"

#include "Base/DataFiles/ioPackageFile.h"

// Names are copied as a whole, zeros too, so that two that differ stay apart.
ioPackageFileEntry::ioPackageFileEntry(ioPackageFileEntry const & other) { *this = other; }

ioPackageFileEntry & ioPackageFileEntry::operator=(ioPackageFileEntry const & other) {
    name_.assign(other.name_);
    package_ = other.package_;
    offset_ = other.offset_;
    size_ = other.size_;
    timestamp_ = other.timestamp_;
    compressed_ = other.compressed_;
    return *this;
}

qvString::IString const & ioPackageFileEntry::getPackageName() const {
    static qvString::IString const none;
    return package_ != nullptr ? package_->getPackageFileName() : none;
}
