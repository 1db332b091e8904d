#include "Base/Linear/qvLinearTolerance.h"

namespace qvLinear {

// There before any code runs, so that no other object of the process meets them unset.
constinit double epsilonTol = 1e-12;
constinit double epsilon2Tol = 1e-24;
constinit float epsilonTolFlt = 1e-6F;
constinit float epsilon2TolFlt = 1e-12F;
constinit double degreeTol = 1e-5;
constinit double perpendicularTol = 1.745329251994321e-07;
constinit double perpendicular2Tol = 3.046174197867056e-14;
constinit double parallelTol = 0.9999999999999848;
constinit double parallel2Tol = 0.9999999999999696;

} // namespace qvLinear
