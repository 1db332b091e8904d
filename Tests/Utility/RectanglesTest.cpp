#include "Base/Utility/qvUtilIntRange2d.h"
#include "Base/Utility/qvUtilIntRect.h"
#include "Base/Utility/qvUtilPack.h"

#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <limits>
#include <vector>

using qvUtil::IntRange2d;
using qvUtil::IntRect;

namespace {

constexpr int largest = std::numeric_limits<int>::max();

IntRange2d rangeOf(int x, int y, int width, int height) {
    IntRange2d range;
    range.set(x, y, width, height);
    return range;
}

void expectFields(IntRect const & rect, int x, int y, int width, int height) {
    EXPECT_EQ(rect.minX(), x);
    EXPECT_EQ(rect.minY(), y);
    EXPECT_EQ(rect.width(), width);
    EXPECT_EQ(rect.height(), height);
}

TEST(IntRange2d, ValuesWithinAreReached) {
    for (int size = 0; size < 4; ++size) {
        IntRange2d const range = rangeOf(-2, 10, size, size);
        for (int value = -20; value < 20; ++value) {
            bool const isInside = value >= 10 && value < 10 + size;
            EXPECT_EQ(range.contains(1, value), isInside);
            int const wrapped = range.wrap(1, value);
            EXPECT_TRUE(size == 0 ? wrapped == 10 : range.contains(1, wrapped) && (wrapped - value) % size == 0);
            EXPECT_EQ(range.clamp(1, value), size == 0 ? 10 : std::clamp(value, 10, 9 + size));
        }
    }
    EXPECT_EQ(rangeOf(10, 0, 5, 5).wrap(0, 3), 13);
    EXPECT_EQ(rangeOf(largest - 1, 0, 5, 5).max(0), largest);
    EXPECT_EQ(rangeOf(0, 0, largest, largest).area(), 4611686014132420609);
    IntRange2d all = rangeOf(3, 3, 2, 2);
    all.include(rangeOf(-1, 4, 1, 7));
    EXPECT_EQ(all, rangeOf(-1, 3, 6, 8));
}

TEST(IntRect, UninitializedIsApartFromEverything) {
    IntRect none;
    IntRect some(-5, -5, 10, 10);
    expectFields(none, 0, 0, -1, -1);
    EXPECT_FALSE(none.isInitialized() || none.isEmpty() || none == none || none == some || some == none);
    EXPECT_TRUE(none != none);
    EXPECT_FALSE(none.intersects(some) || some.intersects(none) || some.contains(none) || none.contains(0, 0));
    some.growToContain(none);
    expectFields(some, -5, -5, 10, 10);
    none.growToContain(7, 8);
    expectFields(none, 7, 8, 0, 0);
    none.growToContain(some);
    expectFields(none, -5, -5, 12, 13);
    some.crop(IntRect());
    expectFields(some, 0, 0, 0, 0);
}

TEST(IntRect, BothEndsAreInside) {
    IntRect rect(0, 0, 10, 10);
    EXPECT_TRUE(rect.contains(10, 10) && rect.contains(0, 0) && rect.contains(IntRect(3, 3, 7, 7)));
    EXPECT_FALSE(rect.contains(11, 10) || rect.contains(0, -1) || rect.contains(IntRect(3, 3, 7, 8)));
    IntRect overlap;
    EXPECT_TRUE(rect.intersects(IntRect(10, -4, 5, 6), &overlap));
    EXPECT_FALSE(rect.intersects(IntRect(11, 0, 5, 5), &overlap));
    EXPECT_EQ(overlap, IntRect(10, 0, 0, 2));
    rect.setCorners(7, -2, 3, 5);
    expectFields(rect, 3, -2, 4, 7);
    rect.expand(2);
    rect.translateBy(-1, 1);
    expectFields(rect, 0, -3, 8, 11);
    rect.growToContain(-3, 20);
    expectFields(rect, -3, -3, 11, 23);
    rect.translateToOrigin();
    EXPECT_EQ(rect, IntRect(0, 0, 11, 23));
    EXPECT_EQ(rect.area(), 253);
    rect.setCorners(-largest, 0, largest, 0);
    expectFields(rect, -largest, 0, largest, 0);
}

TEST(IntRect, MapsByTheRatioOfTheWidths) {
    struct {
        int width, height, target, x, y, mappedX, mappedY;
    } const cases[] = {{4, 100, 6, 0, 1, 0, 2},
                       {4, 100, 6, 3, -1, 5, -1},
                       {4, 100, 6, -3, 100, -4, 150},
                       {1, 1, 1, 16777217, -16777219, 16777218, -16777218}, // in single precision
                       {0, 0, 6, 3, -3, largest, -largest - 1},
                       {0, 0, 6, 0, 0, 0, 0}};
    for (auto const & one : cases) {
        int x = 0;
        int y = 0;
        IntRect(5, 5, one.width, one.height).mapTo(IntRect(1, 1, one.target, 1), one.x, one.y, x, y);
        EXPECT_EQ(x, one.mappedX) << one.x;
        EXPECT_EQ(y, one.mappedY) << one.y;
    }
    IntRect rect(3, 1, -2, 1);
    IntRect(5, 5, 4, 100).mapTo(IntRect(1, 1, 6, 1), rect, rect);
    expectFields(rect, 2, 2, 3, 1);
}

using Items = qv::vector<IntRange2d>;

Items randomItems(qvTest::SeededRandom & random, int count, int longest) {
    Items items;
    for (int i = 0; i < count; ++i)
        items.append(rangeOf(-1, -1, random.below(longest + 1), random.below(longest + 1)));
    return items;
}

// The tree as it is told: no bounds on what a subtree can hold, every leaf is visited.
class PlainTree {
public:
    explicit PlainTree(IntRange2d const & range) : range_(range) {}
    PlainTree * insert(int width, int height) {
        if (!children_.empty()) {
            PlainTree * const place = children_[0].insert(width, height);
            return place != nullptr ? place : children_[1].insert(width, height);
        }
        int const dw = range_.size(0) - width;
        int const dh = range_.size(1) - height;
        if (isTaken_ || dw < 0 || dh < 0)
            return nullptr;
        if (dw == 0 && dh == 0) {
            isTaken_ = true;
            return this;
        }
        int const x = range_.min(0);
        int const y = range_.min(1);
        if (dw <= dh) {
            children_.emplace_back(rangeOf(x, y, range_.size(0), height));
            children_.emplace_back(rangeOf(x, y + height, range_.size(0), dh));
        } else {
            children_.emplace_back(rangeOf(x, y, width, range_.size(1)));
            children_.emplace_back(rangeOf(x + width, y, dw, range_.size(1)));
        }
        return children_[0].insert(width, height);
    }
    IntRange2d const & range() const { return range_; }

private:
    IntRange2d range_;
    std::vector<PlainTree> children_;
    bool isTaken_ = false;
};

TEST(Pack, GivesTheCutsOfThePlainTree) {
    qvTest::SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        Items const items = randomItems(random, random.below(60), 1 + random.below(40));
        IntRange2d const bin = rangeOf(random.below(9) - 4, 7, random.below(150), random.below(150));
        Items expected = items;
        PlainTree tree(bin);
        int left = 0;
        bool goesOn = true;
        for (IntRange2d & item : expected) {
            PlainTree * const place = goesOn ? tree.insert(item.size(0), item.size(1)) : nullptr;
            goesOn = place != nullptr;
            left += goesOn ? 0 : static_cast<int>(item.area());
            item = goesOn ? place->range() : item;
        }
        Items packed = items;
        ASSERT_EQ(qvUtil::pack(packed, bin), left);
        ASSERT_TRUE(std::equal(packed.begin(), packed.end(), expected.begin(), expected.end()));
    }
}

