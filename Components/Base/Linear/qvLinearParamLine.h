// A line in space with a vector of any length.

#ifndef qvLinearParamLine_h
#define qvLinearParamLine_h

#include <iosfwd>

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

// Parameter 0 is its point, 1 the end of its vector: the natural form of a segment.
class ParamLine {
public:
    ParamLine() = default;
    constexpr ParamLine(Point const & newPoint, Vector const & newVector) : point(newPoint), vector(newVector) {}
    constexpr ParamLine(Point const & first, Point const & second) : point(first), vector(second - first) {}

    constexpr Point eval(double t) const { return point + t * vector; }
    // The point of the line nearest to q, at a parameter of at least lo and at most hi.
    QV_EXPORT Point projectBounded(Point const & q, double lo, double hi) const;

    constexpr operator Vector() const { return vector; }
    operator Normal() const { return Normal(vector); }

    friend constexpr bool operator==(ParamLine const & a, ParamLine const & b) {
        return a.point == b.point && a.vector == b.vector;
    }
    friend constexpr ParamLine operator+(ParamLine const & line, Vector const & v) {
        return ParamLine(line.point + v, line.vector);
    }
    friend constexpr ParamLine operator-(ParamLine const & line, Vector const & v) {
        return ParamLine(line.point - v, line.vector);
    }
    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, ParamLine const & line);

    Point point;
    Vector vector;
};

} // namespace qvLinear

#endif
