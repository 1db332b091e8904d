// Results of integer arithmetic that an int need not hold.

#ifndef Saturated_h
#define Saturated_h

#include <cstdint>
#include <limits>

namespace qvUtil {

/// The int that is nearest.
inline int saturated(std::int64_t value) {
    using Limits = std::numeric_limits<int>;
    return value < Limits::min() ? Limits::min() : value > Limits::max() ? Limits::max() : static_cast<int>(value);
}

} // namespace qvUtil

#endif
