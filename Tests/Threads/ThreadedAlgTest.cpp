// Threaded algorithms on the pool that is always there, and on one that runs several threads one behind the other in an
// order of its own.

#include "Base/Threads/qvUtilOrdering.h"
#include "Base/Threads/qvUtilSmpSort.h"
#include "Base/Threads/qvUtilThreadPool.h"
#include "Base/Threads/qvUtilThreadedAlg.h"
#include "Base/Threads/qvUtilThreadedTask.h"
#include "Base/Utility/qvUtilProgress.h"

#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <utility>
#include <vector>

using namespace qvUtil;

namespace {

class ThreadsPool : public ThreadPool {
public:
    explicit ThreadsPool(int numThreads) : ThreadPool(numThreads) { install(this); }
    ~ThreadsPool() override { install(nullptr); }

    void execute(ThreadedChunkAlg &) override { ADD_FAILURE() << "nothing is run in chunks"; }
    void execute(ThreadedAlg & algorithm) override {
        install(nullptr);
        algorithm.initialize(numThreads());
        std::vector<std::thread> threads;
        for (int i = numThreads(); i-- > 0;)
            threads.emplace_back([&, i] { algorithm.execute(i, numThreads()); });
        for (std::thread & thread : threads)
            thread.join();
        algorithm.finalize();
        ++numRuns;
        install(this);
    }

    int numRuns = 0;
};

template <class Base>
class Recorder : public Base {
public:
    void initialize(int n) override { log += "initialize(" + std::to_string(n) + ") "; }
    void finalize() override { log += "finalize"; }

