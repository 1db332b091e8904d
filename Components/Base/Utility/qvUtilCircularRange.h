// Ranges of integers on a circle, and the set algebra on them.

#ifndef qvUtilCircularRange_h
#define qvUtilCircularRange_h

#include "Base/Containers/qvVector.h"
#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvUtil {

/// The values from `begin` upward to `end`, both among them, on the circle of the values 0 to `modulus` - 1. A range
/// whose `begin` is above its `end` is wrapped: it runs over the top and on from 0. The whole circle has one form, from
/// 0 to `modulus` - 1. A range whose `begin` is below 0 is invalid and stands for no value at all.
///
/// Operations on two ranges give what the sets of values give, and expect ranges of one modulus. A modulus below 1 is
/// an error of the caller: such a range counts as invalid wherever two ranges meet. A plain value; nothing allocates.
///
///     qvUtil::CircularRange night(22, 5, 24);
///     night.contains(3);                                // true
///     night.merge(qvUtil::CircularRange(6, 21, 24));    // true, and night.full()
class QV_EXPORT CircularRange {
public:
    /// Invalid, with a modulus of 0.
    CircularRange() = default;
    /// One value, taken as it is; canonicalize() brings it onto the circle.
    CircularRange(int value, int modulus) : begin_(value), end_(value), modulus_(modulus) {}
    /// Invalid for -1 and -1. Otherwise both ends are reduced to the circle, and an `end` that is followed by `begin`
    /// gives the full range. With a modulus below 1 the range is invalid.
    CircularRange(int begin, int end, int modulus);

    int begin() const { return begin_; }
    int end() const { return end_; }
    int modulus() const { return modulus_; }

    bool valid() const { return begin_ >= 0; }
    /// Whether it is the whole circle.
    bool full() const { return begin_ == 0 && std::int64_t{end_} + 1 == modulus_; }
    bool isWrapped() const { return begin_ > end_; }
    /// The number of values; 0 when invalid.
    int size() const;
    /// Reduces both ends to the circle, and makes a range whose `end` is followed by `begin` the full one. What (-1,
    /// -1) or a modulus below 1 has made invalid stays so.
    void canonicalize();

    /// A value outside of the circle is in no range.
    bool contains(int value) const;
    /// Every range contains an invalid one.
    bool contains(CircularRange const & other) const;
    bool overlaps(CircularRange const & other) const;

    /// This range becomes the union. False, and nothing changes, when the two are apart. Ranges that touch are not, and
    /// an invalid range is not apart from any.
    bool merge(CircularRange const & other);
    /// This range becomes the intersection. False when that is empty or is in two pieces, which one range cannot hold;
    /// then this range is invalid.
    bool intersect(CircularRange const & other);
    /// The values that are not in `other`, in up to two pieces: `first` is the one that is met first from `begin`. The
    /// full range counts as one that begins and ends at 0, and is not joined there. What is not needed stays as it is,
    /// so the caller gives invalid ranges and finds them invalid where there is no such piece. When the two do not
    /// overlap, `first` becomes this range. The pieces may be the operands.
    void subtract(CircularRange const & other, CircularRange & first, CircularRange & second) const;

    /// The steps along the circle to the nearest value in the range, 0 when it is contained. `value` is reduced to the
    /// circle first. INT_MAX for an invalid range.
    int distance(int value) const;

    /// The two halves; of an odd number of values the second one has more. The first half of a single value is invalid.
    CircularRange firstHalf() const;
    CircularRange secondHalf() const;

    friend bool operator==(CircularRange const &, CircularRange const &) = default;

private:
    QV_NO_EXPORT std::int64_t middle() const;

    int begin_ = -1;
    int end_ = -1;
    int modulus_ = 0;
};

/// Adds a range to ranges that are apart, so that they stay so: it is merged with each that it touches, those leave
/// their places, and the union stands at the end. An invalid range adds nothing.
QV_EXPORT void merge(qv::vector<CircularRange> & ranges, CircularRange const & range);

/// Takes a range out of each of the ranges. What is left of each stands in its place, in up to two pieces.
QV_EXPORT void subtract(qv::vector<CircularRange> & ranges, CircularRange const & range);

} // namespace qvUtil

#endif
