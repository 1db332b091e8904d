// How the directory of a package travels in packets.

#ifndef ioPackageIO_h
#define ioPackageIO_h

#include "Base/Containers/qvVector.h"
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
    ~PackageReadContext() override;

    // A directory has no use for texts that can be referred to, but a file may hold some.
    void postPacketRead() override;
    // Takes the fields of one record.
    void readEntry();

private:
    ioPackageFile & package_;
    qv::vector<void *> texts_; // from malloc, ours to free
};

} // namespace ioPackageIO

#endif
