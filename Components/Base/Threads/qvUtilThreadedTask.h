// A task with children before and behind it.

#ifndef qvUtilThreadedTask_h
#define qvUtilThreadedTask_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

/// A node in a tree of tasks. A queue asks for the children that must be complete before execute(), runs that, and asks
/// for those behind it; see ThreadedTaskQueue.
class QV_EXPORT ThreadedTask {
public:
    virtual ~ThreadedTask();

    /// The children of either kind, made with new, for an index of 0, 1, 2 and so on until one is null. The queue owns
    /// what is given to it.
    virtual ThreadedTask * preExecute(int index);
    virtual void execute(int threadIndex);
    virtual ThreadedTask * postExecute(int index);

    /// A task that has children only, whose execute() is not called.
    void setNoExecute() { noExecute_ = true; }
    bool getNoExecute() const { return noExecute_; }

    /// Once such a task is submitted, a cancel by the user counts no more until the queue is released.
    void setNoCancel() { noCancel_ = true; }
    bool isCancellable() const { return !noCancel_; }

    /// Of ThreadPool::get().
    static int getNumThreads();

protected:
    ThreadedTask() = default;
    ThreadedTask(ThreadedTask const &) = default;
    ThreadedTask & operator=(ThreadedTask const &) = default;

private:
    bool noExecute_ = false;
    bool noCancel_ = false;
};

} // namespace qvUtil

#endif
