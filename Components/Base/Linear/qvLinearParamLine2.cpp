#include "Base/Linear/qvLinearParamLine2.h"

#include "Base/Linear/Internal/Clamped.h"
#include "Base/Linear/qvLinearProject.h"

#include <ostream>

namespace qvLinear {

Point2 ParamLine2::projectBounded(Point2 const & q, double lo, double hi) const {
    return eval(clamped(projectParam(q, *this), lo, hi));
}

std::ostream & operator<<(std::ostream & out, ParamLine2 const & line) {
    return out << "ParamLine2(" << line.point << "," << line.vector << ")";
}

} // namespace qvLinear
