#include "LinearSupport.h"

#include "Base/Linear/qvLinearIntersect.h"
#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

using namespace qvLinear;
using namespace qvTest;

constexpr int rounds = 2000;

TEST(Project, FeetArePerpendicular) {
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        Point const q = random.point();
        Line const line(random.point(), random.normal());
        ParamLine const param(random.point(), random.vector());
        Plane const plane(random.point(), random.normal());
        double t = 0;
        EXPECT_NEAR(dot(q - project(q, line, t), line.direction), 0, 1e-12);
        EXPECT_EQ(project(q, line), line.eval(t));
        EXPECT_NEAR((q - project(q, line)).length(), distance(q, line), 1e-12);
        EXPECT_NEAR(dot(q - project(q, param, t), param.vector), 0, 1e-11);
        EXPECT_EQ(param.projectBounded(q, -0.5, 0.5), param.eval(std::clamp(t, -0.5, 0.5)));
        Point const foot = project(q, plane);
        EXPECT_NEAR(plane.eval(foot), 0, 1e-12);
        EXPECT_NEAR(cross(q - foot, plane.normal).length(), 0, 1e-11);
        EXPECT_NEAR(distance(q, plane), distance(q, foot), 1e-12);
        EXPECT_NEAR(plane.calculateD() + dot(plane.normal, q.asVector()), plane.eval(q), 1e-12);
        EXPECT_EQ(isAbove(q, plane, 0.5), plane.eval(q) >= -0.5);
        bool ok = false;
        Line const shadow = project(line, plane, ok);
        EXPECT_TRUE(ok);
        EXPECT_NEAR(plane.eval(shadow.eval(3)), 0, 1e-12);

        ParamPlane const coordinates(q, random.vector(), random.vector(), i % 2 == 0);
        EXPECT_NEAR(dot(coordinates.u, coordinates.v), 0, 1e-11);
        EXPECT_NEAR(dot(coordinates.normal, coordinates.v), 0, 1e-12);
        if (i % 2 == 0) {
            EXPECT_NEAR(coordinates.v.length(), coordinates.u.length(), 1e-12);
        }
        Point2 at;
        EXPECT_NEAR(distance(project(coordinates.eval(0.3, -2), coordinates, at), coordinates.eval(0.3, -2)), 0, 1e-8);
        EXPECT_NEAR(at.x, 0.3, 1e-8);
        Point2 const q2(q.x, q.y);
        ParamLine2 const flat(Point2(1, q.z), Vector2(q.y, 2));
        EXPECT_NEAR(dot(q2 - project(q2, flat, t), flat.vector), 0, 1e-11);
    }
}

TEST(Project, NamedCases) {
    ParamLine const still(Point(1, 2, 3), Vector::zero);
    EXPECT_FALSE(Line(still).direction.isValid());
    EXPECT_EQ(projectParam(Point(5, 5, 5), still), 0);
    bool ok = true;
    project(Line(Point::origin, Normal::z), Plane(Point::origin, Normal::z), ok);
    EXPECT_FALSE(ok);
    Line const line(Point::origin, Normal::x);
    EXPECT_TRUE(equivalent(line, Line(Point(7, 0, 0), -Normal::x)));
    EXPECT_FALSE(equivalent(line, Line(Point(0, 1e-11, 0), Normal::x)) || equivalent(line, Line(line) + Vector::y));
    Plane const plane(Point::origin, Point(1, 0, 0), Point(0, 1, 0));
    EXPECT_EQ(plane.normal, Normal::z);
    EXPECT_TRUE(equivalent(plane, -Plane(Point(4, 5, 0), Normal::z)) && !equivalent(plane, plane + Vector::z));
    ParamPlane const square(Point::origin, Point(2, 0, 0), Point(1, 5, 0));
    EXPECT_EQ(square.v, Vector(0, 2, 0));
    EXPECT_EQ(Plane(-square), -plane);
    EXPECT_TRUE(equivalent(square, -square) && !equivalent(square, square - Vector::x));
    EXPECT_TRUE(areCollinear(Point::origin, Point(1, 1, 1), Point(1, 1, 1), 1e-9));
    // The distance from the line counts as a fraction of the longest side.
    EXPECT_TRUE(areCollinear(Point(0, 0.9, 0), Point(-5, 0, 0), Point(5, 0, 0), 0.1));
    EXPECT_FALSE(areCollinear(Point(-5, 0, 0), Point(0, 1.1, 0), Point(5, 0, 0), 0.1));
    EXPECT_FALSE(areCollinear(Point(0, 9, 0), Point(-5, 0, 0), Point(5, 0, 0), 0.1));
}

