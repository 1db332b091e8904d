// The program qvpackage, on trees of files and on packages that are damaged or lie.

#include "Base/DataFiles/ioPackageFile.h"

#include "Support/RunProgram.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <sys/stat.h>
#include <unistd.h>

using namespace qvTest;

namespace {

namespace fs = std::filesystem;

class QvPackage : public testing::Test {
protected:
    Outcome run(std::string const & arguments) const { return runProgram(scratch_, QVPACKAGE_PROGRAM, arguments); }
    std::string path(std::string const & name) const { return scratch_.path(name); }
    void put(std::string const & name, std::string const & bytes) const {
        fs::create_directories(fs::path(path(name)).parent_path());
        writeBytes(path(name), bytes);
    }
    void expectFine(std::string const & arguments) const { expect(arguments, 0, ""); }
    void expect(std::string const & arguments, int status, std::string const & err) const {
        Outcome const outcome = run(arguments);
        EXPECT_EQ(outcome, (Outcome{status, outcome.out, err})) << arguments;
    }
    // The regular files of a tree with their contents.
    std::map<std::string, std::string> tree(std::string const & root) const {
        std::map<std::string, std::string> files;
        for (auto const & entry : fs::recursive_directory_iterator(path(root)))
            if (entry.is_regular_file())
                files[fs::relative(entry.path(), path(root)).string()] = bytesOf(entry.path().string());
        return files;
    }

