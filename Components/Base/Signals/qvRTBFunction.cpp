#include "Base/Signals/qvRTBFunction.h"

namespace qvRTB {

// Defined here rather than in the class, so that the class's type information has one home for all modules.
bool FunctionBase::isGlobalFunction(void *) { return false; }

bool FunctionBase::isInstance(void *) { return false; }

} // namespace qvRTB
