#include "Base/Linear/qvLinearParamLine.h"

#include "Base/Linear/Internal/Clamped.h"
#include "Base/Linear/qvLinearProject.h"

#include <ostream>

namespace qvLinear {

Point ParamLine::projectBounded(Point const & q, double lo, double hi) const {
    return eval(clamped(projectParam(q, *this), lo, hi));
}

std::ostream & operator<<(std::ostream & out, ParamLine const & line) {
    return out << "ParamLine(" << line.point << "," << line.vector << ")";
}

} // namespace qvLinear
