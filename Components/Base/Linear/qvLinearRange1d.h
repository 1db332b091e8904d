// An interval of numbers.

#ifndef qvLinearRange1d_h
#define qvLinearRange1d_h

#include <iosfwd>

#include "Base/qvBaseConfig.h"

namespace qvLinear {

namespace detail {

// What the ranges of all dimensions do along one axis.
constexpr bool axisContains(double lo, double hi, double x, double tol) { return lo - tol <= x && x <= hi + tol; }
constexpr bool axisContains(double lo, double hi, double otherLo, double otherHi, double tol) {
    return lo - tol <= otherLo && otherHi <= hi + tol;
}
constexpr bool axisIntersects(double lo, double hi, double otherLo, double otherHi, double tol) {
    return lo - tol < otherHi && otherLo < hi + tol;
}
constexpr void axisInclude(double & lo, double & hi, double x) {
    lo = x < lo ? x : lo;
    hi = x > hi ? x : hi;
}
// What lies between an interval and another one, or a number; 0 when they meet.
constexpr double axisGap(double lo, double hi, double otherLo, double otherHi) {
    return otherHi < lo ? lo - otherHi : otherLo > hi ? otherLo - hi : 0;
}

} // namespace detail

/*
 * The numbers from min to max, both included. A range whose max is below its min is unbounded: it stands for all
 * numbers, not for none. That holds in every operation; there is no empty range.
 *
 *     Range1d range(2, 5);
 *     range.include(7);
 *     range.contains(5.5, 0); // true
 *     range.setUnbounded();   // now it contains everything
 */
class Range1d {
public:
    Range1d() = default;
    constexpr Range1d(double newMin, double newMax) : min_(newMin), max_(newMax) {}
    constexpr explicit Range1d(double value) : Range1d(value, value) {}

    constexpr bool isUnbounded() const { return max_ < min_; }
    constexpr bool isBounded() const { return !isUnbounded(); }
    // From 1 to 0.
    constexpr void setUnbounded() { *this = Range1d(1, 0); }

    constexpr double min() const { return min_; }
    constexpr double max() const { return max_; }
    constexpr void get(double & toMin, double & toMax) const {
        toMin = min_;
        toMax = max_;
    }
    constexpr void set(double newMin, double newMax) { *this = Range1d(newMin, newMax); }
    constexpr void set(double value) { *this = Range1d(value); }

    constexpr double mid() const { return (min_ + max_) * 0.5; }
    // -1 when unbounded.
    constexpr double size() const { return isUnbounded() ? -1 : max_ - min_; }

    constexpr void include(double x) {
        if (isBounded())
            detail::axisInclude(min_, max_, x);
    }
    // Unbounded as soon as one of them is.
    constexpr void include(Range1d const & other) {
        if (isUnbounded())
            return;
        if (other.isUnbounded())
            return setUnbounded();
        include(other.min_);
        include(other.max_);
    }

    constexpr bool contains(double x, double tol) const {
        return isUnbounded() || detail::axisContains(min_, max_, x, tol);
    }
    // A bounded range does not contain an unbounded one.
    constexpr bool contains(Range1d const & other, double tol) const {
        return isUnbounded() || (other.isBounded() && detail::axisContains(min_, max_, other.min_, other.max_, tol));
    }
    // Touching in one end is no intersection at a tolerance of 0.
    constexpr bool intersects(Range1d const & other, double tol) const {
        return isUnbounded() || other.isUnbounded() || detail::axisIntersects(min_, max_, other.min_, other.max_, tol);
    }

    friend constexpr bool operator==(Range1d const & a, Range1d const & b) {
        return a.min_ == b.min_ && a.max_ == b.max_;
    }
    friend QV_EXPORT std::ostream & operator<<(std::ostream & out, Range1d const & range);

private:
    double min_, max_;
};

constexpr bool equivalent(Range1d const & a, Range1d const & b, double tol) {
    double const atMin = a.min() - b.min();
    double const atMax = a.max() - b.max();
    return atMin < tol && -atMin < tol && atMax < tol && -atMax < tol;
}

// 0 inside, and for an unbounded range.
constexpr double distance(double x, Range1d const & range) {
    return range.isUnbounded() ? 0 : detail::axisGap(range.min(), range.max(), x, x);
}
constexpr double distance(Range1d const & a, Range1d const & b) {
    return a.isUnbounded() || b.isUnbounded() ? 0 : detail::axisGap(a.min(), a.max(), b.min(), b.max());
}

namespace detail {

// What two bounded intervals have in common; a gap of less than tol gives the gap, a larger one (0, 0).
constexpr Range1d axisIntersection(double lo, double hi, double otherLo, double otherHi, double tol) {
    double const from = lo < otherLo ? otherLo : lo;
    double const to = otherHi < hi ? otherHi : hi;
    if (to >= from)
        return Range1d(from, to);
    if (from - to < tol)
        return Range1d(to, from);
    return Range1d(0, 0);
}

} // namespace detail

// What both have in common. Ranges that miss each other by less than tol give what lies between them, others (0, 0):
// whoever needs to tell a miss asks intersects first.
constexpr Range1d intersect(Range1d const & a, Range1d const & b, double tol) {
    if (a.isUnbounded())
        return b;
    if (b.isUnbounded())
        return a;
    return detail::axisIntersection(a.min(), a.max(), b.min(), b.max(), tol);
}

} // namespace qvLinear

#endif
