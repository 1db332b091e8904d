#include "Base/Utility/qvUtilRandom.h"

#include "Base/Platform/PlatformRandom.h"
#include "Base/Utility/qvUtilError.h"

#include <cstdint>

namespace qvUtil {

namespace {

// From 0 to 1, both included.
double randomFraction() {
    std::uint32_t bits = 0;
    if (!qvPlatform::randomBits(bits))
        throw Error(1, "No random numbers");
    return (bits & 0x7FFFFFFF) / 2147483647.0;
}

} // namespace

double random(double max) { return max * randomFraction(); }
double random(double lo, double hi) { return lo + (hi - lo) * randomFraction(); }

} // namespace qvUtil
