#include "Base/Linear/qvLinearVector2Flt.h"

#include "Base/Linear/Internal/NormalizeFlt.h"

namespace qvLinear {

bool Vector2Flt::normalize() { return normalizeFlt(*this); }

} // namespace qvLinear
