#include "Base/Utility/qvUtilPack.h"

#include "Base/Threads/qvUtilOrdering.h"
#include "Base/Utility/Internal/PackTree.h"
#include "Base/Utility/Internal/Saturated.h"
#include "Base/Utility/qvUtilPowerOfTwo.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qvUtil {

namespace {

using Wide = std::int64_t;

constexpr Wide largestInt = std::numeric_limits<int>::max();
constexpr Wide largestWide = std::numeric_limits<Wide>::max();

Wide sumOf(Wide a, Wide b) { return a > largestWide - b ? largestWide : a + b; }

int sideOf(IntRange2d const & item, int axis) { return std::max(item.size(axis), 0); }
Wide areaOf(IntRange2d const & item) { return Wide{sideOf(item, 0)} * sideOf(item, 1); }
int largerSideOf(IntRange2d const & item) { return std::max(sideOf(item, 0), sideOf(item, 1)); }

// The integer part.
Wide rootOf(Wide value) {
    Wide root = static_cast<Wide>(std::sqrt(static_cast<double>(value)));
    while (root * root > value)
        --root;
    while (root + 1 <= value / (root + 1))
        ++root;
    return root;
}

int powerOfTwoFrom(Wide value) { return ceilPowerOfTwo(saturated(value)); }

// How many were placed, from the first on.
int placeInto(qv::vector<IntRange2d> & items, IntRange2d const & bin) {
    PackTree tree(bin.size(0), bin.size(1));
    int placed = 0;
    for (IntRange2d & item : items) {
        PackTree::Place place;
        if (!tree.insert(sideOf(item, 0), sideOf(item, 1), place))
            break;
        item.set(saturated(Wide{bin.min(0)} + place.x), saturated(Wide{bin.min(1)} + place.y), sideOf(item, 0),
                 sideOf(item, 1));
        ++placed;
    }
    return placed;
}

Wide areaBehind(qv::vector<IntRange2d> const & items, int placed) {
    Wide area = 0;
    for (int i = placed; i < items.size(); ++i)
        area = sumOf(area, areaOf(items[i]));
    return area;
}

// What decides on the size of a bin.
struct Extent {
    explicit Extent(qv::vector<IntRange2d> const & items) : area(areaBehind(items, 0)) {
        for (IntRange2d const & item : items) {
            width = std::max(width, Wide{sideOf(item, 0)});
            height = std::max(height, Wide{sideOf(item, 1)});
        }
    }

    Wide width = 0;
    Wide height = 0;
    Wide area;
};

// The sides of a bin that is being looked for.
class BinSize {
public:
    BinSize(Extent const & items, bool powerOfTwo) : items_(items), powerOfTwo_(powerOfTwo) {
        Wide const side = rootOf(items.area);
        if (side > items.width && side > items.height) {
            width_ = height_ = fit(side);
            return;
        }
        width_ = powerOfTwo ? powerOfTwoFrom(items.width) : items.width;
        height_ = powerOfTwo ? powerOfTwoFrom(items.height) : items.height;
        // A long item decides one side, and the area the other.
        Wide & shorter = width_ <= height_ ? width_ : height_;
        Wide const longer = std::max(width_, height_);
        Wide const needed = longer == 0 ? 0 : items.area / longer;
        if (shorter < needed)
            shorter = fit(needed);
    }

    IntRange2d range() const {
        IntRange2d range;
        range.set(0, 0, saturated(width_), saturated(height_));
        return range;
    }

    // False when an int would overflow; then nothing changes.
    bool enlarge(Wide left) { return powerOfTwo_ ? enlargeByTwo() : enlargeSquare(left); }

private:
    Wide fit(Wide side) const { return powerOfTwo_ ? powerOfTwoFrom(side) : side; }

    bool enlargeByTwo() {
        Wide & side = width_ >= height_ ? height_ : width_;
        if (2 * side > largestInt)
            return false;
        side *= 2;
        return true;
    }

    // While the largest item is longer than the side none can be placed, and there is no need to try. Where that goes
    // on for very long, with a thin item that is longer than the root of all areas by orders of magnitude, it is cut
    // short.
    bool enlargeSquare(Wide left) {
        constexpr int longest = 1000000;
        Wide const needed = std::max(items_.width, items_.height);
        Wide side = rootOf(sumOf(width_ * height_, left)) + 1;
        for (int i = 0; side < needed; ++i)
            side = i < longest ? rootOf(sumOf(side * side, items_.area)) + 1 : needed;
        if (side > largestInt)
            return false;
        width_ = height_ = side;
        return true;
    }

    Extent items_;
    bool powerOfTwo_;
    Wide width_;
    Wide height_;
};

IntRange2d squareAround(qv::vector<IntRange2d> const & items, int placed) {
    IntRange2d all;
    if (placed > 0)
        all = items[0];
    for (int i = 1; i < placed; ++i)
        all.include(items[i]);
    int const side = std::max(all.size(0), all.size(1));
    all.set(0, 0, side, side);
    return all;
}

} // namespace

int pack(qv::vector<IntRange2d> & items, IntRange2d const & bin) {
    return saturated(areaBehind(items, placeInto(items, bin)));
}

IntRange2d pack(qv::vector<IntRange2d> & items, bool powerOfTwo, std::int64_t * left) {
    if (left != nullptr)
        *left = 0;
    if (items.empty())
        return IntRange2d();
    Ordering ordering;
    ordering.sort(items.data(), static_cast<unsigned>(items.size()),
                  [](IntRange2d const & a, IntRange2d const & b) { return largerSideOf(a) > largerSideOf(b); });
    qv::vector<IntRange2d> sorted;
    sorted.reserve(items.size());
    for (int i = 0; i < items.size(); ++i)
        sorted.append(items[ordering[i]]);

    BinSize bin(Extent(sorted), powerOfTwo);
    qv::vector<IntRange2d> attempt;
    int placed = 0;
    do {
        attempt = sorted;
        placed = placeInto(attempt, bin.range());
    } while (placed < sorted.size() && bin.enlarge(areaBehind(sorted, placed)));

    for (int i = 0; i < placed; ++i)
        items[ordering[i]] = attempt[i];
    if (left != nullptr)
        *left = areaBehind(sorted, placed);
    return powerOfTwo ? bin.range() : squareAround(attempt, placed);
}

} // namespace qvUtil
