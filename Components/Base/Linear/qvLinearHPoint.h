// A homogeneous point.

#ifndef qvLinearHPoint_h
#define qvLinearHPoint_h

#include <iosfwd>

#include "Base/Linear/qvLinearComponents.h"

namespace qvLinear {

class Point;
class RPoint;

// x, y and z are the coordinates multiplied by w, as a projective matrix gives them.
class HPoint : public detail::Components<HPoint, double, 4> {
public:
    static constexpr bool isCombinable = true;

    HPoint() = default;
    constexpr HPoint(double newX, double newY, double newZ, double newW) : x(newX), y(newY), z(newZ), w(newW) {}
    template <detail::ArrayOf<double> P>
    constexpr HPoint(P numbers) : HPoint(numbers[0], numbers[1], numbers[2], numbers[3]) {}
    constexpr HPoint(Point const & p); // w is 1
    constexpr HPoint(RPoint const & p);

    constexpr void set(double newX, double newY, double newZ, double newW) { *this = HPoint(newX, newY, newZ, newW); }
    template <detail::ArrayOf<double> P>
    constexpr void set(P numbers) {
        *this = HPoint(numbers);
    }

    // Whether the point lies in the view: x and y from -w to w, z from -w on, and with the flag to w, all inclusive.
    constexpr bool insideView(bool checkUpperZ) const {
        return -w <= x && x <= w && -w <= y && y <= w && -w <= z && (!checkUpperZ || z <= w);
    }

    friend std::ostream & operator<<(std::ostream & out, HPoint const & p) {
        return detail::print(out, "HPoint(", p, dimension);
    }

    double x, y, z, w;

private:
    friend class detail::Components<HPoint, double, 4>;
    constexpr double component(int i) const { return i == 0 ? x : i == 1 ? y : i == 2 ? z : w; }
};

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearRPoint.h"

namespace qvLinear {

constexpr HPoint::HPoint(Point const & p) : HPoint(p.x, p.y, p.z, 1) {}
constexpr HPoint::HPoint(RPoint const & p) : HPoint(p.x * p.w, p.y * p.w, p.z * p.w, p.w) {}

} // namespace qvLinear

#endif
