// The random numbers that the hash functions mix in.

#ifndef qvContainersHashTables_h
#define qvContainersHashTables_h

#include <cstdint>

namespace qv::detail {

extern std::uint32_t const hashTables[4][256];

} // namespace qv::detail

#endif
