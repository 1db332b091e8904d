#include "LinearSupport.h"

#include "Base/Linear/qvLinearNumeric.h"
#include "Base/Linear/qvLinearRandom.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

using namespace qvLinear;
using namespace qvTest;

// A function that notes where it was asked.
struct Function : evalFunction {
    std::function<double(double)> f;
    std::vector<double> places;

    explicit Function(std::function<double(double)> function) : f(std::move(function)) {}
    double operator()(double x) override {
        places.push_back(x);
        return f(x);
    }
};

TEST(BrentsIteration, FindsKnownRoots) {
    struct {
        std::function<double(double)> f;
        double a, b, root;
    } const rows[] = {
        {[](double x) { return x * x - 2; }, 0, 2, std::sqrt(2)},
        {[](double x) { return std::cos(x) - x; }, 0, 1, 0.7390851332151607},
        {[](double x) { return std::exp(x) - 5; }, -3, 10, std::log(5)},
        {[](double x) { return x * x * x - 1e-3; }, 5, -4, 0.1},
        {[](double x) { return std::atan(x - 3) * 1e6; }, -100, 50, 3},
        {[](double x) { return x < 0.25 ? -1.0 : 1.0; }, 0, 1, 0.25},
    };
    for (auto const & row : rows) {
        Function f(row.f);
        int status = -1;
        EXPECT_NEAR(brentsIteration(f, row.a, row.b, 1e-13, status), row.root, 1e-12);
        EXPECT_EQ(status, 0);
        EXPECT_LT(f.places.size(), 70U);
    }
}

TEST(BrentsIteration, TellsWhatItFoundByItsStatus) {
    struct {
        std::function<double(double)> f;
        double a, b, tol, result;
        int status;
        std::size_t evaluations;
    } const rows[] = {
        {[](double x) { return x - 1; }, 1, 5, 1e-9, 1, 0, 2},
        {[](double x) { return x - 5; }, 1, 5, 1e-9, 5, 0, 2},
        {[](double x) { return x * x + 1; }, -3, 2, 1e-9, 2, 1, 2},
        {[](double x) { return x < 1e-9 ? -1.0 : 1.0; }, -1e300, 1e300, 1e-13, notANumber, 2, 102},
        {[](double) { return notANumber; }, 0, 1, 1e-9, 1, 0, 2},
    };
    for (auto const & row : rows) {
        Function f(row.f);
        int status = -1;
        double const result = brentsIteration(f, row.a, row.b, row.tol, status);
        if (!std::isnan(row.result)) {
            EXPECT_EQ(result, row.result);
        }
        EXPECT_EQ(status, row.status);
        EXPECT_LE(f.places.size(), row.evaluations);
    }
}

TEST(BracketMinimum, EnclosesAMinimumOrSaysThatThereIsNone) {
    Function parabola([](double x) { return (x - 1) * (x - 1); });
    minimumBracket bracket;
    ASSERT_TRUE(bracketMinimum(0, 3, 1e-6, parabola, bracket));
    EXPECT_EQ(parabola.places[2], 2.4);

    RandomNumbers random;
    for (int i = 0; i < 300; ++i) {
        double const place = random.real();
        double const slope = random.real();
        Function f([&](double x) { return std::cosh(x - place) + slope * 0.05 * x; });
        ASSERT_TRUE(bracketMinimum(-25, 25, 1e-3, f, bracket));
        EXPECT_TRUE(bracket.a < bracket.b && bracket.b < bracket.c);
        EXPECT_TRUE(f.f(bracket.b) < f.f(bracket.a) && f.f(bracket.b) < f.f(bracket.c));
    }

    struct {
        std::function<double(double)> f;
        double a, b, tol;
        std::size_t evaluations;
    } const failures[] = {
        {[](double x) { return x * x; }, -1, 1, 2.5, 2},
        {[](double x) { return x * x; }, 1, -1, 0.1, 2},
        {[](double x) { return x * x; }, -1, 1, 0, 2},
        {[](double x) { return x * x; }, -1, 1, notANumber, 2},
        {[](double x) { return x * x; }, notANumber, 1, 0.1, 2},
        {[](double x) { return x * x; }, -infinity, infinity, 0.1, 3},
        {[](double) { return notANumber; }, -1, 1, 0.1, 3},
        {[](double x) { return x; }, 0, 1, 1e-3, 3000},
        {[](double x) { return x; }, 0, 1, 1e-300, 1'000'000},
    };
    for (auto const & row : failures) {
        Function f(row.f);
        EXPECT_FALSE(bracketMinimum(row.a, row.b, row.tol, f, bracket));
        EXPECT_LE(f.places.size(), row.evaluations);
    }
}

