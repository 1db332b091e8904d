// An axis-aligned box.

#ifndef qvLinearRange3d_h
#define qvLinearRange3d_h

#include <iosfwd>

#include "Base/Linear/qvLinearBoxRange.h"
#include "Base/Linear/qvLinearPoint.h"

namespace qvLinear {

/*
 * The points between min and max, both included. A range whose max is below its min in x is unbounded: it stands for
 * all points, not for none. That holds in every operation; there is no empty range.
 */
class Range3d : public detail::BoxRange<Range3d, Point> {
public:
    Range3d() = default;
    constexpr Range3d(Point const & newMin, Point const & newMax) : BoxRange(newMin, newMax) {}
    constexpr explicit Range3d(Point const & value) : BoxRange(value, value) {}
    constexpr Range3d(double minX, double minY, double minZ, double maxX, double maxY, double maxZ)
        : Range3d(Point(minX, minY, minZ), Point(maxX, maxY, maxZ)) {}

    using BoxRange::contains;
    using BoxRange::include;
    using BoxRange::set;
    constexpr void set(double minX, double minY, double minZ, double maxX, double maxY, double maxZ) {
        *this = Range3d(minX, minY, minZ, maxX, maxY, maxZ);
    }
    constexpr void set(double x, double y, double z) { set(Point(x, y, z)); }
    constexpr void include(double x, double y, double z) { include(Point(x, y, z)); }
    constexpr bool contains(double x, double y, double z, double tol) const { return contains(Point(x, y, z), tol); }

    // Width times depth times height; -1 when unbounded.
    constexpr double volume() const {
        return isUnbounded() ? -1 : (max_.x - min_.x) * (max_.y - min_.y) * (max_.z - min_.z);
    }

    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, Range3d const & range);

private:
    friend class detail::BoxRange<Range3d, Point>;
};

constexpr bool equivalent(Range3d const & a, Range3d const & b, double tol) {
    return equivalent(a.min(), b.min(), tol) && equivalent(a.max(), b.max(), tol);
}

// 0 inside, and for an unbounded range.
inline double distance(Point const & p, Range3d const & range) { return detail::gapBetween(range, Range3d(p)); }
inline double distance(Range3d const & a, Range3d const & b) { return detail::gapBetween(a, b); }

// What both have in common, by the rule of intersect(Range1d, Range1d, tol) along each axis.
constexpr Range3d intersect(Range3d const & a, Range3d const & b, double tol) {
    return detail::intersectBoxes<Range3d, Point>(a, b, tol);
}

} // namespace qvLinear

#endif
