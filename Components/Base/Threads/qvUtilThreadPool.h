// What runs threaded algorithms.

#ifndef qvUtilThreadPool_h
#define qvUtilThreadPool_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

class ThreadedAlg;
class ThreadedChunkAlg;

/// The back end against which code is written that may run on several threads. Unless a pool is installed, everything
/// runs on the caller's thread. Parallelism is one level deep: a pool with several threads installs itself, and is not
/// installed while it runs something, so that what it runs finds the single-threaded one.
///
///     qvUtil::ThreadPool::get().execute(algorithm);
///
/// Installing is not synchronised with get(): a program installs while nothing runs.
class QV_EXPORT ThreadPool {
public:
    explicit constexpr ThreadPool(int numThreads) : numThreads_(numThreads) {}
    virtual ~ThreadPool();

    /// The algorithm's initialize(numThreads), then its execute() for each chunk, from 0 up, on one of the threads, and
    /// its finalize(). Chunks are run although the algorithm was cancelled: it asks for that itself.
    virtual void execute(ThreadedChunkAlg & algorithm) = 0;
    /// The algorithm's initialize(numThreads), its execute() once on each thread, and its finalize().
    virtual void execute(ThreadedAlg & algorithm) = 0;

    int numThreads() const { return numThreads_; }

    /// Stays the caller's, who installs another one or null before it goes.
    static void install(ThreadPool * pool);
    /// The installed pool, else the single-threaded one.
    static ThreadPool & get();
    static ThreadPool & getSingleThreadedPool();

private:
    int numThreads_;
};

} // namespace qvUtil

#endif