TEST(BracketMinimum, SearchesTheHalfWithTheSmallerValueFirst) {
    Function falling([](double x) { return x < 9 ? 10 - x : 1 + (x - 9) * 2; });
    minimumBracket bracket;
    ASSERT_TRUE(bracketMinimum(0, 10, 1e-3, falling, bracket));
    // f is 10 and 3 at the ends, so x = 30 / 13 with f = 7.69..., and neither is larger than both.
    ASSERT_GE(falling.places.size(), 4U);
    EXPECT_DOUBLE_EQ(falling.places[2], 30.0 / 13);
    double const fx = 10 - 30.0 / 13;
    EXPECT_DOUBLE_EQ(falling.places[3], (3 * 10 + fx * 30 / 13) / (3 + fx));
}

TEST(BrentMinimize, ConvergesOnKnownMinima) {
    struct {
        std::function<double(double)> f;
        minimumBracket bracket;
        double xmin, fmin;
    } const rows[] = {
        {[](double x) { return (x - 2) * (x - 2) + 3; }, {0, 1, 5}, 2, 3},
        {[](double x) { return -std::cos(x - 1); }, {-1, 0, 4}, 1, -1},
        {[](double x) { return std::exp(x) - 3 * x; }, {0, 0.5, 4}, std::log(3), 3 - 3 * std::log(3)},
        {[](double x) { return std::fabs(x - 0.3); }, {-2, 1, 2}, 0.3, 0},
    };
    for (auto const & row : rows) {
        Function f(row.f);
        minimumBracket bracket = row.bracket;
        double xmin = 0;
        double fmin = 0;
        EXPECT_TRUE(brentMinimize(f, 1e-7, bracket, xmin, fmin));
        EXPECT_NEAR(xmin, row.xmin, 1e-5);
        EXPECT_NEAR(fmin, row.fmin, 1e-5);
        EXPECT_EQ(fmin, f.f(xmin));
        EXPECT_EQ(f.places.back(), xmin);
        EXPECT_TRUE(bracket.a <= bracket.b && bracket.b <= bracket.c && bracket.c - bracket.a < 1e-4);
    }
    Function constant([](double) { return 1.0; });
    Function undefined([](double) { return notANumber; });
    minimumBracket bracket(0, 1, 3);
    double xmin, fmin;
    brentMinimize(constant, 1e-9, bracket, xmin, fmin);
    EXPECT_EQ(fmin, 1);
    EXPECT_LE(constant.places.size(), 101U);
    bracket = minimumBracket(0, 1, 3);
    brentMinimize(undefined, 1e-9, bracket, xmin, fmin);
    EXPECT_LE(undefined.places.size(), 101U);
}

// The places that a minimisation visits, as they are told, with the entries of the history as x0, x1, x2.
std::vector<double> placesOf(std::function<double(double)> const & f, double tol, minimumBracket bracket) {
    auto & [a, b, c] = bracket;
    std::vector<double> places{b};
    double e = 0, d = 0;
    double x0 = b, x1 = b, x2 = b;
    double f0 = f(b), f1 = f0, f2 = f0;
    for (int i = 0; i < 100; ++i) {
        double const xm = (a + c) * 0.5;
        double const tol1 = std::fabs(b) * tol + 1e-16;
        if ((c - a) * 0.5 <= 2 * tol1)
            break;
        bool golden = std::fabs(e) <= tol1;
        if (!golden) {
            double p = (x0 - x2) * (x0 - x2) * (f0 - f1) - (x0 - x1) * (x0 - x1) * (f0 - f2);
            double q = 2 * ((f0 - f1) * (x0 - x2) - (f0 - f2) * (x0 - x1));
            p = q > 0 ? -p : p;
            q = std::fabs(q);
            double const etemp = e;
            e = d;
            golden = std::fabs(0.5 * q * etemp) <= std::fabs(p) || p <= (a - x0) * q || (c - x0) * q <= p;
            if (!golden) {
                d = p / q;
                if (x0 + d - a < 2 * tol1 || c - (x0 + d) < 2 * tol1)
                    d = xm > x0 ? tol1 : -tol1;
            }
        }
        if (golden) {
            e = (xm > b ? c : a) - b;
            d = e * 0.38196601125010515;
        }
        double const u = std::fabs(d) >= tol1 ? b + d : d < 0 ? b - tol1 : b + tol1;
        double const fu = f(u);
        places.push_back(u);
        if (f0 < fu) {
            (x0 <= u ? c : a) = u;
            x2 = u;
            f2 = fu;
        } else {
            (x0 <= u ? a : c) = x0;
            x2 = x1;
            f2 = f1;
        }
        x1 = x0;
        f1 = f0;
        x0 = b = u;
        f0 = fu;
    }
    return places;
}

