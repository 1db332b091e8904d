#include "Base/Utility/qvUtilInterval.h"

#include "Base/Utility/qvUtilError.h"

#include <charconv>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <system_error>

namespace qvUtil {

namespace {

constexpr std::uint64_t microsecondsInSecond = 1000000;

struct Unit {
    std::string_view name;
    std::uint64_t inSecond; // how many of the unit make a second, at least 1
    std::uint64_t seconds;  // how many seconds make the unit, where that is at least 1
};

constexpr Unit units[] = {{"us", 1000000, 1}, {"ms", 1000, 1}, {"s", 1, 1}, {"min", 1, 60}, {"h", 1, 3600}};

[[noreturn]] void refuse() { throw Error(1, "Bad time string"); }

Unit const & unitOf(std::string_view name) {
    for (Unit const & unit : units)
        if (unit.name == name)
            return unit;
    refuse();
}

} // namespace

Interval::Interval(double seconds) {
    double const span = std::abs(seconds);
    if (span >= double(INT_MAX) + 1) {
        seconds_ = INT_MAX;
        microseconds_ = int(microsecondsInSecond) - 1;
    } else if (!std::isnan(span)) {
        double const whole = std::floor(span);
        seconds_ = int(whole);
        microseconds_ = int((span - whole) * 1e6);
    }
}

Interval::Interval(char const * text) {
    std::string_view const view = text ? text : "";
    std::uint64_t number = 0;
    auto const [behind, failure] = std::from_chars(view.data(), view.data() + view.size(), number);
    if (failure != std::errc())
        refuse();
    Unit const & unit = unitOf(view.substr(std::size_t(behind - view.data())));
    std::uint64_t const whole = number / unit.inSecond;
    if (whole > std::uint64_t(INT_MAX) / unit.seconds)
        refuse();
    seconds_ = int(whole * unit.seconds);
    microseconds_ = int(number % unit.inSecond * (microsecondsInSecond / unit.inSecond));
}

} // namespace qvUtil
