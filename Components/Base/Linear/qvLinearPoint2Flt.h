// The single-precision twin of Point2.

#ifndef qvLinearPoint2Flt_h
#define qvLinearPoint2Flt_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"

namespace qvLinear {

class Point2;
class PointFlt;
class Vector2Flt;
class VectorFlt;

// Numbers of other types are rounded to float.
class Point2Flt : public detail::PointArithmetic<Point2Flt, float, 2, Vector2Flt> {
public:
    static Point2Flt const origin;

    Point2Flt() = default;
    template <detail::Number X, detail::Number Y>
    constexpr Point2Flt(X newX, Y newY) : x(static_cast<float>(newX)), y(static_cast<float>(newY)) {}
    template <detail::ArrayOfReals P>
    constexpr Point2Flt(P numbers) : Point2Flt(numbers[0], numbers[1]) {}
    constexpr Point2Flt(Point2 const & p);

    template <detail::Number X, detail::Number Y>
    constexpr void set(X newX, Y newY) {
        *this = Point2Flt(newX, newY);
    }
    template <detail::ArrayOfReals P>
    constexpr void set(P numbers) {
        *this = Point2Flt(numbers);
    }

    constexpr Vector2Flt asVector2Flt() const;
    constexpr VectorFlt asVectorFlt() const;
    constexpr PointFlt asPointFlt() const;

    friend std::ostream & operator<<(std::ostream & out, Point2Flt const & p) {
        return detail::print(out, "Point2Flt(", p, dimension);
    }

    float x, y;

private:
    friend class detail::Components<Point2Flt, float, 2>;
    constexpr float component(int i) const { return i == 0 ? x : y; }
};

inline constexpr Point2Flt Point2Flt::origin(0, 0);

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearPointFlt.h"
#include "Base/Linear/qvLinearVector2Flt.h"
#include "Base/Linear/qvLinearVectorFlt.h"

namespace qvLinear {

constexpr Point2Flt::Point2Flt(Point2 const & p) : Point2Flt(p.x, p.y) {}
constexpr Vector2Flt Point2Flt::asVector2Flt() const { return Vector2Flt(x, y); }
constexpr VectorFlt Point2Flt::asVectorFlt() const { return VectorFlt(x, y, 0); }
constexpr PointFlt Point2Flt::asPointFlt() const { return PointFlt(x, y, 0); }

} // namespace qvLinear

#endif
