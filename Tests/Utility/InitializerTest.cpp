#include "Base/Utility/qvUtilInitializer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <deque>
#include <map>
#include <random>
#include <set>
#include <utility>
#include <vector>

namespace {

using qvUtil::Error;
using qvUtil::Initializer;

std::vector<int> initialized;
std::vector<int> finalized;

class Recorder : public Initializer {
public:
    explicit Recorder(int recorderId, int failureNumber = 0) : id(recorderId), failure(failureNumber) {}

    Error initialize() override {
        initialized.push_back(id);
        if (meanwhile)
            meanwhile();
        return failure ? Error(failure, "number %d", failure) : Error();
    }

    using Initializer::dependsOn;

    int id;
    int failure;
    void (*meanwhile)() = nullptr;

protected:
    void finalize() override { finalized.push_back(id); }
};

// What is registered by a test is finalized by it, too.
class InitializerTest : public ::testing::Test {
protected:
    ~InitializerTest() override {
        static_cast<void>(Initializer::initializeAll());
        Initializer::finalizeAll();
    }
    void SetUp() override {
        initialized.clear();
        finalized.clear();
    }
    std::deque<Recorder> all;
};

std::deque<Recorder> registeredMeanwhile;

TEST_F(InitializerTest, TheLastFailureIsTheResultAndStopsNothing) {
    EXPECT_EQ(Initializer::initializeAll(), Error());
    Initializer::finalizeAll();
    for (int i = 0; i < 4; ++i)
        all.emplace_back(i, i == 1 || i == 2 ? 10 + i : 0);
    for (std::size_t i = 0; i < 3; ++i)
        all[i + 1].dependsOn(&all[i]);
    Error const error = Initializer::initializeAll();
    EXPECT_EQ(error.num(), 12);
    EXPECT_STREQ(error.message(), "number 12");
    EXPECT_EQ(Initializer::initializeAll(), Error());
    EXPECT_EQ(initialized, (std::vector{0, 1, 2, 3}));
    Initializer::finalizeAll();
    Initializer::finalizeAll();
    EXPECT_EQ(finalized, (std::vector{3, 2, 1, 0}));
}

TEST_F(InitializerTest, LaterRegistrationsAreARunOfTheirOwn) {
    all.emplace_back(1);
    all[0].meanwhile = [] {
        registeredMeanwhile.emplace_back(2);
        EXPECT_EQ(Initializer::initializeAll(), Error());
        registeredMeanwhile.emplace_back(3);
    };
    EXPECT_EQ(Initializer::initializeAll(), Error());
    EXPECT_EQ(initialized, (std::vector{1, 2}));
    Recorder copy(registeredMeanwhile.back());
    copy.id = 4;
    EXPECT_EQ(Initializer::initializeAll(), Error());
    EXPECT_EQ(initialized, (std::vector{1, 2, 3}));
    Initializer::finalizeAll();
    EXPECT_EQ(finalized, (std::vector{3, 1, 2}));
}

// The weights as they are defined, by walking every way.
std::map<Recorder const *, int> weightsOfEveryWay(std::vector<Recorder *> const & pending,
                                                  std::vector<std::pair<Recorder *, Recorder *>> const & pairs) {
    std::map<Recorder const *, int> counts;
    std::deque<Recorder *> queue(pending.begin(), pending.end());
    while (!pairs.empty() && !queue.empty()) {
        Recorder * const front = queue.front();
        queue.pop_front();
        ++counts[front];
        for (auto const & [dependent, dependency] : pairs)
            if (dependent == front)
                queue.push_back(dependency);
    }
    return counts;
}

TEST_F(InitializerTest, WeightsAndOrderOfRandomDependencies) {
    std::mt19937 random(1);
    auto const below = [&](std::size_t n) { return static_cast<std::size_t>(random() % n); };
    for (int round = 0; round < 500; ++round) {
        SCOPED_TRACE(round);
        SetUp();
        all.clear();
        std::vector<Recorder *> pending;
        std::deque<Recorder> unregistered;
        for (int i = 0; i < 12; ++i)
            pending.push_back(&all.emplace_back(i));
        std::vector<Recorder *> everyone = pending;
        for (int i = 0; i < 3; ++i)
            everyone.push_back(&unregistered.emplace_back(static_cast<Recorder const &>(all.back())));
        for (auto & copy : unregistered)
            copy.id = 100;
        std::shuffle(everyone.begin(), everyone.end(), random);
        std::vector<std::pair<Recorder *, Recorder *>> pairs;
        for (std::size_t n = below(25); n > 0; --n) {
            std::size_t const a = below(everyone.size());
            std::size_t const b = below(everyone.size());
            if (a == b)
                continue;
            pairs.emplace_back(everyone[std::min(a, b)], everyone[std::max(a, b)]);
            pairs.back().first->dependsOn(pairs.back().second);
        }
        auto expected = weightsOfEveryWay(pending, pairs);
        EXPECT_EQ(Initializer::initializeAll(), Error());
        ASSERT_EQ(std::set<int>(initialized.begin(), initialized.end()).size(), pending.size());
        ASSERT_EQ(initialized.size(), pending.size());
        for (Recorder const * recorder : everyone)
            EXPECT_EQ(recorder->getCount(), expected[recorder]);
        for (std::size_t i = 1; i < initialized.size(); ++i)
            EXPECT_GE(all[std::size_t(initialized[i - 1])].getCount(), all[std::size_t(initialized[i])].getCount());
        Initializer::finalizeAll();
        EXPECT_TRUE(std::equal(finalized.rbegin(), finalized.rend(), initialized.begin(), initialized.end()));
    }
}

// Two ways through each layer: a number of ways that nobody could walk, nor count in 32 bits.
TEST_F(InitializerTest, LayeredDiamondsAreSortedAtOnce) {
    constexpr std::size_t layers = 200;
    for (std::size_t i = 0; i < 2 * layers; ++i)
        all.emplace_back(static_cast<int>(i));
    for (std::size_t layer = 0; layer + 1 < layers; ++layer)
        for (std::size_t from : {0U, 1U})
            for (std::size_t to : {0U, 1U})
                all[2 * layer + from].dependsOn(&all[2 * layer + 2 + to]);
    EXPECT_EQ(Initializer::initializeAll(), Error());
    EXPECT_EQ(all[0].getCount(), 1);
    EXPECT_EQ(all[2 * 29].getCount(), 1073741823);
    EXPECT_EQ(all[2 * 30].getCount(), INT_MAX);
    EXPECT_EQ(all.back().getCount(), INT_MAX);
    ASSERT_EQ(initialized.size(), 2 * layers);
    for (std::size_t i = 0; i < initialized.size(); ++i)
        EXPECT_EQ(std::size_t(initialized[i]) / 2, layers - 1 - i / 2);
}

TEST_F(InitializerTest, ACycleIsReportedAndEverythingRuns) {
    for (int i = 0; i < 5; ++i)
        all.emplace_back(i, i == 4 ? 7 : 0);
    all[0].dependsOn(&all[1]);
    all[1].dependsOn(&all[2]);
    all[2].dependsOn(&all[1]);
    all[2].dependsOn(&all[3]);
    Error error = Initializer::initializeAll();
    EXPECT_EQ(error.num(), 1);
    EXPECT_STREQ(error.message(), "The dependencies of the initializers form a cycle.");
    ASSERT_EQ(initialized.size(), 5U);
    EXPECT_EQ(initialized[0], 3);
    EXPECT_LT(std::find(initialized.begin(), initialized.end(), 1),
              std::find(initialized.begin(), initialized.end(), 0));

    all.emplace_back(5);
    all[5].dependsOn(&all[5]);
    error = Initializer::initializeAll();
    EXPECT_EQ(error.num(), 1);
    EXPECT_EQ(initialized.back(), 5);
}

} // namespace
