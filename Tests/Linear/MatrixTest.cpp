#include "LinearSupport.h"

#include "Base/Linear/qvLinearAffineMatrix2.h"
#include "Base/Linear/qvLinearDecompose.h"
#include "Base/Linear/qvLinearProjMatrixFlt.h"
#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearRotation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>

namespace {

using namespace qvLinear;
using namespace qvTest;

constexpr int rounds = 1000;

template <class M>
testing::AssertionResult isNear(M const & a, M const & b, double tol) {
    if (equivalent(a, b, static_cast<typename M::Element>(tol)))
        return testing::AssertionSuccess();
    return testing::AssertionFailure() << a << " is not " << b;
}

template <class M>
M randomOf(RandomNumbers & random, bool any) {
    M matrix;
    for (auto & number : matrix.m)
        number = static_cast<typename M::Element>(any ? random.any() : random.real());
    return matrix;
}

// The products, written down once more.
template <class M>
M productOf(M const & a, M const & b) {
    using T = typename M::Element;
    constexpr int n = M::columns;
    M product;
    for (int i = 0; i < M::rows; ++i)
        for (int j = 0; j < n; ++j) {
            T sum = a.m[n * i] * b.m[j];
            for (int k = 1; k < n; ++k)
                sum += a.m[n * i + k] * b.m[n * k + j];
            if (i == n) // the translation, which has an implied 1 behind it
                sum += b.m[n * n + j];
            product.m[n * i + j] = sum;
        }
    return product;
}

template <class M>
bool hasSameBits(M const & a, M const & b) {
    return std::equal(std::begin(a.m), std::end(a.m), std::begin(b.m), [](auto x, auto y) { return isSame(x, y); });
}

template <class M>
void checkProducts() {
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        M const a = randomOf<M>(random, true);
        M const b = randomOf<M>(random, true);
        M const expected = productOf(a, b);
        ASSERT_TRUE(hasSameBits(a * b, expected)) << a << b;
        M inPlace = a;
        inPlace *= b;
        EXPECT_TRUE(hasSameBits(inPlace, expected));
        inPlace = b;
        inPlace.preMult(a);
        EXPECT_TRUE(hasSameBits(inPlace, expected));
        inPlace = a;
        b.preMult(inPlace, inPlace);
        EXPECT_TRUE(hasSameBits(inPlace, expected));
        inPlace = a;
        inPlace *= inPlace;
        EXPECT_TRUE(hasSameBits(inPlace, productOf(a, a)));
        EXPECT_EQ(isNaN(a), std::any_of(std::begin(a.m), std::end(a.m), [](auto x) { return std::isnan(x); }));
        EXPECT_EQ(isFinite(a), std::all_of(std::begin(a.m), std::end(a.m), [](auto x) { return std::isfinite(x); }));
        EXPECT_EQ(a == M(a), !isNaN(a));
    }
    M identity;
    EXPECT_EQ(identity.identity(), M::Identity);
    EXPECT_EQ(M::Identity, M(typename M::Element(1)));
}

TEST(Matrices, ProductsHaveTheBitsOfTheFormula) {
    checkProducts<AffineMatrix>();
    checkProducts<AffineMatrixFlt>();
    checkProducts<AffineMatrix2>();
    checkProducts<ProjMatrix>();
    checkProducts<ProjMatrixFlt>();
}