TEST(BrentMinimize, VisitsThePlacesThatAreTold) {
    RandomNumbers random;
    for (int i = 0; i < 500; ++i) {
        double const place = random.real(), skew = random.real() / 20;
        Function f(
            [&](double x) { return std::cosh((x - place) * 0.3) + skew * x + (i % 2 ? std::fabs(x - place) : 0); });
        minimumBracket bracket(place - 3 + skew, place + random.real() / 5, place + 4);
        auto const expected = placesOf(f.f, 1e-6, bracket);
        double xmin, fmin;
        brentMinimize(f, 1e-6, bracket, xmin, fmin);
        ASSERT_EQ(f.places, expected);
    }
}

TEST(SolveQuadratic, NamedCases) {
    struct {
        double a, b, c;
        std::vector<double> roots;
    } const rows[] = {
        {0, 0, 5, {}},      {0, 2, -4, {2}},    {1e-13, 2, -4, {2}}, {1, 0, -4, {-2, 2}},
        {1, 0, 4, {}},      {1, -3, 2, {1, 2}}, {-1, 3, -2, {1, 2}}, {1, 3, 2, {-2, -1}},
        {1, -2, 1, {1, 1}}, {1, 0, 0, {0, 0}},  {1, 2, 5, {}},       {1, -1e8, 1, {1e-8, 1e8}},
    };
    for (auto const & row : rows) {
        double roots[2] = {notANumber, notANumber};
        ASSERT_EQ(solveQuadratic(row.a, row.b, row.c, roots), static_cast<int>(row.roots.size())) << row.b;
        for (std::size_t i = 0; i < row.roots.size(); ++i)
            EXPECT_DOUBLE_EQ(roots[i], row.roots[i]);
    }
    RandomNumbers random;
    for (int i = 0; i < 2000; ++i) {
        double const p = random.real();
        double const q = random.real();
        double const a = random.real() + (i % 2 ? 11 : -11);
        double roots[2];
        if (std::fabs(p - q) < 1e-3)
            continue;
        ASSERT_EQ(solveQuadratic(a, -a * (p + q), a * p * q, roots), 2);
        EXPECT_NEAR(roots[0], std::min(p, q), 1e-8);
        EXPECT_NEAR(roots[1], std::max(p, q), 1e-8);
    }
}

__extension__ typedef unsigned __int128 Wide;

// The generator in arithmetic of its own.
struct Model {
    Wide x;
    double next() {
        constexpr auto modulus = static_cast<Wide>(1) << 48;
        x = (x * 0xE66DDEEC0005 + 0xB) % modulus;
        return std::ldexp(static_cast<double>(static_cast<std::uint64_t>(x)), -48);
    }
};

TEST(Random48, FollowsTheRecurrence) {
    unsigned short first[3] = {0x1234, 0xABCD, 0x330E};
    unsigned short own[3] = {0xFFFF, 0x8000, 1};
    Model model{0x330EABCD1234};
    Model modelOfOwn{0x00018000FFFF};
    unsigned short const * const before = qv_seed48(first);
    EXPECT_EQ(before[0] | before[1] << 16, static_cast<int>(0xABCD1234)); // the state at load
    EXPECT_EQ(before[2], 0x330E);
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(qvLinear::drand48(), model.next());
        EXPECT_EQ(qvLinear::erand48(own), modelOfOwn.next());
        EXPECT_EQ(qvLinear::lrand48(), static_cast<long>(model.next() * 2147483648.0));
    }
    // Going back to a state that was left, by way of the array that seed48 gave.
    unsigned short * const left = qvLinear::seed48(own);
    qvLinear::drand48();
    qvLinear::seed48(left);
    EXPECT_EQ(qvLinear::drand48(), model.next());

    for (long const seed : {0L, 1L, -1L, 0x123456789L}) {
        qvLinear::srand48(seed);
        Model seeded{static_cast<Wide>(static_cast<std::uint32_t>(seed)) << 16 | 0x1234};
        // In the order of the words: 0x1234 is the lowest.
        EXPECT_EQ(qv_drand48(), seeded.next());
        EXPECT_EQ(qv_lrand48(), static_cast<long>(seeded.next() * 2147483648.0));
    }
    qv_srand48(0);
    unsigned short const * const state = qv_seed48(first);
    EXPECT_TRUE(state[0] == 0x1234 && state[1] == 0 && state[2] == 0);
}

} // namespace