TEST(Intersect, LinesAndPlanesMeetOnBoth) {
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        Line const line(random.point(), random.normal());
        Plane const a(random.point(), random.normal());
        Plane const b(random.point(), random.normal());
        Plane const c(random.point(), random.normal());
        bool ok = false;
        Point const p = intersect(line, a, ok, 1e-3);
        EXPECT_EQ(ok, std::fabs(dot(line.direction, a.normal)) >= 1e-3);
        if (ok) {
            EXPECT_NEAR(a.eval(p), 0, 1e-8);
            EXPECT_NEAR(distance(p, line), 0, 1e-8);
        } else {
            EXPECT_EQ(p, line.point);
        }
        if (std::fabs(dot(a.normal, b.normal)) > 0.99)
            continue;
        Line const both = intersect(a, b, ok);
        ASSERT_TRUE(ok);
        for (double t : {-5.0, 0.0, 7.0}) {
            EXPECT_NEAR(a.eval(both.eval(t)), 0, 1e-9);
            EXPECT_NEAR(b.eval(both.eval(t)), 0, 1e-9);
        }
        if (std::fabs(dot(both.direction, c.normal)) < 0.01)
            continue;
        Point const all = intersect(a, b, c, ok);
        EXPECT_TRUE(ok);
        for (Plane const & plane : {a, b, c})
            EXPECT_NEAR(plane.eval(all), 0, 1e-7);
    }
    bool ok = true;
    Plane const floor(Point(1, 2, 0), Normal::z);
    EXPECT_EQ(intersect(floor, floor + Vector::z, ok), Line(floor.point, Normal::z));
    EXPECT_FALSE(ok);
    intersect(floor, floor + Vector::z, floor, ok);
    EXPECT_FALSE(ok);
}

TEST(Intersect, LinesMeetOnTheSecondNearestToTheFirst) {
    RandomNumbers random;
    bool ok = false;
    for (int i = 0; i < rounds; ++i) {
        Line const a(random.point(), random.normal());
        Line const b(i % 2 == 0 ? a.eval(random.real()) : random.point(), random.normal());
        if (cross(a.direction, b.direction).length2() < 1e-3)
            continue;
        Point const p = intersect(a, b, ok, 1e-3);
        EXPECT_TRUE(ok);
        EXPECT_NEAR(distance(p, b), 0, 1e-9);
        if (i % 2 == 0) {
            EXPECT_NEAR(distance(p, a), 0, 1e-9);
        }
        EXPECT_LE(distance(p, a), distance(p + 0.01 * b.direction, a) + 1e-9);
        EXPECT_LE(distance(p, a), distance(p - 0.01 * b.direction, a) + 1e-9);

        ParamLine2 const u(Point2(a.point.x, a.point.y), Vector2(random.real(), random.real()));
        ParamLine2 const v(Point2(b.point.x, b.point.y), Vector2(random.real(), random.real()));
        double tu, tv;
        bool inside = false;
        if (intersect(u, v, tu, tv, inside) && std::fabs(tu) + std::fabs(tv) < 100) {
            EXPECT_NEAR(distance(u.eval(tu), v.eval(tv)), 0, 1e-8);
            EXPECT_EQ(inside, std::clamp(tu, 0.0, 1.0) == tu && std::clamp(tv, 0.0, 1.0) == tv);
        }
    }
    Line const line(Point(1, 2, 3), Normal::x);
    EXPECT_EQ(intersect(line, line + Vector::y, ok, perpendicular2Tol), line.point);
    EXPECT_FALSE(ok);
    double ta = 7, tb = 7;
    bool inside = true;
    ParamLine2 const flat(Point2::origin, Vector2::x);
    EXPECT_FALSE(intersect(flat, flat + Vector2::y, ta, tb, inside));
    EXPECT_TRUE(ta == 0 && tb == 0 && !inside);
}

