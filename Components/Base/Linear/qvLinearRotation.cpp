#include "Base/Linear/qvLinearRotation.h"

#include "Base/Linear/Internal/Clamped.h"
#include "Base/Linear/qvLinearProject.h"

namespace qvLinear {

namespace {

constexpr double halfPi = 1.5707963267948966;
constexpr double twoPi = 6.283185307179586;

} // namespace

double angle(Normal const & a, Normal const & b) { return std::acos(clamped(dot(a, b), -1, 1)); }

bool angle(Normal const & a, Normal const & b, double & result) {
    bool const ok = a.isValid() && b.isValid();
    result = ok ? angle(a, b) : halfPi;
    return ok;
}

double unitCircleRotation(Normal const & a, Normal const & xAxis, Normal const & yAxis, bool positive) {
    if (!a.isValid())
        return 0;
    // The half axis to the left is at pi, also where its y is -0.
    double const turn = std::atan2(dot(a, yAxis) + 0.0, dot(a, xAxis));
    return positive && turn < 0 ? turn + twoPi : turn;
}

Vector rotate(Vector const & v, Normal const & axis, double angle) {
    if (!axis.isValid())
        return v;
    Vector const along = project(v, axis);
    Vector const off = v - along;
    return along + std::cos(angle) * off + std::sin(angle) * cross(axis, off);
}

Normal interpolate(Normal const & a, Normal const & b, double t) {
    if (!a.isValid() || !b.isValid())
        return a;
    Normal axis(cross(a, b));
    double const full = angle(a, b);
    if (!axis.isValid()) {
        if (full <= halfPi)
            return a;
        axis = a.orthogonalVector();
    }
    return Normal(rotate(a, axis, t * full));
}

Vector interpolate(Vector const & a, Vector const & b, double t) {
    Normal const direction = interpolate(a.normalized(), b.normalized(), t);
    return direction * ((1 - t) * a.length() + t * b.length());
}

} // namespace qvLinear
