// Trees of tasks on the queue that is always there.

#include "Base/Threads/qvUtilThreadedTask.h"
#include "Base/Threads/qvUtilThreadedTaskQueue.h"
#include "Base/Utility/qvUtilProgress.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

using namespace qvUtil;

namespace {

std::string calls;

class Task : public ThreadedTask {
public:
    using Children = std::vector<Task *>;

    explicit Task(std::string name, Children before = {}, Children behind = {})
        : name_(std::move(name)), before_(std::move(before)), behind_(std::move(behind)) {}
    ~Task() override { calls += "~" + name_ + " "; }

    ThreadedTask * preExecute(int index) override { return child(before_, "<", index); }
    void execute(int thread) override {
        calls += name_ + "(" + std::to_string(thread) + ") ";
        if (progress)
            progress->cancel();
        if (name_ == "throws")
            throw std::runtime_error(name_);
    }
    ThreadedTask * postExecute(int index) override { return child(behind_, ">", index); }

    Progress * progress = nullptr; // cancelled by execute()

private:
    ThreadedTask * child(Children const & children, char const * when, int index) {
        calls += name_ + when + std::to_string(index) + " ";
        return std::size_t(index) < children.size() ? children[std::size_t(index)] : nullptr;
    }

    std::string name_;
    Children before_;
    Children behind_;
};

std::string callsOf(Task * task) {
    calls.clear();
    ThreadedTaskQueue::get().submit(task);
    return calls;
}

TEST(ThreadedTaskQueue, RunsChildrenBeforeAndBehind) {
    ThreadedTaskQueue & queue = ThreadedTaskQueue::get();
    EXPECT_EQ(&queue, &ThreadedTaskQueue::getSingleThreaded());
    EXPECT_EQ(queue.getNumThreads(), 1);
    queue.acquire();
    Task * const quiet = new Task("q", {new Task("b")});
    quiet->setNoExecute();
    EXPECT_EQ(callsOf(new Task("a", {quiet}, {new Task("c"), new Task("d")})),
              "a<0 q<0 b<0 b(0) b>0 ~b q<1 q>0 ~q a<1 a(0) "
              "a>0 c<0 c(0) c>0 ~c a>1 d<0 d(0) d>0 ~d a>2 ~a ");
    EXPECT_EQ(callsOf(nullptr), "");
    calls.clear();
    EXPECT_THROW(queue.submit(new Task("a", {new Task("throws")})), std::runtime_error);
    EXPECT_EQ(calls, "a<0 throws<0 throws(0) ~a ~throws ");
    queue.wait();
    queue.release();
}

TEST(ThreadedTaskQueue, ACancelEndsWhatHasNotBegunAndMayBeEnded) {
    ThreadedTaskQueue & queue = ThreadedTaskQueue::get();
    Progress progress;
    EXPECT_FALSE(queue.cancelled());
    queue.setCancelObject(&progress);
    Task * const firm = new Task("f", {}, {new Task("g")});
    firm->setNoCancel();
    firm->progress = &progress;
    EXPECT_FALSE(firm->isCancellable());
    EXPECT_EQ(callsOf(firm), "f<0 f(0) f>0 g<0 g(0) g>0 ~g f>1 ~f ");
    EXPECT_FALSE(queue.cancelled());
    queue.release();
    EXPECT_FALSE(queue.cancelled());
    queue.setCancelObject(&progress);
    EXPECT_TRUE(queue.cancelled());
    EXPECT_EQ(callsOf(new Task("x")), "~x ");

    Progress other;
    queue.setCancelObject(&other);
    Task * const cancels = new Task("c");
    cancels->progress = &other;
    Task * const unasked = new Task("u");
    EXPECT_EQ(callsOf(new Task("a", {cancels, new Task("r"), unasked}, {new Task("l")})),
              "a<0 c<0 c(0) c>0 ~c a<1 ~r a>0 ~l ~a ");
    delete unasked;
    queue.release();
}

// Each is the child of the one before.
class Link : public ThreadedTask {
public:
    explicit Link(int rest) : rest_(rest) { ++alive; }
    ~Link() override { --alive; }
    ThreadedTask * preExecute(int index) override { return index == 0 && rest_ > 0 ? new Link(rest_ - 1) : nullptr; }
    void execute(int) override { sum += rest_; }

    static inline int alive = 0;
    static inline long sum = 0;

private:
    int rest_;
};

TEST(ThreadedTaskQueue, AChainMayBeLongerThanAStack) {
    ThreadedTaskQueue::get().submit(new Link(1000000));
    EXPECT_EQ(Link::alive, 0);
    EXPECT_EQ(Link::sum, 500000500000);
}

} // namespace