TEST(Matrices, VectorsAreRows) {
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        AffineMatrix const a = randomOf<AffineMatrix>(random, true);
        double const * const m = a.m;
        double const x = random.any(), y = random.any(), z = random.any(), w = random.any();
        Vector const linear(x * m[0] + y * m[3] + z * m[6], x * m[1] + y * m[4] + z * m[7],
                            x * m[2] + y * m[5] + z * m[8]);
        EXPECT_TRUE(isSame(Vector(x, y, z) * a, linear));
        EXPECT_TRUE(isSame(Point(x, y, z) * a, Point(linear[0] + m[9], linear[1] + m[10], linear[2] + m[11])));
        EXPECT_TRUE(isSame(HPoint(x, y, z, w) * a,
                           HPoint(linear[0] + w * m[9], linear[1] + w * m[10], linear[2] + w * m[11], w)));
        ProjMatrix const b = randomOf<ProjMatrix>(random, true);
        double const * const p = b.m;
        auto const column = [&](int j) { return x * p[j] + y * p[4 + j] + z * p[8 + j]; };
        EXPECT_TRUE(isSame(HPoint(x, y, z, w) * b, HPoint(column(0) + w * p[12], column(1) + w * p[13],
                                                          column(2) + w * p[14], column(3) + w * p[15])));
        EXPECT_TRUE(isSame(Point(x, y, z) * b,
                           HPoint(column(0) + p[12], column(1) + p[13], column(2) + p[14], column(3) + p[15])));
        EXPECT_TRUE(isSame(Vector(x, y, z) * b, Vector(column(0), column(1), column(2))));
        Tuple4 t(x, y, z, w);
        HPoint const h = HPoint(x, y, z, w) * b;
        b.preMult(t, t);
        EXPECT_TRUE(isSame(t, Tuple4(h)));

        VectorFlt const v(x, y, z);
        AffineMatrixFlt const f(a);
        EXPECT_TRUE(isSame((v.asPointFlt() * f)[1], v[0] * f.m[1] + v[1] * f.m[4] + v[2] * f.m[7] + f.m[10]));
        EXPECT_TRUE(isSame((v * f)[2], v[0] * f.m[2] + v[1] * f.m[5] + v[2] * f.m[8]));
    }
    // The one object stays as it was, with every form that says so.
    AffineMatrix const twice(2.0);
    Point p(1, 2, 3);
    twice.preMult(p, p);
    EXPECT_EQ(p, Point(1, 2, 3));
    Vector v(1, 2, 3);
    twice.preMult(v, v);
    EXPECT_EQ(v, Vector(1, 2, 3));
    HPoint h(1, 2, 3, 4);
    twice.preMult(h, h);
    ProjMatrix(2.0).preMult(h, h);
    EXPECT_EQ(h, HPoint(1, 2, 3, 4));
    Point q;
    twice.preMult(q, p);
    EXPECT_EQ(q, Point(2, 4, 6));
    AffineMatrix2 const flat = AffineMatrix2(1.0).translate(1, 2);
    EXPECT_EQ(Point2(5, 6) * flat, Point2(6, 8));
    EXPECT_EQ(Vector2(5, 6) * flat, Vector2(5, 6));
}

TEST(Matrices, ConvertBetweenTheirKinds) {
    RandomNumbers random;
    AffineMatrix const a = random.matrix();
    EXPECT_EQ(AffineMatrix(Promise(), ProjMatrix(a)), a);
    EXPECT_EQ(AffineMatrixFlt(Promise(), ProjMatrix(a)), AffineMatrixFlt(a));
    EXPECT_EQ(AffineMatrixFlt(Promise(), ProjMatrixFlt(a)), AffineMatrixFlt(a));
    EXPECT_EQ(ProjMatrixFlt(ProjMatrix(a)), ProjMatrixFlt(AffineMatrixFlt(a)));
    EXPECT_NEAR(AffineMatrix(AffineMatrixFlt(a)).m[7], a.m[7], 1e-6);
    ProjMatrix p(9.0);
    p = a;
    EXPECT_EQ(Vector(p.m[3], p.m[7], p.m[11]), Vector::zero);
    EXPECT_TRUE(p.isAffine() && p.m[15] == 1 && !ProjMatrix(2.0).isAffine());
    EXPECT_NEAR(ProjMatrixFlt(a).det3x3(), a.det3x3(), 1e-3);
    double numbers[12];
    a.get(numbers);
    EXPECT_EQ(AffineMatrix(numbers), a);
    EXPECT_EQ((a + a) - 2 * a, AffineMatrix(0.0));
    EXPECT_EQ((a * 3).m[11], a.m[11] * 3);
}

