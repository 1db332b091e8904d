#include "Base/Utility/qvUtilBuildIdentity.h"
#include "Base/Utility/qvUtilPointerSignals.h"
#include "Base/Utility/qvUtilUnitTest.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

namespace {

// Static objects of a program are made after the library's.
int const firstRandomNumber = std::rand();

TEST(LoadTime, TheRandomGeneratorIsSeeded) {
    std::srand(1);
    EXPECT_NE(firstRandomNumber, std::rand());
}

TEST(LoadTime, PointerSignalsAreFourMeetingPoints) {
    using namespace qvUtil;
    PointerSignal * const signals[] = {&getPointerInitSignal(), &getPointerAcquireSignal(), &getPointerReleaseSignal(),
                                       &getPointerDeleteSignal()};
    int sum = 0;
    qvRTB::SignalClient client;
    for (PointerSignal * signal : signals)
        signal->addCallback([&sum](char const *, void *, int n) { sum += n; }, client);
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(signals[i]->numConnections(), 1);
        signals[i]->emit("event", &sum, 1);
    }
    EXPECT_EQ(sum, 4);
}

TEST(LoadTime, TheBuildIsIdentifiedByOneTime) {
    std::time_t const time = gBuildTime;
    std::tm const calendar = *std::gmtime(&time);
    char date[40];
    char cut[40];
    std::strftime(date, sizeof date, "%Y %m %d %H %M", &calendar);
    std::strftime(cut, sizeof cut, "%Y%m%d%H%M", &calendar);
    EXPECT_STREQ(gBuildDate, gBuildTime ? date : "0000 00 00 00 00");
    EXPECT_STREQ(gCutIdentifier, gBuildTime ? cut : "000000000000");
    EXPECT_EQ(std::string(gBuildChangeSet).find_first_not_of("0123456789"), std::string::npos);
    EXPECT_EQ(std::strlen(gBuildChangeSet), 6U);
    EXPECT_NE(gBuildDirectory, nullptr);
}

TEST(LoadTime, TheUnitTestMarkStays) {
    EXPECT_FALSE(isThisAUnitTest());
    setThisIsAUnitTest();
    setThisIsAUnitTest();
    EXPECT_TRUE(isThisAUnitTest());
}

} // namespace
