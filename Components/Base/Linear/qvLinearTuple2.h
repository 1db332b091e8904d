// Two numbers without a geometric meaning.

#ifndef qvLinearTuple2_h
#define qvLinearTuple2_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearPoint2.h"
#include "Base/Linear/qvLinearVector.h"
#include "Base/Linear/qvLinearVector2.h"

namespace qvLinear {

// Unlike the others it can be multiplied and divided by its own kind, component by component, and written by index.
class Tuple2 : public detail::TupleArithmetic<Tuple2, 2> {
public:
    static Tuple2 const zero;

    Tuple2() = default;
    constexpr Tuple2(double newX, double newY) : x(newX), y(newY) {}
    template <detail::ArrayOf<double> P>
    constexpr Tuple2(P numbers) : Tuple2(numbers[0], numbers[1]) {}
    constexpr Tuple2(Point2 const & v) : Tuple2(v[0], v[1]) {}
    constexpr Tuple2(Vector2 const & v) : Tuple2(v[0], v[1]) {}

    constexpr void set(double newX, double newY) { *this = Tuple2(newX, newY); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = Tuple2(numbers);
    }

    constexpr Point2 asPoint2() const { return Point2(x, y); }
    constexpr Vector2 asVector2() const { return Vector2(x, y); }
    constexpr Point asPoint() const { return Point(x, y, 0); }
    constexpr Vector asVector() const { return Vector(x, y, 0); }

    friend std::ostream & operator<<(std::ostream & out, Tuple2 const & t) {
        return detail::print(out, "Tuple2(", t, dimension);
    }

    double x, y;

private:
    friend class detail::Components<Tuple2, double, 2>;
    friend class detail::TupleArithmetic<Tuple2, 2>;
    constexpr double component(int i) const { return i == 0 ? x : y; }
    constexpr double & component(int i) { return i == 0 ? x : y; }
};

inline constexpr Tuple2 Tuple2::zero(0, 0);

} // namespace qvLinear

#endif
