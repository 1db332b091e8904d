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
#include <functional>
#include <sstream>
#include <stdexcept>
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

// Writes down its calls; of a whole algorithm there is one chunk, without a number.
template <class Base, class... Chunk>
class Recorder : public Base {
public:
    void initialize(int n) override { log << "initialize(" << n << ")"; }
    void execute(Chunk... chunk, int thread, int n) override {
        ((log << ' ' << chunk << ':'), ..., (log << ' ' << thread << '/' << n));
        static_cast<void>(this->cancelled(thread));
    }
    void finalize() override { log << " finalize"; }

    std::ostringstream log;
};

TEST(ThreadPool, OneThreadRunsEverythingInOrder) {
    ThreadPool & pool = ThreadPool::get();
    EXPECT_EQ(&pool, &ThreadPool::getSingleThreadedPool());
    EXPECT_EQ(pool.numThreads(), 1);
    Recorder<ThreadedAlg> whole;
    pool.execute(whole);
    EXPECT_EQ(whole.log.str(), "initialize(1) 0/1 finalize");
    Recorder<ThreadedChunkAlg, int> chunks;
    EXPECT_EQ(chunks.getNumChunks(), 100);
    chunks.setNumChunks(2);
    Progress progress;
    progress.cancel(); // does not stop the loop
    chunks.setProgress(&progress);
    pool.execute(chunks);
    EXPECT_EQ(chunks.log.str(), "initialize(1) 0: 0/1 1: 0/1 finalize");
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
                behind += size / threads + (t < size % threads);
                EXPECT_EQ(ThreadedAlgBase::getEndIndex(t, threads, size), behind);
            }
        }
    }
    EXPECT_EQ(ThreadedAlgBase::getEndIndex(9, 10, 2147483647), 2147483647);
    EXPECT_EQ(ThreadedAlgBase::getEndIndex(0, 0, 7), 7);
    EXPECT_EQ(ThreadedAlgBase::getBeginIndex(3, 4, -7), 0);
}

TEST(ThreadedAlg, OnlyThreadZeroTouchesTheProgress) {
    class Nothing : public ThreadedAlg {
        void execute(int, int) override {}
    } algorithm;
    EXPECT_FALSE(algorithm.cancelled(0));
    algorithm.updateProgress(0, 0.5); // nobody is told
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
    EXPECT_TRUE(Nothing(algorithm).cancelled(5));
}

// Equal keys from either piece may come in any order, but the merge from both ends has to agree on one. Without any
// order it stays inside of the range all the same.
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
    ThreadsPool pool(2);
    std::vector<std::string> values(7, "text");
    SMPSortMerge merging(values.data(), values.data() + 7, [](auto const &, auto const &) { return true; });
    pool.execute(merging);
    EXPECT_EQ(values, std::vector<std::string>(7, "text"));
}

TEST(Ordering, SortsPlacesAndStartsOver) {
    std::string const values[] = {"pear", "apple", "fig", "plum"};
    auto const placesOf = [](Ordering const & ordering) {
        return std::vector<int>(ordering.get(), ordering.get() + ordering.size());
    };
    Ordering ordering;
    EXPECT_EQ(ordering.get(), nullptr);
    ordering.sort(values, 4, std::less<>());
    EXPECT_EQ(placesOf(ordering), std::vector({1, 2, 0, 3}));
    Ordering copy = ordering;
    ordering.sort(values, 4, std::greater<>());
    EXPECT_EQ(placesOf(ordering), std::vector({3, 0, 2, 1}));
    EXPECT_EQ(placesOf(copy), std::vector({1, 2, 0, 3}));
    ordering = copy = ordering;
    EXPECT_EQ(copy[0], 3);
    EXPECT_NE(copy.get(), ordering.get());
    copy.sort(values, 0, std::less<>());
    EXPECT_EQ(copy.size(), 0U);
    auto const fails = [](std::string const &, std::string const &) -> bool { throw std::runtime_error("no order"); };
    EXPECT_THROW(ordering.sort(values, 3, fails), std::runtime_error);
    EXPECT_EQ(placesOf(ordering), std::vector({3, 0, 2, 1})); // as it was
}

} // namespace