// The parameters at which a line is in a box, by clipping it at each face.
Range1d clipped(ParamLine const & line, Range3d const & box) {
    double lo = -infinity;
    double hi = infinity;
    for (int i = 0; i < 3; ++i) {
        double const a = (box.min()[i] - line.point[i]) / line.vector[i];
        double const b = (box.max()[i] - line.point[i]) / line.vector[i];
        lo = std::max(lo, std::min(a, b));
        hi = std::min(hi, std::max(a, b));
    }
    return Range1d(lo, hi);
}

TEST(Intersect, LineThroughABox) {
    RandomNumbers random;
    int hits = 0;
    for (int i = 0; i < 4 * rounds; ++i) {
        ParamLine const line(random.point(), random.vector());
        Range3d box(random.point());
        box.include(random.point());
        Range1d const expected = clipped(line, box);
        Range1d const result = intersect(line, box);
        if (std::fabs(expected.max() - expected.min()) < 1e-6)
            continue; // hardly touches an edge
        ASSERT_EQ(result.isBounded(), expected.isBounded()) << line << box;
        if (result.isBounded()) {
            EXPECT_TRUE(equivalent(result, expected, 1e-9 * (1 + std::fabs(expected.max())))) << result << expected;
            ++hits;
        }
    }
    EXPECT_GT(hits, rounds / 4);
    Range3d const unit(0, 0, 0, 1, 1, 1);
    EXPECT_EQ(intersect(ParamLine(Point(0.5, 0.5, 5), Vector(0, 0, -2)), unit), Range1d(2, 2.5));
    EXPECT_EQ(intersect(ParamLine(Point(0, 0, 3), Vector(0, 0, 1)), unit), Range1d(-3, -2)); // along an edge
    EXPECT_TRUE(intersect(ParamLine(Point(0.5, 0.5, 5), Vector(0, 2, 0)), unit).isUnbounded());
    EXPECT_TRUE(intersect(ParamLine(Point(0.5, 0.5, 0.5), Vector::zero), unit).isUnbounded());
    EXPECT_TRUE(intersect(ParamLine(Point(0.5, notANumber, 5), Vector(0, 0, -2)), unit).isUnbounded());
    // A face counts by where it is hit, not by rounding along its own axis.
    Range3d const far(1e9 / 3, 0, 0, 2e9 / 3, 1, 1);
    EXPECT_TRUE(intersect(ParamLine(Point(0, 0.5, 0.5), Vector(0.1, 1e-12, 1e-12)), far).isBounded());
}

// ---- The plane, on a grid of integers, where the truth is exact

using Spot = std::array<int, 2>;

