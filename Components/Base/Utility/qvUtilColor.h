// A colour to compute with.

#ifndef qvUtilColor_h
#define qvUtilColor_h

#include "Base/qvBaseConfig.h"

#include <concepts>

namespace qvUtil {

class Color8;

/// Red, green, blue and alpha as four floats, in this order in memory, usually from 0 to 1; nothing keeps them there.
/// The default is opaque black. Color8 is the twin for storage; each converts to the other.
///
///     qvUtil::Color const half(0.5F, 0.5F, 0.5F, 1);
///     qvUtil::Color8 const stored = half; // 127, 127, 127, 255
///
/// An index beyond 3, or below 0, means alpha.
class QV_EXPORT Color {
public:
    static Color const black;
    static Color const white;
    static Color const red;
    static Color const green;
    static Color const blue;

    constexpr Color() = default;
    /// From the four numbers that the pointer leads to.
    explicit constexpr Color(float const * rgba) : Color(rgba[0], rgba[1], rgba[2], rgba[3]) {}
    constexpr Color(float r, float g, float b, float a) : rgba_{r, g, b, a} {}
    /// Each byte divided by 255.
    Color(Color8 const & color);

    constexpr void set(float r, float g, float b, float a) { *this = Color(r, g, b, a); }

    constexpr float r() const { return rgba_[0]; }
    constexpr float g() const { return rgba_[1]; }
    constexpr float b() const { return rgba_[2]; }
    constexpr float a() const { return rgba_[3]; }

    template <std::integral I>
    constexpr float operator[](I i) const {
        return rgba_[place(i)];
    }
    template <std::integral I>
    constexpr float & operator[](I i) {
        return rgba_[place(i)];
    }

    // The four numbers as an array, which is the colour's own memory. These are templates so that only a place that
    // wants exactly such a pointer takes them: an address is never printed, compared or tested by mistake.
    template <std::same_as<float const *> P>
    constexpr operator P() const {
        return rgba_;
    }
    template <std::same_as<float *> P>
    constexpr operator P() {
        return rgba_;
    }

    /// Whether all four differ by less than qvLinear::epsilonTolFlt.
    friend bool operator==(Color const & a, Color const & b) { return a.isNear(b); }

private:
    template <class I>
    static constexpr int place(I i) {
        return i == 0 ? 0 : i == 1 ? 1 : i == 2 ? 2 : 3;
    }
    bool isNear(Color const & other) const;

    float rgba_[4] = {0, 0, 0, 1};
};

inline constexpr Color Color::black(0, 0, 0, 1);
inline constexpr Color Color::white(1, 1, 1, 1);
inline constexpr Color Color::red(1, 0, 0, 1);
inline constexpr Color Color::green(0, 1, 0, 1);
inline constexpr Color Color::blue(0, 0, 1, 1);

} // namespace qvUtil

#endif
