// The single-precision twin of AffineMatrix.

#ifndef qvLinearAffineMatrixFlt_h
#define qvLinearAffineMatrixFlt_h

#include "Base/Linear/qvLinearMatrixComponents.h"
#include "Base/Linear/qvLinearPointFlt.h"
#include "Base/Linear/qvLinearPromise.h"
#include "Base/Linear/qvLinearVectorFlt.h"

namespace qvLinear {

class AffineMatrix;
class ProjMatrix;
class ProjMatrixFlt;

// For passing transformations on; they are built and inverted in double.
class AffineMatrixFlt : public detail::MatrixComponents<AffineMatrixFlt, float, 4, 3> {
public:
    static AffineMatrixFlt const Identity;

    AffineMatrixFlt() = default;
    // d on the diagonal, 0 elsewhere, no translation.
    constexpr explicit AffineMatrixFlt(float d) { setDiagonal(d); }
    template <detail::ArrayOf<float> P>
    constexpr explicit AffineMatrixFlt(P numbers) {
        set(numbers);
    }
    constexpr AffineMatrixFlt(AffineMatrix const & matrix);
    // These drop the fourth column, which the caller promises to be 0, 0, 0, 1.
    constexpr AffineMatrixFlt(Promise const & promise, ProjMatrixFlt const & matrix);
    constexpr AffineMatrixFlt(Promise const & promise, ProjMatrix const & matrix);

    constexpr AffineMatrixFlt & operator=(AffineMatrix const & matrix);

    constexpr AffineMatrixFlt & zero() { return *this = AffineMatrixFlt(0.0F); }

    // out = in * this. The forms for PointFlt and VectorFlt do nothing when out is in.
    void preMult(AffineMatrixFlt & out, AffineMatrixFlt const & in) const { out = in * *this; }
    void preMult(PointFlt & out, PointFlt const & in) const {
        if (&out != &in)
            out = in * *this;
    }
    void preMult(VectorFlt & out, VectorFlt const & in) const {
        if (&out != &in)
            out = in * *this;
    }
    // this = matrix * this, and this = this * matrix.
    void preMult(AffineMatrixFlt const & matrix) { *this = matrix * *this; }
    AffineMatrixFlt & operator*=(AffineMatrixFlt const & matrix) { return *this = *this * matrix; }

    friend constexpr AffineMatrixFlt operator*(AffineMatrixFlt const & a, AffineMatrixFlt const & b) {
        AffineMatrixFlt product;
        detail::multiplyAffine(a.m, b.m, product.m);
        return product;
    }
    friend constexpr PointFlt operator*(PointFlt const & p, AffineMatrixFlt const & matrix) {
        return detail::transformAffine<detail::Translation::yes>(p, matrix.m);
    }
    friend constexpr VectorFlt operator*(VectorFlt const & v, AffineMatrixFlt const & matrix) {
        return detail::transformAffine<detail::Translation::no>(v, matrix.m);
    }

    float m[12];

private:
    friend class detail::MatrixComponents<AffineMatrixFlt, float, 4, 3>;
    static constexpr char const * printedBeginning = "AffineMatrixFlt(";
};

inline constexpr AffineMatrixFlt AffineMatrixFlt::Identity(1.0F);

} // namespace qvLinear

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearProjMatrix.h"
#include "Base/Linear/qvLinearProjMatrixFlt.h"

namespace qvLinear {

constexpr AffineMatrixFlt::AffineMatrixFlt(AffineMatrix const & matrix) { convert(matrix); }
constexpr AffineMatrixFlt::AffineMatrixFlt(Promise const &, ProjMatrixFlt const & matrix) {
    for (int i = 0; i < elements; ++i)
        m[i] = matrix.m[i / 3 * 4 + i % 3];
}
constexpr AffineMatrixFlt::AffineMatrixFlt(Promise const &, ProjMatrix const & matrix) {
    for (int i = 0; i < elements; ++i)
        m[i] = static_cast<float>(matrix.m[i / 3 * 4 + i % 3]);
}
constexpr AffineMatrixFlt & AffineMatrixFlt::operator=(AffineMatrix const & matrix) {
    return *this = AffineMatrixFlt(matrix);
}

} // namespace qvLinear

#endif
