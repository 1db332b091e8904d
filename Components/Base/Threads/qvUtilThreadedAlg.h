// Algorithms that a thread pool runs on all of its threads.

#ifndef qvUtilThreadedAlg_h
#define qvUtilThreadedAlg_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

class Progress;

/// What both kinds of algorithm have: shares of a range for the threads, and a progress that thread 0 alone touches, so
/// that it need not be safe for several. A cancel by the user reaches the other threads when thread 0 has asked for it.
class QV_EXPORT ThreadedAlgBase {
public:
    virtual ~ThreadedAlgBase();

    /// The elements from the begin index on and before the end index are the share of a thread, out of `size` that are
    /// split as evenly as can be: the first `size % numThreads` threads have one more. Below 1 thread counts as one, a
    /// negative size as 0.
    static int getBeginIndex(int threadIndex, int numThreads, int size);
    static int getEndIndex(int threadIndex, int numThreads, int size);

    /// Stays the caller's, and must live while the algorithm runs. Null for none.
    void setProgress(Progress * progress) { progress_ = progress; }
    /// Null for every thread but thread 0.
    Progress * getProgress(int threadIndex) const { return threadIndex == 0 ? progress_ : nullptr; }
    /// Reports a value from 0 to 1; does nothing on other threads than thread 0.
    void updateProgress(int threadIndex, double value);
    /// Whether the user has cancelled. Only thread 0 asks the progress; its true answer holds for all threads from then
    /// on, and for good.
    bool cancelled(int threadIndex);

protected:
    ThreadedAlgBase() = default;
    /// A copy has the same progress, and is cancelled when the original is.
    ThreadedAlgBase(ThreadedAlgBase const & other);
    ThreadedAlgBase & operator=(ThreadedAlgBase const & other);

private:
    Progress * progress_ = nullptr;
    bool cancelledFlag_ = false; // read by all threads while thread 0 sets it, see the source
};

/// An algorithm that splits its work by threads. The pool calls initialize() and finalize() on the thread that started
/// it, and execute() once on each of its threads in between.
///
///     class Scale : public qvUtil::ThreadedAlg {
///         void execute(int thread, int numThreads) override {
///             int const end = getEndIndex(thread, numThreads, count);
///             for (int i = getBeginIndex(thread, numThreads, count); i < end; ++i)
///                 values[i] *= factor;
///         }
///         ...
///     };
///     qvUtil::ThreadPool::get().execute(scale);
class QV_EXPORT ThreadedAlg : public ThreadedAlgBase {
public:
    ~ThreadedAlg() override;
    virtual void initialize(int numThreads);
    virtual void execute(int threadIndex, int numThreads) = 0;
    virtual void finalize();
};

/// An algorithm whose work is cut into chunks, more than there are threads, each of which takes the next chunk that
/// nobody has: for work that is unevenly spread.
class QV_EXPORT ThreadedChunkAlg : public ThreadedAlgBase {
public:
    ~ThreadedChunkAlg() override;
    virtual void initialize(int numThreads);
    virtual void execute(int chunkIndex, int threadIndex, int numThreads) = 0;
    virtual void finalize();

    /// 100, unless it is set.
    int getNumChunks() const { return numChunks_; }
    void setNumChunks(int n) { numChunks_ = n; }

private:
    int numChunks_ = 100;
};

} // namespace qvUtil

#endif
