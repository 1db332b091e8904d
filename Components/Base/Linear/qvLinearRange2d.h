// An axis-aligned rectangle.

#ifndef qvLinearRange2d_h
#define qvLinearRange2d_h

#include <iosfwd>

#include "Base/Linear/qvLinearBoxRange.h"
#include "Base/Linear/qvLinearPoint2.h"

namespace qvLinear {

/*
 * The points between min and max, both included. A range whose max is below its min in x is unbounded: it stands for
 * all points, not for none. That holds in every operation; there is no empty range.
 */
class Range2d : public detail::BoxRange<Range2d, Point2> {
public:
    static Range2d const unitSquare; // (0, 0) to (1, 1)

    Range2d() = default;
    constexpr Range2d(Point2 const & newMin, Point2 const & newMax) : BoxRange(newMin, newMax) {}
    constexpr explicit Range2d(Point2 const & value) : BoxRange(value, value) {}
    constexpr Range2d(double minX, double minY, double maxX, double maxY)
        : Range2d(Point2(minX, minY), Point2(maxX, maxY)) {}

    using BoxRange::contains;
    using BoxRange::include;
    using BoxRange::set;
    constexpr void set(double minX, double minY, double maxX, double maxY) { *this = Range2d(minX, minY, maxX, maxY); }
    constexpr void set(double x, double y) { set(Point2(x, y)); }
    constexpr void include(double x, double y) { include(Point2(x, y)); }
    constexpr bool contains(double x, double y, double tol) const { return contains(Point2(x, y), tol); }

    // Width times height; -1 when unbounded.
    constexpr double area() const { return isUnbounded() ? -1 : (max_.x - min_.x) * (max_.y - min_.y); }

    // The range of two opposite corners in any order, as points or as arrays of two numbers.
    constexpr void setUnordered(Point2 const & a, Point2 const & b) {
        Point2 const other = b;
        set(a);
        include(other);
    }
    // Cuts off what lies outside the other range. An unbounded one becomes the other. Where they do not meet, max
    // comes to lie below min.
    constexpr void clipTo(Range2d const & other) {
        if (other.isUnbounded())
            return;
        if (isUnbounded()) {
            *this = other;
            return;
        }
        min_ = detail::generate<Point2>([&](int i) { return min_[i] < other.min_[i] ? other.min_[i] : min_[i]; });
        max_ = detail::generate<Point2>([&](int i) { return other.max_[i] < max_[i] ? other.max_[i] : max_[i]; });
    }

    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, Range2d const & range);

private:
    friend class detail::BoxRange<Range2d, Point2>;
};

inline constexpr Range2d Range2d::unitSquare(0, 0, 1, 1);

constexpr bool equivalent(Range2d const & a, Range2d const & b, double tol) {
    return equivalent(a.min(), b.min(), tol) && equivalent(a.max(), b.max(), tol);
}

// 0 inside, and for an unbounded range.
inline double distance(Point2 const & p, Range2d const & range) { return detail::gapBetween(range, Range2d(p)); }
inline double distance(Range2d const & a, Range2d const & b) { return detail::gapBetween(a, b); }

// What both have in common, by the rule of intersect(Range1d, Range1d, tol) along each axis.
constexpr Range2d intersect(Range2d const & a, Range2d const & b, double tol) {
    return detail::intersectBoxes<Range2d, Point2>(a, b, tol);
}

} // namespace qvLinear

#endif
