#include "Base/Utility/qvUtilColor.h"

#include "Base/Linear/qvLinearTolerance.h"
#include "Base/Utility/qvUtilColor8.h"

#include <cmath>

namespace qvUtil {

Color::Color(Color8 const & color) { color.getRGBA(rgba_[0], rgba_[1], rgba_[2], rgba_[3]); }

bool Color::isNear(Color const & other) const {
    for (int i = 0; i < 4; ++i)
        if (!(std::abs(rgba_[i] - other.rgba_[i]) < qvLinear::epsilonTolFlt))
            return false;
    return true;
}

} // namespace qvUtil
