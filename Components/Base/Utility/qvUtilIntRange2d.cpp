#include "Base/Utility/qvUtilIntRange2d.h"

#include "Base/Utility/Internal/Saturated.h"

#include <algorithm>

namespace qvUtil {

void IntRange2d::set(int minX, int minY, int sizeX, int sizeY) {
    min_[0] = minX;
    min_[1] = minY;
    size_[0] = sizeX;
    size_[1] = sizeY;
}

int IntRange2d::max(int axis) const { return saturated(std::int64_t{min_[axis]} + size_[axis] - 1); }

bool IntRange2d::contains(int axis, int value) const {
    return value >= min_[axis] && value < std::int64_t{min_[axis]} + size_[axis];
}

int IntRange2d::clamp(int axis, int value) const { return std::max(min_[axis], std::min(value, max(axis))); }

int IntRange2d::wrap(int axis, int value) const {
    if (size_[axis] < 1)
        return min_[axis];
    std::int64_t const offset = (std::int64_t{value} - min_[axis]) % size_[axis];
    return saturated(min_[axis] + (offset < 0 ? offset + size_[axis] : offset));
}

void IntRange2d::include(IntRange2d const & other) {
    for (int axis = 0; axis < 2; ++axis) {
        std::int64_t const end =
            std::max(std::int64_t{min_[axis]} + size_[axis], std::int64_t{other.min_[axis]} + other.size_[axis]);
        min_[axis] = std::min(min_[axis], other.min_[axis]);
        size_[axis] = saturated(end - min_[axis]);
    }
}

} // namespace qvUtil
