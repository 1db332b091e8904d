// A direction.

#ifndef qvLinearNormal_h
#define qvLinearNormal_h

#include <cmath>
#include <concepts>
#include <iosfwd>

#include "Base/Linear/qvLinearComponents.h"
#include "Base/Linear/qvLinearPromise.h"
#include "Base/Linear/qvLinearTolerance.h"

namespace qvLinear {

class Point;
class Vector;
class Vector2;
class VectorFlt;

/*
 * A vector of length 1, or none at all: what is too short to have a direction gives an invalid normal, with three
 * zeros. Whoever builds one from numbers that might be too short asks isValid.
 *
 *     Normal n(cross(a, b));
 *     if (!n.isValid())
 *         ... // a and b are parallel
 *
 * It goes wherever a Vector is wanted, and its arithmetic gives vectors.
 */
class Normal : public detail::Components<Normal, double, 3, detail::Access::readOnly> {
public:
    static Normal const x;
    static Normal const y;
    static Normal const z;

    Normal() = default;
    // These normalise: invalid when the squared length is not above epsilon2Tol, or a NaN.
    Normal(double newX, double newY, double newZ) {
        double const length2 = newX * newX + newY * newY + newZ * newZ;
        if (length2 > epsilon2Tol) {
            double const scale = 1 / std::sqrt(length2);
            x_ = newX * scale;
            y_ = newY * scale;
            z_ = newZ * scale;
            valid_ = true;
        } else {
            setInvalid();
        }
    }
    template <detail::ArrayOf<double> P>
    Normal(P numbers) : Normal(numbers[0], numbers[1], numbers[2]) {}
    template <std::same_as<Vector> V>
    Normal(V const & v) : Normal(v[0], v[1], v[2]) {}
    explicit Normal(Vector2 const & v);
    explicit Normal(VectorFlt const & v);
    // These take the numbers as they are.
    constexpr Normal(Promise, double newX, double newY, double newZ) : x_(newX), y_(newY), z_(newZ), valid_(true) {}
    template <detail::ArrayOf<double> P>
    constexpr Normal(Promise promise, P numbers) : Normal(promise, numbers[0], numbers[1], numbers[2]) {}
    template <std::same_as<Vector> V>
    constexpr Normal(Promise promise, V const & v) : Normal(promise, v[0], v[1], v[2]) {}

    template <std::same_as<Vector> V>
    Normal & operator=(V const & v) {
        return *this = Normal(v);
    }

    void set(double newX, double newY, double newZ) { *this = Normal(newX, newY, newZ); }
    template <detail::ArrayOf<double> P>
    void set(P numbers) {
        *this = Normal(numbers);
    }
    constexpr void set(Promise promise, double newX, double newY, double newZ) {
        *this = Normal(promise, newX, newY, newZ);
    }
    template <detail::ArrayOf<double> P>
    constexpr void set(Promise promise, P numbers) {
        *this = Normal(promise, numbers);
    }
    template <std::same_as<Vector> V>
    constexpr void set(Promise promise, V const & v) {
        *this = Normal(promise, v);
    }

    constexpr bool isValid() const { return valid_; }
    constexpr void setInvalid() {
        x_ = y_ = z_ = 0;
        valid_ = false;
    }
    // Turns about; an invalid one stays so.
    constexpr void reverse() {
        x_ *= -1;
        y_ *= -1;
        z_ *= -1;
    }

    constexpr Vector asVector() const;
    constexpr Point asPoint() const;
    // A vector, not of length 1, perpendicular to this.
    Vector orthogonalVector() const;

    friend constexpr Normal operator-(Normal n) {
        n.reverse();
        return n;
    }
    friend std::ostream & operator<<(std::ostream & out, Normal const & n) {
        return detail::print(out, "Normal(", n, dimension);
    }

private:
    friend class detail::Components<Normal, double, 3, detail::Access::readOnly>;
    constexpr double component(int i) const { return i == 0 ? x_ : i == 1 ? y_ : z_; }

    double x_, y_, z_;
    bool valid_;
};

inline constexpr Normal Normal::x(Promise(), 1, 0, 0);
inline constexpr Normal Normal::y(Promise(), 0, 1, 0);
inline constexpr Normal Normal::z(Promise(), 0, 0, 1);

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"
#include "Base/Linear/qvLinearVector2.h"
#include "Base/Linear/qvLinearVectorFlt.h"

namespace qvLinear {

inline Normal::Normal(Vector2 const & v) : Normal(Vector(v)) {}
inline Normal::Normal(VectorFlt const & v) : Normal(Vector(v)) {}
constexpr Vector Normal::asVector() const { return Vector(x_, y_, z_); }
constexpr Point Normal::asPoint() const { return Point(x_, y_, z_); }
inline Vector Normal::orthogonalVector() const { return asVector().orthogonalVector(); }

namespace detail {

// What has a direction in space. These operations take it as it is, and nothing that converts to it, so that they never
// compete with those of other vectors.
template <class V>
concept Direction = std::same_as<V, Vector> || std::same_as<V, Normal>;

template <class A, class B>
concept DirectionAndNormal = Direction<A> && Direction<B> &&(std::same_as<A, Normal> || std::same_as<B, Normal>);

} // namespace detail

template <std::same_as<Normal> N>
constexpr bool operator==(Vector const & v, N const & n) {
    return v == n.asVector();
}

template <class A, class B>
constexpr Vector operator+(A const & a, B const & b) requires detail::DirectionAndNormal<A, B> {
    return Vector(a) + Vector(b);
}
template <class A, class B>
constexpr Vector operator-(A const & a, B const & b) requires detail::DirectionAndNormal<A, B> {
    return Vector(a) - Vector(b);
}
template <std::same_as<Normal> N>
constexpr Vector operator*(N const & n, double s) {
    return n.asVector() * s;
}
template <std::same_as<Normal> N>
constexpr Vector operator*(double s, N const & n) {
    return n.asVector() * s;
}
template <std::same_as<Normal> N>
constexpr Vector operator/(N const & n, double s) {
    return n.asVector() / s;
}

template <class A, class B>
constexpr double dot(A const & a, B const & b) requires detail::DirectionAndNormal<A, B> {
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

// The right-handed cross product.
template <detail::Direction A, detail::Direction B>
constexpr Vector cross(A const & a, B const & b) {
    return Vector(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
}

// The weighted sum of two directions.
template <std::same_as<Normal> N>
constexpr Vector combine(double weightA, N const & a, double weightB, N const & b) {
    return combine(weightA, a.asVector(), weightB, b.asVector());
}

} // namespace qvLinear

#endif
