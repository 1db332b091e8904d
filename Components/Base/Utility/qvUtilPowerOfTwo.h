// Powers of two in an int.

#ifndef qvUtilPowerOfTwo_h
#define qvUtilPowerOfTwo_h

#include "Base/qvBaseConfig.h"

#include <climits>

namespace qvUtil {

/// The smallest power of two that is not below `v`, and 1 for all below 2. Above 2^30 there is none in an int: the
/// result is INT_MAX then.
constexpr int ceilPowerOfTwo(int v) {
    if (v < 2)
        return 1;
    unsigned filled = static_cast<unsigned>(v) - 1;
    for (unsigned shift = 1; shift < 32; shift *= 2)
        filled |= filled >> shift;
    return filled == INT_MAX ? INT_MAX : static_cast<int>(filled) + 1;
}

constexpr bool isPowerOfTwo(int v) { return v != INT_MAX && ceilPowerOfTwo(v) == v; }

/// The power of two that is nearest to `v`, the upper one of two that are as near, and 1 for all below 2. Above 2^30 it
/// is 2^30.
constexpr int roundPowerOfTwo(int v) {
    int const upper = ceilPowerOfTwo(v);
    if (upper == INT_MAX)
        return 1 << 30;
    int const lower = upper / 2;
    return v < 2 || upper - v <= v - lower ? upper : lower;
}

} // namespace qvUtil

#endif
