#include "Base/Linear/qvLinearRandom.h"

#include <algorithm>
#include <cstdint>

namespace {

// The words of the multiplier are 5, 0xDEEC, 0xE66D. It is not the one of the generators of that name elsewhere.
constexpr std::uint64_t multiplier = 0xE66DDEEC0005;
constexpr std::uint64_t increment = 0xB;
constexpr std::uint64_t mask = (std::uint64_t{1} << 48) - 1;

constinit unsigned short state[3] = {0x1234, 0xABCD, 0x330E};
constinit unsigned short saved[3] = {};

// The product is taken modulo 2^64, of which the lower 48 bits are those modulo 2^48.
void step(unsigned short * x) {
    std::uint64_t const before = x[0] | std::uint64_t{x[1]} << 16 | std::uint64_t{x[2]} << 32;
    std::uint64_t const after = (multiplier * before + increment) & mask;
    x[0] = static_cast<unsigned short>(after);
    x[1] = static_cast<unsigned short>(after >> 16);
    x[2] = static_cast<unsigned short>(after >> 32);
}

} // namespace

extern "C" {

double qv_erand48(unsigned short x[3]) {
    step(x);
    return x[0] * 0x1p-48 + x[1] * 0x1p-32 + x[2] * 0x1p-16;
}

double qv_drand48() { return qv_erand48(state); }

long qv_lrand48() { return static_cast<long>(qv_drand48() * 0x1p31); }

void qv_srand48(long seed) {
    auto const bits = static_cast<unsigned long>(seed);
    state[0] = 0x1234;
    state[1] = static_cast<unsigned short>(bits);
    state[2] = static_cast<unsigned short>(bits >> 16);
}

unsigned short * qv_seed48(unsigned short v[3]) {
    unsigned short next[3];
    std::copy_n(v, 3, next); // before `saved` is written, which v may be
    std::copy_n(state, 3, saved);
    std::copy_n(next, 3, state);
    return saved;
}
}
