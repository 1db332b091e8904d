// The single-precision twin of Vector.

#ifndef qvLinearVectorFlt_h
#define qvLinearVectorFlt_h

#include <concepts>
#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"
#include "Base/Linear/qvLinearTolerance.h"

namespace qvLinear {

class Normal;
class PointFlt;
class Vector;
class Vector2Flt;

// Numbers of other types are rounded to float.
class VectorFlt : public detail::VectorArithmetic<VectorFlt, float, 3> {
public:
    static VectorFlt const zero;
    static VectorFlt const x;
    static VectorFlt const y;
    static VectorFlt const z;

    VectorFlt() = default;
    template <detail::Number X, detail::Number Y, detail::Number Z>
    constexpr VectorFlt(X newX, Y newY, Z newZ)
        : x_(static_cast<float>(newX)), y_(static_cast<float>(newY)), z_(static_cast<float>(newZ)) {}
    template <detail::ArrayOfReals P>
    constexpr VectorFlt(P numbers) : VectorFlt(numbers[0], numbers[1], numbers[2]) {}
    constexpr VectorFlt(Vector2Flt const & v); // z is 0
    constexpr VectorFlt(Vector const & v);
    template <std::same_as<Normal> N>
    constexpr VectorFlt(N const & n) : VectorFlt(n[0], n[1], n[2]) {}

    template <detail::Number X, detail::Number Y, detail::Number Z>
    constexpr void set(X newX, Y newY, Z newZ) {
        *this = VectorFlt(newX, newY, newZ);
    }
    template <detail::ArrayOfReals P>
    constexpr void set(P numbers) {
        *this = VectorFlt(numbers);
    }

    // Divides each component, unlike the operator / of two operands, which multiplies by the reciprocal.
    constexpr VectorFlt & operator/=(float s) { return *this = VectorFlt(x_ / s, y_ / s, z_ / s); }

    // Scales to length 1. A vector whose squared length is not above epsilon2TolFlt becomes zero, and the result is
    // false.
    bool normalize() { return normalizeWith(epsilon2TolFlt); }

    constexpr PointFlt asPointFlt() const;

    friend std::ostream & operator<<(std::ostream & out, VectorFlt const & v) {
        return detail::print(out, "VectorFlt(", v, dimension);
    }

private:
    friend class detail::Components<VectorFlt, float, 3>;
    constexpr float component(int i) const { return i == 0 ? x_ : i == 1 ? y_ : z_; }

    float x_, y_, z_;
};

inline constexpr VectorFlt VectorFlt::zero(0, 0, 0);
inline constexpr VectorFlt VectorFlt::x(1, 0, 0);
inline constexpr VectorFlt VectorFlt::y(0, 1, 0);
inline constexpr VectorFlt VectorFlt::z(0, 0, 1);

} // namespace qvLinear

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPointFlt.h"
#include "Base/Linear/qvLinearVector.h"
#include "Base/Linear/qvLinearVector2Flt.h"

namespace qvLinear {

constexpr VectorFlt::VectorFlt(Vector2Flt const & v) : VectorFlt(v[0], v[1], 0) {}
constexpr VectorFlt::VectorFlt(Vector const & v) : VectorFlt(v[0], v[1], v[2]) {}
constexpr PointFlt VectorFlt::asPointFlt() const { return PointFlt(x_, y_, z_); }

// The right-handed cross product.
template <std::same_as<VectorFlt> V>
constexpr V cross(V const & a, V const & b) {
    return V(a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]);
}

} // namespace qvLinear

#endif
