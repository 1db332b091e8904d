#include "Base/OS/qvOSFileOperations.h"

#include "Base/OS/qvOSTemporaryFiles.h"

#include "Support/ErrorMatchers.h"
#include "Support/ScratchDirectory.h"
#include "Support/StringPrinters.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <set>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utime.h>

namespace qvOS {
namespace {

namespace fs = std::filesystem;
using qvString::IString;
using qvTest::bytesOf;
using qvTest::FailsWith;
using qvTest::Succeeds;
using qvTest::wide;
using qvTest::writeBytes;

class FileOperations : public testing::Test, public qvTest::ScratchDirectory {
protected:
    Filename name(std::string const & below) const { return Filename(wide(path(below))); }
};

TEST_F(FileOperations, CopyWithNumbersOfItsOwn) {
    writeBytes(path("a"), "contents");
    fs::permissions(path("a"), fs::perms(06750));
    timespec const times[2] = {{1000000, 5}, {1000000, 5}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path("a").c_str(), times, 0), 0);
    EXPECT_THAT(fileCopy(name("a"), name("b"), false), Succeeds());
    struct stat status;
    ASSERT_EQ(::stat(path("b").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 06750U);
    EXPECT_TRUE(status.st_mtim.tv_sec == 1000000 && status.st_mtim.tv_nsec == 5);
    // What another user's program may do goes to nobody else.
    if (::geteuid() == 0 && ::chown(path("a").c_str(), 65534, 65534) == 0) {
        fs::permissions(path("a"), fs::perms(06750));
        EXPECT_THAT(fileCopy(name("a"), name("b"), true), Succeeds());
        EXPECT_EQ(fs::status(path("b")).permissions(), fs::perms(0750));
    }
    auto const text = [this](char const * from, char const * to, char const * system) {
        return "Error copying " + path(from) + " to " + path(to) + ": " + system;
    };
    EXPECT_THAT(fileCopy(name("a"), name("b"), false), FailsWith(3, text("a", "b", "File exists")));
    EXPECT_THAT(fileCopy(name("x"), name("b"), true), FailsWith(2, text("x", "b", "No such file or directory")));
    EXPECT_THAT(fileCopy(name("a"), name("no/b"), true), FailsWith(2, text("a", "no/b", "No such file or directory")));
    EXPECT_THAT(fileCopy(name("a"), name("a"), true), FailsWith(1, text("a", "a", "The two are the same file")));
    fs::create_directory(path("d"));
    EXPECT_THAT(fileCopy(name("d"), name("e"), true), FailsWith(1, text("d", "e", "Is a directory")));
    EXPECT_THAT(fileCopy(name("a"), name("d"), true), FailsWith(1, text("a", "d", "Is a directory")));
    EXPECT_EQ(bytesOf(path("a")), "contents");
    writeBytes(path("a"), "new");
    EXPECT_THAT(fileCopy(path("a").c_str(), (path("x/../b") + "/").c_str(), true), Succeeds());
    EXPECT_EQ(bytesOf(path("b")), "new");
    EXPECT_THAT(fileMove(name("a").name().asWChar(), name("c").name().asWChar(), false), Succeeds());
    EXPECT_THAT(fileMove(name("c"), name("b"), false), FailsWith(3, text("c", "b", "File exists")));
    EXPECT_TRUE(!fs::exists(path("a")) && fs::exists(path("c")));
}

TEST_F(FileOperations, CopyLeavesAloneWhatIsNoFile) {
    writeBytes(path("a"), std::string(50000, 'a'));
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    EXPECT_THAT(fileCopy(name("pipe"), name("b"), false), FailsWith(1, testing::EndsWith(": Not a file of bytes")));
    EXPECT_FALSE(fs::exists(path("b")));
    int const reader = ::open(path("pipe").c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_THAT(fileCopy(name("a"), name("pipe"), true), Succeeds());
    ::close(reader);
    EXPECT_TRUE(fs::is_fifo(path("pipe")) && fs::status(path("pipe")).permissions() == fs::perms(0600));
    // What is cut off through a link is not removed by the link's name.
    fs::create_symlink("b", path("link"));
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before;
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit const small{40000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THAT(fileCopy(name("a"), name("link"), true), FailsWith(1, testing::EndsWith(": File too large")));
    ::setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_TRUE(fs::is_symlink(path("link")));
}

TEST_F(FileOperations, RenameReplacesNothing) {
    writeBytes(path("a"), "a");
    writeBytes(path("b"), "b");
    fs::create_directories(path("d/inner"));
    EXPECT_THAT(fileRename(name("a"), name("b")), FailsWith(6, "Unkown system error."));
    EXPECT_THAT(fileRename(name("x"), name("y")),
                FailsWith(6, "File or path specified by " + path("y") + " name not found."));
    EXPECT_EQ(bytesOf(path("b")), "b");
    EXPECT_THAT(fileRename(name("a"), name("c")), Succeeds());
    EXPECT_EQ(bytesOf(path("c")), "a");
    EXPECT_THAT(fileRename(name("d"), name("d/inner")), FailsWith(1, testing::HasSubstr("Is a directory")));
    EXPECT_THAT(fileRename(name("c"), name("d/b")), Succeeds());
    EXPECT_THAT(fileRename(name("b"), name("d/b")), Succeeds()); // between directories it overwrites
    EXPECT_EQ(bytesOf(path("d/b")), "b");
    EXPECT_THAT(fileDelete(name("d/b")), Succeeds());
    EXPECT_THAT(fileDelete(name("d/b")), FailsWith(1, "No such file or directory"));
    EXPECT_THAT(fileDelete(path("d").c_str()), FailsWith(1, "Is a directory"));
}

TEST_F(FileOperations, ExistenceAndTheFirstBytes) {
    writeBytes(path("a"), "0123");
    EXPECT_TRUE(doesFileExist(name("a")) && isFileWritable(name("a")) && !doesFileExist(name("b")));
    EXPECT_TRUE(qvOS_DoesFileExist(path("a").c_str()) && qvOS_IsFileWriteable(path("a").c_str()));
    EXPECT_TRUE(!qvOS_DoesFileExist(path("b").c_str()) && !qvOS_IsFileWriteable(path("b").c_str()));
    EXPECT_TRUE(qvOS_DoesDirectoryExist(path("//.//").c_str()) && qvOS_DoesDirectoryExist(path("a").c_str()));
    EXPECT_FALSE(qvOS_DoesDirectoryExist(path("b").c_str()));
    // The result says that it failed.
    EXPECT_FALSE(qvOS_CopyFileTo(path("a").c_str(), path("b").c_str()));
    EXPECT_TRUE(qvOS_CopyFileTo(path("missing").c_str(), path("c").c_str()));
    EXPECT_EQ(bytesOf(path("b")), "0123");
    char bytes[8];
    EXPECT_EQ(qvOS_ReadHeaderFromFile(path("a").c_str(), bytes, 4), 4);
    EXPECT_EQ(std::string(bytes, 4), "0123");
    EXPECT_EQ(qvOS_ReadHeaderFromFile(path("a").c_str(), bytes, 5), -1);
    EXPECT_EQ(qvOS_ReadHeaderFromFile(path("a").c_str(), bytes, -1), -1);
    EXPECT_EQ(qvOS_ReadHeaderFromFile(path("a").c_str(), nullptr, 1), -1);
    EXPECT_EQ(qvOS_ReadHeaderFromFile(path("missing").c_str(), bytes, 0), 0);
    EXPECT_EQ(qvOS_ReadHeaderFromFile(path("missing").c_str(), bytes, 1), -1);
}

TEST_F(FileOperations, NewNamesAreNobodys) {
    setenv("TMPDIR", path("").c_str(), 1);
    std::string const process = std::to_string(::getpid());
    std::set<std::string> names;
    for (int i = 0; i < 50; ++i) {
        std::string const made = createTmpFilename(IString(L"x"), nullptr).name().asUTF8();
        EXPECT_TRUE(made.starts_with(path("OVT")) && made.ends_with(process + ".x")) << made;
        EXPECT_TRUE(names.insert(made).second && !fs::exists(made));
    }
    EXPECT_TRUE(std::string(createNewFilenameVariant(name("."), nullptr, IString()).name().asUTF8())
                    .starts_with(path("./rec")));
    EXPECT_EQ(createNewFilenameVariant(name("missing"), L"abc", IString(L"s")).name(), wide("/" + process + ".s"));
    char * const forC = qvOS_CreateTemporaryFileName("c");
    EXPECT_TRUE(std::string(forC).starts_with(path("OVT")));
    free(forC);
    char * const directory = qvOS_GetTemporaryDirectory();
    EXPECT_STREQ(directory, getTempDirectory().name().asUTF8());
    free(directory);
    EXPECT_TRUE(fs::is_empty(path("")));
    setenv("TMPDIR", "/missing", 1);
    EXPECT_EQ(getTempDirectory().name(), IString("/tmp"));
    unsetenv("TMPDIR");
}

TEST_F(FileOperations, CleanUpTakesOldFilesOfKnownNames) {
    std::set<std::string> const taken = {"vor123.unload", "vor12.unload1.unload", "vorenTempFile.1",
                                         "a.vz$",         "mek123out4",           "mek1234cmd5.bat"};
    std::set<std::string> const left = {"vor12.unload", "vorenTempFile.", ".vz$",       "mek12out4",
                                        "mek123outx",   "mek12cmd5.bat",  "x.unload.x", "OVTMP123"};
    utimbuf const old{::time(nullptr) - 604900, ::time(nullptr) - 604900};
    fs::create_directories(path("sub"));
    auto const make = [&](std::string const & file) {
        writeBytes(path(file), "");
        ASSERT_EQ(::utime(path(file).c_str(), &old), 0);
    };
    for (auto const & names : {taken, left})
        for (std::string const & file : names)
            make(file);
    make("sub/vor123.unload");
    writeBytes(path("young.vz$"), "");
    EXPECT_EQ(cleanupTempDirectory(wide(path(""))), static_cast<int>(taken.size()));
    for (std::string const & file : taken)
        EXPECT_FALSE(fs::exists(path(file))) << file;
    for (std::string const & file : left)
        EXPECT_TRUE(fs::exists(path(file))) << file;
    EXPECT_TRUE(fs::exists(path("sub/vor123.unload")) && fs::exists(path("young.vz$")));
    EXPECT_EQ(cleanupTempDirectory(wide(path("missing"))), 0);
}

} // namespace
} // namespace qvOS
