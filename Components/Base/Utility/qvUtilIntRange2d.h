// A rectangle of integers that is half-open.

#ifndef qvUtilIntRange2d_h
#define qvUtilIntRange2d_h

#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvUtil {

/// A rectangle whose greatest value along an axis is min + size - 1; compare IntRect, which contains its far side. Axis
/// 0 is x, axis 1 is y, and no other is looked for. The default is all 0. Results that an int cannot hold are the
/// nearest that it can. A plain value.
class QV_EXPORT IntRange2d {
public:
    IntRange2d() = default;
    IntRange2d(IntRange2d const &) = default;
    IntRange2d & operator=(IntRange2d const &) = default;

    void set(int minX, int minY, int sizeX, int sizeY);

    int min(int axis) const { return min_[axis]; }
    /// The greatest value; below min() when the size is 0.
    int max(int axis) const;
    int size(int axis) const { return size_[axis]; }

    bool contains(int axis, int value) const;
    /// The nearest value that is contained; min() when none is.
    int clamp(int axis, int value) const;
    /// The contained value that lies a multiple of the size away; min() when none is contained.
    int wrap(int axis, int value) const;

    /// Size by size, which fits whatever the sizes are.
    std::int64_t area() const { return std::int64_t{size_[0]} * size_[1]; }
    /// Grows to the range that bounds both, an empty one's corner too.
    void include(IntRange2d const & other);

    friend bool operator==(IntRange2d const &, IntRange2d const &) = default;

private:
    int min_[2] = {0, 0};
    int size_[2] = {0, 0};
};

} // namespace qvUtil

#endif
