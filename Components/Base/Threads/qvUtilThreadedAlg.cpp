#include "Base/Threads/qvUtilThreadedAlg.h"

#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <atomic>
#include <cstdint>

namespace qvUtil {

// The flag is a plain one in the header, for the record of the class does not depend on how it is shared.
static_assert(std::atomic_ref<bool>::required_alignment == alignof(bool));

ThreadedAlgBase::ThreadedAlgBase(ThreadedAlgBase const & other)
    : progress_(other.progress_), cancelledFlag_(other.cancelledFlag_) {}

ThreadedAlgBase & ThreadedAlgBase::operator=(ThreadedAlgBase const & other) {
    progress_ = other.progress_;
    cancelledFlag_ = other.cancelledFlag_;
    return *this;
}

ThreadedAlgBase::~ThreadedAlgBase() = default;

int ThreadedAlgBase::getBeginIndex(int threadIndex, int numThreads, int size) {
    std::int64_t const threads = std::max(numThreads, 1);
    std::int64_t const count = std::max(size, 0);
    // Each thread in front of this one has a whole share, and the first few one element of the rest.
    std::int64_t const index = count / threads * threadIndex + std::min<std::int64_t>(threadIndex, count % threads);
    return static_cast<int>(std::clamp<std::int64_t>(index, 0, count));
}

int ThreadedAlgBase::getEndIndex(int threadIndex, int numThreads, int size) {
    return threadIndex < std::max(numThreads, 1) ? getBeginIndex(threadIndex + 1, numThreads, size) : std::max(size, 0);
}

void ThreadedAlgBase::updateProgress(int threadIndex, double value) {
    if (Progress * const progress = getProgress(threadIndex))
        progress->set(value);
}

bool ThreadedAlgBase::cancelled(int threadIndex) {
    std::atomic_ref<bool> flag(cancelledFlag_);
    if (Progress * const progress = getProgress(threadIndex))
        if (progress->cancelled())
            flag.store(true, std::memory_order_relaxed);
    return flag.load(std::memory_order_relaxed);
}

ThreadedAlg::~ThreadedAlg() = default;
void ThreadedAlg::initialize(int) {}
void ThreadedAlg::finalize() {}

ThreadedChunkAlg::~ThreadedChunkAlg() = default;
void ThreadedChunkAlg::initialize(int) {}
void ThreadedChunkAlg::finalize() {}

} // namespace qvUtil
