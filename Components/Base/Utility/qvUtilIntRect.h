// A rectangle of integers that contains its far side.

#ifndef qvUtilIntRect_h
#define qvUtilIntRect_h

#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvUtil {

/// A rectangle from a corner x, y to the far corner x + width, y + height, which is inside; compare IntRange2d, which
/// is half-open. One whose width or height is -1 is uninitialised, as it is made: it contains nothing, meets nothing
/// and equals nothing, and becomes the first thing that it is grown to contain. Results that an int cannot hold are the
/// nearest that it can. A plain value.
class QV_EXPORT IntRect {
public:
    /// Uninitialised, at 0, 0.
    IntRect() = default;
    IntRect(int x, int y, int width, int height) : x_(x), y_(y), width_(width), height_(height) {}

    void setCorner(int x, int y);
    void setSize(int width, int height);
    void setCornerAndSize(int x, int y, int width, int height);
    /// Any two opposite corners, in any order.
    void setCorners(int x0, int y0, int x1, int y1);
    void translateBy(int dx, int dy);
    void translateToOrigin();
    /// The corner goes back by `n`, and the size grows by twice that.
    void expand(int n);

    int width() const { return width_; }
    int height() const { return height_; }
    int minX() const { return x_; }
    int minY() const { return y_; }
    int maxX() const;
    int maxY() const;
    /// Width by height, which fits whatever these are.
    std::int64_t area() const { return std::int64_t{width_} * height_; }

    /// Whether the width or the height is 0; an uninitialised rectangle is not empty.
    bool isEmpty() const { return width_ == 0 || height_ == 0; }
    bool isInitialized() const { return width_ != -1 && height_ != -1; }

    bool contains(int x, int y) const;
    /// Both corners are inside. False when either is uninitialised.
    bool contains(IntRect const & other) const;
    /// An uninitialised rectangle becomes the point, with size 0.
    void growToContain(int x, int y);
    /// An uninitialised `other` changes nothing.
    void growToContain(IntRect const & other);
    /// Sides that touch do intersect. `result`, which may be null, gets the overlap when there is one.
    bool intersects(IntRect const & other, IntRect * result = nullptr) const;
    /// Becomes the overlap; all zero when there is none.
    void crop(IntRect const & other);

    /// Scales a point by the ratio of the widths, in both coordinates, rounded to the nearest number with halves going
    /// up; the heights are not looked at, nor the corners. Where this width is 0 nothing is scaled to a number: 0 gives
    /// 0, and others what is nearest to infinity.
    void mapTo(IntRect const & target, int x, int y, int & outX, int & outY) const;
    /// The rectangle between both corners of `rect`, mapped like that.
    void mapTo(IntRect const & target, IntRect const & rect, IntRect & result) const;

    /// The same corner and size. False when either is uninitialised, even against itself.
    bool operator==(IntRect const & other) const;
    bool operator!=(IntRect const & other) const { return !(*this == other); }

private:
    int x_ = 0;
    int y_ = 0;
    int width_ = -1;
    int height_ = -1;
};

} // namespace qvUtil

#endif
