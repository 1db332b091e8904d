// A line in space with a unit direction.

#ifndef qvLinearLine_h
#define qvLinearLine_h

#include <iosfwd>

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

class ParamLine;

// Parameters along it are lengths. The direction is invalid when it was made from something too short.
class Line {
public:
    Line() = default;
    Line(Point const & newPoint, Normal const & newDirection) : point(newPoint), direction(newDirection) {}
    Line(Point const & newPoint, Vector const & newDirection) : point(newPoint), direction(newDirection) {}
    // From the first towards the second.
    Line(Point const & first, Point const & second) : point(first), direction(second - first) {}
    Line(ParamLine const & line);

    Point eval(double t) const { return point + t * direction; }

    operator Normal() const { return direction; }

    friend bool operator==(Line const & a, Line const & b) { return a.point == b.point && a.direction == b.direction; }
    friend Line operator+(Line const & line, Vector const & v) { return Line(line.point + v, line.direction); }
    friend Line operator-(Line const & line, Vector const & v) { return Line(line.point - v, line.direction); }
    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, Line const & line);

    Point point;
    Normal direction;
};

// Whether both are the same line, perhaps in opposite directions: within parallelTol, and epsilonTol from one to the
// other's point.
QV_EXPORT bool equivalent(Line const & a, Line const & b);

} // namespace qvLinear

#include "Base/Linear/qvLinearParamLine.h"

namespace qvLinear {

inline Line::Line(ParamLine const & line) : Line(line.point, line.vector) {}

} // namespace qvLinear

#endif
