#include "Base/OS/qvOSFilename.h"

#include "Base/OS/qvOSFileOperations.h"

#include "Support/ScratchDirectory.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <filesystem>

namespace qvOS {
namespace {

using qvString::CString;
using qvString::IString;

struct Row {
    char const * input;
    char const * name;
    char const * prefix;
    char const * dirname;
    char const * basename;
    char const * baseTrunk;
    char const * baseSuffix;
};

void expectRow(Row const & row, wchar_t separator) {
    SCOPED_TRACE(row.input);
    Filename const file(IString(row.input), separator);
    EXPECT_EQ(file.name(), IString(row.name));
    EXPECT_EQ(file.prefix(), IString(row.prefix));
    EXPECT_EQ(file.dirname(), IString(row.dirname));
    EXPECT_EQ(file.basename(), IString(row.basename));
    EXPECT_EQ(file.baseTrunk(), IString(row.baseTrunk));
    EXPECT_EQ(file.baseSuffix(), IString(row.baseSuffix));
    qv::vector<IString> const parts = file.components();
    ASSERT_EQ(parts.size(), 5);
    EXPECT_EQ(parts[1], file.dirname());
    EXPECT_EQ(parts[4], file.baseSuffix());
}

TEST(Filename, NormalFormAndPartsWithBackslashes) {
    Row const rows[] = {
        {"C:/dir//sub/../file.txt", "C:\\dir\\file.txt", "C:", "C:\\dir", "file.txt", "file", "txt"},
        {"a/b/../../c", "c", "", "", "c", "c", ""},
        {"./../x", "..\\x", "", "..", "x", "x", ""},
        {"../../a/../b", "..\\..\\a\\..\\b", "", "..\\..\\a\\..", "b", "b", ""},
        {"\\..\\x", "x", "", "", "x", "x", ""},
        {"a\\b\\..", "a\\b\\..", "", "a\\b", "..", ".", ""},
        {"C:\\", "C:\\", "C:", "C:\\", "", "", ""},
        {"C:", "C:", "C:", "C:", "", "", ""},
        {"C:file.txt", "C:file.txt", "C:", "C:", "file.txt", "file", "txt"},
        {"\\\\srv", "\\\\srv", "\\\\srv", "\\\\srv", "", "", ""},
        {"\\\\srv\\", "\\\\srv\\", "\\\\srv\\", "\\\\srv\\", "", "", ""},
        {"\\\\srv\\share\\", "\\\\srv\\share", "\\\\srv\\share", "\\\\srv\\share", "", "", ""},
        {"\\\\\\srv\\share\\d\\f.tar.gz", "\\\\srv\\share\\d\\f.tar.gz", "\\\\srv\\share", "\\\\srv\\share\\d",
         "f.tar.gz", "f.tar", "gz"},
        {"\\\\srv\\share\\f", "\\\\srv\\share\\f", "\\\\srv\\share", "\\\\srv\\share", "f", "f", ""},
        {"\\foo", "\\foo", "", "\\", "foo", "foo", ""},
        {"foo.", "foo.", "", "", "foo.", "foo", ""},
        {".bashrc", ".bashrc", "", "", ".bashrc", "", "bashrc"},
        {".", ".", "", "", ".", "", ""},
        {"..", "..", "", "", "..", ".", ""},
        {"", "", "", "", "", "", ""},
        {"\\", "\\", "", "\\", "", "", ""},
        {"dir\\", "dir", "", "", "dir", "dir", ""},
    };
    for (Row const & row : rows)
        expectRow(row, L'\\');
}

TEST(Filename, NormalFormAndPartsWithSlashes) {
    Row const rows[] = {
        {"/usr//lib\\x/../y.tar.gz", "/usr/lib/y.tar.gz", "", "/usr/lib", "y.tar.gz", "y.tar", "gz"},
        {"//usr/", "//usr/", "", "//usr", "", "", ""},
        {"///usr//a//", "//usr/a", "", "//usr", "a", "a", ""},
        {"/", "/", "", "/", "", "", ""},
        {"/foo", "/foo", "", "/", "foo", "foo", ""},
        {"C:/x", "C:/x", "C:", "C:/", "x", "x", ""},
        {"C:/", "C:/", "C:", "C:/", "", "", ""},
    };
    EXPECT_TRUE(Filename::separator() == L'/' && Filename::pathSeparator() == ':' && Filename::maxLength() == 4096);
    for (Row const & row : rows)
        expectRow(row, Filename::separator());
    // With any other separator neither duplicates nor ".." are found, as those are written with a '/'.
    EXPECT_EQ(Filename("a/b//../c/", ':').name(), IString("a:b::..:c"));
}

TEST(Filename, TellsAbsolutePaths) {
    struct {
        char const * path;
        wchar_t separator;
        bool isAbsolute;
    } const rows[] = {
        {"\\\\srv", L'\\', true}, {"C:\\", L'\\', true},  {"C:\\x", L'\\', true}, {"\\foo", L'\\', false},
        {"C:foo", L'\\', false},  {"/usr", L'\\', false}, {"/usr", L'/', true},   {"usr/x", L'/', false},
        {"", L'/', false},        {"C:/x", L'/', false},  {"\\foo", L'/', true},
    };
    for (auto const & row : rows)
        EXPECT_EQ(Filename(IString(row.path), row.separator).isAbsolute(), row.isAbsolute) << row.path;
}

TEST(Filename, JoinsWithoutExchangingSeparators) {
    auto const join = [](char const * a, char const * b) { return Filename::join(IString(a), IString(b)); };
    EXPECT_EQ(join("", ""), IString(""));
    EXPECT_EQ(join("a", ""), IString("a"));
    EXPECT_EQ(join("", "b"), IString("b"));
    EXPECT_EQ(join("C:", "x"), IString("C:x"));
    EXPECT_EQ(join("a\\b", "c\\d"), IString("a\\b/c\\d"));
    EXPECT_EQ(join("a/", "/b/"), IString("a/b"));
    EXPECT_EQ(join("a/b", "../c"), IString("a/c"));
    EXPECT_EQ(Filename::join(IString("a"), IString("b"), IString("c")), IString("a/b/c"));
    EXPECT_EQ(Filename::join(IString("a"), IString("b"), IString("../c"), IString("d")), IString("a/c/d"));
    EXPECT_EQ(Filename(Filename(IString("x")), Filename(IString("y"))).name(), IString("x/y"));

    char text[64];
    std::string all;
    for (auto const part : {qvOS_FilenamePrefix, qvOS_FilenameDirname, qvOS_FilenameBasename, qvOS_FilenameBaseTrunk,
                            qvOS_FilenameBaseSuffix}) {
        part("C:x//y/b.c", text);
        all.append(text).append(" ");
    }
    EXPECT_EQ(all, "C: C:x/y b.c b c ");
    qvOS_FilenameJoin("a", "b.c", text);
    EXPECT_STREQ(text, "a/b.c");
}

// Assignment and copies: where the separator comes from, and that the parts follow the path.
TEST(Filename, IsAValueWithASeparatorOfItsOwn) {
    Filename const custom("a/b", '\\');
    Filename const copy(custom);
    Filename assigned(IString("c"));
    EXPECT_EQ(assigned.basename(), IString("c"));
    assigned = custom;
    EXPECT_EQ(copy.name(), IString("a\\b"));
    EXPECT_EQ(copy.basename(), IString("a\\b"));  // the default separator
    EXPECT_EQ(assigned.basename(), IString("b")); // the source's
    assigned = IString("x/y");
    EXPECT_EQ(assigned.name(), IString("x\\y"));
    EXPECT_EQ(assigned.dirname(), IString("x"));
    assigned = *&assigned;
    EXPECT_EQ(assigned.basename(), IString("y"));
    qv::vector<Filename> files;
    for (int i = 0; i < 40; ++i) {
        files.append(Filename(IString("d/f.x")));
        EXPECT_EQ(files.back().baseSuffix(), IString("x"));
    }
    EXPECT_EQ(files.front().baseTrunk(), IString("f"));
}

// The normal form by the letter of its rules, one character after the other.
class SlowNormalForm {
public:
    SlowNormalForm(std::u16string path, char16_t separator)
        : s_(std::move(path)), sep_(separator), slash_(separator == u'\\' ? u'\\' : u'/') {}

