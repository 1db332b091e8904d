#include "Base/Threads/qvUtilThreadedTask.h"

#include "Base/Threads/qvUtilThreadPool.h"

namespace qvUtil {

ThreadedTask::~ThreadedTask() = default;
ThreadedTask * ThreadedTask::preExecute(int) { return nullptr; }
void ThreadedTask::execute(int) {}
ThreadedTask * ThreadedTask::postExecute(int) { return nullptr; }

int ThreadedTask::getNumThreads() { return ThreadPool::get().numThreads(); }

} // namespace qvUtil
