#include "Base/Utility/qvUtilCircularRange.h"

#include <algorithm>
#include <limits>
#include <optional>

namespace qvUtil {

namespace {

// Sums of two positions of a circle need more than an int.
using Wide = std::int64_t;

Wide reduced(Wide value, Wide modulus) {
    Wide const rest = value % modulus;
    return rest < 0 ? rest + modulus : rest;
}

// A range as a start on the circle and a number of values from there on; no values stand for an invalid range. Two of
// them are compared on a line that begins where one of them does, so that no case has to be made for what is wrapped.
struct Arc {
    explicit Arc(CircularRange const & range) : modulus(range.modulus()) {
        if (!range.valid() || modulus < 1)
            return;
        begin = reduced(range.begin(), modulus);
        count = std::min<Wide>(range.size(), modulus);
    }

    // Without a circle there are no values, and no value is missing either: that is not full.
    bool isFull() const { return count > 0 && count == modulus; }
    // How far a value lies behind the start.
    Wide offsetOf(Wide value) const { return reduced(value - begin, modulus); }
    // `length` values from the offset on.
    CircularRange piece(Wide offset, Wide length) const {
        if (length >= modulus)
            return CircularRange(0, static_cast<int>(modulus - 1), static_cast<int>(modulus));
        Wide const first = reduced(begin + offset, modulus);
        return CircularRange(static_cast<int>(first), static_cast<int>(reduced(first + length - 1, modulus)),
                             static_cast<int>(modulus));
    }

