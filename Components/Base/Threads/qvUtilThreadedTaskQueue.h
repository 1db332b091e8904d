// What runs trees of tasks.

#ifndef qvUtilThreadedTaskQueue_h
#define qvUtilThreadedTaskQueue_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

class Progress;
class ThreadedTask;

/// Runs tasks and their children. Unless another queue is installed, everything runs on the caller's thread, inside
/// submit(). Whoever uses it calls acquire(), then submit() as often as there is something to do, then wait() if all of
/// that has to be done before it goes on, and release() at the end. What every queue keeps to:
///
/// For each task it calls preExecute(0), preExecute(1) and so on until one gives null, and runs each task that it is
/// given the same way; all of them are complete before the task's execute(threadIndex), which is left out after
/// setNoExecute(). Then come postExecute(0), postExecute(1) and so on, the same way, and the task is deleted. Once
/// cancelled() is true, a task that comes up is deleted with no other call, no more children are asked of the one that
/// gave it, and no execute() is begun.
///
///     auto & queue = qvUtil::ThreadedTaskQueue::get();
///     queue.acquire();
///     queue.setCancelObject(&progress);
///     queue.submit(new BuildTree(scene));
///     queue.wait();
///     queue.release();
///
/// Installing is not synchronised with get(): a program installs while nothing runs.
class QV_EXPORT ThreadedTaskQueue {
public:
    virtual ~ThreadedTaskQueue();

    /// Begins a job: comes before its first submit(), and is answered by one release().
    virtual void acquire() = 0;
    /// The task, made with new, is the queue's from here on. Null is ignored.
    virtual void submit(ThreadedTask * task) = 0;
    /// Until everything is done.
    virtual void wait() = 0;
    /// Ends the job: forgets the cancel object, and lets a cancel count again.
    virtual void release() = 0;
    /// How many threads can run execute().
    virtual int getNumThreads() = 0;
    /// Is asked for a cancel by the user; null for none. Stays the caller's, and must live until release().
    virtual void setCancelObject(Progress * progress) = 0;
    /// Whether an object is set that is cancelled, and no task with setNoCancel() was submitted since release().
    virtual bool cancelled() = 0;

    /// Stays the caller's, who installs another one or null before it goes.
    static void install(ThreadedTaskQueue * queue);
    /// The installed queue, else the single-threaded one.
    static ThreadedTaskQueue & get();
    static ThreadedTaskQueue & getSingleThreaded();
};

} // namespace qvUtil

#endif
