#include "LinearSupport.h"

#include "Base/Linear/qvLinearQuaternion.h"
#include "Base/Linear/qvLinearRotation.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <gtest/gtest.h>

namespace {

using namespace qvLinear;
using namespace qvTest;

AffineMatrix matrixOf(Quaternion const & q) {
    AffineMatrix matrix;
    q.getMatrix(matrix);
    return matrix;
}

TEST(Quaternion, IsTheRotationOfItsMatrix) {
    RandomNumbers random;
    for (int i = 0; i < 2000; ++i) {
        Normal const axis = random.normal();
        double const turn = random.real();
        Quaternion const q(turn, axis);
        Quaternion const r(random.real(), random.normal());
        Vector const v = random.vector();
        EXPECT_TRUE(equivalent(matrixOf(q), AffineMatrix(1.0).rotate(turn, axis), 1e-14));
        EXPECT_TRUE(equivalent(v * q, rotate(v, axis, turn), 1e-13));
        EXPECT_TRUE(equivalent(v * (q * r), v * q * r, 1e-13));
        EXPECT_TRUE(equivalent(matrixOf(q * r), matrixOf(q) * matrixOf(r), 1e-14));
        EXPECT_TRUE(equivalent(q * q.conjugate(), Quaternion(0, 0, 0, 1), 1e-15));
        EXPECT_TRUE(equivalent((3 * q).inverse() * (3 * q), Quaternion(0, 0, 0, 1), 1e-14));

        double angleBack = -1;
        Normal axisBack;
        if (q.getAngleAxis(angleBack, axisBack)) {
            EXPECT_TRUE(0 <= angleBack && angleBack <= 2 * pi + 1e-12);
            EXPECT_TRUE(equivalent(matrixOf(Quaternion(angleBack, axisBack)), matrixOf(q), 1e-7));
        }
    }
    double turn = 7;
    Normal axis;
    EXPECT_FALSE(Quaternion(0, 0, 0, 1).getAngleAxis(turn, axis));
    EXPECT_TRUE(turn == 0 && axis == Normal::x);
    EXPECT_TRUE(Quaternion(0, 0, 0, -1).getAngleAxis(turn, axis));
    EXPECT_TRUE(turn == 2 * pi && !axis.isValid());
    Quaternion zero(0, 0, 0, 0);
    zero.normalize();
    EXPECT_TRUE(std::isnan(zero.w));
    EXPECT_TRUE(isSame((Quaternion(1, 0, 0, 0) / 3).x, 1 * (1 / 3.0)));
}

TEST(Quaternion, HasTheBitsOfTheFormulas) {
    RandomNumbers random;
    for (int i = 0; i < 20000; ++i) {
        Quaternion const q(random.any(), random.any(), random.any(), random.any());
        double const x = q.x, y = q.y, z = q.z, w = q.w;
        double const m[12] = {1 - 2 * (y * y + z * z),
                              2 * (x * y + w * z),
                              2 * (x * z - w * y),
                              2 * (x * y - w * z),
                              1 - 2 * (x * x + z * z),
                              2 * (y * z + w * x),
                              2 * (x * z + w * y),
                              2 * (y * z - w * x),
                              1 - 2 * (x * x + y * y),
                              0,
                              0,
                              0};
        AffineMatrix const matrix = matrixOf(q);
        for (int k = 0; k < 12; ++k)
            ASSERT_TRUE(isSame(matrix.m[k], m[k])) << q << " at " << k;

        // Each unit quaternion is turned a little further, or much.
        Quaternion const a(random.real(), random.normal());
        Quaternion const b = random.oneIn(2) ? Quaternion(1e-9 * random.real(), random.normal()) * a
                                             : Quaternion(random.real(), random.normal());
        double const t = random.real() / 20 + 0.5;
        double d = a.x * b.x + a.y * b.y + a.z * b.z + a.w * b.w;
        double const sign = d >= 0 ? 1 : -1;
        d *= sign;
        double const angle = std::acos(d) * t;
        double expected[4];
        double length2 = 0;
        for (int k = 0; k < 4; ++k) {
            double const from = sign * (&a.x)[k], to = (&b.x)[k];
            expected[k] = d <= parallelTol ? to - from * d : from + t * (to - from);
            length2 += expected[k] * expected[k];
        }
        Quaternion const between = slerp(a, b, t);
        for (int k = 0; k < 4; ++k) {
            expected[k] *= 1 / std::sqrt(length2);
            if (d <= parallelTol)
                expected[k] = sign * (&a.x)[k] * std::cos(angle) + expected[k] * std::sin(angle);
            ASSERT_TRUE(isSame((&between.x)[k], expected[k])) << a << b << " at " << t;
        }
    }
}

TEST(Quaternion, ComesBackFromItsFrame) {
    // Turns of nearly pi about each axis reach every way of dividing.
    RandomNumbers random;
    for (int i = 0; i < 2000; ++i) {
        Vector const near = i % 4 == 0 ? Vector::x : i % 4 == 1 ? Vector::y : Vector::z;
        Normal const axis = i % 4 == 3 ? random.normal() : Normal(near + random.vector() * 0.01);
        Quaternion const q(i % 4 == 3 ? random.real() : pi + random.real() * 0.01, axis);
        Normal a, b, c;
        q.getFrame(a, b, c);
        Quaternion back;
        back.setFrame(a, b, c);
        EXPECT_TRUE(equivalent(back, dot(back, q) < 0 ? -q : q, 1e-12)) << q << back;
    }
    struct {
        Normal a, b, c;
        Quaternion expected;
    } const rows[] = {
        {Normal::x, Normal::y, Normal::z, {0, 0, 0, 1}},         {Normal::x, -Normal::y, -Normal::z, {1, 0, 0, 0}},
        {-Normal::x, Normal::y, -Normal::z, {0, 1, 0, 0}},       {-Normal::x, -Normal::y, Normal::z, {0, 0, 1, 0}},
        {Normal::y, Normal::z, Normal::x, {0.5, 0.5, 0.5, 0.5}}, // a trace of 0: the last way, by ties
    };
    for (auto const & row : rows) {
        Quaternion q;
        q.setFrame(row.a, row.b, row.c);
        if (dot(q, row.expected) < 0)
            q = -q;
        EXPECT_TRUE(equivalent(q, row.expected, 1e-15)) << q;
    }
}

TEST(Slerp, GoesFromEndToEndTheShorterWay) {
    RandomNumbers random;
    for (int i = 0; i < 2000; ++i) {
        Quaternion const a(random.real(), random.normal());
        Quaternion const b(random.real(), random.normal());
        EXPECT_TRUE(equivalent(slerp(a, b, 0), dot(a, b) < 0 ? -a : a, 1e-12));
        EXPECT_TRUE(equivalent(slerp(a, b, 1), b, 1e-8));
    }
    Quaternion const q(1, Normal::y);
    EXPECT_TRUE(equivalent(slerp(q, -q, 0.5), -q, 1e-15));
    EXPECT_TRUE(std::isnan(slerp(q, Quaternion(notANumber, 0, 0, 1), 0.5).x));
}

} // namespace
