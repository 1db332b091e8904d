#include "Base/Threads/qvUtilThreadedTaskQueue.h"

#include "Base/Threads/Internal/SimpleQueue.h"
#include "Base/Threads/qvUtilThreadedTask.h"
#include "Base/Utility/qvUtilProgress.h"

#include <memory>
#include <utility>
#include <vector>

namespace qvUtil {

namespace {

constinit ThreadedTaskQueue * installed = nullptr;

} // namespace

ThreadedTaskQueue::~ThreadedTaskQueue() = default;

void ThreadedTaskQueue::install(ThreadedTaskQueue * queue) { installed = queue; }

ThreadedTaskQueue & ThreadedTaskQueue::get() { return installed != nullptr ? *installed : getSingleThreaded(); }

ThreadedTaskQueue & ThreadedTaskQueue::getSingleThreaded() { return loadTime::singleThreadedQueue; }

// Depth first, with a stack of its own, so that a chain of tasks may be as long as memory allows. A task that throws
// ends the run, and all that were begun are deleted.
class SimpleQueue::Run {
public:
    explicit Run(SimpleQueue & queue) : queue_(queue) {}

    void complete(std::unique_ptr<ThreadedTask> root) {
        begin(std::move(root));
        while (!open_.empty())
            step();
    }

private:
    enum class Phase { before, behind };
    struct Open {
        std::unique_ptr<ThreadedTask> task;
        Phase phase = Phase::before;
        int index = 0; // of the child to ask for
    };

    // False when the task was refused.
    bool begin(std::unique_ptr<ThreadedTask> task) {
        if (queue_.cancelled())
            return false;
        if (!task->isCancellable())
            queue_.cancellable_ = false;
        open_.push_back({std::move(task)});
        return true;
    }

    void step() {
        Open & top = open_.back();
        int const index = top.index++;
        std::unique_ptr<ThreadedTask> child(top.phase == Phase::before ? top.task->preExecute(index)
                                                                       : top.task->postExecute(index));
        if (child == nullptr || !begin(std::move(child)))
            endPhase();
    }

    // Only what was refused or absent ends a phase, so the task that gave it is on top.
    void endPhase() {
        if (open_.back().phase == Phase::behind) {
            open_.pop_back();
            return;
        }
        ThreadedTask & task = *open_.back().task;
        if (!task.getNoExecute() && !queue_.cancelled())
            task.execute(0);
        open_.back().phase = Phase::behind;
        open_.back().index = 0;
    }

    SimpleQueue & queue_;
    std::vector<Open> open_;
};

void SimpleQueue::submit(ThreadedTask * task) {
    std::unique_ptr<ThreadedTask> owned(task);
    if (owned != nullptr)
        Run(*this).complete(std::move(owned));
}

void SimpleQueue::release() {
    cancellable_ = true;
    cancelObject_ = nullptr;
}

bool SimpleQueue::cancelled() { return cancelObject_ != nullptr && cancellable_ && cancelObject_->cancelled(); }

} // namespace qvUtil
