// Every system call of a save fails once, or that and all behind it, or the process ends there.

#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSProtectedWrite.h"

#include "Support/ErrorMatchers.h"
#include "Support/FailingSystem.h"
#include "Support/ScratchDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <optional>
#include <set>

namespace qvOS {
namespace {

namespace fs = std::filesystem;
using qvTest::bytesOf;
using qvTest::FailingSystem;
using qvTest::FailsWith;
using qvTest::FaultLasts;
using qvTest::SystemFault;
using qvTest::wide;
using qvTest::writeBytes;

std::string const oldContents(30000, 'o');
std::string const newContents(50000, 'n');

enum class Strategy { beside, copies };

class SystemFaults : public testing::TestWithParam<Strategy>, public qvTest::ScratchDirectory {
protected:
    SystemFaults() {
        fs::create_directory(path("tmp"));
        fs::create_directory(path("d"));
        setenv("TMPDIR", path("tmp").c_str(), 1);
    }
    ~SystemFaults() override { unsetenv("TMPDIR"); }

    void reset(bool withOld) const {
        for (char const * const directory : {"d", "tmp"})
            for (auto const & entry : fs::directory_iterator(path(directory)))
                fs::remove(entry);
        if (withOld)
            writeBytes(path("d/plan.dat"), oldContents);
    }

    // The whole save of an application; true when it was told that all went well. The copy is of the time before the
    // contents are swapped in.
    bool save(std::optional<ProtectedWrite> & copy) const {
        ProtectedWrite saving(Filename(wide(path("d/plan.dat"))));
        if (GetParam() == Strategy::copies)
            saving.useCopyStrategy();
        if (!saving.init())
            return false;
        File file(saving.getTempFilename().name());
        bool written = !file.open(OpenWrite);
        for (std::size_t at = 0; written && at < newContents.size(); at += 10000)
            written = !file.write(newContents.data() + at, 10000, nullptr);
        if (file.isOpen())
            written = !file.close() && written;
        if (!written)
            saving.invalidate();
        copy = saving;
        bool const isSaved = saving.finalize();
        static_cast<void>(saving.finalize()); // which changes nothing
        return isSaved;
    }

