// Any bytes as a package: it is refused as a whole, or its table is sound, every entry comes out or fails, and it takes
// changes that the next reader finds.

#include "Base/DataFiles/ioPackageFile.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

using qvString::IString;

// A small entry can unpack to very much.
constexpr std::int64_t mostExtracted = std::int64_t{1} << 20;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// A file in memory, by a name.
class MemoryFile {
public:
    MemoryFile() : descriptor_(::memfd_create("package", 0)) {
        require(descriptor_ >= 0);
        name_ = IString(("/proc/self/fd/" + std::to_string(descriptor_)).c_str());
    }
    MemoryFile(MemoryFile const &) = delete;
    MemoryFile & operator=(MemoryFile const &) = delete;
    ~MemoryFile() { ::close(descriptor_); }

    void fill(std::uint8_t const * data, std::size_t size) const {
        require(::ftruncate(descriptor_, 0) == 0 && ::pwrite(descriptor_, data, size, 0) == static_cast<ssize_t>(size));
    }
    IString const & name() const { return name_; }

private:
    int descriptor_;
    IString name_;
};

void extractAll(ioPackageFile const & package) {
    for (auto const & [name, index] : package.getDirectory()) {
        ioPackageFileEntry const * const entry = package.getEntry(index);
        require(entry != nullptr && entry == package.getEntry(name) && entry->getSize() >= 0);
        static_cast<void>(package.extractEntry(entry, IString(L"/dev/null"), mostExtracted));
        IString place;
        if (!ioPackageFile::placeBelow(IString(L"/nowhere"), name, place)) {
            require(place.find(L"/nowhere/") == 0);
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    static MemoryFile const file;
    static MemoryFile const source;
    file.fill(data, size);
    source.fill(data, size / 2);
    ioPackageFile package;
    if (package.open(file.name())) {
        require(package.getPackageFileName().isEmpty() && package.size() == 0);
        return 0;
    }
    require(package.validate() == nullptr);
    extractAll(package);
    if (package.size() > 0) {
        IString const first = package.getDirectory().begin()->first;
        require(!package.deleteEntry(first) && package.validate() == nullptr);
    }
    require(!package.addEntry(source.name(), IString(L"added"), false) && package.validate() == nullptr);
    int const count = package.size();
    require(!package.update());
    ioPackageFile again;
    require(!again.open(file.name()) && again.size() == count && again.validate() == nullptr);
    require(again.getEntry(IString(L"added"))->getSize() == static_cast<std::int64_t>(size / 2));
    return 0;
}
