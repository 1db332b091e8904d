// Angles between directions, and rotation about an axis.

#ifndef qvLinearRotation_h
#define qvLinearRotation_h

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearVector.h"

#include <cmath>

namespace qvLinear {

// All angles are in radians.

// The angle between two directions, 0 to pi. An invalid one is at pi / 2 from all.
QV_EXPORT double angle(Normal const & a, Normal const & b);
// The same with a test: false, and pi / 2, when one is invalid.
QV_EXPORT bool angle(Normal const & a, Normal const & b, double & result);

// Whether |a . b| is at least tol, as a rule parallelTol; opposite directions are parallel. False with an invalid one.
inline bool isParallel(Normal const & a, Normal const & b, double tol) {
    return a.isValid() && b.isValid() && std::fabs(dot(a, b)) >= tol;
}
// Whether |a . b| is at most tol, as a rule perpendicularTol. False with an invalid one.
inline bool isPerpendicular(Normal const & a, Normal const & b, double tol) {
    return a.isValid() && b.isValid() && std::fabs(dot(a, b)) <= tol;
}

// The angle of a in the plane of two axes, counted from the first towards the second: from -pi to pi, or with
// `positive` from 0 to 2 pi. 0 when a is invalid.
QV_EXPORT double unitCircleRotation(Normal const & a, Normal const & xAxis, Normal const & yAxis, bool positive);

// v turned about the axis, right-handed; v itself when the axis is invalid.
QV_EXPORT Vector rotate(Vector const & v, Normal const & axis, double angle);

// The direction at the fraction t of the turn from a to b. Opposite directions turn about a's orthogonalVector. It is a
// when one is invalid, and when both are the same.
QV_EXPORT Normal interpolate(Normal const & a, Normal const & b, double t);
// The same for direction and length.
QV_EXPORT Vector interpolate(Vector const & a, Vector const & b, double t);

} // namespace qvLinear

#endif
