#include "Base/Linear/qvLinearDecompose.h"

#include "Base/Linear/Internal/Clamped.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>

namespace qvLinear {

namespace {

constexpr double limit = 1e-9;

// Takes the part along a unit row out of the other, and gives how much it was.
double straighten(Vector & row, Vector const & along) {
    double const shear = dot(along, row);
    row -= shear * along;
    return shear;
}

// Makes the row a unit one, as far as it has a length, and gives that. Shears are counted in lengths of their row.
double unify(Vector & row, double * shear, double * otherShear) {
    double const length = row.length();
    if (std::fabs(length) >= limit) {
        row /= length;
        if (shear)
            *shear /= length;
        if (otherShear)
            *otherShear /= length;
    }
    return length;
}

double degreesOf(double sine, double cosine) {
    double const a = clamped(sine, -1, 1);
    double const b = clamped(cosine, -1, 1);
    return std::fabs(a) >= limit || std::fabs(b) >= limit ? toDegrees(std::atan2(a, b)) : 0;
}

// The angles of turns about x, y and z, in this order, that make up a rotation.
Vector eulerAngles(AffineMatrix const & rotation) {
    double const * const m = rotation.m;
    double const d = clamped(-m[2], -1, 1);
    double const c = std::sqrt(1 - d * d);
    double const ry = toDegrees(std::asin(d));
    // Looking along x the turns about x and z are one.
    if (std::fabs(c) < limit || std::fabs(std::fabs(d) - 1) < limit)
        return Vector(degreesOf(m[3] / d, m[4]), ry, 0);
    return Vector(degreesOf(m[5] / c, m[8] / c), ry, degreesOf(m[1] / c, m[0] / c));
}

} // namespace

bool orvenDecompose(AffineMatrix const & matrix, Vector & translate, Vector & scale, Vector & rotate, Vector & shear) {
    Point origin;
    Vector r0;
    Vector r1;
    Vector r2;
    matrix.getFrame(origin, r0, r1, r2);
    translate = origin.asVector();

    double const sx = unify(r0, nullptr, nullptr);
    double hxy = straighten(r1, r0);
    double const sy = unify(r1, &hxy, nullptr);
    double hxz = straighten(r2, r0);
    double hyz = straighten(r2, r1);
    double const sz = unify(r2, &hxz, &hyz);
    scale = Vector(sx, sy, sz);
    shear = Vector(hxy, hxz, hyz);

    AffineMatrix rotation;
    rotation.setFrame(origin, r0, r1, r2);
    double const determinant = rotation.det3x3();
    if (-1.000001 < determinant && determinant < -0.999999) {
        scale *= -1;
        rotation *= -1;
    }
    bool const hasRotation = std::fabs(determinant) >= limit;
    rotate = hasRotation ? eulerAngles(rotation) : Vector::zero;
    return hasRotation;
}

} // namespace qvLinear
