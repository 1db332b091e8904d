#include "Base/Utility/qvUtilPointerSignals.h"

#include "Base/Utility/Internal/LoadTime.h"

namespace qvUtil {

PointerSignal & getPointerInitSignal() { return loadTime::pointerInitSignal; }

PointerSignal & getPointerAcquireSignal() { return loadTime::pointerAcquireSignal; }

PointerSignal & getPointerReleaseSignal() { return loadTime::pointerReleaseSignal; }

PointerSignal & getPointerDeleteSignal() { return loadTime::pointerDeleteSignal; }

} // namespace qvUtil
