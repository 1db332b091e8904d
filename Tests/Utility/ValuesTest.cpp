// Time spans, colours, units, powers of two and random numbers.

#include "Base/Linear/qvLinearTolerance.h"
#include "Base/Utility/qvUtilColor.h"
#include "Base/Utility/qvUtilColor8.h"
#include "Base/Utility/qvUtilInterval.h"
#include "Base/Utility/qvUtilLinearUnits.h"
#include "Base/Utility/qvUtilPowerOfTwo.h"
#include "Base/Utility/qvUtilRandom.h"
#include "Support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>
#include <thread>
#include <utility>
#include <vector>

#include <sys/wait.h>
#include <unistd.h>

namespace {

using qvTest::ThrowsError;
using qvUtil::Color;
using qvUtil::Color8;
using qvUtil::Interval;
using qvUtil::LinearUnits;

std::pair<int, int> partsOf(Interval const & interval) { return {interval.seconds(), interval.microseconds()}; }

TEST(Interval, ComesFromText) {
    struct {
        char const * text;
        int seconds, microseconds;
    } const cases[] = {{"1500ms", 1, 500000},
                       {"90min", 5400, 0},
                       {"0s", 0, 0},
                       {"1us", 0, 1},
                       {"2000001us", 2, 1},
                       {"3000000000us", 3000, 0},
                       {"007h", 25200, 0},
                       {"2147483647s", INT_MAX, 0},
                       {"596523h", 2147482800, 0},
                       {"2147483647999999us", INT_MAX, 999999}};
    for (auto const & one : cases)
        EXPECT_EQ(partsOf(Interval(one.text)), std::make_pair(one.seconds, one.microseconds)) << one.text;
    for (char const * text :
         {"", "10", "us", "10 s", " 10s", "10s ", "+1s", "-1s", "1.5s", "1S", "1sec", "1m", "2147483648s", "596524h",
          "35791395min", "2147483648000ms", "18446744073709551616us", static_cast<char const *>(nullptr)})
        EXPECT_THAT([&] { Interval{text}; }, ThrowsError(1, "Bad time string")) << (text ? text : "null");
}

TEST(Interval, ComesFromNumbers) {
    double const infinity = std::numeric_limits<double>::infinity();
    struct {
        double number;
        int seconds, microseconds;
    } const cases[] = {{-1.5, 1, 500000},
                       {0.0000019, 0, 1},
                       {std::nextafter(1.0, 0.0), 0, 999999},
                       {std::nextafter(2147483648.0, 0.0), INT_MAX, 999999},
                       {2147483648.0, INT_MAX, 999999},
                       {-infinity, INT_MAX, 999999},
                       {std::nan(""), 0, 0}};
    for (auto const & one : cases)
        EXPECT_EQ(partsOf(Interval(one.number)), std::make_pair(one.seconds, one.microseconds)) << one.number;
    EXPECT_TRUE(Interval(0).isZero() && Interval().isZero() && !Interval("1us").isZero());
    EXPECT_EQ(partsOf(Interval(5000000000)), std::make_pair(INT_MAX, 999999));
    EXPECT_EQ(Interval("1500ms").dseconds(), 1.5);
    EXPECT_TRUE(Interval("1us") < Interval("2us") && Interval("999999us") < Interval(1));
    EXPECT_FALSE(Interval(2) < Interval("1999ms") || Interval(2) < Interval("2s"));
}

TEST(Color, BecomesBytesWithoutRounding) {
    struct {
        float component;
        int byte;
    } const cases[] = {{0, 0},     {1, 255},    {0.5F, 127}, {0.999F, 254}, {0.0039F, 0},
                       {-0.5F, 0}, {-1e30F, 0}, {2, 255},    {1e30F, 255},  {std::nanf(""), 0}};
    for (auto const & one : cases)
        for (int i = 0; i < 4; ++i) {
            Color color(0, 0, 0, 0);
            color[i] = one.component;
            Color8 const stored = color;
            for (int k = 0; k < 4; ++k)
                EXPECT_EQ(stored[k], k == i ? one.byte : 0) << one.component;
        }
    for (int byte = 0; byte < 256; ++byte) {
        auto const b = static_cast<unsigned char>(byte);
        EXPECT_EQ(Color(Color8(0, b, 0, 0)).g(), float(byte / 255.0));
    }
}

TEST(Color, KeepsItsComponentsInOrder) {
    float const numbers[] = {0.25F, 0.5F, 0.75F, 0};
    Color const color(numbers);
    EXPECT_EQ(color, Color(color.r(), color.g(), color.b(), color.a()));
    unsigned char const bytes[] = {1, 2, 3, 4};
    EXPECT_EQ(Color8(bytes).getAsInt(), 0x04030201U); // on a little-endian machine
    unsigned char r, g, b, a;
    Color8(bytes).getRGBA(r, g, b, a);
    EXPECT_EQ(Color8(bytes), Color8(r, g, b, a));
}

TEST(Color, IsEqualWithinTheTolerance) {
    EXPECT_EQ(Color(0.1F, 0, 0, 1), Color(0.1000001F, 0, 0, 1));
    float const tolerance = qvLinear::epsilonTolFlt;
    for (int i = 0; i < 4; ++i) {
        Color off(0, 0, 0, 0);
        off[i] = tolerance;
        EXPECT_NE(off, Color(0, 0, 0, 0)) << "strictly less";
        off[i] = -std::nextafter(tolerance, 0.0F);
        EXPECT_EQ(off, Color(0, 0, 0, 0));
        off[i] = std::nanf("");
        EXPECT_NE(off, off);
    }
}

TEST(PowerOfTwo, HoldsAtAllEdges) {
    std::vector<std::int64_t> candidates = {INT_MIN, -1, 0};
    for (int i = 0; i < 31; ++i)
        for (std::int64_t const base : {std::int64_t(1) << i, 3 * (std::int64_t(1) << i) / 2})
            for (std::int64_t const v : {base - 1, base, base + 1})
                candidates.push_back(std::min<std::int64_t>(v, INT_MAX));
    for (std::int64_t const v : candidates) {
        std::int64_t upper = 1;
        while (upper < v)
            upper *= 2;
        std::int64_t const lower = std::max<std::int64_t>(upper / 2, 1);
        std::int64_t const nearest = upper > INT_MAX || v - lower < upper - v ? lower : upper;
        EXPECT_EQ(qvUtil::ceilPowerOfTwo(int(v)), std::min<std::int64_t>(upper, INT_MAX)) << v;
        EXPECT_EQ(qvUtil::roundPowerOfTwo(int(v)), v < 2 ? 1 : nearest) << v;
        EXPECT_EQ(qvUtil::isPowerOfTwo(int(v)), upper == v) << v;
    }
}

TEST(LinearUnits, ConvertsByMillimetres) {
    double const millimeters[] = {25.4, 304.8, 914.4, 1609344, 1, 10, 1000, 1e6}; // in the order of the systems
    for (int i = 0; i < 8; ++i) {
        auto const unit = LinearUnits::System(i);
        EXPECT_DOUBLE_EQ(LinearUnits::convert(3, unit, LinearUnits::Inches), 3 * millimeters[i] / 25.4);
        EXPECT_DOUBLE_EQ(LinearUnits::convert(3, LinearUnits::Kilometers, unit), 3e6 / millimeters[i]);
    }
    EXPECT_EQ(LinearUnits::convert(1, LinearUnits::Miles, LinearUnits::Millimeters), 1609343.9999999998);
}

std::vector<double> randomNumbers(int n) {
    std::vector<double> numbers;
    for (int i = 0; i < n; ++i)
        numbers.push_back(qvUtil::random(1));
    return numbers;
}

TEST(Random, IsSpreadEvenly) {
    constexpr int n = 160000;
    int buckets[16] = {};
    for (double const r : randomNumbers(n)) {
        ASSERT_TRUE(r >= 0 && r <= 1);
        ASSERT_EQ(r * 2147483647.0, std::round(r * 2147483647.0));
        ++buckets[std::min(int(r * 16), 15)];
    }
    for (int const bucket : buckets)
        EXPECT_NEAR(bucket, n / 16, 8 * std::sqrt(n / 16)); // eight times the deviation to be expected
    for (int i = 0; i < 1000; ++i) {
        double const r = qvUtil::random(-3, -2);
        ASSERT_TRUE(r >= -3 && r <= -2);
    }
}

TEST(Random, GivesThreadsAndChildrenNumbersOfTheirOwn) {
    randomNumbers(1); // others are kept for later now
    constexpr int n = 40;
    int pipes[2];
    ASSERT_EQ(::pipe(pipes), 0);
    pid_t const child = ::fork();
    if (child == 0) {
        std::vector<double> const numbers = randomNumbers(n);
        bool const written = ::write(pipes[1], numbers.data(), n * sizeof(double)) == n * sizeof(double);
        ::_exit(written ? 0 : 1);
    }
    std::vector<double> all = randomNumbers(n);
    std::vector<double> inChild(n);
    ASSERT_EQ(::read(pipes[0], inChild.data(), n * sizeof(double)), n * sizeof(double));
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    ::close(pipes[0]);
    ::close(pipes[1]);
    all.insert(all.end(), inChild.begin(), inChild.end());
    std::vector<double> inThread;
    std::thread([&] { inThread = randomNumbers(n); }).join();
    all.insert(all.end(), inThread.begin(), inThread.end());
    std::sort(all.begin(), all.end());
    // By chance alone two of the 120 are the same once in 300,000 runs.
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
}

} // namespace