TEST(AffineMatrix, BuildersActBeforeWhatIsThere) {
    using Build = std::function<void(AffineMatrix &)>;
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        Vector const v = random.vector();
        double const s = random.real();
        Normal const axis = random.normal();
        Normal const to = i % 4 == 0 ? -axis : random.normal();
        Line const line(random.point(), axis);
        Plane const plane(random.point(), axis);
        Point const p = random.point();
        AffineMatrix const before = random.matrix();
        struct {
            char const * name;
            Build build;
            Point moved; // where the transformation alone takes p
        } const rows[] = {
            {"translate", [&](AffineMatrix & m) { m.translate(v); }, p + v},
            {"scale", [&](AffineMatrix & m) { m.scale(v[0], v[1], v[2]); }, {p.x * v[0], p.y * v[1], p.z * v[2]}},
            {"scale all", [&](AffineMatrix & m) { m.scale(s); }, {p.x * s, p.y * s, p.z * s}},
            {"rotateX", [&](AffineMatrix & m) { m.rotateX(s); }, rotate(p.asVector(), Normal::x, s).asPoint()},
            {"rotateY", [&](AffineMatrix & m) { m.rotateY(s); }, rotate(p.asVector(), Normal::y, s).asPoint()},
            {"rotateZ", [&](AffineMatrix & m) { m.rotateZ(s); }, rotate(p.asVector(), Normal::z, s).asPoint()},
            {"rotate", [&](AffineMatrix & m) { m.rotate(s, axis); }, rotate(p.asVector(), axis, s).asPoint()},
            {"rotate about line", [&](AffineMatrix & m) { m.rotate(s, line); },
             line.point + rotate(p - line.point, axis, s)},
            {"mirror", [&](AffineMatrix & m) { m.mirror(plane); }, p - 2 * plane.eval(p) * plane.normal},
        };
        for (auto const & row : rows) {
            AffineMatrix built = before;
            row.build(built);
            EXPECT_LT(distance(p * built, row.moved * before), 1e-9) << row.name;
        }
        AffineMatrix turned = AffineMatrix::Identity;
        turned.rotate(axis, to);
        EXPECT_TRUE(equivalent(axis * turned, to.asVector(), 1e-7));
        AffineMatrix crossed;
        EXPECT_TRUE(equivalent(v * crossed.crossMatrix(line.point.asVector()), cross(v, line.point.asVector()), 1e-12));
        crossed.outerProduct(v, p.asVector());
        EXPECT_EQ(Vector(crossed.m[3], crossed.m[4], crossed.m[5]), v[1] * p.asVector());
        AffineMatrix2 flat = AffineMatrix2(1.0).scale(2, 3).rotate(s).translate(1, 2);
        Vector const spun = rotate(Vector(p.x + 1, p.y + 2, 0), Normal::z, s);
        EXPECT_TRUE(equivalent(Point2(p.x, p.y) * flat, Point2(spun[0] * 2, spun[1] * 3), 1e-11));
    }
    AffineMatrix m = AffineMatrix::Identity;
    EXPECT_LT(distance(Point(1, 0, 0) * m.rotateZ(pi / 2), Point(0, 1, 0)), 1e-15);
    m = AffineMatrix::Identity;
    EXPECT_EQ(m.rotate(Normal::x, Normal::x), AffineMatrix::Identity);
    m.rotate(Normal::x, -Normal::x);
    EXPECT_TRUE(equivalent(Normal::x.orthogonalVector() * m, Normal::x.orthogonalVector(), 1e-15));
}

// Gauss and Jordan, as it is told.
bool invertPlainly(double (&a)[3][3], double (&b)[3][3]) {
    for (int i = 0; i < 9; ++i)
        b[i / 3][i % 3] = i % 4 == 0;
    for (int k = 0; k < 3; ++k) {
        int best = k;
        for (int i = k + 1; i < 3; ++i)
            best = std::fabs(a[i][k]) > std::fabs(a[best][k]) ? i : best;
        std::swap(a[k], a[best]);
        std::swap(b[k], b[best]);
        double const pivot = a[k][k];
        if (std::fabs(pivot) < 1e-12)
            return false;
        for (int j = 0; j < 3; ++j) {
            a[k][j] *= 1 / pivot;
            b[k][j] *= 1 / pivot;
        }
        for (int i = 0; i < 3; ++i) {
            double const multiple = a[i][k];
            for (int j = 0; j < 3 && i != k; ++j) {
                a[i][j] -= multiple * a[k][j];
                b[i][j] -= multiple * b[k][j];
            }
        }
    }
    return true;
}

