// A displacement in the plane.

#ifndef qvLinearVector2_h
#define qvLinearVector2_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"

namespace qvLinear {

class Point;
class Point2;
class Vector;

// The default constructor leaves the components as they are, here and in all values of this family.
class Vector2 : public detail::VectorArithmetic<Vector2, double, 2> {
public:
    static Vector2 const zero;
    static Vector2 const x;
    static Vector2 const y;

    Vector2() = default;
    constexpr Vector2(double newX, double newY) : x_(newX), y_(newY) {}
    template <detail::ArrayOf<double> P>
    constexpr Vector2(P numbers) : Vector2(numbers[0], numbers[1]) {}

    constexpr void set(double newX, double newY) { *this = Vector2(newX, newY); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = Vector2(numbers);
    }

    // Scales to length 1. False, and nothing changed, when the length is below epsilonTol.
    QV_EXPORT bool normalize();
    // This vector after a quarter turn to the left.
    constexpr Vector2 orthogonalVector() const { return Vector2(-y_, x_); }

    constexpr Point2 asPoint2() const;
    constexpr Point asPoint() const;
    constexpr Vector asVector() const;

    friend std::ostream & operator<<(std::ostream & out, Vector2 const & v) {
        return detail::print(out, "Vector2(", v, dimension);
    }

private:
    friend class detail::Components<Vector2, double, 2>;
    constexpr double component(int i) const { return i == 0 ? x_ : y_; }

    double x_, y_;
};

inline constexpr Vector2 Vector2::zero(0, 0);
inline constexpr Vector2 Vector2::x(1, 0);
inline constexpr Vector2 Vector2::y(0, 1);

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

constexpr Point2 Vector2::asPoint2() const { return Point2(x_, y_); }
constexpr Point Vector2::asPoint() const { return Point(x_, y_, 0); }
constexpr Vector Vector2::asVector() const { return Vector(x_, y_, 0); }

} // namespace qvLinear

#endif
