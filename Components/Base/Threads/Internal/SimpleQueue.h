// The queue that runs each task at once on the caller's thread.

#ifndef SimpleQueue_h
#define SimpleQueue_h

#include "Base/Threads/qvUtilThreadedTaskQueue.h"

namespace qvUtil {

class SimpleQueue : public ThreadedTaskQueue {
public:
    constexpr SimpleQueue() = default;

    void acquire() override {}
    void submit(ThreadedTask * task) override;
    void wait() override {}
    void release() override;
    int getNumThreads() override { return 1; }
    void setCancelObject(Progress * progress) override { cancelObject_ = progress; }
    // The object is asked each time.
    bool cancelled() override;

private:
    class Run;

    bool cancellable_ = true;
    Progress * cancelObject_ = nullptr;
};

namespace loadTime {
extern SimpleQueue singleThreadedQueue;
}

} // namespace qvUtil

#endif
