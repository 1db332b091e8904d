// A rational point, written as the ordinary point and a weight.

#ifndef qvLinearRPoint_h
#define qvLinearRPoint_h

#include <iosfwd>

#include "Base/Linear/qvLinearComponents.h"

namespace qvLinear {

class HPoint;
class Point;

// x, y and z are the coordinates of the point, and w is the weight beside them. In an HPoint they are multiplied by it.
class RPoint : public detail::Components<RPoint, double, 4> {
public:
    RPoint() = default;
    constexpr RPoint(double newX, double newY, double newZ, double newW) : x(newX), y(newY), z(newZ), w(newW) {}
    template <detail::ArrayOf<double> P>
    constexpr RPoint(P numbers) : RPoint(numbers[0], numbers[1], numbers[2], numbers[3]) {}
    constexpr RPoint(Point const & p); // w is 1
    constexpr RPoint(HPoint const & p);

    constexpr void set(double newX, double newY, double newZ, double newW) { *this = RPoint(newX, newY, newZ, newW); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = RPoint(numbers);
    }

    friend std::ostream & operator<<(std::ostream & out, RPoint const & p) {
        return detail::print(out, "RPoint(", p, dimension);
    }

    double x, y, z, w;

private:
    friend class detail::Components<RPoint, double, 4>;
    constexpr double component(int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
};

} // namespace qvLinear

#include "Base/Linear/qvLinearHPoint.h"
#include "Base/Linear/qvLinearPoint.h"

namespace qvLinear {

constexpr RPoint::RPoint(Point const & p) : RPoint(p.x, p.y, p.z, 1) {}
constexpr RPoint::RPoint(HPoint const & p) {
    double const scale = 1 / p.w;
    set(p.x * scale, p.y * scale, p.z * scale, p.w);
}

} // namespace qvLinear

#endif
