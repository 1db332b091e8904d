// A position in the plane.

#ifndef qvLinearPoint2_h
#define qvLinearPoint2_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"

namespace qvLinear {

class Point;
class Vector;
class Vector2;

class Point2 : public detail::PointArithmetic<Point2, double, 2, Vector2> {
public:
    static Point2 const origin;

    Point2() = default;
    constexpr Point2(double newX, double newY) : x(newX), y(newY) {}
    template <detail::ArrayOf<double> P>
    constexpr Point2(P numbers) : Point2(numbers[0], numbers[1]) {}

    constexpr void set(double newX, double newY) { *this = Point2(newX, newY); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = Point2(numbers);
    }

    constexpr Vector2 asVector2() const;
    constexpr Vector asVector() const;
    constexpr Point asPoint() const;

    friend std::ostream & operator<<(std::ostream & out, Point2 const & p) {
        return detail::print(out, "Point2(", p, dimension);
    }

    double x, y;

private:
    friend class detail::Components<Point2, double, 2>;
    constexpr double component(int i) const { return i == 0 ? x : y; }
};

inline constexpr Point2 Point2::origin(0, 0);

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"
#include "Base/Linear/qvLinearVector2.h"

namespace qvLinear {

constexpr Vector2 Point2::asVector2() const { return Vector2(x, y); }
constexpr Vector Point2::asVector() const { return Vector(x, y, 0); }
constexpr Point Point2::asPoint() const { return Point(x, y, 0); }

} // namespace qvLinear

#endif
