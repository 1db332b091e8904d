#include "Base/Linear/qvLinearParamPlane.h"

#include "Base/Linear/qvLinearProject.h"
#include "Base/Linear/qvLinearRotation.h"
#include "Base/Linear/qvLinearTolerance.h"

#include <ostream>

namespace qvLinear {

void ParamPlane::orthogonalize(bool keepLength) {
    v = project(v, Normal(cross(normal, u)));
    if (keepLength)
        v *= u.length() / v.length();
}

bool equivalent(ParamPlane const & a, ParamPlane const & b) {
    return isParallel(a.normal, b.normal, parallelTol) && equivalent(a.point, b.point, epsilonTol) &&
           equivalent(a.u, b.u, epsilonTol) && equivalent(a.v, b.v, epsilonTol);
}

std::ostream & operator<<(std::ostream & out, ParamPlane const & plane) {
    return out << "ParamPlane(" << plane.point << "," << plane.normal << "," << plane.u << "," << plane.v << ")";
}

} // namespace qvLinear