TEST(Pack, FindsABinWithoutOverlap) {
    qvTest::SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        Items items = randomItems(random, 1 + random.below(80), random.oneIn(3) ? 3 : 40);
        if (random.oneIn(4))
            items.append(rangeOf(0, 0, 400, 1)); // longer than the root of all areas
        bool const powerOfTwo = random.oneIn(2);
        Items packed = items;
        std::int64_t left = -1;
        IntRange2d const bin = qvUtil::pack(packed, powerOfTwo, &left);
        EXPECT_EQ(left, 0);
        std::vector<char> cells(std::size_t(bin.area()));
        int reach = 0;
        for (int i = 0; i < items.size(); ++i) {
            IntRange2d const & item = packed[i];
            ASSERT_EQ(item, rangeOf(item.min(0), item.min(1), items[i].size(0), items[i].size(1))) << "in its place";
            int const right = item.min(0) + item.size(0);
            int const bottom = item.min(1) + item.size(1);
            ASSERT_TRUE(item.min(0) >= 0 && right <= bin.size(0) && item.min(1) >= 0 && bottom <= bin.size(1));
            reach = std::max({reach, right, bottom});
            for (int y = item.min(1); y < bottom; ++y)
                for (int x = item.min(0); x < right; ++x)
                    ASSERT_EQ(++cells[std::size_t(y * bin.size(0) + x)], 1);
        }
        auto const sideOf = [&](int axis) {
            return powerOfTwo ? int(std::bit_floor(unsigned(bin.size(axis)))) : reach;
        };
        EXPECT_EQ(bin, rangeOf(0, 0, sideOf(0), sideOf(1)));
    }
}

TEST(Pack, EdgesOfTheSizes) {
    Items none;
    EXPECT_EQ(qvUtil::pack(none, true), IntRange2d());
    Items one = {rangeOf(5, 5, 10, 20)};
    EXPECT_EQ(qvUtil::pack(one, true), rangeOf(0, 0, 16, 32));
    EXPECT_EQ(one[0], rangeOf(0, 0, 10, 20));
    Items two = {rangeOf(5, 5, 11, 2), rangeOf(6, 6, 1, 1)};
    EXPECT_EQ(qvUtil::pack(two, rangeOf(0, 0, 10, 10)), 23);
    EXPECT_EQ(two[1], rangeOf(6, 6, 1, 1));
    Items flat = {rangeOf(9, 9, 0, 0), rangeOf(9, 9, 0, 0), rangeOf(9, 9, -3, 0)};
    EXPECT_EQ(qvUtil::pack(flat, false), rangeOf(0, 0, 0, 0));
    for (IntRange2d const & item : flat)
        EXPECT_EQ(item, rangeOf(0, 0, 0, 0));

    // A thin item among small ones, far longer than the root of their areas: a step by step search would take hours.
    Items thin(21, rangeOf(0, 0, 3, 2));
    thin[0] = rangeOf(0, 0, 1000000000, 1);
    EXPECT_EQ(qvUtil::pack(thin, false), rangeOf(0, 0, 1000000000, 1000000000));

    for (bool powerOfTwo : {false, true}) {
        Items huge(3, rangeOf(-7, -7, largest, largest));
        std::int64_t left = 0;
        EXPECT_EQ(qvUtil::pack(huge, powerOfTwo, &left), rangeOf(0, 0, largest, largest));
        EXPECT_EQ(left, 2 * std::int64_t{largest} * largest);
        EXPECT_EQ(std::count(huge.begin(), huge.end(), rangeOf(-7, -7, largest, largest)), 2);
        EXPECT_EQ(qvUtil::pack(huge, rangeOf(0, 0, 1, 1)), largest);
    }
}

} // namespace
