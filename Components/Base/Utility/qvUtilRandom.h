// Random numbers of the system.

#ifndef qvUtilRandom_h
#define qvUtilRandom_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

/// A number from 0 to `max`, both included, in 2^31 - 1 steps of equal size. It has no seed and cannot be repeated: two
/// processes, a parent and its child too, and two threads never see the same sequence. Any number of threads may call
/// it. A call costs some nanoseconds; the system is asked once for many.
///
/// Throws Error 1 "No random numbers" when the system has none to give.
QV_EXPORT double random(double max);
/// lo + (hi - lo) * r, with r from 0 to 1.
QV_EXPORT double random(double lo, double hi);

} // namespace qvUtil

#endif
