// How the single-precision vectors are normalised.

#ifndef qvLinearNormalizeFlt_h
#define qvLinearNormalizeFlt_h

#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>

namespace qvLinear {

template <class V>
bool normalizeFlt(V & v) {
    float const length2 = v.length2();
    if (length2 > epsilon2TolFlt) {
        v *= 1 / std::sqrt(length2);
        return true;
    }
    v = V::zero;
    return false;
}

} // namespace qvLinear

#endif
