#include "Base/OS/qvOSProtectedWrite.h"

#include "Base/OS/qvOSFile.h"

#include "Support/ScratchDirectory.h"
#include "Support/StringPrinters.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <sys/stat.h>

namespace qvOS {
namespace {

namespace fs = std::filesystem;
using qvTest::bytesOf;
using qvTest::wide;
using qvTest::writeBytes;

enum class Strategy { beside, copies };

class ProtectedWriteTest : public testing::TestWithParam<Strategy> {
protected:
    ProtectedWriteTest() {
        fs::create_directory(path("d"));
        fs::create_directory(path("tmp"));
        setenv("TMPDIR", path("tmp").c_str(), 1);
    }
    ~ProtectedWriteTest() override { unsetenv("TMPDIR"); }

    std::string path(std::string const & name) const { return scratch_.path(name); }

    ProtectedWrite saving(std::string const & name = "d/plan.dat") const {
        ProtectedWrite result(Filename(wide(path(name))));
        if (GetParam() == Strategy::copies)
            result.useCopyStrategy();
        return result;
    }
    static void write(ProtectedWrite const & saving, std::string const & text) {
        writeBytes(saving.getTempFilename().name().asUTF8(), text);
    }
    // Nothing but the file itself is left.
    void expectOnly(std::string const & contents) const {
        EXPECT_EQ(bytesOf(path("d/plan.dat")), contents);
        EXPECT_EQ(std::distance(fs::directory_iterator(path("d")), {}), contents.empty() ? 0 : 1);
        EXPECT_TRUE(fs::is_empty(path("tmp")));
    }

    qvTest::ScratchDirectory scratch_;
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
    fs::remove(path("d/plan.dat"));
    fs::create_directory(path("d/plan.dat"));
    EXPECT_FALSE(saving().init());
}

TEST_P(ProtectedWriteTest, KeepsPermissionsAndFollowsLinks) {
    writeBytes(path("d/plan.dat"), "old");
    fs::permissions(path("d/plan.dat"), fs::perms(0751));
    fs::create_symlink(path("d/plan.dat"), path("link"));
    fs::create_symlink(path("d/nothing"), path("dangling"));
    ProtectedWrite object = saving("link");
    ASSERT_TRUE(object.init());
    EXPECT_EQ(object.getMainFilename().name(), wide(path("link")));
    write(object, "new");
    EXPECT_TRUE(object.finalize());
    EXPECT_TRUE(fs::is_symlink(path("link")));
    EXPECT_EQ(fs::status(path("d/plan.dat")).permissions(), fs::perms(0751));
    expectOnly("new");
    ProtectedWrite dangling = saving("dangling");
    EXPECT_FALSE(dangling.init());
    EXPECT_EQ(dangling.getStatus(), ProtectedWrite::StatusNotWritable);
    EXPECT_FALSE(dangling.finalize());
    EXPECT_TRUE(fs::is_symlink(path("dangling")));
}

INSTANTIATE_TEST_SUITE_P(Both, ProtectedWriteTest, testing::Values(Strategy::beside, Strategy::copies),
                         [](auto const & test) { return test.param == Strategy::copies ? "Copies" : "Beside"; });

} // namespace
} // namespace qvOS