TEST(Matrices, InversesUndo) {
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        AffineMatrix a = random.matrix();
        if (i % 3 == 0) // ties between the pivots
            for (double & number : a.m)
                number = random.below(3) - 1;
        double rows[3][3] = {{a.m[0], a.m[1], a.m[2]}, {a.m[3], a.m[4], a.m[5]}, {a.m[6], a.m[7], a.m[8]}};
        double expected[3][3];
        bool const invertible = invertPlainly(rows, expected);
        EXPECT_EQ(a.isInvertible(), invertible);
        AffineMatrix inverse = a;
        AffineMatrix fast = a;
        ProjMatrix projective(a);
        EXPECT_EQ(inverse.invert(), invertible);
        EXPECT_EQ(fast.invertFast(), invertible);
        EXPECT_EQ(projective.invert(), invertible);
        if (!invertible) {
            EXPECT_TRUE(inverse == a && fast == a && projective == ProjMatrix(a) && a.inverse() == a);
            continue;
        }
        for (int k = 0; k < 9; ++k)
            EXPECT_TRUE(isSame(inverse.m[k], expected[k / 3][k % 3]) || inverse.m[k] == 0);
        EXPECT_EQ(inverse.getTranslate(), -(a.getTranslate() * inverse));
        EXPECT_TRUE(isNear(a * inverse, AffineMatrix::Identity, 1e-9));
        EXPECT_TRUE(isNear(inverse * a, AffineMatrix::Identity, 1e-9));
        EXPECT_TRUE(isNear(fast, inverse, 1e-8));
        EXPECT_TRUE(isNear(projective, ProjMatrix(inverse), 1e-9));

        ProjMatrix const b = randomOf<ProjMatrix>(random, false);
        if (std::fabs(b.det4x4()) < 10)
            continue;
        EXPECT_TRUE(isNear(b * b.inverse(), ProjMatrix::Identity, 1e-8));
        fast = a;
        ProjMatrix cofactors = b;
        EXPECT_TRUE(cofactors.invertFast());
        EXPECT_TRUE(isNear(b * cofactors, ProjMatrix::Identity, 1e-8));
        ProjMatrix transposed = b;
        transposed.transpose();
        EXPECT_EQ(transposed.m[7], b.m[13]);
        EXPECT_NEAR(transposed.det4x4(), b.det4x4(), 1e-9 * (1000 + std::fabs(b.det4x4())));
        AffineMatrix2 const c = AffineMatrix2(1.0).rotate(random.real()).scale(2, 0.5).translate(3, random.real());
        EXPECT_TRUE(isNear(c.inverse() * c, AffineMatrix2::Identity, 1e-12));
    }
    AffineMatrix const moved = AffineMatrix(1.0).translate(1, 2, 3);
    AffineMatrix fast = moved;
    EXPECT_TRUE(fast.invertFast());
    EXPECT_EQ(fast, AffineMatrix(1.0).translate(-1, -2, -3));
    EXPECT_EQ(moved.inverse(), fast);
    // The limit is an absolute one, on a pivot there and on the determinant here.
    AffineMatrix small(1e-5);
    EXPECT_FALSE(small.isInvertible() || small.invertFast());
    EXPECT_TRUE(small.invert() && !AffineMatrix(1e-13).invert());
    AffineMatrix2 singular(0.0);
    EXPECT_FALSE(singular.invert());
    EXPECT_EQ(singular, AffineMatrix2(0.0));
}

TEST(Matrices, DeterminantsAreSumsOverPermutations) {
    RandomNumbers random;
    for (int i = 0; i < 200; ++i) {
        ProjMatrix const a = randomOf<ProjMatrix>(random, false);
        int order[4];
        for (int n : {3, 4}) {
            std::iota(order, order + 4, 0);
            double sum = 0;
            do {
                double product = 1;
                for (int k = 0; k < n; ++k) {
                    product *= a.m[4 * k + order[k]];
                    for (int j = 0; j < k; ++j)
                        product = order[j] > order[k] ? -product : product;
                }
                sum += product;
            } while (std::next_permutation(order, order + n));
            EXPECT_NEAR(n == 3 ? a.det3x3() : a.det4x4(), sum, 1e-9);
        }
        AffineMatrix const affine = random.matrix();
        EXPECT_DOUBLE_EQ(affine.det4x4(), affine.det3x3());
    }
}

