#include "Base/DataFiles/Internal/ioPackageIO.h"

#include "Base/DataFiles/ioPackageFile.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"

namespace ioPackageIO {

namespace {

void readPackageEntry(ioClientReadContext & client) {
    // The package's own reader passes nothing else.
    static_cast<PackageReadContext &>(client).readEntry();
}

} // namespace

void PackageRegistry::registerAllTypes() { supportedType(new ioReadPacketByFunction(entryTypeName, readPackageEntry)); }

void PackageReadContext::readEntry() {
    ioReadContext & context = getReadContext();
    char const * const text = context.readCString();
    // The text is good until the next field is read in the forms of text.
    qvString::CString const name(text);
    std::int64_t const offset = context.readInt64();
    std::int64_t const size = context.readInt64();
    std::int64_t const timestamp = context.readInt64();
    bool const compressed = context.readBool();
    if (!context.isPacketBad()) {
        package_.appendEntry(name.asChar(), offset, size, timestamp, compressed);
    }
}

} // namespace ioPackageIO
