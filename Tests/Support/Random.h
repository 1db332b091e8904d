// Random numbers for tests: the same from run to run, and the seed is shown where a test fails.

#ifndef Random_h
#define Random_h

#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <random>
#include <string>

namespace qvtest {

class Random {
public:
    explicit Random(unsigned seed)
        : engine_(seed), trace_(__FILE__, __LINE__, "random numbers from seed " + std::to_string(seed)) {}

    /// From 0 up to, but not including, `bound`.
    unsigned below(unsigned bound) { return static_cast<unsigned>(engine_() % bound); }
    unsigned between(unsigned least, unsigned most) { return least + below(most - least + 1); }
    bool chance(unsigned oneIn) { return below(oneIn) == 0; }
    std::uint64_t bits() { return engine_() << 32 ^ engine_(); }
    /// Any element of an array.
    template <class Array>
    auto const & oneOf(Array const & array) {
        return array[below(static_cast<unsigned>(std::size(array)))];
    }

private:
    std::mt19937_64 engine_;
    testing::ScopedTrace trace_;
};

} // namespace qvtest

#endif
