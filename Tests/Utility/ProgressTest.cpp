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

// Writes down what the root emits: a letter for each signal, and that it hands out the right handle. It may go before
// the root does.
struct Log {
    explicit Log(Progress & root) {
        std::pair<Progress::Signal &, char> const signals[] = {{root.getSigUpdate(), 'u'},
                                                               {root.getSigDestroy(), 'd'},
                                                               {root.getSigCaption(), 'c'},
                                                               {root.getSigCheckCancel(), '?'}};
        for (auto & [signal, letter] : signals)
            signal.addCallback([written = text, letter = letter, owner = &root](Progress & handed) {
                *written += letter;
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

    root.set(0);
    first.set(3);
    EXPECT_EQ(root.get(), 0.5); // the whole difference is handed on
    first.set(0.5);             // and counts from 1 now
    EXPECT_EQ(root.get(), 0.375);
    root.set(1.5);
    EXPECT_EQ(root.get(), 1);
    first.set(1);
    root.set(-1);
    EXPECT_EQ(root.get(), -1);
    double const infinity = std::numeric_limits<double>::infinity();
    for (double const odd : {std::nan(""), infinity, -infinity}) { // moves nothing
        root.set(odd);
        inner.set(odd);
        root.subPhase(odd, first);
        first.set(1);
        EXPECT_EQ(root.get(), -1);
    }
}

TEST(Progress, AnEndingPhaseCompletesItsShareOnceAndOnlyBelowLivingOnes) {
    Progress root;
    Log log(root);
    {
        Progress sub, inner;
        root.subPhase(0.5, sub);
        sub.set(0.5);
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
    {
        Progress deep;
        root.subPhase(0.25, deep);
        for (int i = 0; i < 100000; ++i)
            deep.subPhase(1, deep);
    }
    EXPECT_EQ(root.get(), 1);
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

    EXPECT_FALSE(inner.cancelled() || root.cancelled());
    inner.cancel();
    EXPECT_TRUE(root.cancelled() && sub.cancelled() && inner.cancelled());
    EXPECT_EQ(log.take(), "??");

    Progress asked;
    asked.getSigCheckCancel().addCallback([](Progress & progress) { progress.cancel(); });
    EXPECT_TRUE(asked.cancelled());
}

TEST(Progress, TheDestroySignalEndsARoot) {
    auto other = std::make_unique<Progress>();
    Log log(*other);
    Progress sub;
    {
        Progress root;
        Log rootLog(root);
        root.subPhase(0.5, *other); // other's own root ends
        EXPECT_EQ(log.take(), "d");
        other->set(0.5);
        EXPECT_EQ(root.get(), 0.25);
        other.reset();
        root.subPhase(0.5, sub);
        root.set(0.5);
        EXPECT_EQ(rootLog.take(), "uuu");
        log = rootLog;
    }
    EXPECT_EQ(log.take(), "d");
    sub.set(1); // works on, with nobody to tell
    sub.setCaption("late");
    EXPECT_FALSE(sub.cancelled());
    EXPECT_EQ(sub.get(), 1);
    EXPECT_STREQ(sub.getCaption(), "late");
    EXPECT_EQ(log.take(), "");
}

TEST(Progress, ACallbackMayEndTheRootOrThrow) {
    auto root = std::make_unique<Progress>();
    root->getSigCheckCancel().addCallback([&](Progress & progress) {
        progress.cancel();
        root.reset();
    });
    Progress & alias = *root;
    EXPECT_TRUE(alias.cancelled());

    Progress above;
    {
        Progress ending; // becomes a phase while it ends, so that its node has nobody else to hold it
        ending.getSigDestroy().addCallback([&above, isFirst = true](Progress & progress) mutable {
            if (std::exchange(isFirst, false))
                above.subPhase(0.5, progress);
        });
    }
    EXPECT_EQ(above.get(), 0);

    Progress thrower, sub;
    auto * const connection =
        thrower.getSigUpdate().addCallback([](Progress &) { throw std::runtime_error("enough"); });
    thrower.subPhase(0.5, sub);
    EXPECT_THROW(sub.set(0.5), std::runtime_error);
    EXPECT_EQ(thrower.get(), 0.25);
    thrower.getSigUpdate().disconnect(connection);
    thrower.subPhase(0.5, thrower);
    thrower.set(1);
    EXPECT_EQ(thrower.get(), 0.75);
}

} // namespace
