// The algebra of circular ranges against sets of numbers, for every range of small moduli.

#include "Base/Utility/qvUtilCircularRange.h"

#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bitset>
#include <limits>
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

// The runs of a set along the circle.
int numRuns(Values const & values, int modulus) {
    int runs = 0;
    for (int i = 0; i < modulus; ++i)
        runs += values[static_cast<std::size_t>(i)] && !values[static_cast<std::size_t>((i + modulus - 1) % modulus)];
    return values.count() == static_cast<std::size_t>(modulus) ? 1 : runs;
}

// These values, in the one form that they have.
void expectValues(CircularRange const & range, Values const & values, int modulus) {
    EXPECT_EQ(range.modulus(), modulus);
    EXPECT_EQ(valuesOf(range), values);
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
            expectValues(range, values, modulus);
            EXPECT_EQ(range.size(), static_cast<int>(values.count()));
            EXPECT_EQ(range.full(), range.size() == modulus);
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
            EXPECT_EQ(first.size(), range.size() / 2);
            expectValues(first, values & ~valuesOf(range.secondHalf()), modulus);
            EXPECT_EQ(first.size() + range.secondHalf().size(), range.size());
            EXPECT_EQ(range.secondHalf().end(), range.end());
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
    expectValues(merged, joins ? inA | inB : inA, modulus);

    CircularRange common = a;
    bool const isOne = numRuns(inA & inB, modulus) == 1;
    EXPECT_EQ(common.intersect(b), isOne);
    expectValues(common, isOne ? inA & inB : Values(), modulus);

    CircularRange first(-1, -1, modulus);
    CircularRange second(-1, -1, modulus);
    a.subtract(b, first, second);
    EXPECT_TRUE((valuesOf(first) & valuesOf(second)).none() && (first.valid() || !second.valid()));
    expectValues(first, inA & ~inB & ~valuesOf(second), modulus);
    expectValues(second, inA & ~inB & ~valuesOf(first), modulus);
    int const offset = (first.begin() - a.begin() + modulus) % modulus; // they are met in this order
    EXPECT_TRUE(!second.valid() || offset < (second.begin() - a.begin() + modulus) % modulus);
}

TEST(CircularRange, EveryOperationIsThatOfSets) {
    for (int modulus = 1; modulus <= 12; ++modulus)
        for (CircularRange const & a : rangesOf(modulus))
            for (CircularRange const & b : rangesOf(modulus))
                expectSetAlgebra(a, b);
    // The pieces may be the operands, and those that are not needed stay.
    CircularRange a(8, 2, 10);
    CircularRange b(0, 0, 10);
    a.subtract(b, b, a);
    EXPECT_EQ(b, CircularRange(8, 9, 10));
    EXPECT_EQ(a, CircularRange(1, 2, 10));
    CircularRange first(5, 10);
    a.subtract(CircularRange(0, 9, 10), first, b);
    EXPECT_EQ(first, CircularRange(5, 10));
    a.subtract(CircularRange(7, 10), first, b);
    EXPECT_EQ(first, a);
    EXPECT_EQ(b, CircularRange(8, 9, 10));
}

TEST(CircularRange, EndsAreBroughtOntoTheCircle) {
    EXPECT_EQ(CircularRange(-3, 12, 10), CircularRange(7, 2, 10));
    CircularRange value(12, 10);
    EXPECT_EQ(value.begin(), 12);
    value.canonicalize();
    EXPECT_EQ(value, CircularRange(2, 2, 10));
    int const large = std::numeric_limits<int>::max();
    CircularRange wide(large - 2, 5, large);
    EXPECT_EQ(wide.size(), 8);
    EXPECT_TRUE(wide.merge(CircularRange(6, large - 3, large)) && wide.full());
    EXPECT_EQ(wide.secondHalf(), CircularRange(large / 2, large - 1, large));
    for (int modulus : {0, -5}) { // no circle: nothing is divided, nothing is there, and nothing is full
        CircularRange none(3, 4, modulus);
        EXPECT_FALSE(none.valid());
        CircularRange odd(3, modulus);
        odd.canonicalize();
        EXPECT_FALSE(odd.contains(3) || odd.overlaps(odd) || odd.intersect(CircularRange(1, 4, 10)));
        EXPECT_TRUE(none.merge(CircularRange(1, 4, 10)));
        EXPECT_EQ(none, CircularRange(1, 4, 10));
    }
    CircularRange all;
    EXPECT_TRUE(all.merge(CircularRange(2, 4, 10)) && all.merge(CircularRange(5, 10)));
    EXPECT_EQ(all, CircularRange(2, 5, 10));
}

TEST(CircularRange, VectorsOfRangesStayApart) {
    qvTest::SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        int const modulus = 1 + random.below(16);
        qv::vector<CircularRange> ranges;
        Values values;
        for (int step = 0; step < 30; ++step) {
            std::vector<CircularRange> const choice = rangesOf(modulus);
            CircularRange const range = choice[std::size_t(random.oneIn(10) ? 0 : random.below(int(choice.size())))];
            bool const adds = random.oneIn(2);
            adds ? qvUtil::merge(ranges, range) : qvUtil::subtract(ranges, range);
            values = adds ? values | valuesOf(range) : values & ~valuesOf(range);
            Values all;
            for (CircularRange const & part : ranges) {
                EXPECT_TRUE(part.valid() && (all & valuesOf(part)).none());
                all |= valuesOf(part);
            }
            ASSERT_EQ(all, values);
            EXPECT_TRUE(!adds || step > 0 || ranges.size() == range.valid());
        }
    }
    qv::vector<CircularRange> ranges;
    for (int begin : {0, 4, 8, 2}) // the last one touches the first two
        qvUtil::merge(ranges, CircularRange(begin, begin + 1, 12));
    EXPECT_EQ(ranges, (qv::vector<CircularRange>{CircularRange(8, 9, 12), CircularRange(0, 5, 12)}));
}

} // namespace
