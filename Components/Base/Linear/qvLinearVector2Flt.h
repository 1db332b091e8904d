// The single-precision twin of Vector2.

#ifndef qvLinearVector2Flt_h
#define qvLinearVector2Flt_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"
#include "Base/Linear/qvLinearTolerance.h"

namespace qvLinear {

class Point2Flt;
class PointFlt;
class Vector2;
class VectorFlt;

// Numbers of other types are rounded to float.
class Vector2Flt : public detail::VectorArithmetic<Vector2Flt, float, 2> {
public:
    static Vector2Flt const zero;
    static Vector2Flt const x;
    static Vector2Flt const y;

    Vector2Flt() = default;
    template <detail::Number X, detail::Number Y>
    constexpr Vector2Flt(X newX, Y newY) : x_(static_cast<float>(newX)), y_(static_cast<float>(newY)) {}
    template <detail::ArrayOfReals P>
    constexpr Vector2Flt(P numbers) : Vector2Flt(numbers[0], numbers[1]) {}
    constexpr Vector2Flt(Vector2 const & v);

    template <detail::Number X, detail::Number Y>
    constexpr void set(X newX, Y newY) {
        *this = Vector2Flt(newX, newY);
    }
    template <detail::ArrayOfReals P>
    constexpr void set(P numbers) {
        *this = Vector2Flt(numbers);
    }

    // Scales to length 1. A vector whose squared length is not above epsilon2TolFlt becomes zero, and the result is
    // false.
    bool normalize() { return normalizeWith(epsilon2TolFlt); }

    constexpr Point2Flt asPoint2Flt() const;
    constexpr PointFlt asPointFlt() const;
    constexpr VectorFlt asVectorFlt() const;

    friend std::ostream & operator<<(std::ostream & out, Vector2Flt const & v) {
        return detail::print(out, "Vector2Flt(", v, dimension);
    }

private:
    friend class detail::Components<Vector2Flt, float, 2>;
    constexpr float component(int i) const { return i == 0 ? x_ : y_; }

    float x_, y_;
};

inline constexpr Vector2Flt Vector2Flt::zero(0, 0);
inline constexpr Vector2Flt Vector2Flt::x(1, 0);
inline constexpr Vector2Flt Vector2Flt::y(0, 1);

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint2Flt.h"
#include "Base/Linear/qvLinearPointFlt.h"
#include "Base/Linear/qvLinearVector2.h"
#include "Base/Linear/qvLinearVectorFlt.h"

namespace qvLinear {

constexpr Vector2Flt::Vector2Flt(Vector2 const & v) : Vector2Flt(v[0], v[1]) {}
constexpr Point2Flt Vector2Flt::asPoint2Flt() const { return Point2Flt(x_, y_); }
constexpr PointFlt Vector2Flt::asPointFlt() const { return PointFlt(x_, y_, 0); }
constexpr VectorFlt Vector2Flt::asVectorFlt() const { return VectorFlt(x_, y_, 0); }

} // namespace qvLinear

#endif
