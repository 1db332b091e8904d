// A position in space.

#ifndef qvLinearPoint_h
#define qvLinearPoint_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"

namespace qvLinear {

class HPoint;
class Point2;
class PointFlt;
class RPoint;
class Vector;

class Point : public detail::PointArithmetic<Point, double, 3, Vector> {
public:
    static Point const origin;

    Point() = default;
    constexpr Point(double newX, double newY, double newZ) : x(newX), y(newY), z(newZ) {}
    template <detail::ArrayOf<double> P>
    constexpr Point(P numbers) : Point(numbers[0], numbers[1], numbers[2]) {}
    constexpr Point(Point2 const & p); // z is 0
    constexpr Point(PointFlt const & p);
    constexpr Point(RPoint const & p); // drops the weight
    constexpr Point(HPoint const & p); // multiplies by 1 / w

    constexpr void set(double newX, double newY, double newZ) { *this = Point(newX, newY, newZ); }
    template <detail::ArrayOfReals P>
    constexpr void set(P numbers) {
        set(double{numbers[0]}, double{numbers[1]}, double{numbers[2]});
    }
    constexpr void set(Point2 const & p);

    constexpr Vector asVector() const;

    friend std::ostream & operator<<(std::ostream & out, Point const & p) {
        return detail::print(out, "Point(", p, dimension);
    }

    double x, y, z;

private:
    friend class detail::Components<Point, double, 3>;
    constexpr double component(int i) const { return i == 0 ? x : i == 1 ? y : z; }
};

inline constexpr Point Point::origin(0, 0, 0);

} // namespace qvLinear

#include "Base/Linear/qvLinearHPoint.h"
#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearPointFlt.h"
#include "Base/Linear/qvLinearRPoint.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

constexpr Point::Point(Point2 const & p) : Point(p.x, p.y, 0) {}
constexpr Point::Point(PointFlt const & p) : Point(double{p.x}, double{p.y}, double{p.z}) {}
constexpr Point::Point(RPoint const & p) : Point(p.x, p.y, p.z) {}
constexpr Point::Point(HPoint const & p) : Point(RPoint(p)) {}
constexpr Vector Point::asVector() const { return Vector(x, y, z); }
constexpr void Point::set(Point2 const & p) { *this = Point(p); }

} // namespace qvLinear

#endif
