#include "Base/Linear/qvLinearAffineMatrix.h"

#include "Base/Linear/Internal/Elimination.h"
#include "Base/Linear/qvLinearProjMatrix.h"
#include "Base/Linear/qvLinearRotation.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>
#include <utility>

namespace qvLinear {

namespace {

// p' = p * R about an axis through the origin.
AffineMatrix rotationAbout(Normal const & axis, double angle) {
    AffineMatrix outer;
    AffineMatrix crossed;
    outer.outerProduct(axis, axis);
    crossed.crossMatrix(axis);
    double const c = std::cos(angle);
    return c * AffineMatrix::Identity + (1 - c) * outer - std::sin(angle) * crossed;
}

// Sets the translation so that the point stays where it is.
void fixPoint(AffineMatrix & matrix, Point const & p) {
    Vector const translation = p - p * matrix;
    translation.get(matrix.m + 9);
}

// The translation of the inverse, given the inverse's linear part.
void invertTranslation(AffineMatrix & inverse, AffineMatrix const & matrix) {
    for (int i = 0; i < 3; ++i)
        inverse.m[9 + i] = -detail::timesColumn<3>(matrix.m[9], matrix.m[10], matrix.m[11], inverse.m, i);
}

// Two rows of the linear part are replaced by their combinations with c and s.
void turnRows(double * first, double * second, double angle) {
    double const c = std::cos(angle);
    double const s = std::sin(angle);
    for (int i = 0; i < 3; ++i) {
        double const a = first[i];
        double const b = second[i];
        first[i] = c * a + s * b;
        second[i] = -s * a + c * b;
    }
}

} // namespace

AffineMatrix & AffineMatrix::outerProduct(Vector const & a, Vector const & b) {
    return setFrame(Point::origin, a[0] * b, a[1] * b, a[2] * b);
}

AffineMatrix & AffineMatrix::crossMatrix(Vector const & v) {
    return setFrame(Point::origin, Vector(0, -v[2], v[1]), Vector(v[2], 0, -v[0]), Vector(-v[1], v[0], 0));
}

AffineMatrix & AffineMatrix::translate(double x, double y, double z) {
    for (int i = 0; i < 3; ++i)
        m[9 + i] += detail::timesColumn<3>(x, y, z, m, i);
    return *this;
}

AffineMatrix & AffineMatrix::scale(double x, double y, double z) {
    for (int i = 0; i < 3; ++i) {
        m[i] *= x;
        m[3 + i] *= y;
        m[6 + i] *= z;
    }
    return *this;
}

AffineMatrix & AffineMatrix::rotateX(double angle) {
    turnRows(m + 3, m + 6, angle);
    return *this;
}

AffineMatrix & AffineMatrix::rotateY(double angle) {
    turnRows(m + 6, m, angle);
    return *this;
}

AffineMatrix & AffineMatrix::rotateZ(double angle) {
    turnRows(m, m + 3, angle);
    return *this;
}

AffineMatrix & AffineMatrix::rotate(double angle, Normal const & axis) {
    preMult(rotationAbout(axis, angle));
    return *this;
}

AffineMatrix & AffineMatrix::rotate(double angle, Line const & axis) {
    AffineMatrix rotation = rotationAbout(axis.direction, angle);
    fixPoint(rotation, axis.point);
    preMult(rotation);
    return *this;
}

AffineMatrix & AffineMatrix::rotate(Normal const & from, Normal const & to) {
    Normal axis(cross(from, to));
    double turn = angle(from, to);
    if (!axis.isValid()) {
        if (turn <= 1.5707963267948966)
            return *this;
        axis = from.orthogonalVector();
        turn = toRadians(180.0);
    }
    return rotate(turn, axis);
}

AffineMatrix & AffineMatrix::mirror(Plane const & plane) {
    AffineMatrix outer;
    outer.outerProduct(plane.normal, plane.normal);
    AffineMatrix mirroring = Identity - 2 * outer;
    fixPoint(mirroring, plane.point);
    preMult(mirroring);
    return *this;
}

void AffineMatrix::preMult(Plane & out, Plane const & in) const {
    bool ok;
    preMult(out, in, vectorMatrix(ok));
}

void AffineMatrix::preMult(Plane & out, Plane const & in, AffineMatrix const & normalTransform) const {
    out = Plane(in.point * *this, Normal(in.normal * normalTransform));
}

void AffineMatrix::preMult(ParamPlane & out, ParamPlane const & in) const {
    bool ok;
    preMult(out, in, vectorMatrix(ok));
}

void AffineMatrix::preMult(ParamPlane & out, ParamPlane const & in, AffineMatrix const & normalTransform) const {
    constexpr bool keepLength = false;
    out = ParamPlane(in.point * *this, Normal(in.normal * normalTransform), in.u * *this, in.v * *this, keepLength);
}

AffineMatrix & AffineMatrix::operator+=(AffineMatrix const & matrix) {
    for (int i = 0; i < elements; ++i)
        m[i] += matrix.m[i];
    return *this;
}

AffineMatrix & AffineMatrix::operator-=(AffineMatrix const & matrix) {
    for (int i = 0; i < elements; ++i)
        m[i] -= matrix.m[i];
    return *this;
}

AffineMatrix & AffineMatrix::operator*=(double s) {
    for (double & number : m)
        number *= s;
    return *this;
}

Line operator*(Line const & line, AffineMatrix const & matrix) {
    return Line(line.point * matrix, line.direction * matrix);
}

Range3d operator*(Range3d const & range, AffineMatrix const & matrix) {
    if (range.isUnbounded())
        return range;
    Range3d product(range.min() * matrix);
    for (int corner = 1; corner < 8; ++corner)
        product.include(Point((corner & 1 ? range.max() : range.min()).x, (corner & 2 ? range.max() : range.min()).y,
                              (corner & 4 ? range.max() : range.min()).z) *
                        matrix);
    return product;
}

double AffineMatrix::det4x4() const { return ProjMatrix(*this).det4x4(); }

bool AffineMatrix::isInvertible() const { return std::fabs(det3x3()) >= epsilonTol; }

bool AffineMatrix::invert() {
    double linearPart[3][3] = {{m[0], m[1], m[2]}, {m[3], m[4], m[5]}, {m[6], m[7], m[8]}};
    double inverted[3][3];
    if (!invertByElimination(linearPart, inverted))
        return false;
    AffineMatrix result;
    result.setFrame(Point::origin, Vector(inverted[0]), Vector(inverted[1]), Vector(inverted[2]));
    invertTranslation(result, *this);
    *this = result;
    return true;
}

bool AffineMatrix::invertFast() {
    double const determinant = det3x3();
    if (std::fabs(determinant) < epsilonTol)
        return false;
    double const scale = 1 / determinant;
    AffineMatrix result;
    result.m[0] = (m[4] * m[8] - m[5] * m[7]) * scale;
    result.m[1] = (m[2] * m[7] - m[1] * m[8]) * scale;
    result.m[2] = (m[1] * m[5] - m[2] * m[4]) * scale;
    result.m[3] = (m[5] * m[6] - m[3] * m[8]) * scale;
    result.m[4] = (m[0] * m[8] - m[2] * m[6]) * scale;
    result.m[5] = (m[2] * m[3] - m[0] * m[5]) * scale;
    result.m[6] = (m[3] * m[7] - m[4] * m[6]) * scale;
    result.m[7] = (m[1] * m[6] - m[0] * m[7]) * scale;
    result.m[8] = (m[0] * m[4] - m[1] * m[3]) * scale;
    invertTranslation(result, *this);
    *this = result;
    return true;
}

void AffineMatrix::transpose() {
    std::swap(m[1], m[3]);
    std::swap(m[2], m[6]);
    std::swap(m[5], m[7]);
    m[9] = m[10] = m[11] = 0;
}

AffineMatrix AffineMatrix::vectorMatrix(bool & ok) const {
    AffineMatrix result = *this;
    ok = result.invert();
    if (ok)
        result.transpose();
    return result;
}

AffineMatrix AffineMatrix::normalMatrix(bool & ok) const {
    AffineMatrix result = vectorMatrix(ok);
    if (ok && det3x3() < 0)
        result *= AffineMatrix(-1.0);
    return result;
}

} // namespace qvLinear
