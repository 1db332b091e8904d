#include "Base/OS/qvOSFile.h"

#include "Base/OS/qvOSDirectoryIterator.h"
#include "Base/OS/qvOSFileFactory.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSFilesystem.h"
#include "Base/OS/qvOSProtectedWrite.h"

#include "Support/ErrorMatchers.h"
#include "Support/ScratchDirectory.h"
#include "Support/StringPrinters.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace qvOS {
namespace {

namespace fs = std::filesystem;
using qvString::IString;
using qvTest::bytesOf;
using qvTest::FailsWith;
using qvTest::Succeeds;
using qvTest::wide;
using qvTest::writeBytes;
using qvUtil::Error;

class FileTest : public testing::Test, public qvTest::ScratchDirectory {
protected:
    IString name(std::string const & below) const { return wide(path(below)); }
};

TEST_F(FileTest, ReadsToAnEndThatComesWithTheLastBytes) {
    writeBytes(path("a"), "0123456789");
    File file(name("a"));
    char block[16];
    unsigned int count = 99;
    EXPECT_THAT(file.read(block, 4, &count), FailsWith(4, "An I/O problem has occurred"));
    EXPECT_EQ(count, 0U);
    ASSERT_THAT(file.open(OpenRead), Succeeds());
    EXPECT_THAT(file.open(OpenRead), FailsWith(9, "File is open"));
    EXPECT_THAT(file.read(block, 4, &count), Succeeds());
    EXPECT_EQ(std::string(block, count), "0123");
    EXPECT_THAT(file.read(block, 6, nullptr), Succeeds()); // the end is not met yet
    EXPECT_THAT(file.read(block, 0, &count), Succeeds());
    EXPECT_THAT(file.read(block, 1, &count), FailsWith(3, "End Of File"));
    EXPECT_EQ(count, 0U);
    EXPECT_THAT(file.close(), Succeeds());
    EXPECT_THAT(file.close(), FailsWith(8, "File is not open"));
    ASSERT_THAT(file.open(OpenRead | OpenText), Succeeds());
    EXPECT_THAT(file.read(block, 16, &count), FailsWith(3, "End Of File"));
    EXPECT_EQ(std::string(block, count), "0123456789");
    EXPECT_THAT(file.write("x", 1, &count), FailsWith(4, "An I/O problem has occurred")); // not open for that
    EXPECT_EQ(count, 0U);
}

TEST_F(FileTest, OpensByEveryMode) {
    struct {
        int mode;
        std::string before; // "-": there is no file
        int failure;
        std::string after; // when "new" is written behind two bytes that are read if they can be
    } const rows[] = {
        {OpenRead, "-", 18, "-"},
        {OpenRead | OpenWrite, "-", 18, "-"},
        {OpenRead | OpenWrite, "abcdefg", 0, "abnewfg"},
        {OpenWrite, "abcdefg", 0, "new"},
        {OpenWrite | OpenCreate | OpenText, "-", 0, "new"},
        {OpenAppend, "-", 0, "new"},
        {OpenAppend, "abcdefg", 0, "abcdefgnew"},
        {OpenAppend | OpenWrite, "abcdefg", 0, "abcdefgnew"},
        {0, "abcdefg", 4, "abcdefg"},
        {OpenBinary | OpenCreate, "-", 4, "-"},
    };
    for (auto const & row : rows) {
        SCOPED_TRACE(row.mode);
        fs::remove(path("f"));
        if (row.before != "-")
            writeBytes(path("f"), row.before);
        File file(name("f"));
        Error const error = file.open(row.mode);
        EXPECT_EQ(error.num(), row.failure);
        EXPECT_EQ(file.isOpen(), row.failure == 0);
        if (!error) {
            char two[2];
            static_cast<void>(file.read(two, 2, nullptr));
            EXPECT_THAT(file.write("new", 3, nullptr), Succeeds());
            EXPECT_THAT(file.close(), Succeeds());
        }
        EXPECT_EQ(fs::exists(path("f")) ? bytesOf(path("f")) : "-", row.after);
    }
    fs::create_directory(path("d"));
    File directory(name("d"));
    EXPECT_THAT(directory.open(OpenWrite), FailsWith(4, "An I/O problem has occurred"));
    ASSERT_THAT(directory.open(OpenRead), Succeeds());
    char block[8];
    EXPECT_THAT(directory.read(block, 8, nullptr), FailsWith(4, "An I/O problem has occurred"));
    File full(IString(L"/dev/full"));
    ASSERT_THAT(full.open(OpenWrite), Succeeds());
    EXPECT_THAT(full.write("x", 1, nullptr), FailsWith(4, "An I/O problem has occurred"));
}

TEST_F(FileTest, TemporaryFilesAndDirectoriesGetNamesOfTheirOwn) {
    std::set<std::string> names;
    for (int i = 0; i < 20; ++i) {
        File file(name("plan.dat"));
        ASSERT_THAT(file.openTemp(OpenWrite), Succeeds());
        EXPECT_THAT(file.openTemp(OpenWrite), FailsWith(9, "File is open"));
        std::string const made = file.getFullName().asUTF8();
        EXPECT_TRUE(made.starts_with(path("pla")) && made.ends_with(".tmp")) << made;
        EXPECT_TRUE(names.insert(made).second);
        EXPECT_THAT(file.write("x", 1, nullptr), Succeeds());
        EXPECT_EQ(bytesOf(made), "x");
        EXPECT_EQ(fs::status(made).permissions(), fs::perms(0600)); // nobody else's
    }
    setenv("TMPDIR", path("").c_str(), 1);
    File nameless(IString(L""));
    ASSERT_THAT(nameless.openTemp(OpenRead), Succeeds());
    EXPECT_TRUE(nameless.getNameBase().find(L"OVT") == 0) << nameless.getFullName().asUTF8();
    File directory(IString(L"x"));
    EXPECT_THAT(directory.makeTempDirectory(), Succeeds());
    EXPECT_TRUE(fs::is_directory(directory.getFullName().asUTF8()) && directory.getNameBase().length() == 10);
    unsetenv("TMPDIR");
    File nowhere(name("missing/x"));
    EXPECT_THAT(nowhere.openTemp(OpenWrite), FailsWith(18, "File does not exist"));
    EXPECT_FALSE(nowhere.isOpen());
}

TEST_F(FileTest, MakesDirectories) {
    EXPECT_THAT(File(name("a")).makeDirectory(), Succeeds());
    EXPECT_THAT(File(name("a")).makeDirectory(), FailsWith(2, "File Exists"));
    EXPECT_THAT(File(name("x/y")).makeDirectory(), FailsWith(4, "An I/O problem has occurred"));
    EXPECT_THAT(File(name("a/b/c/d")).makeDirectoryAll(), Succeeds());
    EXPECT_THAT(File(name("a/b/c/d")).makeDirectoryAll(), Succeeds());
    EXPECT_TRUE(fs::is_directory(path("a/b/c/d")));
    writeBytes(path("a/file"), "");
    EXPECT_THAT(File(name("a/file")).makeDirectoryAll(), FailsWith(2, "File Exists"));
    EXPECT_THAT(File(name("a/file/below")).makeDirectoryAll(), FailsWith(2, "File Exists"));
    // Long names: 255 bytes for one part, and paths beyond 260 characters.
    std::string const part(255, 'p');
    EXPECT_THAT(File(name(part + "/" + part + "/" + part)).makeDirectoryAll(), Succeeds());
    EXPECT_TRUE(fs::is_directory(path(part + "/" + part + "/" + part)));
    EXPECT_THAT(File(name(part + "p")).makeDirectory(), FailsWith(4, "An I/O problem has occurred"));
    std::string endless = "e";
    for (int i = 0; i < 5000; ++i)
        endless += "/e";
    EXPECT_THAT(File(name(endless)).makeDirectoryAll(), FailsWith(4, "An I/O problem has occurred"));
}

TEST_F(FileTest, ListsDirectories) {
    fs::create_directory(path("d"));
    writeBytes(path("d/\xC3\xA9"), "");
    writeBytes(path("d/bad\xFFname"), "x");
    qv::vector<IString> list = {IString(L"old")};
    ASSERT_THAT(File(name("d")).readDir(list, false), Succeeds());
    std::sort(list.begin(), list.end());
    qv::vector<IString> const expected = {IString(L"."), IString(L".."), IString(u"bad\xDCFFname"), IString(u"\x00E9")};
    EXPECT_EQ(list, expected);
    ASSERT_THAT(File(name("d/")).readDir(list, true), Succeeds());
    EXPECT_NE(std::find(list.begin(), list.end(), name("d/..")), list.end());
    // A name that is no UTF-8 opens and is deleted under the name that was listed.
    IString strange = name("d/");
    strange.append(IString(u"bad\xDCFFname"));
    File file(strange);
    ASSERT_THAT(file.open(OpenRead), Succeeds());
    EXPECT_THAT(file.close(), Succeeds());
    EXPECT_THAT(file.deleteSelf(0), Succeeds());
    EXPECT_FALSE(fs::exists(path("d/bad\xFFname")));

    EXPECT_THAT(File(name("d/\xC3\xA9")).readDir(list, true), FailsWith(10, "Resource is not a directory"));
    std::unique_ptr<FileTransport> const missing(FileFactory::getFileFactory()->createTransport(name("missing")));
    list = {IString(L"old")};
    EXPECT_THAT(missing->readDir(list, true), Succeeds());
    EXPECT_TRUE(list.empty());
    std::unique_ptr<FileTransport> const plain(FileFactory::getFileFactory()->createTransport(name("d/\xC3\xA9")));
    EXPECT_THAT(plain->readDir(list, true), FailsWith(4, "An I/O problem has occurred"));
    for (int const length : {4095, 4096}) {
        IString const longName(static_cast<unsigned>(length), L'x');
        std::unique_ptr<FileTransport> const longOne(FileFactory::getFileFactory()->createTransport(longName));
        EXPECT_EQ(longOne->readDir(list, false).num(), length == 4095 ? 4 : 12); // with the separator at its end
    }
}

TEST_F(FileTest, CopiesFilesAndTrees) {
    fs::create_directories(path("from/sub/deep"));
    std::string const large(300000, 'l');
    writeBytes(path("from/large"), large);
    writeBytes(path("from/sub/small"), "s");
    fs::create_directory_symlink("..", path("from/sub/back")); // leads to a directory above it
    File target(name("to"));
    EXPECT_THAT(File(name("from")).copyTo(target), FailsWith(7, "No Overwrite permission"));
    EXPECT_EQ(bytesOf(path("to/large")), large);
    EXPECT_EQ(bytesOf(path("to/sub/small")), "s");
    EXPECT_TRUE(fs::is_directory(path("to/sub/deep")));
    EXPECT_FALSE(fs::exists(path("to/sub/back")));

    // What would meet itself is refused, and nothing is touched.
    fs::create_hard_link(path("from/large"), path("other"));
    fs::create_directory_symlink("to/sub", path("link"));
    ASSERT_EQ(::mkfifo(path("pipe").c_str(), 0600), 0);
    struct {
        char const * from;
        char const * to;
        int failure;
    } const rows[] = {
        {"from/large", "from/large", 7}, {"from/large", "other", 7},
        {"from", "from/inside", 7},      {"missing", "x", 18},
        {"from/large", "no/x", 4},       {"from/sub/small", "from", 4},
        {"pipe", "pipe copy", 4},        {"/dev/zero", "zeros", 4},
        {"from/sub/back/", "x/", 7},     {"link/", "sub", 0},
    };
    for (auto const & row : rows) {
        File to(name(row.to));
        EXPECT_EQ(File(name(row.from)).copyTo(to).num(), row.failure) << row.from << " " << row.to;
    }
    EXPECT_TRUE(bytesOf(path("other")) == large && !fs::exists(path("pipe copy")) && fs::exists(path("sub/small")));
    File source(name("from/large"));
    ASSERT_THAT(source.open(OpenRead), Succeeds());
    EXPECT_THAT(source.copyTo(target), FailsWith(9, "File is open"));
}

TEST_F(FileTest, CopiesSparseFilesBeyondFourGigabytes) {
    constexpr std::int64_t size = (std::int64_t{5} << 30) + 7;
    writeBytes(path("sparse"), "begin");
    fs::resize_file(path("sparse"), size);
    File target(name("copy"));
    ASSERT_THAT(File(name("sparse")).copyTo(target), Succeeds());
    FileStatus status;
    ASSERT_THAT(target.query(status), Succeeds());
    EXPECT_EQ(status.getSize(), size);
    struct stat figures;
    ASSERT_EQ(::stat(path("copy").c_str(), &figures), 0);
    EXPECT_LT(figures.st_blocks * 512, 1 << 20);
    char bytes[6];
    ASSERT_EQ(std::ifstream(path("copy"), std::ios::binary).read(bytes, 6).gcount(), 6);
    EXPECT_EQ(std::string(bytes, 6), std::string("begin\0", 6));
    // A file of the system that has fewer bytes than its size says.
    std::string const made = "/sys/class/net/lo/mtu";
    if (fs::exists(made)) {
        EXPECT_THAT(File(wide(made)).copyTo(target), Succeeds());
        EXPECT_EQ(fs::file_size(path("copy")), bytesOf(made).size());
    }
}

// What a user without rights meets; tests may run as one who has all of them.
TEST_F(FileTest, RefusalsByPermission) {
    fs::create_directory(path("closed"));
    for (char const * const file : {"file", "readable", "closed/x"})
        writeBytes(path(file), "x");
    fs::permissions(path("readable"), fs::perms(0444));
    fs::permissions(path("file"), fs::perms::none);
    fs::permissions(path("closed"), fs::perms::none);
    fs::permissions(path(""), fs::perms(0555));
    std::string told;
    auto const tell = [&told](Error const & error) { told += std::to_string(error.num()) + error.message() + '\n'; };
    auto const meetThemAll = [&] {
        if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            return;
        qv::vector<IString> list;
        FileStatus status;
        Filename const readable(name("readable"));
        Filename const fresh(name("new"));
        tell(File(name("file")).open(OpenRead));
        tell(File(name("new")).open(OpenWrite));
        tell(File(name("closed")).readDir(list, true));
        tell(File(name("closed/x")).query(status));
        tell(File(fresh.name()).makeDirectory());
        tell(File(readable.name()).deleteSelf(0));
        tell(fileCopy(Filename(name("file")), fresh, true));
        tell(fileRename(readable, fresh));
        tell(fileDelete(readable));
        ProtectedWrite saving(readable);
        tell(Error(saving.init() || saving.finalize() ? 0 : saving.getStatus(), "saving"));
        int entries = 0;
        for (DirectoryIterator walk(name("closed")); walk.valid(); walk.next())
            ++entries;
        tell(Error(entries, "walked"));
        told += isFileWritable(readable) || doesFileExist(Filename(name("closed/x"))) ? "wrong" : "right";
    };
    std::string const problem = "4An I/O problem has occurred\n";
    std::string const expected = problem + problem + problem + "4Permission denied\n" + problem + problem +
                                 "1Error copying " + path("file") + " to " + path("new") +
                                 ": Permission denied\n"
                                 "6A component of either path prefix deniessearch permission\n"
                                 "1Permission denied\n1saving\n1walked\nright";
    EXPECT_EXIT((meetThemAll(), std::cerr << told, std::_Exit(0)), testing::ExitedWithCode(0), expected);
    for (char const * const closed : {"", "closed"})
        fs::permissions(path(closed), fs::perms::owner_all);
}

TEST_F(FileTest, MovesAndDeletes) {
    writeBytes(path("a"), "a");
    writeBytes(path("b"), "b");
    File missing(name("missing"));
    File b(name("b"));
    EXPECT_THAT(missing.moveTo(b), FailsWith(18, "File does not exist"));
    File fresh(name("c"));
    EXPECT_THAT(File(name("a")).moveTo(fresh), Succeeds());
    EXPECT_THAT(fresh.moveTo(b), Succeeds()); // over an existing file, by copying
    EXPECT_FALSE(fs::exists(path("a")) || fs::exists(path("c")));
    EXPECT_EQ(bytesOf(path("b")), "a");

    fs::create_directories(path("tree/sub"));
    fs::create_directories(path("outside"));
    writeBytes(path("outside/kept"), "kept");
    fs::create_directory_symlink(path("outside"), path("tree/sub/link"));
    writeBytes(path("tree/file"), "x");
    File tree(name("tree"));
    EXPECT_THAT(tree.deleteSelf(DeleteShallow), FailsWith(13, "The directory is not empty"));
    EXPECT_THAT(tree.deleteSelf(0), Succeeds());
    EXPECT_FALSE(fs::exists(path("tree")));
    EXPECT_EQ(bytesOf(path("outside/kept")), "kept");
    for (char const * const link : {"link", "link/", "link//"}) {
        fs::create_directory_symlink(path("outside"), path("link"));
        File moved(name("moved"));
        EXPECT_THAT(File(name(link)).moveTo(moved), Succeeds());
        EXPECT_TRUE(fs::is_symlink(path("moved")) && !fs::is_symlink(path("link")));
        fs::rename(path("moved"), path("link"));
        EXPECT_THAT(File(name(link)).deleteSelf(0), Succeeds());
        EXPECT_FALSE(fs::is_symlink(path("link")));
        EXPECT_EQ(bytesOf(path("outside/kept")), "kept");
    }
    fs::create_symlink("nothing", path("link"));
    EXPECT_THAT(File(name("link/")).deleteSelf(0), Succeeds());
    EXPECT_FALSE(fs::is_symlink(path("link")));
    EXPECT_THAT(missing.deleteSelf(0), FailsWith(4, "An I/O problem has occurred"));
}

TEST_F(FileTest, TellsWhatItKnows) {
    writeBytes(path("a"), "12345");
    fs::create_directory(path("d"));
    FileStatus status;
    ASSERT_THAT(File(name("a")).query(status, true), Succeeds());
    EXPECT_TRUE(status.exists() && status.isFile() && !status.isDirectory() && status.isReadable() &&
                status.isWritable() && !status.isRemote() && !status.isCheckedout());
    EXPECT_EQ(status.getSize(), 5);
    EXPECT_NEAR(static_cast<double>(status.getLastModifiedDate()), static_cast<double>(std::time(nullptr)), 100);
    EXPECT_NEAR(static_cast<double>(status.getCreationDate()), static_cast<double>(std::time(nullptr)), 100);
    EXPECT_FALSE(status.getOwner().isEmpty() || status.getOwner() == "Unknown");
    ASSERT_THAT(File::query(name("d"), status), Succeeds());
    EXPECT_TRUE(status.exists() && status.isDirectory() && !status.isFile() && status.getOwner().isEmpty());
    ASSERT_THAT(File::query(name("missing"), status), Succeeds());
    EXPECT_FALSE(status.exists() || status.isReadable());
    File missing(name("missing"));
    EXPECT_THAT(missing.query(status, true), FailsWith(-1, "Failed to query Owner/Group of " + path("missing")));
    EXPECT_EQ(status.getOwner(), "Unknown");
    EXPECT_THAT(File::query(IString(4000, L'x'), status), FailsWith(4, "File name too long"));
    EXPECT_THAT(File::getError(19), FailsWith(19, "Cannot become the parent of a root directory"));
    EXPECT_THAT(File::getError(20), FailsWith(20, ""));

    // What a transport has once seen of a directory stays.
    EXPECT_FALSE(missing.isDirectory());
    writeBytes(path("missing"), "");
    EXPECT_FALSE(missing.isDirectory());
    fs::remove(path("missing"));
    fs::create_directory(path("missing"));
    EXPECT_FALSE(missing.isDirectory());

    File named(IString(L"a/b/c"));
    EXPECT_TRUE(named.getNameTitle() == L"a/b/" && named.getNameBase() == L"c" && named.getSeparator() == L'/');
    EXPECT_EQ(named.transportId(), IString("LocalFileTransport"));
    EXPECT_TRUE(File(IString(L"foo")).getNameBase().isEmpty() && File(IString(L"foo")).getNameTitle().isEmpty());
}

// A storage whose names begin with "memory:".
class MemoryTransport : public FileTransport {
public:
    explicit MemoryTransport(IString const & name) : name_(name) {}
    Error read(void * buffer, unsigned int size, unsigned int * count) override {
        std::string const & text = files[name_.asUTF8()];
        *count = static_cast<unsigned int>(text.copy(static_cast<char *>(buffer), size, at_));
        at_ += *count;
        return at_ == text.size() ? File::getError(3) : Error();
    }
    Error write(void const * buffer, unsigned int size, unsigned int *) override {
        files[name_.asUTF8()].append(static_cast<char const *>(buffer), size);
        return files[name_.asUTF8()].size() > limit ? File::getError(4) : Error();
    }
    Error open(int) override { return open_ = true, at_ = 0, Error(); }
    Error close() override { return open_ = false, Error(); }
    Error makeDirectory() override { return File::getError(1); }
    Error readDir(qv::vector<IString> &, bool) override { return File::getError(1); }
    Error deleteSelf() override { return files.erase(name_.asUTF8()), Error(); }
    bool isDirectory() override { return false; }
    bool isOpen() override { return open_; }
    IString getFullName() override { return name_; }
    IString getNameTitle() override { return IString(); }
    IString getNameBase() override { return name_; }
    wchar_t getSeparator() override { return L'/'; }
    IString transportId() override { return IString(L"Memory"); }
    Error query(FileStatus & status) override {
        status.setExists(files.count(name_.asUTF8()) != 0);
        return Error();
    }

