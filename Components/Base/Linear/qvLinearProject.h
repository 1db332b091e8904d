// Projections of points, vectors and lines, and distances.

#ifndef qvLinearProject_h
#define qvLinearProject_h

#include "Base/Linear/qvLinearLine.h"
#include "Base/Linear/qvLinearParamLine.h"
#include "Base/Linear/qvLinearParamLine2.h"
#include "Base/Linear/qvLinearParamPlane.h"
#include "Base/Linear/qvLinearPlane.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>

namespace qvLinear {

// How far v goes along the direction.
inline double projectMagnitude(Vector const & v, Normal const & n) { return dot(v, n); }
inline double projectParam(Vector const & v, Normal const & n) { return dot(v, n); }
// How far v goes along w, in lengths of w; 0 for a w shorter than epsilonTol.
inline double projectParam(Vector const & v, Vector const & w) {
    return w.length() < epsilonTol ? 0 : dot(v, w) / w.length2();
}
inline double projectParam(Vector2 const & v, Vector2 const & w) {
    return w.length() < epsilonTol ? 0 : dot(v, w) / w.length2();
}
// The parameter of the foot of the perpendicular from q.
inline double projectParam(Point const & q, Line const & line) { return dot(q - line.point, line.direction); }
inline double projectParam(Point const & q, ParamLine const & line) {
    return projectParam(q - line.point, line.vector);
}
inline double projectParam(Point2 const & q, ParamLine2 const & line) {
    return projectParam(q - line.point, line.vector);
}
// The projections on u and on v, which are the coordinates in the plane as long as these two are perpendicular.
inline Point2 projectParam(Point const & q, ParamPlane const & plane) {
    return Point2(projectParam(q - plane.point, plane.u), projectParam(q - plane.point, plane.v));
}

// The part of v along the direction, and its part in the plane.
inline Vector project(Vector const & v, Normal const & n) { return dot(v, n) * n; }
inline Vector project(Vector const & v, Plane const & plane) { return v - project(v, plane.normal); }

// The foot of the perpendicular from q, with its parameter.
inline Point project(Point const & q, Line const & line, double & t) {
    t = projectParam(q, line);
    return line.eval(t);
}
inline Point project(Point const & q, Line const & line) { return line.eval(projectParam(q, line)); }
inline Point project(Point const & q, ParamLine const & line, double & t) {
    t = projectParam(q, line);
    return line.eval(t);
}
inline Point2 project(Point2 const & q, ParamLine2 const & line, double & t) {
    t = projectParam(q, line);
    return line.eval(t);
}
inline Point project(Point const & q, Plane const & plane) { return q - plane.eval(q) * plane.normal; }
inline Point project(Point const & q, ParamPlane const & plane, Point2 & at) {
    at = projectParam(q, plane);
    return plane.eval(at);
}
// ok is false for a line perpendicular to the plane, whose projection has no direction.
inline Line project(Line const & line, Plane const & plane, bool & ok) {
    Normal const direction(project(line.direction.asVector(), plane));
    ok = direction.isValid();
    return Line(project(line.point, plane), direction);
}

inline double distance(Point const & q, Plane const & plane) { return std::fabs(plane.eval(q)); }
inline double distance(Point const & q, Line const & line) {
    Vector const offset = q - line.point;
    return (offset - project(offset, line.direction)).length();
}

} // namespace qvLinear

#endif
