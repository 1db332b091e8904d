#include "Base/Linear/qvLinearProjMatrix.h"

#include "Base/Linear/Internal/Elimination.h"
#include "Base/Linear/Internal/TransposeFour.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>

namespace qvLinear {

namespace {

// The determinants of two rows and the two columns that are named.
struct Minors {
    double d01, d02, d03, d12, d13, d23;

    Minors(double const * a, double const * b)
        : d01(a[0] * b[1] - a[1] * b[0]), d02(a[0] * b[2] - a[2] * b[0]), d03(a[0] * b[3] - a[3] * b[0]),
          d12(a[1] * b[2] - a[2] * b[1]), d13(a[1] * b[3] - a[3] * b[1]), d23(a[2] * b[3] - a[3] * b[2]) {}

    // The determinants of a further row and these two, each without one of the columns.
    double without0(double const * r) const { return r[1] * d23 - r[2] * d13 + r[3] * d12; }
    double without1(double const * r) const { return r[0] * d23 - r[2] * d03 + r[3] * d02; }
    double without2(double const * r) const { return r[0] * d13 - r[1] * d03 + r[3] * d01; }
    double without3(double const * r) const { return r[0] * d12 - r[1] * d02 + r[2] * d01; }
};

// By cofactors along the first row.
double determinantOf(double const * m, Minors const & lower) {
    return m[0] * lower.without0(m + 4) - m[1] * lower.without1(m + 4) + m[2] * lower.without2(m + 4) -
           m[3] * lower.without3(m + 4);
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
    double const determinant = determinantOf(m, lower);
    if (std::fabs(determinant) < epsilonTol)
        return false;
    double const scale = 1 / determinant;
    double const inverted[16] = {
        lower.without0(m + 4) * scale,   -lower.without0(m) * scale,     upper.without0(m + 12) * scale,
        -upper.without0(m + 8) * scale,  -lower.without1(m + 4) * scale, lower.without1(m) * scale,
        -upper.without1(m + 12) * scale, upper.without1(m + 8) * scale,  lower.without2(m + 4) * scale,
        -lower.without2(m) * scale,      upper.without2(m + 12) * scale, -upper.without2(m + 8) * scale,
        -lower.without3(m + 4) * scale,  lower.without3(m) * scale,      -upper.without3(m + 12) * scale,
        upper.without3(m + 8) * scale};
    set(inverted);
    return true;
}

void ProjMatrix::transpose() { transposeFour(m); }

} // namespace qvLinear
