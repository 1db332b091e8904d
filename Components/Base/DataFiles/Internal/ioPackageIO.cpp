#include "Base/DataFiles/Internal/ioPackageIO.h"

#include "Base/DataFiles/ioPackageFile.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"

#include <cstdlib>

namespace ioPackageIO {

namespace {

void readPackageEntry(ioClientReadContext & client) {
    // The package's own reader passes nothing else.
    static_cast<PackageReadContext &>(client).readEntry();
}

} // namespace

void PackageRegistry::registerAllTypes() { supportedType(new ioReadPacketByFunction(entryTypeName, readPackageEntry)); }

PackageReadContext::~PackageReadContext() {
    for (void * const text : texts_)
        std::free(text);
}

void PackageReadContext::postPacketRead() {
    ioReadContext const & context = getReadContext();
    if (void * const text = context.getReferenceDefinition(context.getPacketReference()))
        texts_.append(text);
}

void PackageReadContext::readEntry() {
    ioReadContext & context = getReadContext();
    // A record builds no object. One that claims to would wait for its definition for ever.
    if (context.getPacketReference() != 0)
        return context.badPacket();
    // In the binary forms, and only those are read, a text is good until the end of its packet.
    char const * const name = context.readCString();
    std::int64_t const offset = context.readInt64();
    std::int64_t const size = context.readInt64();
    std::int64_t const timestamp = context.readInt64();
    bool const compressed = context.readBool();
    if (!context.isPacketBad()) {
        package_.appendEntry(name, offset, size, timestamp, compressed);
    }
}

} // namespace ioPackageIO
