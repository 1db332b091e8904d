// A span of time.

#ifndef qvUtilInterval_h
#define qvUtilInterval_h

#include "Base/qvBaseConfig.h"

#include <compare>
#include <concepts>

namespace qvUtil {

/// The argument of every wait and time-out, in whole seconds and microseconds, neither ever negative. Where a wait
/// takes one, the zero span means that there is no limit.
///
///     socket.setTimeout(2.5);
///     condition.wait("500ms");
///
/// A plain value: copies are independent, and nothing is allocated.
class QV_EXPORT Interval {
public:
    constexpr Interval() = default;
    /// The absolute value of a number of seconds, without what lies below a microsecond. What is longer than an int can
    /// hold is the longest span, 2147483647 seconds and 999999 microseconds; NaN is zero.
    Interval(double seconds);
    template <std::integral N>
    Interval(N seconds) : Interval(static_cast<double>(seconds)) {}
    /// A decimal number with its unit right behind it, "us", "ms", "s", "min" or "h", and nothing else: "1500ms".
    /// Throws Error 1 "Bad time string" for any other text, for a null pointer, for a number that does not fit 64 bits
    /// and for a span whose seconds do not fit an int.
    Interval(char const * text);

    constexpr int seconds() const { return seconds_; }
    constexpr int microseconds() const { return microseconds_; }
    /// Both as one number of seconds.
    constexpr double dseconds() const { return microseconds_ / 1e6 + seconds_; }
    constexpr bool isZero() const { return seconds_ == 0 && microseconds_ == 0; }

    /// By seconds, then by microseconds.
    friend constexpr bool operator==(Interval const & a, Interval const & b) = default;
    friend constexpr std::strong_ordering operator<=>(Interval const & a, Interval const & b) = default;

private:
    int seconds_ = 0;
    int microseconds_ = 0;
};

} // namespace qvUtil

#endif