    std::u16string run() {
        for (char16_t & c : s_)
            if (c == (sep_ == u'/' ? u'\\' : u'/'))
                c = sep_;
        removeDuplicates();
        removeTrailing();
        while (foldOnce()) {
        }
        return s_;
    }

private:
    void removeDuplicates() {
        std::u16string const pair{slash_, slash_};
        for (std::size_t at = s_.size() > 1 ? 1 : 0; (at = s_.find(pair, at)) != s_.npos;)
            s_.erase(at, 1);
    }
    void removeTrailing() {
        if (s_.size() == 3 && s_[1] == u':' && s_[2] == sep_)
            return;
        if (s_.size() > 2 && s_[0] == sep_ && s_[1] == sep_ && s_.find(sep_, 2) != s_.npos &&
            s_.find(sep_, 2) == s_.rfind(sep_))
            return;
        while (s_.size() > 1 && s_.back() == sep_)
            s_.pop_back();
    }
    bool foldOnce() {
        std::u16string const pattern{slash_, u'.', u'.', slash_};
        std::size_t const at = s_.find(pattern);
        if (at == s_.npos)
            return false;
        std::u16string const head = s_.substr(0, at);
        std::u16string const tail = s_.substr(at + 4);
        if (head.find(sep_) != head.npos)
            s_ = head.substr(0, head.rfind(sep_) + 1) + tail;
        else if (head == u"..")
            return false;
        else if (head == u".")
            s_ = std::u16string(u"..") + sep_ + tail;
        else
            s_ = tail;
        return true;
    }

