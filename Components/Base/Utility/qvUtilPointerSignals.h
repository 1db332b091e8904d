// A meeting point for programs that trace the life of their smart pointers.

#ifndef qvUtilPointerSignals_h
#define qvUtilPointerSignals_h

#include "Base/Signals/qvRTBSignal.h"

namespace qvUtil {

using PointerSignal = qvRTB::Signal3Args<char const *, void *, int>;

// One signal for each event in the life of a pointer. They exist as long as the library is loaded. The library never
// emits them: the template code of a program does, and gives the text, the pointer and the number whatever meaning its
// listeners agree on. Like every signal they belong to one thread at a time.
QV_EXPORT PointerSignal & getPointerInitSignal();
QV_EXPORT PointerSignal & getPointerAcquireSignal();
QV_EXPORT PointerSignal & getPointerReleaseSignal();
QV_EXPORT PointerSignal & getPointerDeleteSignal();

} // namespace qvUtil

#endif
