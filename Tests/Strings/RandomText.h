// The seeded generator with the unsigned numbers that positions and characters are.

#ifndef qvTestRandomText_h
#define qvTestRandomText_h

#include "Support/SeededRandom.h"

#include <cstdint>
#include <iterator>

namespace qvTest {

class Random : public SeededRandom {
public:
    unsigned below(unsigned bound) { return static_cast<unsigned>(SeededRandom::below(static_cast<int>(bound))); }
    unsigned between(unsigned least, unsigned most) { return least + below(most - least + 1); }
    std::uint64_t longBits() { return std::uint64_t{bits()} << 32 | bits(); }
    /// Any element of an array.
    template <class Array>
    auto const & oneOf(Array const & array) {
        return array[below(static_cast<unsigned>(std::size(array)))];
    }
};

} // namespace qvTest

#endif
