#include "Base/OS/qvOSProtectedWrite.h"

#include "Base/OS/qvOSFile.h"

#include "Support/ScratchDirectory.h"
#include "Support/StringPrinters.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace qvOS {
namespace {

namespace fs = std::filesystem;
using qvTest::bytesOf;
using qvTest::wide;
using qvTest::writeBytes;

enum class Strategy { beside, copies };

class ProtectedWriteBeside : public testing::Test, public qvTest::ScratchDirectory {
protected:
    ProtectedWriteBeside() {
        fs::create_directory(path("d"));
        fs::create_directory(path("tmp"));
        setenv("TMPDIR", path("tmp").c_str(), 1);
    }
    ~ProtectedWriteBeside() override { unsetenv("TMPDIR"); }

    static void write(ProtectedWrite const & saving, std::string const & text) {
        writeBytes(saving.getTempFilename().name().asUTF8(), text);
    }
};

class ProtectedWriteTest : public ProtectedWriteBeside, public testing::WithParamInterface<Strategy> {
protected:
    ProtectedWrite saving(std::string const & name = "d/plan.dat") const {
        ProtectedWrite result(Filename(wide(path(name))));
        if (GetParam() == Strategy::copies)
            result.useCopyStrategy();
        return result;
    }
    // Nothing but the file itself is left.
    void expectOnly(std::string const & contents) const {
        EXPECT_EQ(bytesOf(path("d/plan.dat")), contents);
        EXPECT_EQ(std::distance(fs::directory_iterator(path("d")), {}), contents.empty() ? 0 : 1);
        EXPECT_TRUE(fs::is_empty(path("tmp")));
    }
};

TEST_P(ProtectedWriteTest, SwapsInWhatWasWritten) {
    ProtectedWrite untouched = saving();
    EXPECT_TRUE(untouched.finalize());
    for (std::string const contents : {"first", "second, a longer one"}) {
        ProtectedWrite object = saving();
        ASSERT_TRUE(object.init() && object.init());
        std::string const temp = object.getTempFilename().name().asUTF8();
        EXPECT_TRUE(temp.starts_with(path(GetParam() == Strategy::copies ? "tmp/pla" : "d/pla"))) << temp;
        EXPECT_TRUE(temp.ends_with(std::to_string(::getpid()) + ".0.tmp")) << temp;
        EXPECT_FALSE(fs::exists(temp));
        write(object, contents);
        EXPECT_TRUE(object.finalize());
        EXPECT_EQ(object.getStatus(), ProtectedWrite::StatusOk);
        expectOnly(contents);
    }
}

TEST_P(ProtectedWriteTest, LeavesTheOldContentsWhenItFails) {
    writeBytes(path("d/plan.dat"), "old");
    {
        ProtectedWrite object = saving();
        ASSERT_TRUE(object.init());
        EXPECT_FALSE(object.finalize());
        EXPECT_EQ(object.getStatus(), ProtectedWrite::StatusNoNewFile);
    }
    {
        ProtectedWrite object = saving();
        ASSERT_TRUE(object.init());
        write(object, "new");
        object.invalidate();
        EXPECT_FALSE(object.finalize());
        EXPECT_EQ(object.getStatus(), ProtectedWrite::StatusInvalidated);
        expectOnly("old");
    }
    {
        ProtectedWrite object = saving();
        ASSERT_TRUE(object.init());
        write(object, "never finished");
        ProtectedWrite const copy(object);
    } // the copy has cleared away, and the original finds nothing
    expectOnly("old");
}

// What is no file cannot be replaced by one, neither from the begin nor when it comes meanwhile.
TEST_P(ProtectedWriteTest, LeavesAloneWhatIsNoFile) {
    auto const expectRefused = [this](fs::file_type type) {
        ProtectedWrite object = saving();
        EXPECT_FALSE(object.init() || object.finalize());
        EXPECT_EQ(object.getStatus(), ProtectedWrite::StatusNotWritable);
        EXPECT_EQ(fs::symlink_status(path("d/plan.dat")).type(), type);
        fs::remove(path("d/plan.dat"));
    };
    ASSERT_EQ(::mkfifo(path("d/plan.dat").c_str(), 0600), 0);
    expectRefused(fs::file_type::fifo);
    fs::create_symlink("nothing", path("d/plan.dat"));
    expectRefused(fs::file_type::symlink);
    ProtectedWrite object = saving();
    ASSERT_TRUE(object.init());
    write(object, "new");
    fs::create_directory(path("d/plan.dat"));
    EXPECT_FALSE(object.finalize());
    EXPECT_EQ(object.getStatus(), ProtectedWrite::StatusNoBackup);
    expectRefused(fs::file_type::directory);
    EXPECT_TRUE(fs::is_empty(path("d")) && fs::is_empty(path("tmp")));
}

// Where the temporary directory takes no file, the names are known beforehand.
TEST_F(ProtectedWriteBeside, FindsItsNamesTaken) {
    setenv("TMPDIR", "/proc", 1);
    writeBytes(path("d/plan.dat"), "old");
    ProtectedWrite object(Filename(wide(path("d/plan.dat"))));
    ASSERT_TRUE(object.init());
    write(object, "new");
    std::string const process = std::to_string(::getpid());
    fs::create_directory(path("d/" + process + ".1.tmp"));
    EXPECT_FALSE(object.finalize());
    EXPECT_EQ(object.getStatus(), ProtectedWrite::StatusNoBackup);
    ProtectedWrite next(object.getMainFilename());
    EXPECT_FALSE(next.init());
    EXPECT_EQ(next.getStatus(), ProtectedWrite::StatusOldTempFile);
    EXPECT_TRUE(bytesOf(path("d/plan.dat")) == "old" && !fs::exists(path("d/" + process + ".0.tmp")));
}

// In a process of its own, as it is asked for once.
TEST_F(ProtectedWriteBeside, AsksTheEnvironmentForItsStrategy) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    auto const tellPlace = [this] {
        setenv("ORVEN_PROTECTED_WRITE_USE_COPY", "", 1);
        ProtectedWrite object(Filename(wide(path("d/plan.dat"))));
        ::_exit(object.init() && object.getTempFilename().dirname() == wide(path("tmp")) ? 7 : 8);
    };
    EXPECT_EXIT(tellPlace(), testing::ExitedWithCode(7), "");
}

TEST_P(ProtectedWriteTest, KeepsPermissionsAndFollowsLinks) {
    writeBytes(path("d/plan.dat"), "old");
    fs::permissions(path("d/plan.dat"), fs::perms(0751));
    fs::create_symlink(path("d/plan.dat"), path("link"));
    ProtectedWrite object = saving("link");
    ASSERT_TRUE(object.init());
    EXPECT_EQ(object.getMainFilename().name(), wide(path("link")));
    write(object, "new");
    EXPECT_TRUE(object.finalize());
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(fs::status(path("d/plan.dat")).permissions(), fs::perms(0751));
    expectOnly("new");
}

INSTANTIATE_TEST_SUITE_P(Both, ProtectedWriteTest, testing::Values(Strategy::beside, Strategy::copies),
                         [](auto const & test) { return test.param == Strategy::copies ? "Copies" : "Beside"; });

} // namespace
} // namespace qvOS
