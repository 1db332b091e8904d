#include "Base/Utility/qvUtilProgress.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using qvUtil::Progress;

// Writes down what the root emits: a letter for each signal, and that it hands out the right handle.
struct Log {
    explicit Log(Progress & progress) {
        listen(progress.getSigUpdate(), 'u', &progress);
        listen(progress.getSigDestroy(), 'd', &progress);
        listen(progress.getSigCaption(), 'c', &progress);
        listen(progress.getSigCheckCancel(), '?', &progress);
    }
    void listen(Progress::Signal & signal, char letter, Progress * owner) {
        signal.addCallback([this, letter, owner](Progress & handed) {
            *text += letter;
            EXPECT_EQ(&handed, owner);
        });
    }
    std::string take() { return std::exchange(*text, std::string()); }

    std::shared_ptr<std::string> text = std::make_shared<std::string>();
};

TEST(Progress, SharesComposeOnTheWayToTheRoot) {
    Progress root, first, second, inner;
    Log log(root);
    root.subPhase(0.25, first);
    root.subPhase(0.75, second);
    first.set(1);
    second.set(0.5);
    EXPECT_EQ(root.get(), 0.625);
    EXPECT_EQ(second.get(), 0.625); // the whole
    second.subPhase(0.5, inner);
    inner.set(0.5);
    EXPECT_EQ(root.get(), 0.625 + 0.75 * 0.25);
    inner.set(0.25); // back is a way too
    EXPECT_EQ(root.get(), 0.625 + 0.75 * 0.125);
    EXPECT_EQ(log.take(), "uuuu");
}

TEST(Progress, ASubPhaseSetPastItsEndOvershoots) {
    Progress root, sub;
    root.subPhase(0.5, sub);
    sub.set(1.5);
    EXPECT_EQ(root.get(), 0.75); // the whole difference is handed on
    sub.set(0.5);                // and counts from 1 now
    EXPECT_EQ(root.get(), 0.5);
    root.set(1.5);
    EXPECT_EQ(root.get(), 1);
    root.set(-1);
    EXPECT_EQ(root.get(), -1);
}

TEST(Progress, NumbersThatAreNotFiniteMoveNothing) {
    double const infinity = std::numeric_limits<double>::infinity();
    for (double const odd : {std::nan(""), infinity, -infinity}) {
        Progress root, sub;
        Log log(root);
        root.set(0.25);
        root.set(odd);
        root.subPhase(0.5, sub);
        sub.set(odd);
        EXPECT_EQ(root.get(), 0.25);
        EXPECT_EQ(log.take(), "uuu");
        sub.set(1);
        EXPECT_EQ(root.get(), 0.75);
        root.subPhase(odd, sub);
        sub.set(1);
        EXPECT_EQ(root.get(), 0.75);
    }
}

TEST(Progress, AnEndingPhaseCompletesItsShareOnceAndOnlyBelowLivingOnes) {
    Progress root;
    Log log(root);
    {
        Progress sub, inner;
        root.subPhase(0.5, sub);
        sub.set(0.5);
        EXPECT_EQ(root.get(), 0.25);
        sub.subPhase(0.5, inner);
        inner.set(0.5);
        root.subPhase(0.25, sub); // the old phase ends here, and with it what is left of inner's
        EXPECT_EQ(root.get(), 0.5);
        inner.set(0.75); // still counted by whoever sets it
        EXPECT_GT(root.get(), 0.5);
        root.set(0.5);
        log.take();
    } // inner ends below an ended phase and says nothing, sub completes its quarter
    EXPECT_EQ(root.get(), 0.75);
    EXPECT_EQ(log.take(), "u");
}

TEST(Progress, OnlyTheRootKnowsCaptionAndCancelling) {
    Progress root, sub, inner;
    Log log(root);
    root.subPhase(1, sub);
    sub.subPhase(1, inner);
    inner.setCaption("writing");
    EXPECT_STREQ(root.getCaption(), "writing");
    sub.setCaption(nullptr);
    EXPECT_STREQ(inner.getCaption(), "");
    EXPECT_EQ(log.take(), "cc");
    EXPECT_EQ(&inner.getSigUpdate(), &root.getSigUpdate());

    EXPECT_FALSE(inner.cancelled());
    EXPECT_FALSE(root.cancelled());
    inner.cancel();
    EXPECT_TRUE(root.cancelled() && sub.cancelled() && inner.cancelled());
    EXPECT_EQ(log.take(), "??");

    Progress asked;
    asked.getSigCheckCancel().addCallback([](Progress & progress) { progress.cancel(); });
    EXPECT_TRUE(asked.cancelled());
}

TEST(Progress, TheDestroySignalEndsARoot) {
    std::shared_ptr<std::string> text;
    {
        Progress root, other;
        Log log(other);
        text = log.text;
        root.subPhase(0.5, other); // other's own root ends
        EXPECT_EQ(*text, "d");
        other.set(0.5);
        EXPECT_EQ(root.get(), 0.25);
    }
    EXPECT_EQ(*text, "d");

    Progress sub;
    {
        Progress root;
        Log log(root);
        text = log.text;
        root.subPhase(0.5, sub);
        root.set(0.5);
    }
    EXPECT_EQ(*text, "ud");
    sub.set(1); // works on, with nobody to tell
    sub.setCaption("late");
    EXPECT_FALSE(sub.cancelled());
    EXPECT_EQ(sub.get(), 1);
    EXPECT_STREQ(sub.getCaption(), "late");
    EXPECT_EQ(*text, "ud");
}

TEST(Progress, ACallbackMayEndTheRootOrThrow) {
    auto root = std::make_unique<Progress>();
    root->getSigCheckCancel().addCallback([&](Progress & progress) {
        progress.cancel();
        root.reset();
    });
    Progress & alias = *root;
    EXPECT_TRUE(alias.cancelled());

    Progress thrower, sub;
    auto * const connection =
        thrower.getSigUpdate().addCallback([](Progress &) { throw std::runtime_error("enough"); });
    thrower.subPhase(0.5, sub);
    EXPECT_THROW(sub.set(0.5), std::runtime_error);
    EXPECT_EQ(thrower.get(), 0.25);
    thrower.getSigUpdate().disconnect(connection);
}

TEST(Progress, PhasesNestDeeply) {
    Progress root;
    {
        Progress deep;
        root.subPhase(1, deep);
        for (int i = 0; i < 100000; ++i)
            deep.subPhase(1, deep);
    }
    EXPECT_EQ(root.get(), 1);
    Progress self;
    self.subPhase(0.5, self);
    self.set(1);
    EXPECT_EQ(self.get(), 0.5);
}

} // namespace
