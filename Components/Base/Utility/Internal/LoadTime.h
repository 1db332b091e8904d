// The objects of this folder that LoadTime.cpp defines.

#ifndef LoadTime_h
#define LoadTime_h

#include "Base/Utility/qvUtilPointerSignals.h"

namespace qvUtil::loadTime {

extern PointerSignal pointerInitSignal;
extern PointerSignal pointerAcquireSignal;
extern PointerSignal pointerReleaseSignal;
extern PointerSignal pointerDeleteSignal;

} // namespace qvUtil::loadTime

#endif
