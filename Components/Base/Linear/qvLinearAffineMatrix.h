// Affine transformations of space.

#ifndef qvLinearAffineMatrix_h
#define qvLinearAffineMatrix_h

#include "Base/Linear/qvLinearHPoint.h"
#include "Base/Linear/qvLinearLine.h"
#include "Base/Linear/qvLinearMatrixComponents.h"
#include "Base/Linear/qvLinearParamLine.h"
#include "Base/Linear/qvLinearParamPlane.h"
#include "Base/Linear/qvLinearPlane.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearPromise.h"
#include "Base/Linear/qvLinearRange3d.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

class AffineMatrixFlt;
class ProjMatrix;

/*
 * Four rows of three numbers: the linear part, and under it the translation. The fourth column is always 0, 0, 0, 1 and
 * is not stored.
 *
 * Vectors are rows: a point goes to p * M, and a * b does a first. The builders put their transformation in front of
 * what is there already, so that the last one called is the first to act on a point:
 *
 *     AffineMatrix m;
 *     m.identity().translate(0, 0, 5).rotateZ(angle); // turns about the z axis, then moves up
 *     Point moved = p * m;
 *
 * Angles are in radians, and rotations are right-handed. A Vector is transformed by the linear part alone. Like all
 * values of the family a matrix is left as it is by its default constructor.
 */
class AffineMatrix : public detail::MatrixComponents<AffineMatrix, double, 4, 3> {
public:
    static AffineMatrix const Identity;

    AffineMatrix() = default;
    // d on the diagonal, 0 elsewhere, no translation.
    constexpr explicit AffineMatrix(double d) { setDiagonal(d); }
    template <detail::ArrayOf<double> P>
    constexpr explicit AffineMatrix(P numbers) {
        set(numbers);
    }
    constexpr AffineMatrix(AffineMatrixFlt const & matrix);
    // Drops the fourth column, which the caller promises to be 0, 0, 0, 1.
    constexpr AffineMatrix(Promise const & promise, ProjMatrix const & matrix);

    constexpr AffineMatrix & zero() { return *this = AffineMatrix(0.0); }
    // The element i, j is a[i] * b[j].
    QV_EXPORT AffineMatrix & outerProduct(Vector const & a, Vector const & b);
    // The matrix C by which p * C is the cross product of p and v.
    QV_EXPORT AffineMatrix & crossMatrix(Vector const & v);
    // The rows of the linear part are the axes.
    constexpr AffineMatrix & setFrame(Point const & origin, Vector const & xAxis, Vector const & yAxis,
                                      Vector const & zAxis);

    QV_EXPORT AffineMatrix & translate(double x, double y, double z);
    AffineMatrix & translate(Vector const & v) { return translate(v[0], v[1], v[2]); }
    QV_EXPORT AffineMatrix & scale(double x, double y, double z);
    AffineMatrix & scale(double s) { return scale(s, s, s); }
    QV_EXPORT AffineMatrix & rotateX(double angle);
    QV_EXPORT AffineMatrix & rotateY(double angle);
    QV_EXPORT AffineMatrix & rotateZ(double angle);
    // About an axis through the origin, or about a line.
    QV_EXPORT AffineMatrix & rotate(double angle, Normal const & axis);
    QV_EXPORT AffineMatrix & rotate(double angle, Line const & axis);
    // The shortest rotation that takes one direction to the other.
    QV_EXPORT AffineMatrix & rotate(Normal const & from, Normal const & to);
    QV_EXPORT AffineMatrix & mirror(Plane const & plane);

    // out = in * this. The forms for Point, HPoint and Vector do nothing when out is in; for all others it may be.
    void preMult(AffineMatrix & out, AffineMatrix const & in) const { out = in * *this; }
    void preMult(Point & out, Point const & in) const;
    void preMult(HPoint & out, HPoint const & in) const;
    void preMult(Vector & out, Vector const & in) const;
    void preMult(Line & out, Line const & in) const { out = in * *this; }
    void preMult(ParamLine & out, ParamLine const & in) const { out = in * *this; }
    void preMult(Range3d & out, Range3d const & in) const { out = in * *this; }
    // The normal goes by the vectorMatrix of this, or by the one that the caller has at hand.
    QV_EXPORT void preMult(Plane & out, Plane const & in) const;
    QV_EXPORT void preMult(Plane & out, Plane const & in, AffineMatrix const & normalTransform) const;
    QV_EXPORT void preMult(ParamPlane & out, ParamPlane const & in) const;
    QV_EXPORT void preMult(ParamPlane & out, ParamPlane const & in, AffineMatrix const & normalTransform) const;
    // this = matrix * this, and this = this * matrix.
    void preMult(AffineMatrix const & matrix) { *this = matrix * *this; }
    AffineMatrix & operator*=(AffineMatrix const & matrix) { return *this = *this * matrix; }

    // On all twelve numbers, the translation included.
    QV_EXPORT AffineMatrix & operator+=(AffineMatrix const & matrix);
    QV_EXPORT AffineMatrix & operator-=(AffineMatrix const & matrix);
    QV_EXPORT AffineMatrix & operator*=(double s);
    friend AffineMatrix operator+(AffineMatrix a, AffineMatrix const & b) { return a += b; }
    friend AffineMatrix operator-(AffineMatrix a, AffineMatrix const & b) { return a -= b; }
    friend AffineMatrix operator*(AffineMatrix matrix, double s) { return matrix *= s; }
    friend AffineMatrix operator*(double s, AffineMatrix matrix) { return matrix *= s; }

