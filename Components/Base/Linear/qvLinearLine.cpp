#include "Base/Linear/qvLinearLine.h"

#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearRotation.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <ostream>

namespace qvLinear {

bool equivalent(Line const & a, Line const & b) {
    return isParallel(a.direction, b.direction, parallelTol) && distance(a.point, b) < epsilonTol;
}

std::ostream & operator<<(std::ostream & out, Line const & line) {
    return out << "Line(" << line.point << "," << line.direction << ")";
}

} // namespace qvLinear
