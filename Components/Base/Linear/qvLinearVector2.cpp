#include "Base/Linear/qvLinearVector2.h"

#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>

namespace qvLinear {

bool Vector2::normalize() {
    double const was = length();
    if (std::fabs(was) < epsilonTol)
        return false;
    *this /= was;
    return true;
}

} // namespace qvLinear
