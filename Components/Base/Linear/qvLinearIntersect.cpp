#include "Base/Linear/qvLinearIntersect.h"

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearNumeric.h"
#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace qvLinear {

Point intersect(Line const & line, Plane const & plane, bool & ok, double tol) {
    double const den = dot(plane.normal, line.direction);
    ok = std::fabs(den) >= tol;
    if (!ok)
        return line.point;
    return line.eval(-(plane.calculateD() + dot(plane.normal, line.point.asVector())) / den);
}

Line intersect(Plane const & a, Plane const & b, bool & ok) {
    Normal const direction(cross(a.normal, b.normal));
    ok = direction.isValid();
    if (!ok)
        return Line(a.point, a.normal);
    Normal const towardsA(project(a.normal.asVector(), b));
    bool meets;
    return Line(intersect(Line(b.point, towardsA), a, meets, epsilon2Tol), direction);
}

Point intersect(Plane const & a, Plane const & b, Plane const & c, bool & ok) {
    Line const line = intersect(a, b, ok);
    return ok ? intersect(line, c, ok, perpendicular2Tol) : a.point;
}

Point intersect(Line const & a, Line const & b, bool & ok, double tol) {
    Vector const c = cross(a.direction, b.direction);
    ok = c.length2() >= tol;
    if (!ok)
        return a.point;
    // It contains a and is met by b. That it does so at a slant of less than tol is no matter any more.
    Plane const plane(a.point, Normal(cross(c, a.direction)));
    bool meets;
    return intersect(b, plane, meets, 0);
}

Range1d intersect(ParamLine const & line, Range3d const & range) {
    Range1d hits;
    hits.setUnbounded();
    if (range.isUnbounded())
        return hits;
    struct Faces {
        Normal normal;
        int others[2]; // the axes in which a face has its ends
    };
    static constexpr Faces all[] = {{Normal::z, {0, 1}}, {Normal::x, {1, 2}}, {Normal::y, {2, 0}}};
    Line const unit(line);
    int count = 0;
    for (auto const & [normal, others] : all) {
        double const den = dot(normal, unit.direction);
        if (!(std::fabs(den) >= perpendicular2Tol))
            continue;
        double const along = dot(normal, unit.point.asVector());
        for (Point const & corner : {range.min(), range.max()}) {
            Point const p = unit.eval(-(-dot(normal, corner.asVector()) + along) / den);
            bool const onFace = std::all_of(others, others + 2, [&](int i) {
                return detail::axisContains(range.min()[i], range.max()[i], p[i], epsilonTol);
            });
            if (!onFace)
                continue;
            double const t = projectParam(p, line);
            if (count++ == 0)
                hits.set(t);
            else
                hits.include(t);
        }
    }
    if (count < 2)
        hits.setUnbounded();
    return hits;
}

bool intersect(ParamLine2 const & a, ParamLine2 const & b, double & ta, double & tb, bool & inside) {
    Vector2 const & u = a.vector;
    Vector2 const & v = b.vector;
    double const den = u[0] * v[1] - v[0] * u[1];
    if (std::fabs(den) < epsilonTol) {
        ta = tb = 0;
        inside = false;
        return false;
    }
    Vector2 const w = a.point - b.point;
    ta = (v[0] * w[1] - v[1] * w[0]) / den;
    tb = (u[0] * w[1] - u[1] * w[0]) / den;
    inside = 0 <= ta && ta <= 1 && 0 <= tb && tb <= 1;
    return true;
}

bool areCollinear(Point const & a, Point const & b, Point const & c, double tol) {
    if (equivalent(a, b, tol) || equivalent(a, c, tol) || equivalent(b, c, tol))
        return true;
    struct Pair {
        Point const & p;
        Point const & q;
        Point const & third;
    } const pairs[] = {{a, b, c}, {a, c, b}, {b, c, a}};
    Pair const & longest = *std::max_element(std::begin(pairs), std::end(pairs), [](Pair const & s, Pair const & t) {
        return distance2(s.p, s.q) < distance2(t.p, t.q);
    });
    double const length2 = distance2(longest.p, longest.q);
    Vector const r = longest.third - combine(longest.p, longest.q);
    Vector const d = longest.q - longest.p;
    double const along = dot(d, r);
    return length2 * r.length2() <= tol * length2 * (tol * length2) + along * along;
}

