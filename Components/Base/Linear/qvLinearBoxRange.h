// What the axis-aligned boxes of two and three dimensions have in common.

#ifndef qvLinearBoxRange_h
#define qvLinearBoxRange_h

#include <cmath>
#include <concepts>

#include "Base/Linear/qvLinearComponents.h"
#include "Base/Linear/qvLinearRange1d.h"

namespace qvLinear::detail {

/*
 * The base of the range R with corners of type P. It is unbounded, and then stands for the whole space, when max is
 * below min in x; the other axes are not looked at.
 */
template <class R, class P>
class BoxRange {
public:
    static constexpr int dimension = P::dimension;

    BoxRange() = default;
    constexpr BoxRange(P const & newMin, P const & newMax) : min_(newMin), max_(newMax) {}

    constexpr bool isUnbounded() const { return max_[0] < min_[0]; }
    constexpr bool isBounded() const { return !isUnbounded(); }
    // From 1 to 0 along every axis.
    constexpr void setUnbounded() {
        min_ = generate<P>([](int) { return 1.0; });
        max_ = generate<P>([](int) { return 0.0; });
    }

    constexpr P const & min() const { return min_; }
    constexpr P const & max() const { return max_; }
    constexpr void get(P & toMin, P & toMax) const {
        toMin = min_;
        toMax = max_;
    }
    template <std::same_as<double *> A>
    constexpr void get(A toMin, A toMax) const {
        min_.get(toMin);
        max_.get(toMax);
    }
    // From corners, or from arrays with one number for each axis. The corners may be those of the range itself.
    constexpr void set(P const & newMin, P const & newMax) {
        P const last = newMax;
        min_ = newMin;
        max_ = last;
    }
    template <ArrayOfReals A>
    constexpr void set(A newMin, A newMax) {
        set(fromArray(newMin), fromArray(newMax));
    }
    // One point alone.
    constexpr void set(P const & value) { set(value, value); }
    template <ArrayOfReals A>
    constexpr void set(A value) {
        set(fromArray(value));
    }

    constexpr P mid() const {
        return generate<P>([&](int i) { return (min_[i] + max_[i]) * 0.5; });
    }
    // Along each axis; -1 everywhere when unbounded.
    constexpr P size() const {
        bool const unbounded = isUnbounded();
        return generate<P>([&](int i) { return unbounded ? -1 : max_[i] - min_[i]; });
    }

    constexpr void include(P const & p) {
        if (isUnbounded())
            return;
        min_ = generate<P>([&](int i) { return p[i] < min_[i] ? p[i] : min_[i]; });
        max_ = generate<P>([&](int i) { return p[i] > max_[i] ? p[i] : max_[i]; });
    }
    template <ArrayOfReals A>
    constexpr void include(A numbers) {
        include(fromArray(numbers));
    }
    // Unbounded as soon as one of them is.
    constexpr void include(R const & other) {
        if (isUnbounded())
            return;
        if (other.isUnbounded())
            return setUnbounded();
        include(other.min_);
        include(other.max_);
    }

    constexpr bool contains(P const & p, double tol) const {
        return isUnbounded() ||
               holdsForAll<dimension>([&](int i) { return axisContains(min_[i], max_[i], p[i], tol); });
    }
    template <ArrayOfReals A>
    constexpr bool contains(A numbers, double tol) const {
        return contains(fromArray(numbers), tol);
    }
    // A bounded range does not contain an unbounded one.
    constexpr bool contains(R const & other, double tol) const {
        return isUnbounded() || (other.isBounded() && holdsForAll<dimension>([&](int i) {
                                     return axisContains(min_[i], max_[i], other.min_[i], other.max_[i], tol);
                                 }));
    }
    // Touching alone is no intersection at a tolerance of 0.
    constexpr bool intersects(R const & other, double tol) const {
        return isUnbounded() || other.isUnbounded() || holdsForAll<dimension>([&](int i) {
                   return axisIntersects(min_[i], max_[i], other.min_[i], other.max_[i], tol);
               });
    }

    friend constexpr bool operator==(R const & a, R const & b) { return a.min_ == b.min_ && a.max_ == b.max_; }

protected:
    template <class A>
    static constexpr P fromArray(A numbers) {
        return generate<P>([&](int i) { return double{numbers[i]}; });
    }

    P min_, max_;
};

// The length of the gap between the boxes.
template <class R>
double gapBetween(R const & a, R const & b) {
    if (a.isUnbounded() || b.isUnbounded())
        return 0;
    double sum = 0;
    for (int i = 0; i < R::dimension; ++i) {
        double const gap = axisGap(a.min()[i], a.max()[i], b.min()[i], b.max()[i]);
        sum += gap * gap;
    }
    return std::sqrt(sum);
}

// The rule of intersect(Range1d, Range1d, tol) along each axis.
template <class R, class P>
constexpr R intersectBoxes(R const & a, R const & b, double tol) {
    if (a.isUnbounded())
        return b;
    if (b.isUnbounded())
        return a;
    auto const axis = [&](int i) { return axisIntersection(a.min()[i], a.max()[i], b.min()[i], b.max()[i], tol); };
    return R(generate<P>([&](int i) { return axis(i).min(); }), generate<P>([&](int i) { return axis(i).max(); }));
}

} // namespace qvLinear::detail

#endif