    std::u16string s_;
    char16_t sep_;
    char16_t slash_;
};

TEST(Filename, NormalFormOfRandomPathsFollowsTheRules) {
    qvTest::SeededRandom random;
    constexpr char16_t letters[] = {u'/', u'/', u'/', u'\\', u'.', u'.', u'.', u'a', u':'};
    for (int round = 0; round < 20000; ++round) {
        std::u16string path;
        for (int i = random.below(14); i > 0; --i)
            path += letters[random.below(9)];
        for (char16_t const separator : {u'/', u'\\', u':'}) {
            Filename const file(IString(path), static_cast<wchar_t>(separator));
            ASSERT_EQ(file.name(), IString(SlowNormalForm(path, separator).run())) << IString(path).asUTF8();
        }
    }
    // Work in proportion to the length.
    std::u16string hostile;
    for (int i = 0; i < 300000; ++i)
        hostile += u"a/../";
    EXPECT_EQ(Filename(IString(hostile + u"b")).name(), IString("b"));
    EXPECT_EQ(Filename(IString(std::u16string(1000000, u'/'))).name(), IString("/"));
    // A zero stays in the name and makes it one that leads nowhere.
    EXPECT_EQ(Filename(IString(L"/tmp\0x", 6)).name().length(), 6U);
    EXPECT_FALSE(doesFileExist(Filename(IString(L"/tmp\0x", 6))));
}

TEST(Filename, ReservedDeviceNames) {
    for (char const * const name : {"con", "PRN", "Aux.txt", "d/nul", "com1", "LPT9.x", "x/COM5"})
        EXPECT_TRUE(isWindowsReservedDeviceName(Filename(IString(name)))) << name;
    for (char const * const name : {"aux.tar.gz", "com", "com0", "lpt10", "conx", "", "con/x", "LPTA", "COM"})
        EXPECT_FALSE(isWindowsReservedDeviceName(Filename(IString(name)))) << name;
}

TEST(Filename, WorksWithTheCurrentDirectory) {
    qvTest::ScratchDirectory const scratch;
    std::filesystem::path const before = std::filesystem::current_path();
    Filename const made(qvTest::wide(scratch.path("made")));
    EXPECT_TRUE(made.makeDir());
    EXPECT_FALSE(made.makeDir());
    EXPECT_FALSE(Filename(qvTest::wide(scratch.path("a/b"))).makeDir());
    EXPECT_TRUE(Filename(made).setCwd());
    EXPECT_FALSE(Filename(qvTest::wide(scratch.path("missing"))).setCwd());
    Filename current("x", '\\');
    current.getCwd();
    EXPECT_EQ(current.name(), qvTest::wide(std::filesystem::canonical(scratch.path("made")).string()));
    EXPECT_TRUE(qvOS_FilenameMakeDir("below//"));
    EXPECT_TRUE(std::filesystem::is_directory(scratch.path("made/below")));
    std::filesystem::current_path(before);
}

} // namespace
} // namespace qvOS
