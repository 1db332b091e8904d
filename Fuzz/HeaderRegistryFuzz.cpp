// Header and registry on any bytes: a registry that was read has types in sequence, each found by its name.

#include "Base/DataFiles/ioHeader.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "MemoryInput.h"

#include <cstdlib>
#include <cstring>

namespace {

class EmptyRegistry : public ioPacketRegistry {
public:
    using ioPacketRegistry::ioPacketRegistry;
    void registerAllTypes() override {}
};

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    MemoryInput stream(data, size);
    ioHeader header;
    if (!header.readHeader(stream)) {
        require(!header.isValid());
        return 0;
    }
    header.determineReadMethod();
    EmptyRegistry registry(true);
    if (registry.readRegistry(stream) != ioGood) {
        return 0;
    }
    for (int id = 0; ioPacketType const * const type = registry.lookup(id); ++id) {
        require(type->getId() == id);
        require(registry.lookup(type->getName()) == type);
        std::size_t const length = std::strlen(type->getName());
        require(length >= 1 && length <= 83);
    }
    return 0;
}