int turn(Spot a, Spot b, Spot c) {
    int const area = (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
    return (area > 0) - (area < 0);
}

bool isOn(Spot p, Spot a, Spot b) {
    return turn(a, b, p) == 0 && std::min(a[0], b[0]) <= p[0] && p[0] <= std::max(a[0], b[0]) &&
           std::min(a[1], b[1]) <= p[1] && p[1] <= std::max(a[1], b[1]);
}

bool doMeet(Spot a, Spot b, Spot c, Spot d) {
    return (turn(a, b, c) * turn(a, b, d) < 0 && turn(c, d, a) * turn(c, d, b) < 0) || isOn(c, a, b) || isOn(d, a, b) ||
           isOn(a, c, d) || isOn(b, c, d);
}

Spot randomSpot(RandomNumbers & random, int end = 6) { return {random.below(end), random.below(end)}; }
Point2 pointAt(Spot s) { return Point2(s[0], s[1]); }

double distanceFrom(Point2 const & p, Spot a, Spot b) {
    return distance(ParamLine2(pointAt(a), pointAt(b)).projectBounded(p, 0, 1), p);
}

TEST(Intersect, SegmentsOfAGrid) {
    RandomNumbers random;
    for (int i = 0; i < 20 * rounds; ++i) {
        Spot const a = randomSpot(random), b = randomSpot(random), c = randomSpot(random), d = randomSpot(random);
        double t = 5;
        Point2 point(99, 99);
        bool hasPoint = true;
        bool const result =
            doLineSegmentsIntersect(pointAt(a), pointAt(b), pointAt(c), pointAt(d), t, point, hasPoint, 1e-9);
        std::string const what = testing::PrintToString(std::array{a, b, c, d});
        ASSERT_EQ(result, a != b && c != d && doMeet(a, b, c, d)) << what;
        if (!result) {
            EXPECT_EQ(t, -1);
            continue;
        }
        Point2 const at = ParamLine2(pointAt(a), pointAt(b)).eval(t);
        EXPECT_LT(distanceFrom(at, a, b) + distanceFrom(at, c, d), 1e-9) << what;
        // Nothing of the second lies on the first before t, if they overlap.
        bool const isOneLine = turn(a, b, c) == 0 && turn(a, b, d) == 0;
        if (isOneLine) {
            EXPECT_TRUE(distance(at, pointAt(a)) < 1e-9 || distance(at, pointAt(c)) < 1e-9 ||
                        distance(at, pointAt(d)) < 1e-9);
        }
        if (hasPoint) {
            EXPECT_LT(distance(at, point), 1e-9);
        } else {
            EXPECT_TRUE(isOneLine);
        }
    }
}

TEST(Intersect, SegmentsByName) {
    double t = 0;
    Point2 point(0, 0);
    bool hasPoint = true;
    auto const run = [&](Point2 a0, Point2 a1, Point2 b0, Point2 b1, double tol = 1e-9) {
        return doLineSegmentsIntersect(a0, a1, b0, b1, t, point, hasPoint, tol);
    };
    EXPECT_TRUE(run({0, 0}, {4, 0}, {3, 0}, {9, 0}));
    EXPECT_TRUE(t == 0.75 && !hasPoint);
    EXPECT_TRUE(run({0, 0}, {4, 0}, {9, 0}, {4, 0}));
    EXPECT_TRUE(t == 1 && hasPoint && point == Point2(4, 0));
    EXPECT_FALSE(run({0, 0}, {4, 0}, {9, 0}, {4.1, 0}));
    EXPECT_FALSE(run({0, 0}, {4, 0}, {5, 1}, {5, -1}));
    EXPECT_TRUE(t == -1 && hasPoint && point == Point2(5, 0));
    EXPECT_FALSE(run({0, 0}, {4, 0}, {0, 1}, {4, 1}));
    EXPECT_FALSE(hasPoint);
    // Within tol of an end.
    EXPECT_TRUE(run({0, 0}, {4, 0}, {4.005, 1}, {4.005, -1}, 0.01));
    EXPECT_TRUE(t > 1);
    EXPECT_TRUE(run({0, 0}, {4, 0}, {2, 0.005}, {2, 1}, 0.01));
    EXPECT_FALSE(run({0, 0}, {4, 0}, {2, 0.02}, {2, 1}, 0.01));
}

TEST(Intersect, RaysAndSegmentsOfAGrid) {
    RandomNumbers random;
    for (int i = 0; i < 20 * rounds; ++i) {
        Spot const o = randomSpot(random), to = randomSpot(random), a = randomSpot(random), b = randomSpot(random);
        // The ray as a segment that leaves the grid.
        Spot const end{o[0] + 9 * (to[0] - o[0]), o[1] + 9 * (to[1] - o[1])};
        double t = 77, s = 77;
        bool computed = false;
        bool const result = doesRayIntersectLineSegment(pointAt(o), pointAt(to) - pointAt(o), pointAt(a), pointAt(b), t,
                                                        s, computed, 0);
        std::string const what = testing::PrintToString(std::array{o, to, a, b});
        ASSERT_EQ(result, o != to && a != b && doMeet(o, end, a, b)) << what;
        if (result && computed) {
            EXPECT_LT(distance(ParamLine2(pointAt(o), pointAt(to)).eval(t), ParamLine2(pointAt(a), pointAt(b)).eval(s)),
                      1e-9)
                << what;
        } else if (!computed) {
            EXPECT_TRUE(t == 77 && s == 77);
        }
    }
    double t = 77, s = 77;
    bool computed = false;
    auto const alongX = [&](double from, double to) {
        return doesRayIntersectLineSegment(Point2::origin, Vector2::x, Point2(from, 0), Point2(to, 0), t, s, computed,
                                           0);
    };
    EXPECT_TRUE(alongX(1, 2) && !computed);
    EXPECT_TRUE(alongX(0, -3) && computed && t == 0 && s == 0);
    EXPECT_TRUE(alongX(-3, 0) && computed && t == 0 && s == 1);
    t = 77;
    EXPECT_TRUE(!alongX(-3, -1) && computed && t == 77);
    EXPECT_FALSE(
        doesRayIntersectLineSegment(Point2::origin, Vector2::x, Point2(0, 1), Point2(1, 1), t, s, computed, 0));
    EXPECT_TRUE(computed && t == 0 && s == 0);
}

TEST(Intersect, SegmentsAndRectanglesByTheirSides) {
    Range2d const unit = Range2d::unitSquare;
    struct {
        Point2 a, b;
        segmentRangeIntersection expected;
    } const rows[] = {
        {{-1, -5}, {-0.5, 9}, segmentOutside},      {{0, 0}, {1, 1}, segmentInside},
        {{0.5, 0.5}, {7, 9}, segmentCrossesOnce},   {{-1, 0.5}, {2, 0.5}, segmentCrossesThrough},
        {{0.5, 2}, {0, -1}, segmentCrossesThrough}, {{-1, 0.5}, {0.5, 9}, segmentMayCross},
        {{-0.1, 0.5}, {0.5, 1.1}, segmentMayCross}, {{-1, -1}, {2, 2}, segmentMayCross},
        {{-1, -1}, {2, 0.5}, segmentMayCross},      {{2, 2}, {2, -1}, segmentOutside},
    };
    for (auto const & row : rows) {
        EXPECT_EQ(classifySegmentRangeIntersection(unit, row.a, row.b), row.expected) << row.a << row.b;
        EXPECT_EQ(classifySegmentRangeIntersection(unit, row.b, row.a), row.expected);
        EXPECT_EQ(classifySegmentRangeIntersection(Range2d(1, 0, 0, 1), row.a, row.b), segmentInside);
    }
}

TEST(Intersect, RaysAndRectangles) {
    Range2d const box(2, 1, 4, 2);
    EXPECT_TRUE(doesRayIntersectRange2d(Point2(0, 50), Vector2(1, 0), box, 0, 100)); // y is not looked at
    EXPECT_TRUE(doesRayIntersectRange2d(Point2(3, 5), Vector2(0, -1), box, 0, 100));
    EXPECT_FALSE(doesRayIntersectRange2d(Point2(0, 1.5), Vector2(1, 1e-9), box, 4, 9)); // leaves at 4
    EXPECT_FALSE(doesRayIntersectRange2d(Point2(0, 1.5), Vector2(1, 1e-9), box, 0, 2));
    EXPECT_TRUE(doesRayIntersectRange2d(Point2(0, 0), Vector2(1, 1), Range2d(1, 0, 0, 0), 5, 4));
    RandomNumbers random;
    int hits = 0;
    for (int i = 0; i < rounds; ++i) {
        Point2 const origin(random.real(), random.real());
        Vector2 const dir(random.real() + 0.001, random.real() + 0.001);
        double const tMin = random.real() / 10;
        double const tMax = tMin + random.below(3);
        bool const result = doesRayIntersectRange2d(origin, dir, box, tMin, tMax);
        bool inside = false;
        bool near = false;
        for (int k = 1; k < 200; ++k) {
            Point2 const p = origin + dir * (tMin + (tMax - tMin) * k / 200);
            inside = inside || box.contains(p, -1e-9);
            near = near || box.contains(p, 0.2);
        }
        EXPECT_TRUE(!inside || result || tMax == tMin) << origin << dir << tMin << " " << tMax;
        EXPECT_TRUE(!result || near || tMax == tMin) << origin << dir << tMin << " " << tMax;
        hits += result;
    }
    EXPECT_GT(hits, rounds / 100);
}

TEST(Intersect, TrianglesAndBoxesOfAGrid) {
    RandomNumbers random;
    for (int i = 0; i < 10 * rounds; ++i) {
        Spot const p[3] = {randomSpot(random, 12), randomSpot(random, 12), randomSpot(random, 12)};
        Spot const lo = randomSpot(random, 10);
        int const width = random.below(3) * 2, height = random.below(3) * 2;
        Spot const box[4] = {lo, {lo[0] + width, lo[1]}, {lo[0] + width, lo[1] + height}, {lo[0], lo[1] + height}};
        bool overlap = false;
        for (int k = 0; k < 3; ++k)
            for (int j = 0; j < 4; ++j)
                overlap = overlap || doMeet(p[k], p[(k + 1) % 3], box[j], box[(j + 1) % 4]);
        Spot const corner = box[0];
        int const side = turn(p[0], p[1], p[2]);
        overlap = overlap || (side != 0 && turn(p[0], p[1], corner) == side && turn(p[1], p[2], corner) == side &&
                              turn(p[2], p[0], corner) == side);
        overlap =
            overlap || (box[0][0] <= p[0][0] && p[0][0] <= box[2][0] && box[0][1] <= p[0][1] && p[0][1] <= box[2][1]);
        Vector2Flt const half(width / 2, height / 2);
        auto const flt = [](Spot s) { return Point2Flt(s[0], s[1]); };
        ASSERT_EQ(triangleBoxOverlap(flt(lo) + half, half, flt(p[0]), flt(p[1]), flt(p[2])), overlap)
            << testing::PrintToString(p) << testing::PrintToString(box);
    }
}

TEST(IntersectCylinder, HitsLieOnIt) {
    RandomNumbers random;
    int counts[3] = {};
    for (int i = 0; i < rounds; ++i) {
        Line const axis(random.point(), i % 10 == 0 ? -Normal::z : random.normal());
        Line const line(random.point(), random.normal());
        double const radius = 5 + random.real() / 2;
        // How near the lines come to each other tells the number of hits.
        Normal const across(cross(axis.direction, line.direction));
        double const apart = std::fabs(dot(line.point - axis.point, across));
        if (!across.isValid() || std::fabs(apart - radius) < 1e-6)
            continue;
        double t[2];
        int const count = intersectCylinder(line, axis, radius, t);
        ASSERT_EQ(count, apart < radius ? 2 : 0);
        ++counts[count];
        for (int k = 0; k < count; ++k)
            EXPECT_NEAR(distance(line.eval(t[k]), axis), radius, 1e-7 * (1 + std::fabs(t[k])));
        if (count == 2) {
            EXPECT_LE(t[0], t[1]);
        }
    }
    EXPECT_TRUE(counts[0] > 0 && counts[2] > 0);
    double t[2];
    Line const z(Point(1, 1, 0), Normal::z);
    EXPECT_EQ(intersectCylinder(z + Vector::x, z, 1, t), 0);
    EXPECT_EQ(intersectCylinder(Line(Point(-4, 2, 3), Normal::x), z, 1, t), 1);
    EXPECT_EQ(t[0], 5);
}

} // namespace
