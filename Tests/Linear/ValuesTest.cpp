#include "LinearSupport.h"

#include "Base/Linear/qvLinearAffineMatrix2.h"
#include "Base/Linear/qvLinearHPoint.h"
#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearParamLine2.h"
#include "Base/Linear/qvLinearPoint2Flt.h"
#include "Base/Linear/qvLinearProjMatrix.h"
#include "Base/Linear/qvLinearProjMatrixFlt.h"
#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearQuaternion.h"
#include "Base/Linear/qvLinearRPoint.h"
#include "Base/Linear/qvLinearRotation.h"
#include "Base/Linear/qvLinearTolerance.h"
#include "Base/Linear/qvLinearTuple2.h"
#include "Base/Linear/qvLinearTuple3.h"
#include "Base/Linear/qvLinearTuple4.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <type_traits>

namespace {

using namespace qvLinear;
using namespace qvTest;

template <class V, std::size_t size>
constexpr bool isPlain = std::is_trivially_copyable_v<V> && std::is_standard_layout_v<V> &&
                             std::is_trivially_default_constructible_v<V> &&
                         sizeof(V) == size;

static_assert(isPlain<Vector, 24> && isPlain<Point, 24> && isPlain<Vector2, 16> && isPlain<Point2, 16>);
static_assert(isPlain<VectorFlt, 12> && isPlain<PointFlt, 12> && isPlain<Vector2Flt, 8> && isPlain<Point2Flt, 8>);
static_assert(isPlain<Normal, 32> && isPlain<RPoint, 32> && isPlain<HPoint, 32>);
static_assert(isPlain<Tuple2, 16> && isPlain<Tuple3, 24> && isPlain<Tuple4, 32>);
static_assert(isPlain<Line, 56> && isPlain<ParamLine, 48> && isPlain<ParamLine2, 32>);
static_assert(isPlain<Plane, 56> && isPlain<ParamPlane, 104>);
static_assert(isPlain<Range1d, 16> && isPlain<Range2d, 32> && isPlain<Range3d, 48>);
static_assert(isPlain<AffineMatrix, 96> && isPlain<AffineMatrixFlt, 48> && isPlain<AffineMatrix2, 48>);
static_assert(isPlain<ProjMatrix, 128> && isPlain<ProjMatrixFlt, 64> && isPlain<Quaternion, 32>);

// Nothing but a place that wants a pointer takes a value for one.
template <class V>
concept HasPointerArithmetic = requires(V v) {
    v + 1;
}
|| requires(V v, Point p) { v - p; }
|| requires(V v) { !v; };
static_assert(!HasPointerArithmetic<Vector> && !HasPointerArithmetic<Vector2Flt>);
static_assert(!std::is_constructible_v<Vector, Point> && !std::is_constructible_v<Point, Vector2>);
// Nor is a value of two numbers taken for an array of three.
template <class V, class Other>
concept Exchanges = requires(V v, Other other) {
    v.set(other);
}
|| requires(V v, Other other) { v.get(other); };
static_assert(!Exchanges<Vector, Point2> && !Exchanges<Tuple4, Vector> && !Exchanges<AffineMatrix, Vector>);
static_assert(Exchanges<Vector, double *> && Exchanges<AffineMatrix, double const *> && !Exchanges<Vector, float *>);
static_assert(std::is_convertible_v<Vector &, double *> && std::is_convertible_v<Point const &, double const *>);
static_assert(!std::is_convertible_v<Normal &, double *> && std::is_convertible_v<Normal &, double const *>);
static_assert(!std::is_convertible_v<Vector const &, double *>);
template <class A, class B = A>
concept Addable = requires(A a, B b) {
    a + b;
};
static_assert(!Addable<Point> && !Addable<HPoint> && Addable<Normal> && Addable<Normal, Vector>);

static_assert(Vector::y == Vector(0, 1, 0) && Vector2Flt::x[0] == 1 && VectorFlt::z[2] == 1 && Point::origin.z == 0);
static_assert(Tuple3::zero == Tuple3(0, 0, 0) && Normal::z.isValid() && Normal::z == Vector::z);

TEST(Values, StreamsWriteTheComponentsInTheFormatOfTheStream) {
    struct {
        std::string text;
        char const * expected;
    } const rows[] = {
        {textOf(Vector(1.5, -2, 1e20)), "Vector(1.5,-2,1e+20)"},
        {textOf(VectorFlt(0.1, 2, 3)), "VectorFlt(0.1,2,3)"},
        {textOf(Point(1, 2, 3)), "Point(1,2,3)"},
        {textOf(Point2(1, 2)), "Point2(1,2)"},
        {textOf(PointFlt(1, 2, 3)), "PointFlt(1,2,3)"},
        {textOf(Normal(0, 0, 7)), "Normal(0,0,1)"},
        {textOf(Vector2Flt(1, 2)), "Vector2Flt(1,2)"},
        {textOf(HPoint(1, 2, 3, 4)), "HPoint(1,2,3,4)"},
        {textOf(Tuple2(1, 2)), "Tuple2(1,2)"},
        {textOf(Line(Point::origin, Normal::x)), "Line(Point(0,0,0),Normal(1,0,0))"},
        {textOf(Plane(Point::origin, Normal::x)), "Plane(Point(0,0,0),Normal(1,0,0))"},
        {textOf(Range1d(1, 2)), "Range1d(1,2)"},
        {textOf(Range2d(1, 2, 3, 4)), "Range2d(Point2(1,2),Point2(3,4))"},
        {textOf(Quaternion(1, 2, 3, 4)), "Quaternion(1,2,3,4)"},
        {textOf(AffineMatrix(2.0)), "AffineMatrix(\n2,0,0\n0,2,0\n0,0,2\n0,0,0\n)"},
        {textOf(AffineMatrix2(2.0)), "AffineMatrix2(\n2,0\n0,2\n0,0\n)"},
        {textOf(ProjMatrix(2.0)), "ProjMatrix(\n2,0,0,0\n0,2,0,0\n0,0,2,0\n0,0,0,2\n)"},
        {textOf(ProjMatrixFlt(1.0F)), "ProjMatrixFlt(\n1,0,0,0\n0,1,0,0\n0,0,1,0\n0,0,0,1\n)"},
    };
    for (auto const & row : rows)
        EXPECT_EQ(row.text, row.expected);
    std::ostringstream exact;
    exact << std::setprecision(17) << std::showpos << Vector(0.1, 0, 1);
    EXPECT_EQ(exact.str(), "Vector(+0.10000000000000001,+0,+1)");
}

TEST(Values, AreArraysOfTheirComponents) {
    Vector v(1, 2, 3);
    double * const p = v;
    p[1] = 20;
    EXPECT_EQ(v, Vector(1, 20, 3));
    EXPECT_EQ(v[2L] + v[std::size_t{1}] + v[short{0}] + v[2U], 27);
    Tuple4 t(1, 2, 3, 4);
    t[std::size_t{3}] = 4;
    t[3] += t[2U] - t[short{1}];
    t /= Tuple4(2, 2, 2, 2);
    EXPECT_EQ(t, Tuple4(0.5, 1, 1.5, 2.5));
    double x, y, z;
    Normal(0, 2, 0).get(x, y, z);
    EXPECT_EQ(Vector(x, y, z), Vector::y);
    Normal promised(Promise(), Vector(0, 3, 4));
    EXPECT_EQ(promised.asVector(), Vector(0, 3, 4));
    promised.set(Promise(), v);
    EXPECT_TRUE(promised.isValid() && promised.asVector() == v);
    float const floats[] = {0.5F, 2, 3};
    double const doubles[] = {0.1, 2, 3};
    Point q(doubles);
    q.set(floats);
    EXPECT_EQ(q, Point(0.5, 2, 3));
    EXPECT_EQ(VectorFlt(doubles), VectorFlt(0.1F, 2, 3));
}

TEST(Values, ConvertBetweenTheirKinds) {
    HPoint const h(2, 4, 6, 3);
    EXPECT_TRUE(isSame(Point(h), Point(2 * (1 / 3.0), 4 * (1 / 3.0), 6 * (1 / 3.0))));
    EXPECT_TRUE(isSame(RPoint(h), RPoint(2 * (1 / 3.0), 4 * (1 / 3.0), 6 * (1 / 3.0), 3)));
    EXPECT_EQ(HPoint(RPoint(1, 2, 3, 2)), HPoint(2, 4, 6, 2));
    EXPECT_EQ(Point(RPoint(1, 2, 3, 2)), Point(1, 2, 3));
    EXPECT_EQ(HPoint(Point(1, 2, 3)), HPoint(1, 2, 3, 1));
    EXPECT_EQ(Vector(Vector2(1, 2)), Vector(1, 2, 0));
    EXPECT_EQ(Point2Flt(Point2(1, 2)).asPointFlt(), PointFlt(1, 2, 0));
    EXPECT_EQ(Vector(VectorFlt(0.1, 1, 2))[0], double{0.1F});
    EXPECT_EQ(Tuple4(RPoint(1, 2, 3, 4)), Tuple4(1, 2, 3, 4));
    EXPECT_EQ(Tuple2(Vector2(1, 2)).asPoint(), Point(1, 2, 0));
    Normal n = Vector(0, 3, 0);
    n = Vector(0, 0, 2);
    EXPECT_EQ(n, Normal::z);
    ParamLine const line(Point(1, 1, 1), Vector(0, 5, 0));
    Vector v(line);
    n = line;
    EXPECT_EQ(v, 5 * n);
}

TEST(Values, NormalizingHasFourRules) {
    struct {
        Normal normal;
        bool valid;
    } const rows[] = {
        {Normal(0, 0, 0), false},          {Normal(1e-13, 0, 0), false},  {Normal(0, 1e-11, 0), true},
        {Normal(notANumber, 1, 0), false}, {Normal(5e-324, 0, 0), false}, {Normal(Promise(), 0, 0, 0), true},
        {Normal(0, 0, -1e150), true},
    };
    for (auto const & row : rows) {
        EXPECT_EQ(row.normal.isValid(), row.valid);
        if (!row.valid) {
            EXPECT_TRUE(isSame(Vector(row.normal), Vector::zero));
        }
    }
    EXPECT_EQ(Normal(1e-12, 0, 0).isValid(), 1e-12 * 1e-12 > 1e-24);
    // An infinite length has the reciprocal 0.
    EXPECT_TRUE(Normal(infinity, 1, 0).isValid());
    EXPECT_TRUE(isSame(Vector(Normal(infinity, 1, 0)), Vector(notANumber, 0, 0)));

    Vector shortVector(1e-13, 0, 0);
    EXPECT_FALSE(shortVector.normalize());
    EXPECT_EQ(shortVector, Vector::zero);
    Vector2 shortVector2(1e-13, 0);
    EXPECT_FALSE(shortVector2.normalize());
    EXPECT_EQ(shortVector2, Vector2(1e-13, 0));
    // Rounded up, the square of this float is above the bound.
    VectorFlt onBound(1e-6F, 0, 0);
    EXPECT_EQ(onBound.normalize(), 1e-6F * 1e-6F > 1e-12F);
    Vector2Flt shortFlt(0, 9e-7F);
    EXPECT_FALSE(shortFlt.normalize());
    EXPECT_EQ(shortFlt, Vector2Flt::zero);

    RandomNumbers random;
    for (int i = 0; i < 2000; ++i) {
        Vector const v(random.any(), random.any(), random.any());
        double const length2 = v[0] * v[0] + v[1] * v[1] + v[2] * v[2];
        double const scale = 1 / std::sqrt(length2);
        Vector changed = v;
        EXPECT_EQ(changed.normalize(), length2 > 1e-24);
        EXPECT_TRUE(isSame(changed, length2 > 1e-24 ? Vector(v[0] * scale, v[1] * scale, v[2] * scale) : Vector::zero))
            << v;
        VectorFlt flt(v);
        float const scaleFlt = 1 / std::sqrt(flt[0] * flt[0] + flt[1] * flt[1] + flt[2] * flt[2]);
        VectorFlt const expected(flt[0] * scaleFlt, flt[1] * scaleFlt, flt[2] * scaleFlt);
        if (flt.length2() > 1e-12F && flt.normalize()) {
            EXPECT_TRUE(isSame(flt, expected));
        }
    }
}

TEST(Values, ReadTheTolerancesAtTheCall) {
    EXPECT_DOUBLE_EQ(perpendicularTol, std::sin(toRadians(degreeTol)));
    EXPECT_DOUBLE_EQ(parallelTol, std::cos(toRadians(degreeTol)));
    EXPECT_DOUBLE_EQ(perpendicular2Tol, perpendicularTol * perpendicularTol);
    EXPECT_DOUBLE_EQ(parallel2Tol, parallelTol * parallelTol);
    EXPECT_DOUBLE_EQ(toDegrees(toRadians(30)), 30);
    epsilon2Tol = 4;
    bool const isLongEnough = Normal(2, 0, 0).isValid();
    epsilon2Tol = 1e-24;
    EXPECT_FALSE(isLongEnough);
}

TEST(Values, EquivalenceIsStrict) {
    EXPECT_FALSE(equivalent(Vector(1, 2, 3), Vector(1, 2, 3.5), 0.5));
    EXPECT_TRUE(equivalent(Vector(1, 2, 3), Vector(1, 2, 3.5), 0.5000001));
    EXPECT_FALSE(equivalent(Point2::origin, Point2::origin, 0));
    EXPECT_FALSE(equivalent(Vector2(notANumber, 0), Vector2(notANumber, 0), 1));
    EXPECT_FALSE(equivalent(Tuple2(infinity, 0), Tuple2(infinity, 0), 1));
    EXPECT_TRUE(equivalent(VectorFlt(1, 1, 1), VectorFlt(1, 1, 1.25F), 0.5));
    EXPECT_EQ(Normal(Promise(), 0, 0, 0), Normal(0, 0, 0));
    EXPECT_NE(Vector(notANumber, 0, 0), Vector(notANumber, 0, 0));
}

template <class V>
struct Arithmetic : testing::Test {};
using Vectors = testing::Types<Vector, Vector2, VectorFlt, Vector2Flt>;
TYPED_TEST_SUITE(Arithmetic, Vectors);

TYPED_TEST(Arithmetic, IsThatOfTheComponents) {
    using V = TypeParam;
    using T = typename V::Element;
    RandomNumbers random;
    for (int round = 0; round < 2000; ++round) {
        auto const number = [&] { return static_cast<T>(random.any()); };
        V const items[3] = {detail::generate<V>([&](int) { return number(); }),
                            detail::generate<V>([&](int) { return number(); }),
                            detail::generate<V>([&](int) { return number(); })};
        V const & a = items[0];
        V const & b = items[1];
        T const weights[3] = {number(), number(), number()};
        T const s = weights[0];
        V product = a;
        V quotient = a;
        product *= s;
        quotient /= s;
        V const average = combine(3, items);
        V const sum = combine(3, weights, items);
        T square = a[0] * a[0];
        for (int i = 0; i < V::dimension; ++i) {
            EXPECT_TRUE(isSame((a + b)[i], a[i] + b[i]));
            EXPECT_TRUE(isSame((a - b)[i], a[i] - b[i]));
            EXPECT_TRUE(isSame(product[i], a[i] * s));
            EXPECT_TRUE(isSame((a / s)[i], a[i] * (1 / s)));
            bool const divides = std::is_same_v<V, VectorFlt>;
            EXPECT_TRUE(isSame(quotient[i], divides ? a[i] / s : a[i] * (1 / s)));
            EXPECT_TRUE(isSame(combine(a, b)[i], (a[i] + b[i]) * T(0.5)));
            EXPECT_TRUE(isSame(combine(s, a, weights[1], b)[i], s * a[i] + weights[1] * b[i]));
            EXPECT_TRUE(isSame(average[i], (a[i] + b[i] + items[2][i]) * (1 / T(3))));
            EXPECT_TRUE(isSame(sum[i], s * a[i] + weights[1] * b[i] + weights[2] * items[2][i]));
            if (i > 0)
                square += a[i] * a[i];
        }
        EXPECT_TRUE(isSame(a.length2(), square));
        EXPECT_TRUE(isSame(a.length(), std::sqrt(square)));
    }
}

TEST(Values, CrossAndOrthogonalVectorsArePerpendicular) {
    EXPECT_EQ(cross(Normal::x, Vector::y), Vector::z);
    EXPECT_EQ(cross(VectorFlt::z, VectorFlt::x), VectorFlt::y);
    EXPECT_EQ(Vector2(1, 2).orthogonalVector(), Vector2(-2, 1));
    EXPECT_EQ(Vector::zero.orthogonalVector(), Vector::zero);
    RandomNumbers random;
    for (int i = 0; i < 1000; ++i) {
        Vector const v = i < 27 ? Vector(i % 3 - 1, i / 3 % 3 - 1, i / 9 - 1) : random.vector();
        double const w = v[0] * v[1] > 0 && v[1] * v[2] > 0 ? -v[2] : v[2];
        EXPECT_EQ(v.orthogonalVector(),
                  Vector(v[0] * v[2] - v[1] * v[1], v[1] * v[0] - w * v[2], w * v[1] - v[0] * v[0]));
        EXPECT_NEAR(dot(v.orthogonalVector(), v), 0, 1e-12 * v.length() * v.orthogonalVector().length());
        EXPECT_EQ(v.orthogonalVector() == Vector::zero, v == Vector::zero) << v;
    }
}

TEST(Values, AnglesOfDirections) {
    Normal const invalid(0, 0, 0);
    double result = 0;
    EXPECT_EQ(angle(invalid, invalid), pi / 2);
    EXPECT_FALSE(angle(invalid, Normal::x, result));
    EXPECT_EQ(result, pi / 2);
    EXPECT_TRUE(angle(Normal::x, -Normal::x, result));
    EXPECT_EQ(result, pi);
    EXPECT_EQ(angle(Normal(Promise(), 1.0000001, 0, 0), Normal::x), 0);
    EXPECT_FALSE(isParallel(invalid, invalid, parallelTol) || isPerpendicular(invalid, Normal::x, perpendicularTol));
    EXPECT_TRUE(isParallel(Normal::x, -Normal::x, 1) && isPerpendicular(Normal::x, Normal::y, 0));
    EXPECT_FALSE(isParallel(Normal::x, Normal(1, 1e-6, 0), parallelTol));
    EXPECT_TRUE(isParallel(Normal::x, Normal(1, 1e-8, 0), parallelTol));

    EXPECT_EQ(unitCircleRotation(invalid, Normal::x, Normal::y, false), 0);
    EXPECT_EQ(unitCircleRotation(-Normal::x, Normal::x, Normal::y, false), pi);
    EXPECT_NEAR(unitCircleRotation(Normal(-1, -1e-9, 0), Normal::x, Normal::y, false), -pi, 1e-8);
    EXPECT_NEAR(unitCircleRotation(Normal(-1, -1e-9, 0), Normal::x, Normal::y, true), pi, 1e-8);

    HPoint const onEdge(2, -2, 3, 2);
    EXPECT_TRUE(onEdge.insideView(false) && !onEdge.insideView(true));
    EXPECT_FALSE(HPoint(2.1, 0, 0, 2).insideView(false) || HPoint(0, 0, -2.1, 2).insideView(false));
    EXPECT_EQ(qvLinear::max(1, 3, 2, -4) + qvLinear::min(1, 3, -2) + qvLinear::min(4, 3, 5, 6), 4);
}

TEST(Values, TurningKeepsLengthsAndAngles) {
    RandomNumbers random;
    EXPECT_EQ(rotate(Vector(1, 2, 3), Normal(0, 0, 0), 1), Vector(1, 2, 3));
    for (int i = 0; i < 1000; ++i) {
        Vector const v = random.vector();
        Normal const axis = random.normal();
        double const turn = random.real();
        Vector const turned = rotate(v, axis, turn);
        EXPECT_NEAR(turned.length(), v.length(), 1e-12);
        EXPECT_NEAR(dot(turned, axis), dot(v, axis), 1e-12);
        Vector const off = v - project(v, axis);
        EXPECT_NEAR(dot(turned, off), std::cos(turn) * dot(off, off), 1e-9);
        EXPECT_NEAR(dot(turned, cross(axis, v)), std::sin(turn) * dot(off, off), 1e-9);

        Normal const a = random.normal();
        Normal const b = i % 5 == 0 ? -a : i % 5 == 1 ? a : random.normal();
        double const t = random.real() / 20 + 0.5;
        Normal const between = interpolate(a, b, t);
        EXPECT_NEAR(angle(a, between), t * angle(a, b), 2e-7);
        EXPECT_NEAR(angle(between, b), (1 - t) * angle(a, b), 2e-7);
        Vector const long1 = 2 * a.asVector();
        Vector const long2 = 5 * b.asVector();
        EXPECT_NEAR(interpolate(long1, long2, t).length(), 2 + 3 * t, 1e-12);
    }
    EXPECT_EQ(interpolate(Normal::x, Normal(0, 0, 0), 0.3), Normal::x);
    EXPECT_EQ(interpolate(Normal(0, 0, 0), Normal::x, 0.3).isValid(), false);
    EXPECT_NEAR(angle(interpolate(Normal::x, -Normal::x, 0.5), Normal(cross(Normal::x.orthogonalVector(), Vector::x))),
                0, 1e-7);
}

} // namespace