    // The contents of all files that there are, whatever their names.
    std::multiset<std::string> contents() const {
        std::multiset<std::string> all;
        for (char const * const directory : {"d", "tmp"})
            for (auto const & entry : fs::directory_iterator(path(directory)))
                all.insert(bytesOf(entry.path().string()));
        return all;
    }
};

TEST_P(SystemFaults, OfASaveLeaveTheOldOrTheNewContents) {
    int const descriptors = qvTest::numOpenDescriptors();
    int faults = 0;
    for (SystemFault const fault : {SystemFault::diskFull, SystemFault::inputOutput, SystemFault::denied,
                                    SystemFault::interrupted, SystemFault::shortTransfer})
        for (FaultLasts const lasts : {FaultLasts::once, FaultLasts::fromThenOn})
            for (int const setting : {0, 1, 2, 3})
                for (int n = 0;; ++n) {
                    SCOPED_TRACE(testing::Message() << int(fault) << ' ' << int(lasts) << ' ' << setting << ' ' << n);
                    bool const withOld = setting < 2;
                    std::string const only = setting % 2 != 0 ? path("d/plan.dat") : "";
                    reset(withOld);
                    bool isSaved = false;
                    bool struck = false;
                    std::optional<ProtectedWrite> copy;
                    {
                        FailingSystem const failing(fault, lasts, n, only);
                        isSaved = save(copy);
                        struck = FailingSystem::struck();
                    }
                    if (copy)
                        static_cast<void>(copy->finalize());
                    std::string const main = bytesOf(path("d/plan.dat"));
                    ASSERT_EQ(qvTest::numOpenDescriptors(), descriptors);
                    std::multiset<std::string> const all = contents();
                    ASSERT_TRUE(isSaved ? main == newContents : main != newContents || lasts == FaultLasts::fromThenOn);
                    ASSERT_TRUE(!withOld || all.count(oldContents) + all.count(newContents) > 0);
                    // A new file is there as a whole or not at all, and a single failure leaves the file itself.
                    bool const mayBeAway = !withOld || lasts == FaultLasts::fromThenOn;
                    bool const mayBePartial = GetParam() == Strategy::copies && !only.empty() && mayBeAway;
                    ASSERT_TRUE(main == oldContents || main == newContents || (main.empty() && mayBeAway) ||
                                mayBePartial);
                    // What is interrupted or short goes well.
                    ASSERT_TRUE(isSaved || (fault != SystemFault::interrupted && fault != SystemFault::shortTransfer));
                    if (!struck) {
                        ASSERT_TRUE(isSaved);
                        break;
                    }
                    ++faults;
                }
    RecordProperty("faults", faults);
    EXPECT_GT(faults, 300);
}

TEST_P(SystemFaults, ThatEndTheProcessLeaveWholeContents) {
    for (bool const withOld : {true, false})
        for (int n = 0;; ++n) {
            reset(withOld);
            std::optional<ProtectedWrite> copy; // made in the process that ends, and never destroyed there
            bool const ended = qvTest::endsAt(n, [&] { return save(copy); });
            std::multiset<std::string> const all = contents();
            std::string const main = bytesOf(path("d/plan.dat"));
            ASSERT_TRUE(!withOld || all.count(oldContents) + all.count(newContents) > 0) << n;
            // Renaming makes no partial file; a copy of the copy strategy may be one.
            bool const isWhole = main.empty() || main == oldContents || main == newContents;
            ASSERT_TRUE(isWhole || GetParam() == Strategy::copies) << n;
            ASSERT_TRUE(!withOld || !main.empty() || (all.count(oldContents) == 1 && all.count(newContents) == 1)) << n;
            if (!ended) {
                ASSERT_EQ(main, newContents);
                EXPECT_GT(n, 20);
                break;
            }
        }
}

// A copy that is cut off anywhere shows nobody what its source does not show.
TEST(SystemFaultsOfACopy, KeepPrivateContentsPrivate) {
    qvTest::ScratchDirectory const scratch;
    std::string const from = scratch.path("from");
    std::string const to = scratch.path("to");
    writeBytes(from, newContents);
    fs::permissions(from, fs::perms(0600));
    for (bool const isThere : {false, true}) {
        bool ended = true;
        for (int n = 0; ended; ++n) {
            fs::remove(to);
            if (isThere)
                writeBytes(to, oldContents); // for everybody
            ended = qvTest::endsAt(n, [&] { return !fileCopy(from.c_str(), to.c_str(), true); });
            std::string const made = bytesOf(to);
            bool const isPrivate = (fs::status(to).permissions() & fs::perms(0077)) == fs::perms::none;
            ASSERT_TRUE(isPrivate || made.empty() || made == oldContents) << n;
            ASSERT_TRUE(ended || (isPrivate && made == newContents));
        }
    }
}

// What a real system gives too seldom.
TEST(SystemFaultsOfARenaming, HaveTextsOfTheirOwn) {
    qvTest::ScratchDirectory const scratch;
    std::string const from = scratch.path("from");
    std::string const to = scratch.path("to");
    struct {
        SystemFault fault;
        FaultLasts lasts;
        char const * text;
    } const rows[] = {
        {SystemFault::denied, FaultLasts::once, "A component of either path prefix deniessearch permission"},
        {SystemFault::invalid, FaultLasts::fromThenOn,
         "source is a parent directory of target, or an attempt is made to rename the .  or ..  directory."},
        {SystemFault::invalid, FaultLasts::once, ""}, // a file system that cannot refuse by itself
    };
    writeBytes(from, "from");
    for (auto const & row : rows) {
        FailingSystem const failing(row.fault, row.lasts, 0);
        EXPECT_THAT(fileRename(from.c_str(), to.c_str()), FailsWith(*row.text == '\0' ? 0 : 6, row.text));
    }
    EXPECT_EQ(bytesOf(to), "from");
    writeBytes(from, "new");
    FailingSystem const failing(SystemFault::invalid, FaultLasts::once, 0);
    EXPECT_THAT(fileRename(from.c_str(), to.c_str()), FailsWith(6, "Unkown system error."));
}

INSTANTIATE_TEST_SUITE_P(Both, SystemFaults, testing::Values(Strategy::beside, Strategy::copies),
                         [](auto const & test) { return test.param == Strategy::copies ? "Copies" : "Beside"; });

} // namespace
} // namespace qvOS
