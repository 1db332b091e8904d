#include "Base/Utility/qvUtilIntRect.h"

#include "Base/Utility/Internal/Saturated.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qvUtil {

namespace {

using Wide = std::int64_t;

// Grows the span of a corner and a size to reach a value.
void reach(int value, int & corner, int & size) {
    Wide const begin = std::min(corner, value);
    Wide const end = std::max(Wide{corner} + size, Wide{value});
    corner = static_cast<int>(begin);
    size = saturated(end - begin);
}

int scaled(int value, int from, int to) {
    // The rounding in single precision is part of the result: large coordinates come out as floats have them.
    float const rounded = std::floor(static_cast<float>(static_cast<double>(value) / from * to + 0.5));
    using Limits = std::numeric_limits<int>;
    if (std::isnan(rounded))
        return 0;
    if (rounded >= -static_cast<float>(Limits::min()))
        return Limits::max();
    return rounded < static_cast<float>(Limits::min()) ? Limits::min() : static_cast<int>(rounded);
}

} // namespace

void IntRect::setCorner(int x, int y) {
    x_ = x;
    y_ = y;
}

void IntRect::setSize(int width, int height) {
    width_ = width;
    height_ = height;
}

void IntRect::setCornerAndSize(int x, int y, int width, int height) {
    setCorner(x, y);
    setSize(width, height);
}

void IntRect::setCorners(int x0, int y0, int x1, int y1) {
    setCorner(std::min(x0, x1), std::min(y0, y1));
    setSize(saturated(std::max(Wide{x0}, Wide{x1}) - x_), saturated(std::max(Wide{y0}, Wide{y1}) - y_));
}

void IntRect::translateBy(int dx, int dy) { setCorner(saturated(Wide{x_} + dx), saturated(Wide{y_} + dy)); }

void IntRect::translateToOrigin() { setCorner(0, 0); }

void IntRect::expand(int n) {
    setCorner(saturated(Wide{x_} - n), saturated(Wide{y_} - n));
    setSize(saturated(width_ + 2 * Wide{n}), saturated(height_ + 2 * Wide{n}));
}

int IntRect::maxX() const { return saturated(Wide{x_} + width_); }

int IntRect::maxY() const { return saturated(Wide{y_} + height_); }

bool IntRect::contains(int x, int y) const {
    return isInitialized() && x >= x_ && x <= Wide{x_} + width_ && y >= y_ && y <= Wide{y_} + height_;
}

bool IntRect::contains(IntRect const & other) const {
    return other.isInitialized() && contains(other.minX(), other.minY()) && contains(other.maxX(), other.maxY());
}

void IntRect::growToContain(int x, int y) {
    if (!isInitialized()) {
        setCornerAndSize(x, y, 0, 0);
        return;
    }
    reach(x, x_, width_);
    reach(y, y_, height_);
}

void IntRect::growToContain(IntRect const & other) {
    if (!other.isInitialized())
        return;
    // Read first, as the other may be this one.
    int const farX = other.maxX();
    int const farY = other.maxY();
    growToContain(other.minX(), other.minY());
    growToContain(farX, farY);
}

bool IntRect::intersects(IntRect const & other, IntRect * result) const {
    if (!isInitialized() || !other.isInitialized())
        return false;
    int const nearX = std::max(minX(), other.minX());
    int const nearY = std::max(minY(), other.minY());
    int const farX = std::min(maxX(), other.maxX());
    int const farY = std::min(maxY(), other.maxY());
    if (nearX > farX || nearY > farY)
        return false;
    if (result != nullptr)
        result->setCorners(nearX, nearY, farX, farY);
    return true;
}

void IntRect::crop(IntRect const & other) {
    if (!intersects(other, this))
        setCornerAndSize(0, 0, 0, 0);
}

void IntRect::mapTo(IntRect const & target, int x, int y, int & outX, int & outY) const {
    int const mappedX = scaled(x, width_, target.width_);
    outY = scaled(y, width_, target.width_);
    outX = mappedX;
}

void IntRect::mapTo(IntRect const & target, IntRect const & rect, IntRect & result) const {
    int near[2];
    int far[2];
    mapTo(target, rect.minX(), rect.minY(), near[0], near[1]);
    mapTo(target, rect.maxX(), rect.maxY(), far[0], far[1]);
    result.setCorners(near[0], near[1], far[0], far[1]);
}

bool IntRect::operator==(IntRect const & other) const {
    return isInitialized() && other.isInitialized() && x_ == other.x_ && y_ == other.y_ && width_ == other.width_ &&
           height_ == other.height_;
}

} // namespace qvUtil
