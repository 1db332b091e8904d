// Every system call of a save fails once, or that and all behind it, or the process ends there.

#include "Base/OS/qvOSFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSProtectedWrite.h"

#include "Support/FailingSystem.h"
#include "Support/ScratchDirectory.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <iostream>
#include <set>
#include <sys/wait.h>
#include <unistd.h>

namespace qvOS {
namespace {

namespace fs = std::filesystem;
using qvTest::bytesOf;
using qvTest::FailingSystem;
using qvTest::FaultLasts;
using qvTest::SystemFault;
using qvTest::wide;
using qvTest::writeBytes;

std::string const oldContents(30000, 'o');
std::string const newContents(50000, 'n');

enum class Strategy { beside, copies };

class SystemFaults : public testing::TestWithParam<Strategy> {
protected:
    SystemFaults() {
        fs::create_directory(path("tmp"));
        fs::create_directory(path("d"));
        setenv("TMPDIR", path("tmp").c_str(), 1);
    }
    ~SystemFaults() override { unsetenv("TMPDIR"); }

    std::string path(std::string const & name) const { return scratch_.path(name); }

    void reset(bool withOld) const {
        for (char const * const directory : {"d", "tmp"})
            for (auto const & entry : fs::directory_iterator(path(directory)))
                fs::remove(entry);
        if (withOld)
            writeBytes(path("d/plan.dat"), oldContents);
    }

    // The whole save of an application; true when it was told that all went well.
    bool save() const {
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
        return saving.finalize();
    }

    // The contents of all files that there are, whatever their names.
    std::multiset<std::string> contents() const {
        std::multiset<std::string> all;
        for (char const * const directory : {"d", "tmp"})
            for (auto const & entry : fs::directory_iterator(path(directory)))
                all.insert(bytesOf(entry.path().string()));
        return all;
    }

    qvTest::ScratchDirectory scratch_;
};

TEST_P(SystemFaults, OfASaveLeaveTheOldOrTheNewContents) {
    int const descriptors = qvTest::numOpenDescriptors();
    int faults = 0;
    for (SystemFault const fault : {SystemFault::diskFull, SystemFault::inputOutput, SystemFault::denied,
                                    SystemFault::interrupted, SystemFault::shortTransfer})
        for (FaultLasts const lasts : {FaultLasts::once, FaultLasts::fromThenOn})
            for (bool const withOld : {true, false})
                for (int n = 0;; ++n) {
                    SCOPED_TRACE(testing::Message() << int(fault) << ' ' << int(lasts) << ' ' << withOld << ' ' << n);
                    reset(withOld);
                    bool isSaved = false;
                    bool struck = false;
                    {
                        FailingSystem const failing(fault, lasts, n);
                        isSaved = save();
                        struck = FailingSystem::struck();
                    }
                    std::string const main = bytesOf(path("d/plan.dat"));
                    ASSERT_EQ(qvTest::numOpenDescriptors(), descriptors);
                    std::multiset<std::string> const all = contents();
                    ASSERT_TRUE(!isSaved || main == newContents);
                    ASSERT_TRUE(!withOld || all.count(oldContents) + all.count(newContents) > 0);
                    // A new file is there as a whole or not at all, and a single failure leaves the file itself.
                    bool const mayBeAway = !withOld || lasts == FaultLasts::fromThenOn;
                    ASSERT_TRUE(main == oldContents || main == newContents || (main.empty() && mayBeAway));
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
            pid_t const child = ::fork();
            ASSERT_GE(child, 0);
            if (child == 0) {
                FailingSystem const failing(SystemFault::killed, FaultLasts::once, n);
                ::_exit(save() ? 0 : 1);
            }
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            std::multiset<std::string> const all = contents();
            std::string const main = bytesOf(path("d/plan.dat"));
            ASSERT_TRUE(!withOld || all.count(oldContents) + all.count(newContents) > 0) << n;
            // Renaming makes no partial file; a copy of the copy strategy may be one.
            bool const isWhole = main.empty() || main == oldContents || main == newContents;
            ASSERT_TRUE(isWhole || GetParam() == Strategy::copies) << n;
            ASSERT_TRUE(!withOld || !main.empty() || (all.count(oldContents) == 1 && all.count(newContents) == 1)) << n;
            if (WIFEXITED(status)) {
                ASSERT_EQ(WEXITSTATUS(status), 0);
                ASSERT_EQ(main, newContents);
                EXPECT_GT(n, 20);
                break;
            }
            ASSERT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
        }
}

INSTANTIATE_TEST_SUITE_P(Both, SystemFaults, testing::Values(Strategy::beside, Strategy::copies),
                         [](auto const & test) { return test.param == Strategy::copies ? "Copies" : "Beside"; });

} // namespace
} // namespace qvOS
