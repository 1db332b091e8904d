// Ranges beside sets of grid points, with an unbounded range as all of them.

#include "LinearSupport.h"

#include "Base/Linear/qvLinearRange1d.h"
#include "Base/Linear/qvLinearRange2d.h"
#include "Base/Linear/qvLinearRange3d.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace {

using namespace qvLinear;
using namespace qvTest;

using Grid = std::set<double>;

constexpr double gridStep = 0.5;
constexpr double gridEnd = 8;

Grid gridOf(Range1d const & range) {
    Grid grid;
    for (double x = -gridEnd; x <= gridEnd; x += gridStep)
        if (range.isUnbounded() || (range.min() <= x && x <= range.max()))
            grid.insert(x);
    return grid;
}

// Ends on the grid; now and then unbounded, by any pair of ends in the wrong order.
Range1d randomRange(RandomNumbers & random) {
    int const a = random.below(11) - 5;
    int const b = random.below(11) - 5;
    return random.oneIn(6) ? Range1d(std::max(a, b) + 1, std::min(a, b)) : Range1d(std::min(a, b), std::max(a, b));
}

Grid common(Grid const & a, Grid const & b) {
    Grid both;
    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::inserter(both, both.end()));
    return both;
}

TEST(Range1d, AgreesWithSetsOfPoints) {
    RandomNumbers random;
    for (int round = 0; round < 5000; ++round) {
        Range1d const a = randomRange(random);
        Range1d const b = randomRange(random);
        Grid const inA = gridOf(a);
        Grid const inB = gridOf(b);
        Grid const inBoth = common(inA, inB);
        double const x = random.below(21) * 0.5 - 5;

        EXPECT_EQ(a.contains(x, 0), inA.contains(x));
        EXPECT_EQ(a.contains(b, 0), inBoth == inB);
        // A set of one point touches, or lies inside: the bounds are strict, so it counts only inside.
        bool const meets = a.isUnbounded() || b.isUnbounded() || (a.min() < b.max() && b.min() < a.max());
        EXPECT_EQ(a.intersects(b, 0), meets) << a << b;
        if (inBoth.size() > 1 && a.size() != 0 && b.size() != 0) {
            EXPECT_TRUE(a.intersects(b, 0));
        }
        EXPECT_EQ(a.intersects(b, 0.75), a.isUnbounded() || b.isUnbounded() || distance(a, b) < 0.75);
        EXPECT_EQ(a.contains(x, 1), a.isUnbounded() || distance(x, a) <= 1);

        double nearest = infinity;
        for (double p : inA)
            nearest = std::min(nearest, std::fabs(p - x));
        EXPECT_EQ(distance(x, a), nearest);
        double gap = infinity;
        for (double p : inA)
            for (double q : inB)
                gap = std::min(gap, std::fabs(p - q));
        EXPECT_EQ(distance(a, b), gap);

        Range1d hull = a;
        hull.include(b);
        EXPECT_TRUE(hull.contains(a, 0) && hull.contains(b, 0));
        EXPECT_EQ(hull.isUnbounded(), a.isUnbounded() || b.isUnbounded());
        Range1d grown = a;
        grown.include(x);
        EXPECT_EQ(grown, a.isUnbounded() ? a : Range1d(std::min(a.min(), x), std::max(a.max(), x)));
        if (hull.isBounded()) {
            EXPECT_EQ(hull, Range1d(std::min(a.min(), b.min()), std::max(a.max(), b.max())));
        }

        Range1d const overlap = intersect(a, b, 1.5);
        if (!inBoth.empty()) {
            EXPECT_EQ(gridOf(overlap), inBoth);
        } else if (gap < 1.5) {
            EXPECT_EQ(overlap.size(), gap);
        } else {
            EXPECT_EQ(overlap, Range1d(0, 0));
        }
    }
}

TEST(Range1d, NamedCases) {
    Range1d all(1, 0);
    all.include(5);
    EXPECT_EQ(all, Range1d(1, 0));
    EXPECT_EQ(all.size(), -1);
    EXPECT_TRUE(all.contains(1e300, 0) && all.contains(notANumber, 0) && all.intersects(Range1d(7, 7), 0));
    EXPECT_FALSE(Range1d(0, 1).contains(all, 5));
    EXPECT_TRUE(Range1d(0, 1).intersects(all, 0));
    EXPECT_EQ(intersect(Range1d(0, 1), Range1d(2, 3), 0.5), Range1d(0, 0));
    EXPECT_EQ(intersect(Range1d(0, 1), Range1d(2, 3), 1.5), Range1d(1, 2));
    EXPECT_EQ(intersect(Range1d(0, 1), Range1d(2, 3), 1), Range1d(0, 0));
    EXPECT_FALSE(Range1d(0, 1).intersects(Range1d(1, 2), 0));
    EXPECT_FALSE(Range1d(0, 1).contains(notANumber, 0));
    EXPECT_TRUE(equivalent(Range1d(0, 1), Range1d(0.25, 1), 0.5) && !equivalent(Range1d(0, 1), Range1d(0, 1.5), 0.5));
}

