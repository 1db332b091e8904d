// The system's source of random numbers.

#ifndef PlatformRandom_h
#define PlatformRandom_h

#include <cstdint>

namespace qvPlatform {

/// Gives 32 bits that nobody else was given. The system is asked for many at a time, and what is kept of them is each
/// thread's own and is forgotten by a copy of the process. False when the system refuses.
bool randomBits(std::uint32_t & bits);

} // namespace qvPlatform

#endif
