#include "Base/Linear/qvLinearAffineMatrix2.h"

#include "Base/Linear/Internal/Elimination.h"

#include <cmath>

namespace qvLinear {

AffineMatrix2 & AffineMatrix2::translate(double x, double y) {
    for (int i = 0; i < 2; ++i)
        m[4 + i] += x * m[i] + y * m[2 + i];
    return *this;
}

AffineMatrix2 & AffineMatrix2::scale(double x, double y) {
    for (int i = 0; i < 2; ++i) {
        m[i] *= x;
        m[2 + i] *= y;
    }
    return *this;
}

AffineMatrix2 & AffineMatrix2::rotate(double angle) {
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    for (int i = 0; i < 2; ++i) {
        double const a = m[i];
        double const b = m[2 + i];
        m[i] = c * a + s * b;
        m[2 + i] = -s * a + c * b;
    }
    return *this;
}

Range2d operator*(Range2d const & range, AffineMatrix2 const & matrix) {
    if (range.isUnbounded())
        return range;
    Range2d product(range.min() * matrix);
    product.include(Point2(range.max().x, range.min().y) * matrix);
    product.include(Point2(range.min().x, range.max().y) * matrix);
    product.include(range.max() * matrix);
    return product;
}

bool AffineMatrix2::invert() {
    double linearPart[2][2] = {{m[0], m[1]}, {m[2], m[3]}};
    double inverted[2][2];
    if (!invertByElimination(linearPart, inverted))
        return false;
    AffineMatrix2 result;
    result.setFrame(Point2::origin, Vector2(inverted[0]), Vector2(inverted[1]));
    Vector2 const translation = -(getTranslate() * result);
    translation.get(result.m + 4);
    *this = result;
    return true;
}

} // namespace qvLinear
