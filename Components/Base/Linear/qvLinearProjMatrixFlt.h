// The single-precision twin of ProjMatrix.

#ifndef qvLinearProjMatrixFlt_h
#define qvLinearProjMatrixFlt_h

#include "Base/Linear/qvLinearMatrixComponents.h"

namespace qvLinear {

class AffineMatrix;
class AffineMatrixFlt;
class ProjMatrix;

// For passing transformations on; they are inverted in double.
class ProjMatrixFlt : public detail::MatrixComponents<ProjMatrixFlt, float, 4, 4> {
public:
    static ProjMatrixFlt const Identity;

    ProjMatrixFlt() = default;
    // d on the whole diagonal, 0 elsewhere.
    constexpr explicit ProjMatrixFlt(float d) { setDiagonal(d); }
    template <detail::ArrayOf<float> P>
    constexpr explicit ProjMatrixFlt(P numbers) {
        set(numbers);
    }
    constexpr ProjMatrixFlt(ProjMatrix const & matrix);
    // With the fourth column 0, 0, 0, 1.
    constexpr ProjMatrixFlt(AffineMatrixFlt const & matrix);
    constexpr ProjMatrixFlt(AffineMatrix const & matrix);

    constexpr ProjMatrixFlt & operator=(ProjMatrix const & matrix);
    constexpr ProjMatrixFlt & operator=(AffineMatrixFlt const & matrix);
    constexpr ProjMatrixFlt & operator=(AffineMatrix const & matrix);

    // out = in * this; out may be in.
    void preMult(ProjMatrixFlt & out, ProjMatrixFlt const & in) const { out = in * *this; }
    // this = matrix * this, and this = this * matrix.
    void preMult(ProjMatrixFlt const & matrix) { *this = matrix * *this; }
    ProjMatrixFlt & operator*=(ProjMatrixFlt const & matrix) { return *this = *this * matrix; }

    friend constexpr ProjMatrixFlt operator*(ProjMatrixFlt const & a, ProjMatrixFlt const & b) {
        ProjMatrixFlt product;
        detail::multiplyProjective(a.m, b.m, product.m);
        return product;
    }

    // Calculated in double.
    QV_EXPORT double det3x3() const;
    QV_EXPORT void transpose();

    float m[16];

private:
    friend class detail::MatrixComponents<ProjMatrixFlt, float, 4, 4>;
    static constexpr char const * printedBeginning = "ProjMatrixFlt(";
};

inline constexpr ProjMatrixFlt ProjMatrixFlt::Identity(1.0F);

} // namespace qvLinear

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearAffineMatrixFlt.h"
#include "Base/Linear/qvLinearProjMatrix.h"

namespace qvLinear {

constexpr ProjMatrixFlt::ProjMatrixFlt(ProjMatrix const & matrix) { convert(matrix); }
constexpr ProjMatrixFlt::ProjMatrixFlt(AffineMatrix const & matrix) : ProjMatrixFlt(ProjMatrix(matrix)) {}
constexpr ProjMatrixFlt::ProjMatrixFlt(AffineMatrixFlt const & matrix) : ProjMatrixFlt(AffineMatrix(matrix)) {}
constexpr ProjMatrixFlt & ProjMatrixFlt::operator=(ProjMatrix const & matrix) { return *this = ProjMatrixFlt(matrix); }
constexpr ProjMatrixFlt & ProjMatrixFlt::operator=(AffineMatrixFlt const & matrix) {
    return *this = ProjMatrixFlt(matrix);
}
constexpr ProjMatrixFlt & ProjMatrixFlt::operator=(AffineMatrix const & matrix) {
    return *this = ProjMatrixFlt(matrix);
}

} // namespace qvLinear

#endif
