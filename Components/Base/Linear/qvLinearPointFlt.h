// The single-precision twin of Point.

#ifndef qvLinearPointFlt_h
#define qvLinearPointFlt_h

#include <iosfwd>

#include "Base/Linear/qvLinearArithmetic.h"

namespace qvLinear {

class Point;
class Point2Flt;
class VectorFlt;

// Numbers of other types are rounded to float.
class PointFlt : public detail::PointArithmetic<PointFlt, float, 3, VectorFlt> {
public:
    static PointFlt const origin;

    PointFlt() = default;
    template <detail::Number X, detail::Number Y, detail::Number Z>
    constexpr PointFlt(X newX, Y newY, Z newZ)
        : x(static_cast<float>(newX)), y(static_cast<float>(newY)), z(static_cast<float>(newZ)) {}
    template <detail::ArrayOfReals P>
    constexpr PointFlt(P numbers) : PointFlt(numbers[0], numbers[1], numbers[2]) {}
    constexpr PointFlt(Point2Flt const & p); // z is 0
    constexpr PointFlt(Point const & p);

    template <detail::Number X, detail::Number Y, detail::Number Z>
    constexpr void set(X newX, Y newY, Z newZ) {
        *this = PointFlt(newX, newY, newZ);
    }
    template <detail::ArrayOfReals P>
    constexpr void set(P numbers) {
        *this = PointFlt(numbers);
    }

    constexpr VectorFlt asVectorFlt() const;

    friend std::ostream & operator<<(std::ostream & out, PointFlt const & p) {
        return detail::print(out, "PointFlt(", p, dimension);
    }

    float x, y, z;

private:
    friend class detail::Components<PointFlt, float, 3>;
    constexpr float component(int i) const { return i == 0 ? x : i == 1 ? y : z; }
};

inline constexpr PointFlt PointFlt::origin(0, 0, 0);

} // namespace qvLinear

#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearPoint2Flt.h"
#include "Base/Linear/qvLinearVectorFlt.h"

namespace qvLinear {

constexpr PointFlt::PointFlt(Point2Flt const & p) : PointFlt(p.x, p.y, 0) {}
constexpr PointFlt::PointFlt(Point const & p) : PointFlt(p.x, p.y, p.z) {}
constexpr VectorFlt PointFlt::asVectorFlt() const { return VectorFlt(x, y, z); }

} // namespace qvLinear

#endif
