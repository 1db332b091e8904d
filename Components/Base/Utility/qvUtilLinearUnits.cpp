#include "Base/Utility/qvUtilLinearUnits.h"

#include <iterator>
#include <limits>

namespace qvUtil {

namespace {

// In the order of LinearUnits::System. The second column is not the reciprocal of the first in the last bit everywhere.
struct Scale {
    double toMillimeters;
    double fromMillimeters;
};

constexpr double inch = 25.4;
constexpr double foot = inch * 12;
constexpr double yard = inch * 12 * 3;
constexpr double mile = inch * 12 * 5280;

constexpr Scale scales[] = {{inch, 1 / inch}, {foot, 1 / foot}, {yard, 1 / yard}, {mile, 1 / mile},
                            {1, 1},           {10, 0.1},        {1000, 0.001},    {1000000, 1e-6}};
static_assert(std::size(scales) == LinearUnits::Kilometers + 1);

bool isUnit(LinearUnits::System system) { return static_cast<unsigned>(system) < std::size(scales); }

} // namespace

double LinearUnits::convert(double value, System from, System to) {
    if (!isUnit(from) || !isUnit(to))
        return std::numeric_limits<double>::quiet_NaN();
    return value * scales[from].toMillimeters * scales[to].fromMillimeters;
}

} // namespace qvUtil
