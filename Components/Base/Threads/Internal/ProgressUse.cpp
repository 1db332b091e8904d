#include "Base/Threads/Internal/ProgressUse.h"

#if __has_include("Base/Utility/qvUtilProgress.h")
#include "Base/Utility/qvUtilProgress.h"

namespace qvUtil {

bool isCancelled(Progress & progress) { return progress.cancelled(); }
void reportTo(Progress & progress, double value) { progress.set(value); }

} // namespace qvUtil
#else
namespace qvUtil {

// There is no progress that anybody could have made.
bool isCancelled(Progress &) { return false; }
void reportTo(Progress &, double) {}

} // namespace qvUtil
#endif