    friend constexpr AffineMatrix operator*(AffineMatrix const & a, AffineMatrix const & b) {
        AffineMatrix product;
        detail::multiplyAffine(a.m, b.m, product.m);
        return product;
    }
    friend constexpr Point operator*(Point const & p, AffineMatrix const & matrix) {
        return detail::transformAffine<detail::Translation::yes>(p, matrix.m);
    }
    friend constexpr HPoint operator*(HPoint const & p, AffineMatrix const & matrix) {
        auto const component = [&](int i) { return matrix.linear(p, i) + p.w * matrix.m[9 + i]; };
        return HPoint(component(0), component(1), component(2), p.w);
    }
    friend constexpr Vector operator*(Vector const & v, AffineMatrix const & matrix) {
        return detail::transformAffine<detail::Translation::no>(v, matrix.m);
    }
    // The direction is normalised again.
    friend QV_EXPORT Line operator*(Line const & line, AffineMatrix const & matrix);
    friend constexpr ParamLine operator*(ParamLine const & line, AffineMatrix const & matrix) {
        return ParamLine(line.point * matrix, line.vector * matrix);
    }
    friend Plane operator*(Plane const & plane, AffineMatrix const & matrix) {
        Plane product;
        matrix.preMult(product, plane);
        return product;
    }
    friend ParamPlane operator*(ParamPlane const & plane, AffineMatrix const & matrix) {
        ParamPlane product;
        matrix.preMult(product, plane);
        return product;
    }
    // The range of the eight corners.
    friend QV_EXPORT Range3d operator*(Range3d const & range, AffineMatrix const & matrix);

    constexpr double det3x3() const { return detail::determinant3<3>(m); }
    // With the implied fourth column.
    QV_EXPORT double det4x4() const;
    // Whether |det3x3| is at least epsilonTol.
    QV_EXPORT bool isInvertible() const;
    constexpr void getFrame(Point & origin, Vector & xAxis, Vector & yAxis, Vector & zAxis) const;
    constexpr Vector getTranslate() const { return Vector(m[9], m[10], m[11]); }

    // By elimination with partial pivoting. False, and nothing changed, when a pivot is below epsilonTol.
    QV_EXPORT bool invert();
    // By cofactors, faster and less exact. False, and nothing changed, when |det3x3| is below epsilonTol.
    QV_EXPORT bool invertFast();
    // A copy after invert(), so that it is the matrix itself when there is no inverse.
    AffineMatrix inverse() const {
        AffineMatrix result = *this;
        result.invert();
        return result;
    }
    // The linear part; the translation becomes 0.
    QV_EXPORT void transpose();
    // The transpose of the inverse, by which the normals of planes go. When there is none, ok is false and the result
    // is this matrix.
    QV_EXPORT AffineMatrix vectorMatrix(bool & ok) const;
    // The same, turned about if this matrix mirrors.
    QV_EXPORT AffineMatrix normalMatrix(bool & ok) const;

    double m[12];

private:
    friend class detail::MatrixComponents<AffineMatrix, double, 4, 3>;
    static constexpr char const * printedBeginning = "AffineMatrix(";

    template <class V>
    constexpr double linear(V const & v, int column) const {
        return detail::timesColumn<3>(v[0], v[1], v[2], m, column);
    }
};

inline constexpr AffineMatrix AffineMatrix::Identity(1.0);

constexpr AffineMatrix & AffineMatrix::setFrame(Point const & origin, Vector const & xAxis, Vector const & yAxis,
                                                Vector const & zAxis) {
    for (int i = 0; i < 3; ++i) {
        m[i] = xAxis[i];
        m[3 + i] = yAxis[i];
        m[6 + i] = zAxis[i];
        m[9 + i] = origin[i];
    }
    return *this;
}

constexpr void AffineMatrix::getFrame(Point & origin, Vector & xAxis, Vector & yAxis, Vector & zAxis) const {
    xAxis = Vector(m[0], m[1], m[2]);
    yAxis = Vector(m[3], m[4], m[5]);
    zAxis = Vector(m[6], m[7], m[8]);
    origin = Point(m[9], m[10], m[11]);
}

inline void AffineMatrix::preMult(Point & out, Point const & in) const {
    if (&out != &in)
        out = in * *this;
}
inline void AffineMatrix::preMult(HPoint & out, HPoint const & in) const {
    if (&out != &in)
        out = in * *this;
}
inline void AffineMatrix::preMult(Vector & out, Vector const & in) const {
    if (&out != &in)
        out = in * *this;
}

} // namespace qvLinear

#include "Base/Linear/qvLinearAffineMatrixFlt.h"
#include "Base/Linear/qvLinearProjMatrix.h"

namespace qvLinear {

constexpr AffineMatrix::AffineMatrix(AffineMatrixFlt const & matrix) { convert(matrix); }
constexpr AffineMatrix::AffineMatrix(Promise const &, ProjMatrix const & matrix) {
    for (int i = 0; i < elements; ++i)
        m[i] = matrix.m[i / 3 * 4 + i % 3];
}

} // namespace qvLinear

#endif