    ScratchDirectory scratch_;
};

TEST_F(QvPackage, TreesComeBackAsTheyWere) {
    // So many that several threads share the work, and wait for one another.
    for (int i = 0; i < 700; ++i)
        put("src/d" + std::to_string(i % 5) + "/deeper/f" + std::to_string(i),
            std::string(static_cast<std::size_t>(i % 40 * i * 7), static_cast<char>(i)));
    put("src/\xC3\xA9\xF0\x9F\x98\x80", "name in UTF-8");
    put("src/line\nbreak", "control");
    put("single", "a file");
    fs::last_write_time(path("single"), fs::file_time_type(std::chrono::seconds(-1000000000)));
    auto const expected = tree("src");
    for (std::string const options : {"", "--compress --quiet", "--in-place"}) {
        fs::remove(path("p"));
        expectFine("add " + options + " p src single");
        expectFine("check p");
        expectFine("extract --to out p");
        EXPECT_EQ(tree("out/src"), expected);
        EXPECT_EQ(fs::last_write_time(path("out/single")), fs::last_write_time(path("single")));
        struct stat status;
        ASSERT_EQ(::stat(path("p").c_str(), &status), 0);
        mode_t const mask = ::umask(0);
        ::umask(mask);
        EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
        fs::remove_all(path("out"));
    }
    Outcome const listed = run("list p");
    EXPECT_EQ(listed.out.find("single\nsrc/d0/deeper/f0\n"), 0U) << listed.out;
    EXPECT_NE(listed.out.find("\nsrc/line\\x0Abreak\n"), std::string::npos);
    EXPECT_NE(listed.out.find("\nsrc/\xC3\xA9\xF0\x9F\x98\x80\n"), std::string::npos);
    // A mark of the byte order is part of a name; a package behind a link is changed where it lies.
    put("\xEF\xBB\xBF"
        "twin",
        "1");
    put("twin", "2");
    fs::create_directories(path("place/below"));
    fs::create_directory_symlink(path("place/below"), path("way"));
    expectFine("add way/../q \xEF\xBB\xBFtwin twin");
    expectFine("check place/q");
    EXPECT_EQ(run("list place/q").out, "twin\n\xEF\xBB\xBFtwin\n");
    // Names are relative to where an argument lies.
    fs::remove(path("p"));
    expectFine("add p src/d1/deeper/../deeper/f1 ./src/d2/ .//single");
    EXPECT_EQ(run("list p").out.find("d2/deeper/f102\n"), 0U);
    expectFine("extract --to some p f1");
    EXPECT_EQ(tree("some").size(), 1U);
}

TEST_F(QvPackage, WhatAPackageCannotHoldIsToldAndLeftOut) {
    put("s/good", "good");
    put("s/bad\xFF", "");
    put("s/back\\slash", "");
    put("C:drive", "");
    put("s/con.txt", "");
    fs::create_directory(path("s/empty"));
    ASSERT_EQ(::mkfifo(path("s/fifo").c_str(), 0600), 0);
    fs::create_symlink("nothing", path("s/dangling"));
    fs::create_directory_symlink(".", path("s/cycle"));
    put("other/good", "twice");
    expect("add p s missing C:drive other/good s/good", 1,
           "qvpackage: s/back\\slash: its name would be stored as another one\n"
           "qvpackage: s/bad\\xFF: its name is not UTF-8\n"
           "qvpackage: s/cycle: a link to a directory is not followed\n"
           "qvpackage: s/dangling: a link that leads to nothing\n"
           "qvpackage: s/empty: a package holds no empty directories\n"
           "qvpackage: s/fifo: a package holds no special files\n"
           "qvpackage: missing: there is no such file\n"
           "qvpackage: C:drive: its name would be stored as another one\n"
           "qvpackage: s/good: another file has the same name in the package\n"
           "qvpackage: File is using a windows reserved device name.  Please choose another name: s/con.txt\n");
    EXPECT_EQ(run("list p").out, "good\ns/good\n");
    expect("add p p", 1, "qvpackage: p: the package itself\n");
}

TEST_F(QvPackage, ReplacesDeletesAndCompacts) {
    put("a", std::string(1000, 'a'));
    put("b", std::string(500, 'b'));
    expectFine("add p a b");
    auto const sizeOf = [&](char const * name) { return fs::file_size(path(name)); };
    put("a", "short");
    expectFine("add p a");
    EXPECT_EQ(run("list --long p").out.substr(0, 16), "             5  ");
    expect("delete p a nothing", 1, "qvpackage: Can not delete named entry as it does not exist: nothing\n");
    auto const before = sizeOf("p");
    std::string const info = run("info p").out;
    std::size_t const at = info.find("to save ");
    ASSERT_NE(at, std::string::npos) << info;
    long const toSave = std::stol(info.substr(at + 8));
    EXPECT_EQ(run("compact p no/such/place").status, 2);
    expectFine("compact p q");
    expectFine("compact p");
    EXPECT_EQ(static_cast<long>(before) - toSave, static_cast<long>(sizeOf("q")));
    EXPECT_EQ(bytesOf(path("p")), bytesOf(path("q")));
    expectFine("check q");
}

TEST_F(QvPackage, RefusesWhatWouldDoHarm) {
    put("x", std::string(100000, 'x'));
    expectFine("add --compress p x");
    expect("extract --limit 99999 --to out p", 1, "qvpackage: Error writing file: out/x\n");
    EXPECT_TRUE(tree("out").empty());
    expectFine("extract --limit 100000 --to out p");
    fs::create_directory(path("elsewhere"));
    fs::remove_all(path("out"));
    fs::create_directory(path("out"));
    fs::create_directory_symlink(path("elsewhere"), path("out/d"));
    put("d/x", "through the link");
    expectFine("add p d");
    expect("extract --to out p", 1, "qvpackage: File is using a name which is not allowed: d/x\n");
    EXPECT_TRUE(fs::is_empty(path("elsewhere")) && fs::exists(path("out/x")));
    // A name that ends like a directory is that of a file.
    fs::remove_all(path("out"));
    qvString::IString const source(path("x").c_str(), qvString::UTF8);
    ioPackageFile folders;
    ASSERT_FALSE(folders.open(qvString::IString(path("folders").c_str(), qvString::UTF8)));
    for (char const * const name : {"a/", "a/b"})
        ASSERT_FALSE(folders.addEntry(source, qvString::IString(name, qvString::UTF8), false));
    ASSERT_FALSE(folders.update());
    EXPECT_EQ(run("extract --to out folders").err, "qvpackage: File Exists\n");
    EXPECT_TRUE(tree("out").size() == 1 && fs::is_regular_file(path("out/a")));
    // A damaged entry, and bytes cut off.
    std::string bytes = bytesOf(path("p"));
    std::string damaged = bytes;
    damaged[200] = static_cast<char>(damaged[200] ^ 1);
    put("damaged", damaged);
    expect("check damaged", 1, "qvpackage: Error reading package file entry: x\n");
    // A name that ends early moves the fields behind it.
    std::string moved = bytes;
    moved[moved.rfind("d/x") + 1] = '\0';
    put("moved", moved);
    expect("check moved", 1,
           "qvpackage: Error reading directory: moved\nqvpackage: moved: there is a gap or an overlap\n");
    put("cut", bytes.substr(0, bytes.size() - 20));
    expect("check cut", 1, "qvpackage: Error reading directory: cut\n");
    EXPECT_EQ(run("add cut x").status, 2);
    EXPECT_EQ(bytesOf(path("cut")), bytes.substr(0, bytes.size() - 20));
}

TEST_F(QvPackage, AnswersToItsArguments) {
    put("x", "x");
    expectFine("--help");
    expectFine("--version");
    struct {
        char const * arguments;
        char const * reason;
    } const rows[] = {
        {"", ""},
        {"frobnicate p", ""},
        {"list", "an argument is missing"},
        {"list p q", "there are too many arguments"},
        {"add --long p x", "there is no option --long here"},
        {"extract --to", "--to needs a value"},
        {"extract --limit 12k p", "12k is no number of bytes"},
        {"list missing", "missing: there is no such package"},
        {"delete missing x", "missing: there is no such package"},
        {"check missing", "missing: there is no such package"},
        {"extract missing", "missing: there is no such package"},
        {"compact missing new", "missing: there is no such package"},
        {"add a\\\\b x", "a\\b: a package of this name cannot be changed"},
        {"list x", "The file is not a package file: x"},
        {"list > /dev/full p", ""},
    };
    for (auto const & row : rows) {
        Outcome const outcome = run(row.arguments);
        EXPECT_EQ(outcome.status, 2) << row.arguments;
        EXPECT_NE(outcome.err.find(row.reason), std::string::npos) << row.arguments << outcome.err;
    }
    EXPECT_FALSE(fs::exists(path("missing")) || fs::exists(path("new")));
    EXPECT_TRUE(run("add new missing").status == 1 && !fs::exists(path("new")));
    expectFine("add --help");
    // Behind -- everything is a name.
    put("--x", "x");
    expectFine("add -- p --x");
    EXPECT_EQ(run("list p").out, "--x\n");
}

} // namespace
