// Arithmetic on two doubles or four floats at once, for the few formulas that loops are made of.

#ifndef qvLinearLanes_h
#define qvLinearLanes_h

#include "Base/qvBaseConfig.h"

// Every lane is rounded as a number of its own, so that results have the bits of the formulas written out. Where a
// compiler has no such types, those are what is used.
#if defined(__GNUC__)
#define QV_LINEAR_LANES 1
#define QV_LINEAR_INLINE [[gnu::always_inline]] inline
#else
#define QV_LINEAR_LANES 0
#endif

#if QV_LINEAR_LANES

namespace qvLinear::detail {

using Doubles = double __attribute__((vector_size(16)));
using Floats = float __attribute__((vector_size(16)));

// From and to numbers of any alignment.
QV_LINEAR_INLINE Doubles lanesAt(double const * p) {
    Doubles lanes;
    __builtin_memcpy(&lanes, p, sizeof lanes);
    return lanes;
}
QV_LINEAR_INLINE Floats lanesAt(float const * p) {
    Floats lanes;
    __builtin_memcpy(&lanes, p, sizeof lanes);
    return lanes;
}
QV_LINEAR_INLINE void store(double * p, Doubles lanes) { __builtin_memcpy(p, &lanes, sizeof lanes); }
QV_LINEAR_INLINE void store(float * p, Floats lanes) { __builtin_memcpy(p, &lanes, sizeof lanes); }

QV_LINEAR_INLINE Doubles all(double x) { return Doubles{x, x}; }
QV_LINEAR_INLINE Floats all(float x) { return Floats{x, x, x, x}; }

// The sums of the products of three or four numbers and as many rows, lane by lane, from the left.
template <class T, class Lanes>
QV_LINEAR_INLINE Lanes sumOfRows(T const * factors, Lanes const & r0, Lanes const & r1, Lanes const & r2) {
    return all(factors[0]) * r0 + all(factors[1]) * r1 + all(factors[2]) * r2;
}
template <class T, class Lanes>
QV_LINEAR_INLINE Lanes sumOfRows(T const * factors, Lanes const & r0, Lanes const & r1, Lanes const & r2,
                                 Lanes const & r3) {
    return sumOfRows(factors, r0, r1, r2) + all(factors[3]) * r3;
}

} // namespace qvLinear::detail

#endif

#endif
