#include "BodyWalker.h"

#include "Fault.h"

#include <string>

namespace {

constexpr std::uint64_t endOfReferences = 0x7fff0000;

} // namespace

void checkReference(std::size_t offset, std::uint64_t reference, bool ofPacket) {
    if (ofPacket && reference == 0) {
        throw Fault{offset, "the reference of a packet is 0"};
    }
    if (reference >= endOfReferences) {
        throw Fault{offset, "reference " + std::to_string(reference) + " is too large"};
    }
}

void walkBody(PacketFile const & file, Packet const & packet, BodyVisitor & visitor) {
    if (file.isBinary()) {
        walkBinaryBody(file, packet, visitor);
    } else {
        walkAsciiBody(file, packet, visitor);
    }
}
