// The algebra of circular ranges against sets of numbers, for every range of small moduli.

#include "Base/Utility/qvUtilCircularRange.h"

#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <cstdlib>
#include <limits>
#include <set>
#include <vector>

using qvUtil::CircularRange;

namespace qvUtil {

void PrintTo(CircularRange const & range, std::ostream * out) {
    *out << range.begin() << ".." << range.end() << " mod " << range.modulus();
}

} // namespace qvUtil

namespace {

using Values = std::bitset<16>;

// Written down from what a range stands for, without asking it.
Values valuesOf(CircularRange const & range) {
    Values values;
    if (range.begin() < 0)
        return values;
    for (int i = range.begin();; i = (i + 1) % range.modulus()) {
        values.set(static_cast<std::size_t>(i));
        if (i == range.end())
            return values;
    }
}

// Every range of a modulus: the invalid one first.
std::vector<CircularRange> rangesOf(int modulus) {
    std::vector<CircularRange> ranges = {CircularRange(-1, -1, modulus)};
    for (int begin = 0; begin < modulus; ++begin)
        for (int end = 0; end < modulus; ++end)
            ranges.emplace_back(begin, end, modulus);
    return ranges;
}

// The runs of a set along the circle, each as where it begins.
int numRuns(Values const & values, int modulus) {
    int runs = 0;
    for (int i = 0; i < modulus; ++i)
        runs += values[static_cast<std::size_t>(i)] && !values[static_cast<std::size_t>((i + modulus - 1) % modulus)];
    return values.count() == static_cast<std::size_t>(modulus) ? 1 : runs;
}

// Ends on the circle, and one form for the full range.
void expectCanonical(CircularRange const & range, int modulus) {
    EXPECT_EQ(range.modulus(), modulus);
    if (!range.valid()) {
        EXPECT_EQ(range, CircularRange(-1, -1, modulus));
        return;
    }
    EXPECT_TRUE(range.begin() < modulus && range.end() >= 0 && range.end() < modulus) << testing::PrintToString(range);
    EXPECT_NE(range.end() + 1, range.begin());
}

TEST(CircularRange, OneRangeIsASetOfNumbers) {
    for (int modulus = 1; modulus <= 12; ++modulus) {
        for (CircularRange const & range : rangesOf(modulus)) {
            SCOPED_TRACE(testing::PrintToString(range));
            Values const values = valuesOf(range);
            expectCanonical(range, modulus);
            EXPECT_EQ(range.size(), static_cast<int>(values.count()));
            EXPECT_EQ(range.full(), range.size() == modulus);
            EXPECT_EQ(range.valid(), values.any());
            for (int value = -3; value < 2 * modulus; ++value) {
                EXPECT_EQ(range.contains(value), value >= 0 && value < modulus && values[std::size_t(value)]) << value;
                int nearest = std::numeric_limits<int>::max();
                int const place = (value + 3 * modulus) % modulus;
                for (int i = 0; i < modulus; ++i)
                    if (values[std::size_t(i)])
                        nearest = std::min({nearest, (i - place + modulus) % modulus, (place - i + modulus) % modulus});
                EXPECT_EQ(range.distance(value), nearest) << value;
            }
            CircularRange const first = range.firstHalf();
            CircularRange const second = range.secondHalf();
            EXPECT_EQ(first.size(), range.size() / 2);
            EXPECT_EQ(valuesOf(first) | valuesOf(second), values);
            EXPECT_EQ(first.size() + second.size(), range.size());
            EXPECT_EQ(second.end(), range.end());
            expectCanonical(first, modulus);
        }
    }
}

void expectSetAlgebra(CircularRange const & a, CircularRange const & b) {
    SCOPED_TRACE(testing::PrintToString(a) + " and " + testing::PrintToString(b));
    int const modulus = a.modulus();
    Values const inA = valuesOf(a);
    Values const inB = valuesOf(b);
    EXPECT_EQ(a.overlaps(b), (inA & inB).any());
    EXPECT_EQ(a.contains(b), (inA & inB) == inB);

    CircularRange merged = a;
    bool const joins = numRuns(inA | inB, modulus) <= 1;
    EXPECT_EQ(merged.merge(b), joins);
    EXPECT_EQ(valuesOf(merged), joins ? inA | inB : inA);
    expectCanonical(merged, modulus);

    CircularRange common = a;
    bool const isOne = numRuns(inA & inB, modulus) == 1;
    EXPECT_EQ(common.intersect(b), isOne);
    EXPECT_EQ(valuesOf(common), isOne ? inA & inB : Values());
    expectCanonical(common, modulus);

    CircularRange first(-1, -1, modulus);
    CircularRange second(-1, -1, modulus);
    a.subtract(b, first, second);
    EXPECT_EQ(valuesOf(first) | valuesOf(second), inA & ~inB);
    EXPECT_TRUE((valuesOf(first) & valuesOf(second)).none());
    EXPECT_TRUE(first.valid() || !second.valid());
    if (second.valid()) { // they are met in this order
        int const offset = (first.begin() - a.begin() + modulus) % modulus;
        EXPECT_LT(offset, (second.begin() - a.begin() + modulus) % modulus);
    }
    expectCanonical(first, modulus);
    expectCanonical(second, modulus);
}

TEST(CircularRange, EveryOperationIsThatOfSets) {
    for (int modulus = 1; modulus <= 12; ++modulus)
        for (CircularRange const & a : rangesOf(modulus))
            for (CircularRange const & b : rangesOf(modulus))
                expectSetAlgebra(a, b);
}

TEST(CircularRange, PiecesMayBeTheOperandsAndUnusedOnesStay) {
    CircularRange a(8, 2, 10);
    CircularRange b(0, 0, 10);
    a.subtract(b, b, a);
    EXPECT_EQ(b, CircularRange(8, 9, 10));
    EXPECT_EQ(a, CircularRange(1, 2, 10));
    CircularRange first(5, 10);
    CircularRange second(6, 10);
    a.subtract(CircularRange(0, 9, 10), first, second);
    EXPECT_EQ(first, CircularRange(5, 10));
    a.subtract(CircularRange(7, 10), first, second);
    EXPECT_EQ(first, a);
    EXPECT_EQ(second, CircularRange(6, 10));
}

TEST(CircularRange, EndsAreBroughtOntoTheCircle) {
    EXPECT_EQ(CircularRange(5, 4, 10), CircularRange(0, 9, 10));
    EXPECT_EQ(CircularRange(-3, 12, 10), CircularRange(7, 2, 10));
    CircularRange value(12, 10);
    EXPECT_EQ(value.begin(), 12);
    value.canonicalize();
    EXPECT_EQ(value, CircularRange(2, 2, 10));
    EXPECT_EQ(CircularRange().modulus(), 0);
    int const large = std::numeric_limits<int>::max();
    CircularRange wide(large - 2, 5, large);
    EXPECT_EQ(wide.size(), 8);
    EXPECT_TRUE(wide.merge(CircularRange(6, large - 3, large)));
    EXPECT_TRUE(wide.full());
    EXPECT_EQ(wide.secondHalf(), CircularRange(large / 2, large - 1, large));
    for (int modulus : {0, -5}) { // no circle: nothing is divided, nothing is there
        CircularRange none(3, 4, modulus);
        EXPECT_FALSE(none.valid());
        CircularRange odd(3, modulus);
        odd.canonicalize();
        EXPECT_FALSE(odd.contains(3) || odd.overlaps(odd) || odd.intersect(CircularRange(1, 4, 10)));
    }
}

TEST(CircularRange, VectorsOfRangesStayApart) {
    qvTest::SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        int const modulus = 1 + random.below(16);
        qv::vector<CircularRange> ranges;
        Values values;
        for (int step = 0; step < 30; ++step) {
            CircularRange const range = random.oneIn(10)
                                            ? CircularRange(-1, -1, modulus)
                                            : CircularRange(random.below(modulus), random.below(modulus), modulus);
            bool const adds = random.oneIn(2);
            adds ? qvUtil::merge(ranges, range) : qvUtil::subtract(ranges, range);
            values = adds ? values | valuesOf(range) : values & ~valuesOf(range);
            Values all;
            for (CircularRange const & part : ranges) {
                EXPECT_TRUE(part.valid());
                EXPECT_TRUE((all & valuesOf(part)).none());
                all |= valuesOf(part);
            }
            ASSERT_EQ(all, values);
            if (adds && step == 0) {
                ASSERT_EQ(ranges.size(), range.valid());
            }
        }
    }
    qv::vector<CircularRange> ranges;
    for (int begin : {0, 4, 8})
        qvUtil::merge(ranges, CircularRange(begin, begin + 1, 12));
    qvUtil::merge(ranges, CircularRange(2, 3, 12)); // touches the first two
    ASSERT_EQ(ranges.size(), 2);
    EXPECT_EQ(ranges[0], CircularRange(8, 9, 12));
    EXPECT_EQ(ranges[1], CircularRange(0, 5, 12));
}

} // namespace
