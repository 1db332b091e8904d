// Three numbers without a geometric meaning.

#ifndef qvLinearTuple3_h
#define qvLinearTuple3_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

// Unlike the others it can be multiplied and divided by its own kind, component by component, and written by index.
class Tuple3 : public detail::TupleArithmetic<Tuple3, 3> {
public:
    static Tuple3 const zero;

    Tuple3() = default;
    constexpr Tuple3(double newX, double newY, double newZ) : x(newX), y(newY), z(newZ) {}
    template <detail::ArrayOf<double> P>
    constexpr Tuple3(P numbers) : Tuple3(numbers[0], numbers[1], numbers[2]) {}
    constexpr Tuple3(Point const & v) : Tuple3(v[0], v[1], v[2]) {}
    constexpr Tuple3(Vector const & v) : Tuple3(v[0], v[1], v[2]) {}

    constexpr void set(double newX, double newY, double newZ) { *this = Tuple3(newX, newY, newZ); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = Tuple3(numbers);
    }

    constexpr Point asPoint() const { return Point(x, y, z); }
    constexpr Vector asVector() const { return Vector(x, y, z); }

    friend std::ostream & operator<<(std::ostream & out, Tuple3 const & t) {
        return detail::print(out, "Tuple3(", t, dimension);
    }

    double x, y, z;

private:
    friend class detail::Components<Tuple3, double, 3>;
    friend class detail::TupleArithmetic<Tuple3, 3>;
    constexpr double component(int i) const { return i == 0 ? x : i == 1 ? y : z; }
    constexpr double & component(int i) { return i == 0 ? x : i == 1 ? y : z; }
};

inline constexpr Tuple3 Tuple3::zero(0, 0, 0);

} // namespace qvLinear

#endif
