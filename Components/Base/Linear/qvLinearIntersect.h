// Intersections of lines, planes, segments, rays and ranges.

#ifndef qvLinearIntersect_h
#define qvLinearIntersect_h

#include "Base/Linear/qvLinearLine.h"
#include "Base/Linear/qvLinearParamLine.h"
#include "Base/Linear/qvLinearParamLine2.h"
#include "Base/Linear/qvLinearPlane.h"
#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearPoint2Flt.h"
#include "Base/Linear/qvLinearRange1d.h"
#include "Base/Linear/qvLinearRange2d.h"
#include "Base/Linear/qvLinearRange3d.h"
#include "Base/Linear/qvLinearVector2.h"
#include "Base/Linear/qvLinearVector2Flt.h"

namespace qvLinear {

// The point where a line meets a plane. ok is false, and the result the line's point, when the cosine of the angle
// between the line and the normal is below tol.
QV_EXPORT Point intersect(Line const & line, Plane const & plane, bool & ok, double tol);

// The line in which two planes meet. ok is false for parallel ones; the result is then the point and normal of a.
QV_EXPORT Line intersect(Plane const & a, Plane const & b, bool & ok);

// The point in which three planes meet. When ok is false it says nothing; it is the point of a if a and b are parallel.
QV_EXPORT Point intersect(Plane const & a, Plane const & b, Plane const & c, bool & ok);

// The point of b that is nearest to a: where they meet, unless they are skew. ok is false, and the result the point of
// a, when the squared sine of their angle is below tol.
QV_EXPORT Point intersect(Line const & a, Line const & b, bool & ok, double tol);

// The parameters between which a line lies in a box, of which one may be negative or above 1. Unbounded when it meets
// fewer than two faces: so a miss reads as unbounded, and only a bounded result is a hit. Through an unbounded range
// every line is unbounded, too: whoever may have one asks it first.
QV_EXPORT Range1d intersect(ParamLine const & line, Range3d const & range);

// The parameters at which two lines of the plane meet, and whether both are from 0 to 1. False, with parameters of 0,
// for parallel ones.
QV_EXPORT bool intersect(ParamLine2 const & a, ParamLine2 const & b, double & ta, double & tb, bool & inside);

// Whether three points lie on a line: two are equivalent at tol, or the one between the others is within tol, as a
// fraction of their distance, of the line through these.
QV_EXPORT bool areCollinear(Point const & a, Point const & b, Point const & c, double tol);

// How a segment lies to a rectangle, as far as the sides on which its ends are tell. It is inside an unbounded one.
enum segmentRangeIntersection {
    segmentOutside = 0,
    segmentInside = 1,
    segmentCrossesOnce = 2,
    segmentCrossesThrough = 3,
    segmentMayCross = 4 // it passes a corner, on either side of it
};
QV_EXPORT segmentRangeIntersection classifySegmentRangeIntersection(Range2d const & range, Point2 const & a,
                                                                    Point2 const & b);

/*
 * Whether the ray from origin along dir meets the segment from a to b. With `computed` set, t is where along the ray,
 * in lengths of dir, and s where along the segment, from 0 to 1 (for parallel lines that are distinct both are 0). It
 * is not set, and t and s stay as they were, when the ray overlaps the segment, when either has no length, and when the
 * segment lies behind on the same line only `computed` is. The tests use epsilonTol; tol is not used.
 */
QV_EXPORT bool doesRayIntersectLineSegment(Point2 const & origin, Vector2 const & dir, Point2 const & a,
                                           Point2 const & b, double & t, double & s, bool & computed, double tol);

/*
 * Whether the segments from a0 to a1 and from b0 to b1 meet. t is where on the first, -1 when they do not. `hasPoint`
 * tells whether the lines through them meet in one point, also when the segments do not reach it; segments that overlap
 * in more than a point have none, and t is then where the overlap begins. Ends count as reached within tol.
 */
QV_EXPORT bool doLineSegmentsIntersect(Point2 const & a0, Point2 const & a1, Point2 const & b0, Point2 const & b1,
                                       double & t, Point2 & point, bool & hasPoint, double tol);

// Whether a ray is in a rectangle anywhere between tMin and tMax, both excluded. An axis along which dir is below
// epsilonTol is not tested; y is, when both are.
QV_EXPORT bool doesRayIntersectRange2d(Point2 const & origin, Vector2 const & dir, Range2d const & range, double tMin,
                                       double tMax);

// Whether a triangle overlaps the box around a center with half the box's size to each side. Touching counts.
QV_EXPORT bool triangleBoxOverlap(Point2Flt const & center, Vector2Flt const & half, Point2Flt const & p0,
                                  Point2Flt const & p1, Point2Flt const & p2);

// The parameters at which a line meets a cylinder without ends, ascending, and their number, 0 to 2; a line that
// touches it gives 1. `t` has room for two and may be written in any case.
QV_EXPORT int intersectCylinder(Line const & line, Line const & axis, double radius, double * t);

} // namespace qvLinear

#endif
