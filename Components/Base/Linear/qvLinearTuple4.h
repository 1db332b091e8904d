// Four numbers without a geometric meaning.

#ifndef qvLinearTuple4_h
#define qvLinearTuple4_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"
#include "Base/Linear/qvLinearHPoint.h"
#include "Base/Linear/qvLinearRPoint.h"

namespace qvLinear {

// Unlike the others it can be multiplied and divided by its own kind, component by component, and written by index.
class Tuple4 : public detail::TupleArithmetic<Tuple4, 4> {
public:
    static Tuple4 const zero;

    Tuple4() = default;
    constexpr Tuple4(double newX, double newY, double newZ, double newW) : x(newX), y(newY), z(newZ), w(newW) {}
    template <detail::ArrayOf<double> P>
    constexpr Tuple4(P numbers) : Tuple4(numbers[0], numbers[1], numbers[2], numbers[3]) {}
    constexpr Tuple4(RPoint const & v) : Tuple4(v[0], v[1], v[2], v[3]) {}
    constexpr Tuple4(HPoint const & v) : Tuple4(v[0], v[1], v[2], v[3]) {}

    constexpr void set(double newX, double newY, double newZ, double newW) { *this = Tuple4(newX, newY, newZ, newW); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = Tuple4(numbers);
    }

    friend std::ostream & operator<<(std::ostream & out, Tuple4 const & t) {
        return detail::print(out, "Tuple4(", t, dimension);
    }

    double x, y, z, w;

private:
    friend class detail::Components<Tuple4, double, 4>;
    friend class detail::TupleArithmetic<Tuple4, 4>;
    constexpr double component(int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
    constexpr double & component(int i) { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
};

inline constexpr Tuple4 Tuple4::zero(0, 0, 0, 0);

} // namespace qvLinear

#endif
