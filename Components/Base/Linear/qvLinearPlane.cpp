#include "Base/Linear/qvLinearPlane.h"

#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearRotation.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <ostream>

namespace qvLinear {

bool equivalent(Plane const & a, Plane const & b) {
    return isParallel(a.normal, b.normal, parallelTol) && distance(a.point, b) < epsilonTol;
}

std::ostream & operator<<(std::ostream & out, Plane const & plane) {
    return out << "Plane(" << plane.point << "," << plane.normal << ")";
}

} // namespace qvLinear
