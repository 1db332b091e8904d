#include "Base/Linear/qvLinearVectorFlt.h"

#include "Base/Linear/Internal/NormalizeFlt.h"

namespace qvLinear {

bool VectorFlt::normalize() { return normalizeFlt(*this); }

} // namespace qvLinear