// A box is the product of its ranges along the axes, but for being unbounded, which is told by x alone.
template <class R, class P>
void compareWithAxes(int rounds) {
    RandomNumbers random;
    for (int round = 0; round < rounds; ++round) {
        Range1d axesA[P::dimension];
        Range1d axesB[P::dimension];
        for (int i = 0; i < P::dimension; ++i)
            for (Range1d * axes : {axesA, axesB})
                do
                    axes[i] = randomRange(random);
                while (i > 0 && axes[i].isUnbounded());
        auto const box = [](Range1d const * axes) {
            return R(detail::generate<P>([&](int i) { return axes[i].min(); }),
                     detail::generate<P>([&](int i) { return axes[i].max(); }));
        };
        R const a = box(axesA);
        R const b = box(axesB);
        P const p = detail::generate<P>([&](int) { return random.below(21) * 0.5 - 5; });
        auto const everywhere = [](auto const & holds) { return detail::holdsForAll<P::dimension>(holds); };

        ASSERT_EQ(a.isUnbounded(), axesA[0].isUnbounded());
        bool const unbounded = a.isUnbounded();
        bool const oneUnbounded = unbounded || b.isUnbounded();
        EXPECT_EQ(a.contains(p, 0.5), unbounded || everywhere([&](int i) { return axesA[i].contains(p[i], 0.5); }));
        EXPECT_EQ(a.contains(b, 0),
                  unbounded || (b.isBounded() && everywhere([&](int i) { return axesA[i].contains(axesB[i], 0); })));
        EXPECT_EQ(a.intersects(b, 0),
                  oneUnbounded || everywhere([&](int i) { return axesA[i].intersects(axesB[i], 0); }));
        P const gap = detail::generate<P>([&](int i) { return unbounded ? 0 : distance(p[i], axesA[i]); });
        EXPECT_DOUBLE_EQ(distance(p, a), distance(gap, detail::generate<P>([](int) { return 0.0; })));
        P const size = a.size();
        double volume = 1;
        for (int i = 0; i < P::dimension; ++i) {
            EXPECT_EQ(size[i], unbounded ? -1 : axesA[i].size());
            volume *= size[i];
        }
        if constexpr (P::dimension == 2)
            EXPECT_EQ(a.area(), unbounded ? -1 : volume);
        else {
            EXPECT_EQ(a.volume(), unbounded ? -1 : volume);
        }

        R hull = a;
        hull.include(b);
        hull.include(p);
        EXPECT_EQ(hull.isUnbounded(), oneUnbounded);
        R const overlap = intersect(a, b, 1.5);
        if (oneUnbounded) {
            EXPECT_EQ(overlap, unbounded ? b : a);
            continue;
        }
        for (int i = 0; i < P::dimension; ++i) {
            Range1d const common = intersect(axesA[i], axesB[i], 1.5);
            EXPECT_EQ(Range1d(overlap.min()[i], overlap.max()[i]), common);
            axesA[i].include(axesB[i]);
            axesA[i].include(p[i]);
            EXPECT_EQ(Range1d(hull.min()[i], hull.max()[i]), axesA[i]);
        }
    }
}

TEST(BoxRange, IsTheProductOfItsAxes) {
    compareWithAxes<Range2d, Point2>(3000);
    compareWithAxes<Range3d, Point>(3000);
}

TEST(BoxRange, OnlyXTellsThatItIsUnbounded) {
    Range2d const odd(Point2(0, 5), Point2(1, 2));
    EXPECT_TRUE(odd.isBounded());
    EXPECT_FALSE(odd.contains(Point2(0.5, 3), 0));
    Range3d all;
    all.setUnbounded();
    EXPECT_EQ(all, Range3d(1, 1, 1, 0, 0, 0));
    EXPECT_TRUE(all.contains(all, 0));
}

TEST(BoxRange, IsSetFromNumbersArraysAndCorners) {
    double const lo[] = {1, 2, 3};
    float const hi[] = {4, 5, 6};
    Range3d box;
    box.set(lo);
    box.include(hi);
    EXPECT_EQ(box, Range3d(1, 2, 3, 4, 5, 6));
    EXPECT_TRUE(box.contains(hi, 0) && box.contains(2, 3, 4, 0) && !box.contains(0, 3, 4, 0));
    EXPECT_EQ(box.mid(), Point(2.5, 3.5, 4.5));
    double const corner[] = {5, -1};
    Range2d rectangle;
    rectangle.setUnordered(lo, corner);
    EXPECT_EQ(rectangle, Range2d(1, -1, 5, 2));
    rectangle.set(rectangle.max(), rectangle.min());
    EXPECT_EQ(rectangle, Range2d(5, 2, 1, -1));
    rectangle.setUnordered(rectangle.max(), rectangle.min());
    EXPECT_EQ(rectangle, Range2d(1, -1, 5, 2));
    Range2d clipped = rectangle;
    clipped.clipTo(Range2d(2, -5, 9, 1));
    EXPECT_EQ(clipped, Range2d(2, -1, 5, 1));
    clipped.clipTo(Range2d(7, 0, 8, 0));
    EXPECT_EQ(clipped, Range2d(7, 0, 5, 0)); // max below min: unbounded from here on
    clipped.clipTo(rectangle);
    EXPECT_EQ(clipped, rectangle);
    clipped.clipTo(Range2d(1, 0, 0, 0));
    EXPECT_EQ(clipped, rectangle);
}

} // namespace
