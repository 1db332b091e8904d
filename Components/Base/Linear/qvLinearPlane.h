// A plane with a side that is above it.

#ifndef qvLinearPlane_h
#define qvLinearPlane_h

#include <iosfwd>

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

class ParamPlane;

class Plane {
public:
    Plane() = default;
    Plane(Point const & newPoint, Normal const & newNormal) : point(newPoint), normal(newNormal) {}
    // Through three points, which go counterclockwise when seen from above.
    Plane(Point const & a, Point const & b, Point const & c) : point(a), normal(cross(b - a, c - a)) {}
    Plane(Point const & newPoint, Vector const & u, Vector const & v) : point(newPoint), normal(cross(u, v)) {}
    Plane(ParamPlane const & plane);

    bool isValid() const { return normal.isValid(); }
    // The constant D of the plane's equation: normal . q + D is 0 for the points q of the plane.
    double calculateD() const { return -dot(normal, point.asVector()); }
    // How far q is above the plane; negative below it.
    double eval(Point const & q) const { return dot(q - point, normal); }

    operator Normal() const { return normal; }

    friend bool operator==(Plane const & a, Plane const & b) { return a.point == b.point && a.normal == b.normal; }
    friend Plane operator+(Plane const & plane, Vector const & v) { return Plane(plane.point + v, plane.normal); }
    friend Plane operator-(Plane const & plane, Vector const & v) { return Plane(plane.point - v, plane.normal); }
    // The same plane, seen from its other side.
    friend Plane operator-(Plane const & plane) { return Plane(plane.point, -plane.normal); }
    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, Plane const & plane);

    Point point;
    Normal normal;
};

// Whether both are the same plane, perhaps seen from opposite sides: within parallelTol, and epsilonTol from one to the
// other's point.
QV_EXPORT bool equivalent(Plane const & a, Plane const & b);

// Whether the point is above the plane, or at most tol below it.
inline bool isAbove(Point const & point, Plane const & plane, double tol) { return plane.eval(point) >= -tol; }

} // namespace qvLinear

#include "Base/Linear/qvLinearParamPlane.h"

namespace qvLinear {

inline Plane::Plane(ParamPlane const & plane) : Plane(plane.point, plane.normal) {}

} // namespace qvLinear

#endif