namespace {

// Beyond which sides of the range a point lies.
enum Outcode { below = 1, above = 2, left = 4, right = 8 };

int outcodeOf(Range2d const & range, Point2 const & p) {
    int const inX = p.x < range.min().x ? below : p.x > range.max().x ? above : 0;
    int const inY = p.y < range.min().y ? left : p.y > range.max().y ? right : 0;
    return inX | inY;
}

} // namespace

segmentRangeIntersection classifySegmentRangeIntersection(Range2d const & range, Point2 const & a, Point2 const & b) {
    if (range.isUnbounded())
        return segmentInside;
    int const codeA = outcodeOf(range, a);
    int const codeB = outcodeOf(range, b);
    if (codeA & codeB)
        return segmentOutside;
    if (codeA == 0 && codeB == 0)
        return segmentInside;
    if (codeA == 0 || codeB == 0)
        return segmentCrossesOnce;
    int const both = codeA | codeB;
    return both == (below | above) || both == (left | right) ? segmentCrossesThrough : segmentMayCross;
}

bool doesRayIntersectLineSegment(Point2 const & origin, Vector2 const & dir, Point2 const & a, Point2 const & b,
                                 double & t, double & s, bool & computed, double) {
    computed = false;
    if (dir.length() < epsilonTol || equivalent(a, b, epsilonTol))
        return false;
    auto const settle = [&](double newT, double newS) {
        t = newT;
        s = newS;
        computed = true;
    };
    Vector2 const e = b - a;
    Vector2 const w = origin - a;
    double const den = e[1] * dir[0] - e[0] * dir[1];
    double const offset = e[0] * w[1] - e[1] * w[0];
    if (std::fabs(den) >= epsilonTol) {
        settle(offset / den, (dir[0] * w[1] - dir[1] * w[0]) / den);
        return t >= 0 && 0 <= s && s <= 1;
    }
    if (std::fabs(offset) >= epsilonTol) {
        settle(0, 0);
        return false;
    }
    ParamLine2 const ray(origin, dir);
    double const pa = projectParam(a, ray);
    double const pb = projectParam(b, ray);
    if (std::fabs(pa) < epsilonTol && pb < 0) {
        settle(0, 0);
        return true;
    }
    if (std::fabs(pb) < epsilonTol && pa < 0) {
        settle(0, 1);
        return true;
    }
    if (pa < 0 && pb < 0) {
        computed = true;
        return false;
    }
    return true;
}

namespace {

// A segment of the plane as lines in space.
struct Segment {
    Point from, to;
    ParamLine param;
    Line line;

    Segment(Point2 const & p, Point2 const & q) : from(p), to(q), param(from, to), line(param) {}

    // Whether a point of the line is on the segment. An end counts as long as the point is within tol of it.
    bool reaches(Point const & p, double t, double tol) const {
        if (t < 0 && equivalent(p, from, tol))
            return true;
        if (t > 1 && equivalent(p, to, tol))
            return true;
        return 0 <= t && t <= 1;
    }
};

// For segments on one line. The point is what they have in common if that is no more than one.
bool doCollinearSegmentsMeet(Segment const & a, Point const & b0, Point const & b1, double & t, Point2 & point,
                             bool & hasPoint, double tol) {
    Range1d onA(projectParam(b0, a.param));
    onA.include(projectParam(b1, a.param));
    if (onA.max() < 0 || onA.min() > 1)
        return false;
    double const lo = std::max(0.0, onA.min());
    double const hi = std::min(1.0, onA.max());
    t = lo;
    Point const first = a.param.eval(lo);
    if (hi - lo < 0.001 && equivalent(first, a.param.eval(hi), tol)) {
        hasPoint = true;
        point = Point2(first.x, first.y);
    }
    return true;
}

} // namespace

