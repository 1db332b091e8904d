// Rotations as unit quaternions.

#ifndef qvLinearQuaternion_h
#define qvLinearQuaternion_h

#include <cmath>
#include <iosfwd>
#include <type_traits>

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearLanes.h"
#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

/*
 * x, y, z and the scalar part w. A quaternion of length 1 is a rotation, and so is its negative, which is the same one.
 *
 * Products go as those of matrices: a * b does a first, the matrix of a * b is that of a times that of b, and a vector
 * is turned by v * q.
 */
class Quaternion {
public:
    Quaternion() = default;
    constexpr Quaternion(double newX, double newY, double newZ, double newW) : x(newX), y(newY), z(newZ), w(newW) {}
    // The rotation by an angle, in radians, about an axis.
    Quaternion(double angle, Normal const & axis) { setAngleAxis(angle, axis); }

    constexpr Quaternion & operator*=(double s) { return *this = Quaternion(x * s, y * s, z * s, w * s); }
    constexpr Quaternion & operator/=(double s) { return *this *= 1 / s; }
    constexpr Quaternion & operator*=(Quaternion const & q) { return *this = *this * q; }
    friend constexpr Quaternion operator*(Quaternion q, double s) { return q *= s; }
    friend constexpr Quaternion operator*(double s, Quaternion q) { return q *= s; }
    friend constexpr Quaternion operator/(Quaternion q, double s) { return q /= s; }
    friend constexpr Quaternion operator+(Quaternion const & a, Quaternion const & b) {
        return Quaternion(a.x + b.x, a.y + b.y, a.z + b.z, a.w + b.w);
    }
    friend constexpr Quaternion operator-(Quaternion const & a, Quaternion const & b) {
        return Quaternion(a.x - b.x, a.y - b.y, a.z - b.z, a.w - b.w);
    }
    friend constexpr Quaternion operator-(Quaternion const & q) { return Quaternion(-q.x, -q.y, -q.z, -q.w); }
    // First a, then b.
    friend constexpr Quaternion operator*(Quaternion const & a, Quaternion const & b) {
        return Quaternion(b.w * a.x + b.x * a.w + b.y * a.z - b.z * a.y, b.w * a.y - b.x * a.z + b.y * a.w + b.z * a.x,
                          b.w * a.z + b.x * a.y - b.y * a.x + b.z * a.w, b.w * a.w - b.x * a.x - b.y * a.y - b.z * a.z);
    }
    // v turned by a quaternion of length 1.
    friend constexpr Vector operator*(Vector const & v, Quaternion const & q) {
        Vector const axis(q.x, q.y, q.z);
        Vector const twice = 2.0 * cross(axis, v);
        return v + q.w * twice + cross(axis, twice);
    }
    // Exact: a rotation has two quaternions, which are not equal.
    friend constexpr bool operator==(Quaternion const & a, Quaternion const & b) {
        return a.x == b.x && a.y == b.y && a.z == b.z && a.w == b.w;
    }
    friend std::ostream & operator<<(std::ostream & out, Quaternion const & q) {
        double const numbers[4] = {q.x, q.y, q.z, q.w};
        return detail::print(out, "Quaternion(", numbers, 4);
    }

    constexpr double length2() const { return x * x + y * y + z * z + w * w; }
    // Scales to length 1. There is no test: zero gives NaNs.
    void normalize() { *this *= 1 / std::sqrt(length2()); }
    // The rotation back, for a quaternion of length 1.
    constexpr Quaternion conjugate() const { return Quaternion(-x, -y, -z, w); }
    // The rotation back, for one of any length; infinite for zero.
    constexpr Quaternion inverse() const { return conjugate() / length2(); }

    QV_EXPORT void setAngleAxis(double angle, Normal const & axis);
    // The angle goes from 0 to 2 pi. False, with the angle 0 about x, when w is within epsilonTol of 1: no rotation.
    // With a w of -1, which is no rotation either, it is true: 2 pi about an invalid axis.
    QV_EXPORT bool getAngleAxis(double & angle, Normal & axis) const;
    // The rotation whose matrix has these rows, which are unit vectors, perpendicular and right-handed.
    QV_EXPORT void setFrame(Normal const & a, Normal const & b, Normal const & c);
    QV_EXPORT void getFrame(Normal & a, Normal & b, Normal & c) const;
    // The matrix of a quaternion of length 1, without a translation.
    constexpr void getMatrix(AffineMatrix & matrix) const;

    double x, y, z, w;
};

constexpr void Quaternion::getMatrix(AffineMatrix & matrix) const {
    double * const m = matrix.m;
#if QV_LINEAR_LANES
    if (!std::is_constant_evaluated()) {
        // The numbers in pairs, as they lie in the matrix. Adding -0 changes nothing.
        using namespace detail;
        double const * const p = reinterpret_cast<double const *>(this);
        Doubles const xy = lanesAt(p);
        Doubles const yz = lanesAt(p + 1);
        Doubles const zw = lanesAt(p + 2);
        Doubles const yx = __builtin_shufflevector(xy, xy, 1, 0);
        Doubles const zy = __builtin_shufflevector(yz, yz, 1, 0);
        Doubles const xz = __builtin_shufflevector(xy, zw, 0, 2);
        Doubles const zx = __builtin_shufflevector(zw, xy, 0, 2);
        Doubles const xx = __builtin_shufflevector(xy, xy, 0, 0);
        Doubles const yy = __builtin_shufflevector(xy, xy, 1, 1);
        Doubles const zz = __builtin_shufflevector(zw, zw, 0, 0);
        Doubles const ww = __builtin_shufflevector(zw, zw, 1, 1);
        Doubles const first = yx * yy;  // y y, x y
        Doubles const second = xy * xz; // x x, y z
        Doubles const diagonal{1, -0.0};
        Doubles const twice{-2, 2};
        Doubles const sums = xy * zz + (ww * Doubles{1, -1}) * yx;
        Doubles const differences = xx * zy - ww * yz;
        double const corner = second[0] + first[0];
        store(m, diagonal + twice * (first + zw * zz));
        store(m + 2, differences + differences);
        store(m + 4, diagonal + twice * (second + zw * zx));
        store(m + 6, sums + sums);
        m[8] = 1 - (corner + corner);
        m[9] = 0;
        store(m + 10, Doubles{0, 0});
        return;
    }
#endif
    m[0] = 1 - 2 * (y * y + z * z);
    m[1] = 2 * (x * y + w * z);
    m[2] = 2 * (x * z - w * y);
    m[3] = 2 * (x * y - w * z);
    m[4] = 1 - 2 * (x * x + z * z);
    m[5] = 2 * (y * z + w * x);
    m[6] = 2 * (x * z + w * y);
    m[7] = 2 * (y * z - w * x);
    m[8] = 1 - 2 * (x * x + y * y);
    m[9] = m[10] = m[11] = 0;
}

constexpr double dot(Quaternion const & a, Quaternion const & b) {
    return a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
}

// Whether each component differs by less than the tolerance.
constexpr bool equivalent(Quaternion const & a, Quaternion const & b, double tol) {
    Quaternion const d = a - b;
    return d.x < tol && -d.x < tol && d.y < tol && -d.y < tol && d.z < tol && -d.z < tol && d.w < tol && -d.w < tol;
}

// The rotation at the fraction t of the shorter way from a to b, at constant speed. Both have length 1.
QV_EXPORT Quaternion slerp(Quaternion const & a, Quaternion const & b, double t);

} // namespace qvLinear

#endif
