// How the directory of a package travels in packets.

#ifndef ioPackageIO_h
#define ioPackageIO_h

#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioPacketRegistry.h"

class ioPackageFile;

namespace ioPackageIO {

inline constexpr char const * entryTypeName = "package.entry";

class PackageRegistry : public ioPacketRegistry {
public:
    explicit PackageRegistry(bool fromFile) : ioPacketRegistry(fromFile) {}

    void registerAllTypes() override;
};

class PackageReadContext : public ioClientReadContext {
public:
    PackageReadContext(ioReadContext & context, ioPackageFile & package)
        : ioClientReadContext(context), package_(package) {}

    // Takes the fields of one record.
    void readEntry();

private:
    ioPackageFile & package_;
};

} // namespace ioPackageIO

#endif
