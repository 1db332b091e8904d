// The pool that runs everything on the caller's thread.

#ifndef SimpleThreadPool_h
#define SimpleThreadPool_h

#include "Base/Threads/qvUtilThreadPool.h"

namespace qvUtil {

class SimpleThreadPool : public ThreadPool {
public:
    constexpr SimpleThreadPool() : ThreadPool(1) {}

    void execute(ThreadedChunkAlg & algorithm) override;
    void execute(ThreadedAlg & algorithm) override;
};

namespace loadTime {
extern SimpleThreadPool singleThreadedPool;
}

} // namespace qvUtil

#endif
