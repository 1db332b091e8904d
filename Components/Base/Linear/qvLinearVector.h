// A displacement in space.

#ifndef qvLinearVector_h
#define qvLinearVector_h

#include <concepts>
#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"

namespace qvLinear {

class Normal;
class Point;
class Vector2;
class VectorFlt;

/*
 * Has length and direction. A position is a Point, and a direction of length 1 a Normal, which converts to this.
 *
 * All values of this family are plain: they have the size of their fields, are copied by value, and are left as they
 * are by the default constructor. They convert to a pointer to their first component where an array is wanted.
 *
 * Results have the bits of the formulas, from the left, one rounding for each operation. Where the compiler may fuse a
 * product and a sum (g++ for processors that can), -ffp-contract=off keeps inline code to that, too.
 *
 *     Vector v(1, 2, 3);
 *     double z = v[2];
 *     v.set(z, 0, 0);
 */
class Vector : public detail::VectorArithmetic<Vector, double, 3> {
public:
    static Vector const zero;
    static Vector const x;
    static Vector const y;
    static Vector const z;

    Vector() = default;
    constexpr Vector(double newX, double newY, double newZ) : x_(newX), y_(newY), z_(newZ) {}
    template <detail::ArrayOf<double> P>
    constexpr Vector(P numbers) : Vector(numbers[0], numbers[1], numbers[2]) {}
    constexpr Vector(Vector2 const & v); // z is 0
    constexpr Vector(VectorFlt const & v);
    // From a Normal itself: what has both a vector and a direction to offer gives the vector.
    template <std::same_as<Normal> N>
    constexpr Vector(N const & n) : Vector(n[0], n[1], n[2]) {}

    constexpr void set(double newX, double newY, double newZ) { *this = Vector(newX, newY, newZ); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = Vector(numbers);
    }
    constexpr void set(Vector2 const & v);

    // Scales to length 1. A vector whose squared length is not above epsilon2Tol becomes zero, and the result is false.
    bool normalize();
    Normal normalized() const;
    // A vector perpendicular to this one; zero for the zero vector.
    QV_EXPORT Vector orthogonalVector() const;

    constexpr Point asPoint() const;

    friend std::ostream & operator<<(std::ostream & out, Vector const & v) {
        return detail::print(out, "Vector(", v, dimension);
    }

private:
    friend class detail::Components<Vector, double, 3>;
    constexpr double component(int i) const { return i == 0 ? x_ : i == 1 ? y_ : z_; }

    double x_, y_, z_;
};

inline constexpr Vector Vector::zero(0, 0, 0);
inline constexpr Vector Vector::x(1, 0, 0);
inline constexpr Vector Vector::y(0, 1, 0);
inline constexpr Vector Vector::z(0, 0, 1);

} // namespace qvLinear

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector2.h"
#include "Base/Linear/qvLinearVectorFlt.h"

namespace qvLinear {

constexpr Vector::Vector(Vector2 const & v) : Vector(v[0], v[1], 0) {}
constexpr Vector::Vector(VectorFlt const & v) : Vector(double{v[0]}, double{v[1]}, double{v[2]}) {}
constexpr void Vector::set(Vector2 const & v) { *this = Vector(v); }
constexpr Point Vector::asPoint() const { return Point(x_, y_, z_); }
inline Normal Vector::normalized() const { return Normal(*this); }
inline bool Vector::normalize() {
    Normal const n(*this);
    *this = n;
    return n.isValid();
}

} // namespace qvLinear

#endif