    static inline std::map<std::string, std::string> files;
    static inline std::size_t limit = SIZE_MAX;

private:
    IString name_;
    std::size_t at_ = 0;
    bool open_ = false;
};

class MemoryFactory : public FileTransportFactory {
public:
    FileTransport * create(IString const & name) override {
        return name.find(L"memory:") == 0 ? new MemoryTransport(name) : nullptr;
    }
};

TEST_F(FileTest, NamesFindTheirStorage) {
    static MemoryFactory factory;
    FileFactory::getFileFactory()->registerTransportFactory(&factory);
    for (std::size_t const size : {std::size_t{0}, std::size_t{4095}, std::size_t{4096}, std::size_t{10000}}) {
        std::string const text(size, 'm');
        writeBytes(path("local"), text);
        File local(name("local"));
        File memory(IString(L"memory:x"));
        EXPECT_THAT(local.copyTo(memory), Succeeds());
        EXPECT_EQ(MemoryTransport::files["memory:x"], text);
        File back(name("back"));
        EXPECT_THAT(memory.moveTo(back), Succeeds());
        EXPECT_EQ(bytesOf(path("back")), text);
        EXPECT_EQ(MemoryTransport::files.count("memory:x"), 0U);
    }
    MemoryTransport::limit = 5000;
    File memory(IString(L"memory:y"));
    EXPECT_THAT(File(name("local")).copyTo(memory), FailsWith(4, "An I/O problem has occurred"));
    EXPECT_THAT(memory.openTemp(OpenWrite), FailsWith(-1, "This function is not implemented."));
    EXPECT_THAT(memory.makeDirectoryAll(), FailsWith(-1, "This function is not implemented."));
    FileStatus status;
    EXPECT_THAT(memory.query(status, true), FailsWith(-1, "This function still not supported."));

    EXPECT_EQ(File(IString(L"file:///tmp/a")).getFullName(), IString("tmp/a"));
    EXPECT_EQ(File(IString(L"file:C:/a")).getFullName(), IString("C:/a"));
    EXPECT_EQ(File(IString(L"FILE:/a")).getFullName(), IString("FILE:/a"));
    File unclaimed(IString(L"ftp://host/x"));
    EXPECT_EQ(unclaimed.getFullName(), IString("ftp://host/x"));
    EXPECT_THAT(unclaimed.open(OpenRead), FailsWith(18, "File does not exist"));
}

std::vector<std::string> walked(std::string const & root, std::string const & pruned = "") {
    std::vector<std::string> names;
    for (DirectoryIterator walk(wide(root)); walk.valid(); walk.next()) {
        names.push_back(std::string(walk.getName().asUTF8()) + (walk.onDirectory() ? "/" : ""));
        EXPECT_NE(walk.onFile(), walk.onDirectory());
        if (names.back() == pruned)
            walk.prune();
    }
    return names;
}

TEST_F(FileTest, WalksLevelByLevel) {
    fs::create_directories(path("r/a/aa"));
    writeBytes(path("r/a/aa/x"), "");
    writeBytes(path("r/f"), "");
    writeBytes(path("r/a/\\."), "");
    fs::create_directory_symlink(path("r"), path("r/a/cycle"));
    std::multiset<std::string> const below = {"/", "/a/", "/f", "/a/aa/", "/a/cycle", "/a/\\.", "/a/aa/x"};
    fs::path const before = fs::current_path();
    for (std::string const & root : {path("r"), std::string("r"), std::string("."), std::string("..")}) {
        fs::current_path(path(root == "." ? "r" : root == ".." ? "r/a" : ""));
        std::vector<std::string> const names = walked(root + "///");
        EXPECT_TRUE(names.front() == root + '/' && names.back() == root + "/a/aa/x"); // after everything above it
        std::multiset<std::string> found;
        for (std::string const & entry : names)
            found.insert(entry.substr(root.size()));
        EXPECT_EQ(found, below) << root;
    }
    fs::current_path(before);
    DirectoryIterator top(IString(L"/"));
    for (top.next(); top.valid(); top.next()) {
        EXPECT_FALSE(top.getName() == L"/." || top.getName() == L"/..");
        top.prune();
    }
    EXPECT_EQ(walked(path("r"), path("r/a/")).size(), 3U);
    EXPECT_TRUE(walked(path("missing")).empty());
    EXPECT_EQ(walked(path("r/f")), std::vector<std::string>{path("r/f")});

    // A tree that changes meanwhile: what has gone has no children, what came before its directory was read is there.
    int count = 0;
    for (DirectoryIterator walk(name("r")); walk.valid(); walk.next(), ++count) {
        if (count == 0)
            writeBytes(path("r/new"), "");
        if (walk.getName() == name("r/a"))
            fs::remove_all(path("r/a/aa"));
    }
    EXPECT_EQ(count, 6);
}

TEST_F(FileTest, WalksAndDeletesAHundredThousandFiles) {
    fs::create_directory(path("many"));
    for (int i = 0; i < 100000; ++i) { // names of a few files: quicker to make
        std::string const file = path("file" + std::to_string(i / 10000));
        if (i % 10000 == 0)
            writeBytes(file, "kept");
        ASSERT_EQ(::link(file.c_str(), path("many/" + std::to_string(i)).c_str()), 0);
    }
    int count = 0;
    for (DirectoryIterator walk(name("many")); walk.valid(); walk.next())
        count += walk.onFile();
    EXPECT_EQ(count, 100000);
    EXPECT_THAT(File(name("many")).deleteSelf(0), Succeeds());
    EXPECT_TRUE(bytesOf(path("file9")) == "kept" && !fs::exists(path("many")));
}

TEST_F(FileTest, FilesystemFigures) {
    Filesystem disk(name("not there, but its directory is"));
    EXPECT_TRUE(disk.size() == 0 && disk.blockSize() == 0);
    ASSERT_THAT(disk.stat(), Succeeds());
    auto const space = fs::space(path("."));
    EXPECT_EQ(disk.blockSize(), 1024U);
    EXPECT_EQ(disk.size(), static_cast<unsigned int>(space.capacity / 1024));
    EXPECT_FALSE(disk.isRemote());
    EXPECT_THAT(Filesystem(IString()).stat(), FailsWith(1, "Filesystem::stat(): invalid path \n"));
    EXPECT_THAT(Filesystem(IString(L"/missing/x")).stat(),
                FailsWith(1, "Filesystem::stat(): GetDiskFreeSpaceEx(/missing/) failed: No such file or directory"));
}

} // namespace
} // namespace qvOS