    std::string log;
};

class Whole : public Recorder<ThreadedAlg> {
    void execute(int thread, int n) override { log += std::to_string(thread) + "/" + std::to_string(n) + " "; }
};

class Chunks : public Recorder<ThreadedChunkAlg> {
    void execute(int chunk, int thread, int n) override {
        log += std::to_string(chunk) + ":" + std::to_string(thread) + "/" + std::to_string(n) + " ";
        static_cast<void>(cancelled(thread));
    }
};

TEST(ThreadPool, OneThreadRunsEverythingInOrder) {
    ThreadPool & pool = ThreadPool::get();
    EXPECT_EQ(&pool, &ThreadPool::getSingleThreadedPool());
    EXPECT_EQ(pool.numThreads(), 1);
    Whole whole;
    pool.execute(whole);
    EXPECT_EQ(whole.log, "initialize(1) 0/1 finalize");
    Chunks chunks;
    EXPECT_EQ(chunks.getNumChunks(), 100);
    chunks.setNumChunks(3);
    Progress progress;
    progress.cancel(); // does not stop the loop
    chunks.setProgress(&progress);
    pool.execute(chunks);
    EXPECT_EQ(chunks.log, "initialize(1) 0:0/1 1:0/1 2:0/1 finalize");
    {
        ThreadsPool installed(3);
        EXPECT_EQ(&ThreadPool::get(), &installed);
        EXPECT_EQ(ThreadedTask::getNumThreads(), 3);
        EXPECT_EQ(&ThreadPool::getSingleThreadedPool(), &pool);
    }
    EXPECT_EQ(&ThreadPool::get(), &pool);
}

TEST(ThreadedAlg, SharesAreEvenAndFollowEachOther) {
    for (int threads = 1; threads < 9; ++threads) {
        for (int size = 0; size < 40; ++size) {
            int behind = 0;
            for (int t = 0; t < threads; ++t) {
                EXPECT_EQ(ThreadedAlgBase::getBeginIndex(t, threads, size), behind);
                behind = ThreadedAlgBase::getEndIndex(t, threads, size);
                EXPECT_EQ(behind - ThreadedAlgBase::getBeginIndex(t, threads, size),
                          size / threads + (t < size % threads));
            }
            EXPECT_EQ(behind, size);
        }
    }
    EXPECT_EQ(ThreadedAlgBase::getEndIndex(9, 10, 2147483647), 2147483647);
    EXPECT_EQ(ThreadedAlgBase::getEndIndex(0, 0, 7), 7);
    EXPECT_EQ(ThreadedAlgBase::getBeginIndex(3, 4, -7), 0);
}

TEST(ThreadedAlg, OnlyThreadZeroTouchesTheProgress) {
    Whole algorithm;
    EXPECT_FALSE(algorithm.cancelled(0));
    algorithm.updateProgress(0, 0.5);
    Progress progress;
    int asked = 0;
    qvRTB::SignalClient client;
    progress.getSigCheckCancel().addCallback([&](Progress &) { ++asked; }, client);
    algorithm.setProgress(&progress);
    EXPECT_EQ(algorithm.getProgress(0), &progress);
    EXPECT_EQ(algorithm.getProgress(1), nullptr);
    algorithm.updateProgress(1, 0.5);
    EXPECT_EQ(progress.get(), 0);
    algorithm.updateProgress(0, 0.25);
    EXPECT_EQ(progress.get(), 0.25);

    EXPECT_FALSE(algorithm.cancelled(1));
    EXPECT_EQ(asked, 0);
    EXPECT_FALSE(algorithm.cancelled(0));
    EXPECT_EQ(asked, 1);
    progress.cancel();
    EXPECT_FALSE(algorithm.cancelled(1));
    EXPECT_TRUE(algorithm.cancelled(0));
    EXPECT_TRUE(algorithm.cancelled(1));
    Whole copy = algorithm;
    copy.setProgress(nullptr);
    EXPECT_TRUE(copy.cancelled(5));
}

// Equal keys from either piece may come in any order, but the merge from both ends has to agree on one.
using Element = std::pair<int, int>;
bool lessKey(Element const & a, Element const & b) { return a.first < b.first; }

TEST(SmpSort, GivesTheSameOnAnyNumberOfThreads) {
    qvTest::SeededRandom random;
    for (int numThreads : {1, 2, 3}) {
        ThreadsPool pool(numThreads);
        for (int round = 0; round < 60; ++round) {
            int const size = random.oneIn(4) ? round % 4 : random.below(200);
            std::vector<Element> values;
            for (int i = 0; i < size; ++i)
                values.emplace_back(random.below(1 + random.below(50)), i);
            std::vector<Element> sorted = values;
            smpSort(sorted.data(), sorted.data() + size, lessKey);
            EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), lessKey));
            std::sort(sorted.begin(), sorted.end());
            std::sort(values.begin(), values.end());
            ASSERT_EQ(sorted, values);
        }
        EXPECT_EQ(pool.numRuns, numThreads == 1 ? 0 : 120);
    }
}

TEST(SmpSort, AComparisonWithoutOrderStaysInside) {
    ThreadsPool pool(2);
    std::vector<std::string> values(7, "text");
    SMPSortMerge<std::string, bool (*)(std::string const &, std::string const &)> merging(
        values.data(), values.data() + 7, [](std::string const &, std::string const &) { return true; });
    pool.execute(merging);
    EXPECT_EQ(values, std::vector<std::string>(7, "text"));
}

TEST(Ordering, SortsPlacesAndStartsOver) {
    std::string const values[] = {"pear", "apple", "fig", "plum"};
    Ordering ordering;
    EXPECT_EQ(ordering.get(), nullptr);
    ordering.sort(values, 4, std::less<>());
    EXPECT_EQ(std::vector<int>(ordering.get(), ordering.get() + 4), std::vector<int>({1, 2, 0, 3}));
    Ordering copy = ordering;
    ordering.sort(values, 4, [](std::string const & a, std::string const & b) { return a.size() < b.size(); });
    EXPECT_EQ(ordering[0], 2);
    EXPECT_EQ(copy[0], 1);
    ordering = copy = ordering;
    EXPECT_EQ(copy[0], 2);
    EXPECT_NE(copy.get(), ordering.get());
    copy.sort(values, 0, std::less<>());
    EXPECT_EQ(copy.size(), 0U);
    EXPECT_EQ(ordering.size(), 4U);
}

} // namespace
