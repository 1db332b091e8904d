// Affine transformations of the plane.

#ifndef qvLinearAffineMatrix2_h
#define qvLinearAffineMatrix2_h

#include "Base/Linear/qvLinearMatrixComponents.h"
#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearRange2d.h"
#include "Base/Linear/qvLinearVector2.h"

namespace qvLinear {

// Three rows of two numbers, the last of which is the translation; the third column is always 0, 0, 1 and is not
// stored. Everything is as with AffineMatrix.
class AffineMatrix2 : public detail::MatrixComponents<AffineMatrix2, double, 3, 2> {
public:
    static AffineMatrix2 const Identity;

    AffineMatrix2() = default;
    // d on the diagonal, 0 elsewhere, no translation.
    constexpr explicit AffineMatrix2(double d) { setDiagonal(d); }
    template <detail::ArrayOf<double> P>
    constexpr explicit AffineMatrix2(P numbers) {
        set(numbers);
    }

    constexpr AffineMatrix2 & zero() { return *this = AffineMatrix2(0.0); }
    // The rows of the linear part are the axes.
    constexpr AffineMatrix2 & setFrame(Point2 const & origin, Vector2 const & xAxis, Vector2 const & yAxis) {
        for (int i = 0; i < 2; ++i) {
            m[i] = xAxis[i];
            m[2 + i] = yAxis[i];
            m[4 + i] = origin[i];
        }
        return *this;
    }

    // Each puts its transformation in front of what is there already.
    QV_EXPORT AffineMatrix2 & translate(double x, double y);
    AffineMatrix2 & translate(Vector2 const & v) { return translate(v[0], v[1]); }
    QV_EXPORT AffineMatrix2 & scale(double x, double y);
    AffineMatrix2 & scale(double s) { return scale(s, s); }
    QV_EXPORT AffineMatrix2 & rotate(double angle);

    // out = in * this. The forms for Point2 and Vector2 do nothing when out is in.
    void preMult(AffineMatrix2 & out, AffineMatrix2 const & in) const { out = in * *this; }
    void preMult(Point2 & out, Point2 const & in) const {
        if (&out != &in)
            out = in * *this;
    }
    void preMult(Vector2 & out, Vector2 const & in) const {
        if (&out != &in)
            out = in * *this;
    }
    void preMult(Range2d & out, Range2d const & in) const { out = in * *this; }
    // this = matrix * this, and this = this * matrix.
    void preMult(AffineMatrix2 const & matrix) { *this = matrix * *this; }
    AffineMatrix2 & operator*=(AffineMatrix2 const & matrix) { return *this = *this * matrix; }

    friend constexpr AffineMatrix2 operator*(AffineMatrix2 const & a, AffineMatrix2 const & b) {
        AffineMatrix2 product;
        for (int row = 0; row < 6; row += 2)
            for (int i = 0; i < 2; ++i) {
                double const sum = a.m[row] * b.m[i] + a.m[row + 1] * b.m[2 + i];
                product.m[row + i] = row < 4 ? sum : sum + b.m[4 + i];
            }
        return product;
    }
    friend constexpr Point2 operator*(Point2 const & p, AffineMatrix2 const & matrix) {
        return detail::generate<Point2>([&](int i) { return matrix.linear(p, i) + matrix.m[4 + i]; });
    }
    friend constexpr Vector2 operator*(Vector2 const & v, AffineMatrix2 const & matrix) {
        return detail::generate<Vector2>([&](int i) { return matrix.linear(v, i); });
    }
    // The range of the four corners.
    friend QV_EXPORT Range2d operator*(Range2d const & range, AffineMatrix2 const & matrix);

    constexpr void getFrame(Point2 & origin, Vector2 & xAxis, Vector2 & yAxis) const {
        xAxis = Vector2(m[0], m[1]);
        yAxis = Vector2(m[2], m[3]);
        origin = Point2(m[4], m[5]);
    }
    constexpr Vector2 getTranslate() const { return Vector2(m[4], m[5]); }

    // By elimination with partial pivoting. False, and nothing changed, when a pivot is below epsilonTol.
    QV_EXPORT bool invert();
    // A copy after invert().
    AffineMatrix2 inverse() const {
        AffineMatrix2 result = *this;
        result.invert();
        return result;
    }

    double m[6];

private:
    friend class detail::MatrixComponents<AffineMatrix2, double, 3, 2>;
    static constexpr char const * printedBeginning = "AffineMatrix2(";

    template <class V>
    constexpr double linear(V const & v, int column) const {
        return v[0] * m[column] + v[1] * m[2 + column];
    }
};

inline constexpr AffineMatrix2 AffineMatrix2::Identity(1.0);

} // namespace qvLinear

#endif
