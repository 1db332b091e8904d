// Projective transformations of space.

#ifndef qvLinearProjMatrix_h
#define qvLinearProjMatrix_h

#include "Base/Linear/qvLinearHPoint.h"
#include "Base/Linear/qvLinearMatrixComponents.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearTuple4.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

class AffineMatrix;

// Four rows of four numbers. Vectors are rows, and a * b does a first, as with AffineMatrix.
class ProjMatrix : public detail::MatrixComponents<ProjMatrix, double, 4, 4> {
public:
    static ProjMatrix const Identity;

    ProjMatrix() = default;
    // d on the whole diagonal, 0 elsewhere.
    constexpr explicit ProjMatrix(double d) { setDiagonal(d); }
    template <detail::ArrayOf<double> P>
    constexpr explicit ProjMatrix(P numbers) {
        set(numbers);
    }
    // With the fourth column 0, 0, 0, 1.
    constexpr ProjMatrix(AffineMatrix const & matrix);

    constexpr ProjMatrix & operator=(AffineMatrix const & matrix);

    // out = in * this. The forms for HPoint and Vector do nothing when out is in; for the others it may be.
    void preMult(ProjMatrix & out, ProjMatrix const & in) const { out = in * *this; }
    void preMult(HPoint & out, HPoint const & in) const {
        if (&out != &in)
            out = in * *this;
    }
    void preMult(HPoint & out, Point const & in) const { out = in * *this; }
    void preMult(Tuple4 & out, Tuple4 const & in) const { out = in * *this; }
    void preMult(Vector & out, Vector const & in) const {
        if (&out != &in)
            out = in * *this;
    }
    // this = matrix * this, and this = this * matrix.
    void preMult(ProjMatrix const & matrix) { *this = matrix * *this; }
    ProjMatrix & operator*=(ProjMatrix const & matrix) { return *this = *this * matrix; }

    friend constexpr ProjMatrix operator*(ProjMatrix const & a, ProjMatrix const & b) {
        ProjMatrix product;
        detail::multiplyProjective(a.m, b.m, product.m);
        return product;
    }
    friend constexpr HPoint operator*(HPoint const & p, ProjMatrix const & matrix) {
        return detail::generate<HPoint>([&](int i) { return matrix.linear(p, i) + p.w * matrix.m[12 + i]; });
    }
    // A point has w = 1.
    friend constexpr HPoint operator*(Point const & p, ProjMatrix const & matrix) {
        return detail::generate<HPoint>([&](int i) { return matrix.linear(p, i) + matrix.m[12 + i]; });
    }
    // By the upper left 3 by 3 part.
    friend constexpr Vector operator*(Vector const & v, ProjMatrix const & matrix) {
        return detail::generate<Vector>([&](int i) { return matrix.linear(v, i); });
    }
    friend constexpr Tuple4 operator*(Tuple4 const & t, ProjMatrix const & matrix) {
        return detail::generate<Tuple4>([&](int i) { return matrix.linear(t, i) + t.w * matrix.m[12 + i]; });
    }

    constexpr double det3x3() const { return detail::determinant3<4>(m); }
    QV_EXPORT double det4x4() const;
    // Whether |det4x4| is at least epsilonTol.
    QV_EXPORT bool isInvertible() const;
    // Whether the fourth column is 0, 0, 0, 1, each to within epsilonTol.
    QV_EXPORT bool isAffine() const;

    // By elimination with partial pivoting. False, and nothing changed, when a pivot is below epsilonTol.
    QV_EXPORT bool invert();
    // By cofactors, faster and less exact. False, and nothing changed, when |det4x4| is below epsilonTol.
    QV_EXPORT bool invertFast();
    // A copy after invert(), so that it is the matrix itself when there is no inverse.
    ProjMatrix inverse() const {
        ProjMatrix result = *this;
        result.invert();
        return result;
    }
    QV_EXPORT void transpose();

    double m[16];

private:
    friend class detail::MatrixComponents<ProjMatrix, double, 4, 4>;
    static constexpr char const * printedBeginning = "ProjMatrix(";

    template <class V>
    constexpr double linear(V const & v, int column) const {
        return detail::timesColumn<4>(v[0], v[1], v[2], m, column);
    }
};

inline constexpr ProjMatrix ProjMatrix::Identity(1.0);

} // namespace qvLinear

#include "Base/Linear/qvLinearAffineMatrix.h"

namespace qvLinear {

constexpr ProjMatrix::ProjMatrix(AffineMatrix const & matrix) {
    for (int i = 0; i < elements; ++i)
        m[i] = i % 4 < 3 ? matrix.m[i / 4 * 3 + i % 4] : i == 15 ? 1.0 : 0.0;
}
constexpr ProjMatrix & ProjMatrix::operator=(AffineMatrix const & matrix) { return *this = ProjMatrix(matrix); }

} // namespace qvLinear

#endif
