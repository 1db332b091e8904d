// The two things that the threaded algorithms ask of a progress.

#ifndef ProgressUse_h
#define ProgressUse_h

namespace qvUtil {

class Progress;

bool isCancelled(Progress & progress);
void reportTo(Progress & progress, double value);

} // namespace qvUtil

#endif
