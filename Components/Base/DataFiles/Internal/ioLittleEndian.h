// Eight bytes as a number, the first byte lowest, on machines of either byte order.

#ifndef ioLittleEndian_h
#define ioLittleEndian_h

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace ioLittleEndian {

inline std::uint64_t load(void const * from) {
    unsigned char bytes[8];
    std::memcpy(bytes, from, sizeof bytes);
    if constexpr (std::endian::native == std::endian::big) {
        std::reverse(bytes, bytes + sizeof bytes);
    }
    return std::bit_cast<std::uint64_t>(bytes);
}

inline void store(std::uint64_t value, void * to) {
    std::memcpy(to, &value, sizeof value);
    if constexpr (std::endian::native == std::endian::big) {
        auto * const bytes = static_cast<unsigned char *>(to);
        std::reverse(bytes, bytes + sizeof value);
    }
}

} // namespace ioLittleEndian

#endif