bool doLineSegmentsIntersect(Point2 const & a0, Point2 const & a1, Point2 const & b0, Point2 const & b1, double & t,
                             Point2 & point, bool & hasPoint, double tol) {
    t = -1;
    hasPoint = false;
    Segment const a(a0, a1);
    Segment const b(b0, b1);
    if (!a.line.direction.isValid() || !b.line.direction.isValid())
        return false;
    auto const isOnA = [&](Point const & p) { return distance2(p, project(p, a.line)) < tol * tol; };
    if (isOnA(b0) && isOnA(b1))
        return doCollinearSegmentsMeet(a, b0, b1, t, point, hasPoint, tol);
    Point const p = intersect(a.line, b.line, hasPoint, perpendicular2Tol);
    if (!hasPoint)
        return false;
    point = Point2(p.x, p.y);
    double const ta = projectParam(p, a.param);
    double const tb = projectParam(p, b.param);
    if (!a.reaches(p, ta, tol) || !b.reaches(p, tb, tol))
        return false;
    t = ta;
    return true;
}

namespace {

// The parameters between which a ray is between two values of one coordinate.
struct Slab {
    double near, far;

    Slab(double origin, double direction, double lo, double hi) {
        double const inverse = 1 / direction;
        near = (lo - origin) * inverse;
        far = (hi - origin) * inverse;
        if (inverse < 0)
            std::swap(near, far);
    }
};

} // namespace

bool doesRayIntersectRange2d(Point2 const & origin, Vector2 const & dir, Range2d const & range, double tMin,
                             double tMax) {
    if (range.isUnbounded())
        return true;
    Point2 const & lo = range.min();
    Point2 const & hi = range.max();
    bool const hasX = std::fabs(dir[0]) >= epsilonTol;
    bool const hasY = std::fabs(dir[1]) >= epsilonTol;
    Slab slab = hasX ? Slab(origin.x, dir[0], lo.x, hi.x) : Slab(origin.y, dir[1], lo.y, hi.y);
    if (hasX && hasY) {
        Slab const other(origin.y, dir[1], lo.y, hi.y);
        if (slab.near > other.far || other.near > slab.far)
            return false;
        slab.near = std::max(slab.near, other.near);
        slab.far = std::min(slab.far, other.far);
    }
    return slab.near < tMax && slab.far > tMin;
}

bool triangleBoxOverlap(Point2Flt const & center, Vector2Flt const & half, Point2Flt const & p0, Point2Flt const & p1,
                        Point2Flt const & p2) {
    Vector2Flt const v[3] = {p0 - center, p1 - center, p2 - center};
    for (int axis = 0; axis < 2; ++axis) {
        auto const [least, greatest] = std::minmax({v[0][axis], v[1][axis], v[2][axis]});
        if (least > half[axis] || greatest < -half[axis])
            return false;
    }
    Vector2Flt const edges[3] = {p1 - p0, p2 - p1, p0 - p2};
    for (int i = 0; i < 3; ++i) {
        Vector2Flt const & e = edges[i];
        auto const onNormal = [&](Vector2Flt const & vertex) { return e[1] * vertex[0] - e[0] * vertex[1]; };
        auto const [least, greatest] = std::minmax({onNormal(v[i]), onNormal(v[(i + 2) % 3])});
        float const radius = std::fabs(e[1]) * half[0] + std::fabs(e[0]) * half[1];
        if (least > radius || greatest < -radius)
            return false;
    }
    return true;
}

int intersectCylinder(Line const & line, Line const & axis, double radius, double * t) {
    AffineMatrix toAxis;
    toAxis.identity().rotate(axis.direction, Normal::z).translate(-axis.point.asVector());
    auto const [p, d] = line * toAxis;
    int const roots = solveQuadratic(d[0] * d[0] + d[1] * d[1], 2 * (p.x * d[0] + p.y * d[1]),
                                     p.x * p.x + p.y * p.y - radius * radius, t);
    if (roots != 2)
        return 0;
    return std::fabs(t[0] - t[1]) < epsilonTol ? 1 : 2;
}

} // namespace qvLinear
