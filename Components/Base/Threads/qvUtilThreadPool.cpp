#include "Base/Threads/qvUtilThreadPool.h"

#include "Base/Threads/Internal/SimpleThreadPool.h"
#include "Base/Threads/qvUtilThreadedAlg.h"

namespace qvUtil {

namespace {

constinit ThreadPool * installed = nullptr;

} // namespace

ThreadPool::~ThreadPool() = default;

void ThreadPool::install(ThreadPool * pool) { installed = pool; }

ThreadPool & ThreadPool::get() { return installed != nullptr ? *installed : getSingleThreadedPool(); }

ThreadPool & ThreadPool::getSingleThreadedPool() { return loadTime::singleThreadedPool; }

void SimpleThreadPool::execute(ThreadedChunkAlg & algorithm) {
    algorithm.initialize(1);
    for (int chunk = 0; chunk < algorithm.getNumChunks(); ++chunk)
        algorithm.execute(chunk, 0, 1);
    algorithm.finalize();
}

void SimpleThreadPool::execute(ThreadedAlg & algorithm) {
    algorithm.initialize(1);
    algorithm.execute(0, 1);
    algorithm.finalize();
}

} // namespace qvUtil
