// A colour to store.

#ifndef qvUtilColor8_h
#define qvUtilColor8_h

#include "Base/qvBaseConfig.h"

#include <bit>
#include <concepts>
#include <cstdint>

namespace qvUtil {

class Color;

/// Red, green, blue and alpha as four bytes, in this order in memory. The default is opaque black.
///
/// A float becomes a byte by multiplying it with 255 and dropping what is behind the point, so that 0.999 is 254; below
/// 0, and for NaN, it becomes 0, and above 1 it becomes 255. A byte becomes a float by division by 255. An index beyond
/// 3, or below 0, means alpha.
class QV_EXPORT Color8 {
public:
    constexpr Color8() = default;
    constexpr Color8(unsigned char r, unsigned char g, unsigned char b, unsigned char a) : rgba_{r, g, b, a} {}
    /// From the four bytes that the pointer leads to.
    explicit constexpr Color8(unsigned char const * rgba) : Color8(rgba[0], rgba[1], rgba[2], rgba[3]) {}
    Color8(Color const & color);

    constexpr void setRGBA(unsigned char const * rgba) { *this = Color8(rgba); }
    void setRGBA(float r, float g, float b, float a);

    constexpr void getRGBA(unsigned char & r, unsigned char & g, unsigned char & b, unsigned char & a) const {
        r = rgba_[0];
        g = rgba_[1];
        b = rgba_[2];
        a = rgba_[3];
    }
    void getRGBA(float & r, float & g, float & b, float & a) const;
    /// The four bytes, which are the colour's own memory.
    constexpr unsigned char const * getRGBA() const { return rgba_; }

    /// The four bytes read as one number in the machine's byte order.
    std::uint32_t getAsInt() const { return std::bit_cast<std::uint32_t>(rgba_); }

    template <std::integral I>
    constexpr unsigned char operator[](I i) const {
        return rgba_[place(i)];
    }
    template <std::integral I>
    constexpr unsigned char & operator[](I i) {
        return rgba_[place(i)];
    }

    friend bool operator==(Color8 const & a, Color8 const & b) { return a.getAsInt() == b.getAsInt(); }

private:
    template <class I>
    static constexpr int place(I i) {
        return i == 0 ? 0 : i == 1 ? 1 : i == 2 ? 2 : 3;
    }

    unsigned char rgba_[4] = {0, 0, 0, 255};
};

} // namespace qvUtil

#endif
