// A line in the plane with a vector of any length.

#ifndef qvLinearParamLine2_h
#define qvLinearParamLine2_h

#include <iosfwd>

#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearVector2.h"

namespace qvLinear {

// Parameter 0 is its point, 1 the end of its vector.
class ParamLine2 {
public:
    ParamLine2() = default;
    constexpr ParamLine2(Point2 const & newPoint, Vector2 const & newVector) : point(newPoint), vector(newVector) {}
    constexpr ParamLine2(Point2 const & first, Point2 const & second) : point(first), vector(second - first) {}

    constexpr Point2 eval(double t) const { return point + t * vector; }
    // The point of the line nearest to q, at a parameter of at least lo and at most hi.
    QV_EXPORT Point2 projectBounded(Point2 const & q, double lo, double hi) const;

    constexpr operator Vector2() const { return vector; }

    friend constexpr bool operator==(ParamLine2 const & a, ParamLine2 const & b) {
        return a.point == b.point && a.vector == b.vector;
    }
    friend constexpr ParamLine2 operator+(ParamLine2 const & line, Vector2 const & v) {
        return ParamLine2(line.point + v, line.vector);
    }
    friend constexpr ParamLine2 operator-(ParamLine2 const & line, Vector2 const & v) {
        return ParamLine2(line.point - v, line.vector);
    }
    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, ParamLine2 const & line);

    Point2 point;
    Vector2 vector;
};

} // namespace qvLinear

#endif
