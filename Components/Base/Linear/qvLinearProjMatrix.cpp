#include "Base/Linear/qvLinearProjMatrix.h"

#include "Base/Linear/Internal/Elimination.h"
#include "Base/Linear/Internal/TransposeFour.h"
#include "Base/Linear/qvLinearLanes.h"
#include "Base/Linear/qvLinearTolerance.h"
#include "Base/Linear/qvLinearTuple2.h"

#include <cmath>

namespace qvLinear {

namespace {

#if QV_LINEAR_LANES
using Pair = detail::Doubles;
#else
using Pair = Tuple2;
#endif

// The determinants of two rows and the two columns that are named.
struct Minors {
    double d01, d02, d03, d12, d13, d23;

    Minors(double const * a, double const * b)
        : d01(a[0] * b[1] - a[1] * b[0]), d02(a[0] * b[2] - a[2] * b[0]), d03(a[0] * b[3] - a[3] * b[0]),
          d12(a[1] * b[2] - a[2] * b[1]), d13(a[1] * b[3] - a[3] * b[1]), d23(a[2] * b[3] - a[3] * b[2]) {}

    // The determinants of a further row and these two, each without one of the columns. A is a number, or the pair of
    // numbers of two such rows.
    template <class A>
    A without0(A const & r1, A const & r2, A const & r3) const {
        return r1 * d23 - r2 * d13 + r3 * d12;
    }
    template <class A>
    A without1(A const & r0, A const & r2, A const & r3) const {
        return r0 * d23 - r2 * d03 + r3 * d02;
    }
    template <class A>
    A without2(A const & r0, A const & r1, A const & r3) const {
        return r0 * d13 - r1 * d03 + r3 * d01;
    }
    template <class A>
    A without3(A const & r0, A const & r1, A const & r2) const {
        return r0 * d12 - r1 * d02 + r2 * d01;
    }
};

// By cofactors along the first row.
double determinantOf(double const * m, Minors const & lower) {
    return m[0] * lower.without0(m[5], m[6], m[7]) - m[1] * lower.without1(m[4], m[6], m[7]) +
           m[2] * lower.without2(m[4], m[5], m[7]) - m[3] * lower.without3(m[4], m[5], m[6]);
}

} // namespace

double ProjMatrix::det4x4() const { return determinantOf(m, Minors(m + 8, m + 12)); }

bool ProjMatrix::isInvertible() const { return std::fabs(det4x4()) >= epsilonTol; }

bool ProjMatrix::isAffine() const {
    return std::fabs(m[3]) < epsilonTol && std::fabs(m[7]) < epsilonTol && std::fabs(m[11]) < epsilonTol &&
           std::fabs(m[15] - 1) < epsilonTol;
}

bool ProjMatrix::invert() {
    double rows4[4][4];
    double inverted[4][4];
    for (int i = 0; i < elements; ++i)
        rows4[i / 4][i % 4] = m[i];
    if (!invertByElimination(rows4, inverted))
        return false;
    for (int i = 0; i < elements; ++i)
        m[i] = inverted[i / 4][i % 4];
    return true;
}

bool ProjMatrix::invertFast() {
    Minors const upper(m, m + 4);
    Minors const lower(m + 8, m + 12);
    // Pairs of rows: what the first two columns of the inverse are made of, and the last two.
    Pair const r0{m[4], m[0]};
    Pair const r1{m[5], m[1]};
    Pair const r2{m[6], m[2]};
    Pair const r3{m[7], m[3]};
    Pair const left0 = lower.without0(r1, r2, r3);
    Pair const left1 = lower.without1(r0, r2, r3);
    Pair const left2 = lower.without2(r0, r1, r3);
    Pair const left3 = lower.without3(r0, r1, r2);
    // The cofactors of the first row are among them.
    double const determinant = m[0] * left0[0] - m[1] * left1[0] + m[2] * left2[0] - m[3] * left3[0];
    if (std::fabs(determinant) < epsilonTol)
        return false;
    double const s = 1 / determinant;
    Pair const signs{s, -s};
    Pair const q0{m[12], m[8]};
    Pair const q1{m[13], m[9]};
    Pair const q2{m[14], m[10]};
    Pair const q3{m[15], m[11]};
    auto const setRow = [&](double * row, Pair const & left, Pair const & right, Pair const & sign) {
        Pair const a = left * sign;
        Pair const b = right * sign;
        row[0] = a[0];
        row[1] = a[1];
        row[2] = b[0];
        row[3] = b[1];
    };
    setRow(m, left0, upper.without0(q1, q2, q3), signs);
    setRow(m + 4, left1, upper.without1(q0, q2, q3), -signs);
    setRow(m + 8, left2, upper.without2(q0, q1, q3), signs);
    setRow(m + 12, left3, upper.without3(q0, q1, q2), -signs);
    return true;
}

void ProjMatrix::transpose() { transposeFour(m); }

} // namespace qvLinear
