#include "Base/Linear/qvLinearQuaternion.h"

#include "Base/Linear/Internal/Clamped.h"
#include "Base/Linear/qvLinearTolerance.h"

namespace qvLinear {

namespace {

Quaternion normalized(Quaternion q) {
    q.normalize();
    return q;
}

} // namespace

void Quaternion::setAngleAxis(double angle, Normal const & axis) {
    Vector const v = axis * std::sin(angle / 2);
    *this = Quaternion(v[0], v[1], v[2], std::cos(angle / 2));
    normalize();
}

bool Quaternion::getAngleAxis(double & angle, Normal & axis) const {
    if (std::fabs(w - 1) < epsilonTol) {
        axis = Normal::x;
        angle = 0;
        return false;
    }
    double const half = std::acos(clamped(w, -1, 1));
    angle = 2 * half;
    axis = Vector(x, y, z) / std::sin(half);
    return true;
}

// Divides by the largest of the four components, so that no small number is divided by.
void Quaternion::setFrame(Normal const & a, Normal const & b, Normal const & c) {
    double const trace = a[0] + b[1] + c[2];
    double t;
    if (trace > 0) {
        t = 1 + trace;
        *this = Quaternion(b[2] - c[1], c[0] - a[2], a[1] - b[0], t);
    } else if (a[0] > b[1] && a[0] > c[2]) {
        t = 1 + a[0] - b[1] - c[2];
        *this = Quaternion(t, a[1] + b[0], c[0] + a[2], b[2] - c[1]);
    } else if (b[1] > c[2]) {
        t = 1 - a[0] + b[1] - c[2];
        *this = Quaternion(a[1] + b[0], t, b[2] + c[1], c[0] - a[2]);
    } else {
        t = 1 - a[0] - b[1] + c[2];
        *this = Quaternion(c[0] + a[2], b[2] + c[1], t, a[1] - b[0]);
    }
    *this *= 0.5 / std::sqrt(t);
}

void Quaternion::getFrame(Normal & a, Normal & b, Normal & c) const {
    AffineMatrix matrix;
    getMatrix(matrix);
    a = Normal(matrix.m);
    b = Normal(matrix.m + 3);
    c = Normal(matrix.m + 6);
}

Quaternion slerp(Quaternion const & a, Quaternion const & b, double t) {
    double d = dot(a, b);
    Quaternion start = a;
    if (!(d >= 0)) {
        start = -a;
        d = -d;
    }
    if (d <= parallelTol) {
        d = clamped(d, -1, 1);
        double const theta = std::acos(d) * t;
        Quaternion const across = normalized(b - start * d);
        return start * std::cos(theta) + across * std::sin(theta);
    }
    return normalized(start + t * (b - start));
}

} // namespace qvLinear
