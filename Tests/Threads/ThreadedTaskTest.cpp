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

class ThreadedTasks : public testing::Test {
protected:
    ThreadedTasks() { calls.clear(); }
    ~ThreadedTasks() override { queue.release(); }

    ThreadedTaskQueue & queue = ThreadedTaskQueue::get();
};

TEST_F(ThreadedTasks, ChildrenRunBeforeAndBehind) {
    EXPECT_EQ(&queue, &ThreadedTaskQueue::getSingleThreaded());
    EXPECT_EQ(queue.getNumThreads(), 1);
    queue.acquire();
    Task * const quiet = new Task("q", {new Task("b")});
    quiet->setNoExecute();
    queue.submit(new Task("a", {quiet}, {new Task("c"), new Task("d")}));
    queue.submit(nullptr);
    queue.wait();
    EXPECT_EQ(calls, "a<0 q<0 b<0 b(0) b>0 ~b q<1 q>0 ~q a<1 a(0) "
                     "a>0 c<0 c(0) c>0 ~c a>1 d<0 d(0) d>0 ~d a>2 ~a ");
}

TEST_F(ThreadedTasks, ACancelEndsWhatHasNotBegun) {
    Progress progress;
    EXPECT_FALSE(queue.cancelled());
    queue.setCancelObject(&progress);
    EXPECT_FALSE(queue.cancelled());
    Task * const cancels = new Task("c");
    cancels->progress = &progress;
    Task * const refused = new Task("r");
    Task * const unasked = new Task("u");
    Task * const last = new Task("l");
    queue.submit(new Task("a", {cancels, refused, unasked}, {last}));
    EXPECT_EQ(calls, "a<0 c<0 c(0) c>0 ~c a<1 ~r a>0 ~l ~a ");
    delete unasked;
    calls.clear();
    queue.submit(new Task("x"));
    EXPECT_EQ(calls, "~x ");
    queue.release();
    EXPECT_FALSE(queue.cancelled());
}

TEST_F(ThreadedTasks, WhatMayNotBeCancelledRunsToTheEnd) {
    Progress progress;
    queue.setCancelObject(&progress);
    Task * const firm = new Task("f", {}, {new Task("g")});
    firm->setNoCancel();
    firm->progress = &progress;
    EXPECT_FALSE(firm->isCancellable());
    queue.submit(firm);
    EXPECT_EQ(calls, "f<0 f(0) f>0 g<0 g(0) g>0 ~g f>1 ~f ");
    EXPECT_FALSE(queue.cancelled());
    queue.release();
    queue.setCancelObject(&progress);
    EXPECT_TRUE(queue.cancelled());
}

TEST_F(ThreadedTasks, ATaskThatThrowsLeavesNothingBehind) {
    EXPECT_THROW(queue.submit(new Task("a", {new Task("throws")})), std::runtime_error);
    EXPECT_EQ(calls, "a<0 throws<0 throws(0) ~a ~throws ");
    EXPECT_FALSE(queue.cancelled());
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

TEST_F(ThreadedTasks, AChainMayBeLongerThanAStack) {
    queue.submit(new Link(1000000));
    EXPECT_EQ(Link::alive, 0);
    EXPECT_EQ(Link::sum, 500000500000);
}

} // namespace