TEST(AffineMatrix, TransformsLinesPlanesAndRanges) {
    RandomNumbers random;
    for (int i = 0; i < rounds; ++i) {
        AffineMatrix a = random.matrix();
        Line const line(random.point(), random.normal());
        Line movedLine = line;
        a.preMult(movedLine, movedLine);
        EXPECT_LT(distance(line.eval(3) * a, movedLine), 1e-9);
        EXPECT_NEAR(movedLine.direction.asVector().length(), 1, 1e-12);
        ParamLine const param(random.point(), random.vector());
        EXPECT_LT(distance((param * a).eval(-2), param.eval(-2) * a), 1e-9);

        ParamPlane const coordinates(random.point(), random.vector(), random.vector(), false);
        Plane const plane(coordinates);
        Plane const moved = plane * a;
        ParamPlane const movedToo = coordinates * a;
        Point const inside = coordinates.eval(random.real(), 1) * a;
        EXPECT_NEAR(moved.eval(inside), 0, 1e-7);
        EXPECT_EQ(movedToo.normal, moved.normal);
        EXPECT_NEAR(dot(movedToo.u, movedToo.v), 0, 1e-7 * (1 + movedToo.u.length2()));
        EXPECT_EQ(movedToo.u, coordinates.u * a);
        bool ok = false;
        AffineMatrix const normals = a.vectorMatrix(ok);
        EXPECT_TRUE(ok);
        Plane other = plane;
        a.preMult(other, other, normals);
        EXPECT_EQ(other, moved);
        // The inverse transpose keeps an upper side up; the normal matrix turns it when the matrix mirrors.
        Point const above = (plane.point + plane.normal) * a;
        EXPECT_GT(moved.eval(above), 0);
        EXPECT_TRUE(isNear(a.normalMatrix(ok), a.det3x3() < 0 ? normals * AffineMatrix(-1.0) : normals, 1e-15));

        Range3d box(random.point());
        box.include(random.point());
        Range3d const movedBox = box * a;
        Range3d hull;
        for (int corner = 0; corner < 8; ++corner) {
            Point const p = Point(box.min().x + (corner & 1) * (box.max().x - box.min().x),
                                  box.min().y + (corner >> 1 & 1) * (box.max().y - box.min().y),
                                  box.min().z + (corner >> 2) * (box.max().z - box.min().z)) *
                            a;
            corner == 0 ? hull.set(p) : hull.include(p);
        }
        EXPECT_TRUE(equivalent(movedBox, hull, 1e-9));
    }
    Range3d all;
    all.setUnbounded();
    EXPECT_EQ(all * AffineMatrix(-5.0), all);
    AffineMatrix2 const turn = AffineMatrix2(1.0).rotate(pi / 6).translate(1, 1).scale(2);
    Range2d corners(Point2(0, 0) * turn);
    for (Point2 const & corner : {Point2(1, 0), Point2(0, 1), Point2(1, 1)})
        corners.include(corner * turn);
    EXPECT_TRUE(equivalent(Range2d::unitSquare * turn, corners, 1e-15));
    EXPECT_LT(corners.min().x, corners.max().x - 2.5);
    EXPECT_TRUE(equivalent(Range2d(1, 2, 3, 4) * AffineMatrix2(-1.0), Range2d(-3, -4, -1, -2), 1e-15));
    bool ok = true;
    EXPECT_EQ(AffineMatrix(0.0).vectorMatrix(ok), AffineMatrix(0.0));
    EXPECT_FALSE(ok);
}

AffineMatrix recomposed(Vector const & translate, Vector const & scale, Vector const & degrees, Vector const & shear) {
    AffineMatrix const shearing =
        AffineMatrix::Identity *
        AffineMatrix(std::array{1.0, 0.0, 0.0, shear[0], 1.0, 0.0, shear[1], shear[2], 1.0, 0.0, 0.0, 0.0}.data());
    AffineMatrix result = AffineMatrix::Identity;
    result.rotateZ(toRadians(degrees[2])).rotateY(toRadians(degrees[1])).rotateX(toRadians(degrees[0]));
    result = AffineMatrix(1.0).scale(scale[0], scale[1], scale[2]) * shearing * result;
    return result * AffineMatrix(1.0).translate(translate);
}

TEST(OrvenDecompose, PartsMakeUpTheMatrix) {
    RandomNumbers random;
    Vector translate, scale, degrees, shear;
    for (int i = 0; i < 3 * rounds; ++i) {
        AffineMatrix a = random.matrix();
        bool const isGimbal = i % 5 == 0;
        if (isGimbal)
            a = AffineMatrix(1.0).scale(2, 3, 4).rotateY(i % 2 ? pi / 2 : -pi / 2).rotateX(random.real());
        ASSERT_TRUE(orvenDecompose(a, translate, scale, degrees, shear));
        // Between the limits of the two cases about 90 degrees lie angles that are known to half of the digits only.
        double const tol = std::fabs(std::fabs(degrees[1]) - 90) < 1e-3 ? 1e-4 : 1e-8;
        EXPECT_TRUE(isNear(recomposed(translate, scale, degrees, shear), a, tol)) << degrees;
        EXPECT_EQ(scale[0] < 0, a.det3x3() < 0);
    }
    EXPECT_FALSE(orvenDecompose(AffineMatrix(0.0).translate(0, 0, 0), translate, scale, degrees, shear));
    EXPECT_TRUE(scale == Vector::zero && shear == Vector::zero && degrees == Vector::zero);
    ASSERT_TRUE(orvenDecompose(AffineMatrix(1.0).scale(-1, 1, 1), translate, scale, degrees, shear));
    EXPECT_EQ(scale, Vector(-1, -1, -1));
    EXPECT_TRUE(isNear(recomposed(translate, scale, degrees, shear), AffineMatrix(1.0).scale(-1, 1, 1), 1e-15));
    EXPECT_FALSE(orvenDecompose(AffineMatrix(1.0).scale(1, 2, 0), translate, scale, degrees, shear));
    EXPECT_EQ(scale, Vector(1, 2, 0));
}

} // namespace