    Wide modulus;
    Wide begin = 0;
    Wide count = 0;
};

bool meet(Arc const & a, Arc const & b) {
    return a.count > 0 && b.count > 0 && (a.offsetOf(b.begin) < a.count || b.offsetOf(a.begin) < b.count);
}

} // namespace

CircularRange::CircularRange(int begin, int end, int modulus) : begin_(begin), end_(end), modulus_(modulus) {
    if (modulus < 1)
        begin_ = end_ = -1;
    canonicalize();
}

int CircularRange::size() const {
    if (!valid())
        return 0;
    Wide const count = Wide{end_} - begin_ + 1 + (isWrapped() ? modulus_ : 0);
    return static_cast<int>(std::clamp<Wide>(count, 0, std::numeric_limits<int>::max()));
}

void CircularRange::canonicalize() {
    if ((begin_ == -1 && end_ == -1) || modulus_ < 1)
        return;
    begin_ = static_cast<int>(reduced(begin_, modulus_));
    end_ = static_cast<int>(reduced(end_, modulus_));
    if (end_ + 1 == begin_) {
        begin_ = 0;
        end_ = modulus_ - 1;
    }
}

bool CircularRange::contains(int value) const {
    Arc const arc(*this);
    return value >= 0 && value < modulus_ && arc.count > 0 && arc.offsetOf(value) < arc.count;
}

bool CircularRange::contains(CircularRange const & other) const {
    Arc const arc(*this);
    Arc const inner(other);
    if (inner.count == 0 || arc.count == 0)
        return inner.count == 0;
    return arc.isFull() || arc.offsetOf(inner.begin) + inner.count <= arc.count;
}

bool CircularRange::overlaps(CircularRange const & other) const { return meet(Arc(*this), Arc(other)); }

bool CircularRange::merge(CircularRange const & other) {
    Arc const arc(*this);
    Arc const added(other);
    if (added.count == 0 || arc.isFull())
        return true;
    if (arc.count == 0 || added.isFull()) {
        *this = other;
        return true;
    }
    // Whichever begins inside the other, or directly behind it, reaches on from there.
    Wide const ahead = arc.offsetOf(added.begin);
    Wide const behind = added.offsetOf(arc.begin);
    if (ahead <= arc.count)
        *this = arc.piece(0, std::max(arc.count, ahead + added.count));
    else if (behind <= added.count)
        *this = added.piece(0, std::max(added.count, behind + arc.count));
    else
        return false;
    return true;
}

bool CircularRange::intersect(CircularRange const & other) {
    if (!valid())
        return false;
    Arc const arc(*this);
    Arc const with(other);
    bool const meets = meet(arc, with);
    if (meets && with.isFull())
        return true;
    if (meets && arc.isFull()) {
        *this = other;
        return true;
    }
    Wide const ahead = meets ? arc.offsetOf(with.begin) : 0;
    // What the other has from its begin on, and what it has behind the end of the circle that starts here.
    bool const hasUpper = meets && ahead < arc.count;
    bool const hasLower = meets && ahead + with.count > arc.modulus;
    if (hasUpper == hasLower) {
        *this = CircularRange(-1, -1, modulus_);
        return false;
    }
    *this = hasUpper ? arc.piece(ahead, std::min(arc.count - ahead, with.count))
                     : arc.piece(0, std::min(arc.count, ahead + with.count - arc.modulus));
    return true;
}

void CircularRange::subtract(CircularRange const & other, CircularRange & first, CircularRange & second) const {
    Arc const arc(*this);
    Arc const taken(other);
    if (!meet(arc, taken)) {
        first = *this;
        return;
    }
    if (taken.isFull())
        return;
    // Free is what lies between where the other ends, seen from its turn before, and where it begins; and then what
    // lies behind it.
    Wide const ahead = arc.offsetOf(taken.begin);
    Wide const lower = std::max<Wide>(0, ahead + taken.count - arc.modulus);
    Wide const lowerEnd = std::min(ahead, arc.count);
    Wide const upper = ahead + taken.count;
    std::optional<CircularRange> pieces[2];
    int count = 0;
    if (lower < lowerEnd)
        pieces[count++] = arc.piece(lower, lowerEnd - lower);
    if (upper < arc.count)
        pieces[count++] = arc.piece(upper, arc.count - upper);
    if (pieces[0])
        first = *pieces[0];
    if (pieces[1])
        second = *pieces[1];
}

int CircularRange::distance(int value) const {
    Arc const arc(*this);
    if (arc.count == 0)
        return std::numeric_limits<int>::max();
    Wide const offset = arc.offsetOf(value);
    if (offset < arc.count)
        return 0;
    return static_cast<int>(std::min(offset - arc.count + 1, arc.modulus - offset));
}

std::int64_t CircularRange::middle() const { return (Wide{begin_} + end_ + (isWrapped() ? modulus_ : 0) + 1) / 2; }

CircularRange CircularRange::firstHalf() const {
    if (!valid() || modulus_ < 1 || begin_ == end_)
        return CircularRange(-1, -1, modulus_);
    return CircularRange(begin_, static_cast<int>(reduced(middle() - 1, modulus_)), modulus_);
}

CircularRange CircularRange::secondHalf() const {
    if (!valid() || modulus_ < 1 || begin_ == end_)
        return *this;
    return CircularRange(static_cast<int>(reduced(middle(), modulus_)), end_, modulus_);
}

void merge(qv::vector<CircularRange> & ranges, CircularRange const & range) {
    if (!range.valid())
        return;
    CircularRange whole = range;
    for (int i = 0; i < ranges.size();) {
        CircularRange both = ranges[i];
        if (both.merge(whole)) {
            whole = both;
            ranges.erase(ranges.begin() + i);
            i = 0; // what has grown may touch those that it was tried with before
        } else
            ++i;
    }
    ranges.append(whole);
}

void subtract(qv::vector<CircularRange> & ranges, CircularRange const & range) {
    qv::vector<CircularRange> left;
    for (CircularRange const & old : ranges) {
        CircularRange pieces[2];
        old.subtract(range, pieces[0], pieces[1]);
        for (CircularRange const & piece : pieces)
            if (piece.valid())
                left.append(piece);
    }
    ranges.swap(left);
}

} // namespace qvUtil
