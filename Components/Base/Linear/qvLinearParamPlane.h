// A plane with coordinates in it.

#ifndef qvLinearParamPlane_h
#define qvLinearParamPlane_h

#include <iosfwd>

#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

// The constructors make u and v perpendicular; whoever changes them calls orthogonalize. Where u and v are parallel, or
// three points lie on a line, the normal is invalid and v is zero, or NaN when it should keep a length.
class ParamPlane {
public:
    ParamPlane() = default;
    ParamPlane(Point const & newPoint, Normal const & newNormal, Vector const & newU, Vector const & newV,
               bool keepLength)
        : point(newPoint), normal(newNormal), u(newU), v(newV) {
        orthogonalize(keepLength);
    }
    // The normal is that of the cross product of u and v.
    ParamPlane(Point const & newPoint, Vector const & newU, Vector const & newV, bool keepLength)
        : ParamPlane(newPoint, Normal(cross(newU, newV)), newU, newV, keepLength) {}
    // u goes from a to b, v as long as u and towards c.
    ParamPlane(Point const & a, Point const & b, Point const & c) : ParamPlane(a, b - a, c - a, true) {}

    constexpr Point eval(double s, double t) const { return point + s * u + t * v; }
    constexpr Point eval(Point2 const & p) const { return eval(p.x, p.y); }

    // Replaces v by its projection on the direction perpendicular to the normal and u; with keepLength it gets the
    // length of u.
    QV_EXPORT void orthogonalize(bool keepLength);

    operator Normal() const { return normal; }

    friend bool operator==(ParamPlane const & a, ParamPlane const & b) {
        return a.point == b.point && a.normal == b.normal && a.u == b.u && a.v == b.v;
    }
    friend ParamPlane operator+(ParamPlane plane, Vector const & offset) {
        plane.point += offset;
        return plane;
    }
    friend ParamPlane operator-(ParamPlane plane, Vector const & offset) {
        plane.point -= offset;
        return plane;
    }
    // The same with the normal turned about; u and v stay.
    friend ParamPlane operator-(ParamPlane plane) {
        plane.normal.reverse();
        return plane;
    }
    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, ParamPlane const & plane);

    Point point;
    Normal normal;
    Vector u;
    Vector v;
};

// Whether the normals are parallel, perhaps opposite, within parallelTol, and everything else within epsilonTol.
QV_EXPORT bool equivalent(ParamPlane const & a, ParamPlane const & b);

} // namespace qvLinear

#endif
