#include "Base/DataFiles/ioPackageFile.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioWriteContext.h"
#include "Base/Utility/qvUtilProgress.h"

#include "Support/ErrorMatchers.h"
#include "Support/ScratchDirectory.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <filesystem>
#include <map>
#include <memory>
#include <sys/stat.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using qvString::IString;
using qvTest::bytesOf;
using qvTest::FailsWith;
using qvTest::Succeeds;
using qvTest::wide;
using qvTest::writeBytes;
using qvUtil::Error;

using namespace std::string_literals;

std::string const header = "\x8F"
                           "TrelmarkPortablePackageFile\neliFegakcaPelbatroPkramlerT\n1\n@\n";
constexpr std::int64_t dataOffset = 85;

std::string pointerText(std::int64_t value) {
    std::string text = std::to_string(value);
    text.resize(23, ' ');
    return text + '\n';
}

struct Record {
    std::string name;
    std::int64_t offset;
    std::int64_t size;
    bool compressed = false;
};

class PackageFile : public testing::Test {
protected:
    std::string path(std::string const & name) const { return scratch_.path(name); }
    IString name(std::string const & below) const { return wide(path(below)); }

    // A directory with any records at all.
    std::string directory(std::vector<Record> const & records, bool withEnd = true) const {
        ioSimplePacketRegistry registry(false);
        registry.getRegisterSignal().addCallback([](ioSimplePacketRegistry * to) { to->add("package.entry"); });
        {
            ioBufferedStreamOutput stream;
            stream.openFile(name("directory"));
            std::unique_ptr<ioWriteContext> const context(ioWriteContextAlloc(stream, ioWriteBinary, &registry));
            context->startFile();
            for (Record const & record : records) {
                context->startPacket("package.entry", nullptr);
                context->writeCString(record.name.c_str());
                context->writeInt64(record.offset);
                context->writeInt64(record.size);
                context->writeInt64(1000);
                context->writeBool(record.compressed);
                context->endPacket();
            }
            if (withEnd)
                context->endFile();
            stream.close();
        }
        return bytesOf(path("directory"));
    }
    Error openBytes(std::string const & bytes) const {
        writeBytes(path("p"), bytes);
        return package_->open(name("p"));
    }
    std::string extracted(ioPackageFile const & package, std::string const & entry) const {
        EXPECT_THAT(package.extractEntry(package.getEntry(wide(entry)), name("out")), Succeeds());
        return bytesOf(path("out"));
    }
    Error add(std::string const & entry, std::string const & contents, bool compress = false) const {
        writeBytes(path("source"), contents);
        return package_->addEntry(name("source"), wide(entry), compress);
    }

    qvTest::ScratchDirectory scratch_;
    std::unique_ptr<ioPackageFile> package_ = std::make_unique<ioPackageFile>();
};

TEST_F(PackageFile, BytesOfAnEmptyOne) {
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    EXPECT_EQ(bytesOf(path("p")), header + pointerText(-1));
    EXPECT_FALSE(ioPackageFile::isFilePackageFile(name("p")));
    ASSERT_THAT(package_->update(), Succeeds());
    std::string const bytes = bytesOf(path("p"));
    ASSERT_EQ(bytes.size(), 227U);
    EXPECT_EQ(bytes.substr(0, 85), header + pointerText(85));
    EXPECT_EQ(bytes.substr(112, 64), "   0 packetFile_string\n   1 packetFile_EOF\n   2 package.entry\n@\n"s);
    EXPECT_EQ(bytes.substr(176, 12), "\2\0\0\0\0\0\0\0\x1B\0\0\0"s);
    EXPECT_EQ(bytes.substr(188, 27), ".\0"s + '\x55' + std::string(7, '\0') + std::string(16, '\xFF') + '\0');
    EXPECT_EQ(bytes.substr(215), "\1\0\0\0\0\0\0\0\0\0\0\0"s);
    EXPECT_TRUE(ioPackageFile::isFilePackageFile(name("p")));
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    EXPECT_EQ(package_->size(), 0);
    ASSERT_NE(package_->getEntry(0), nullptr);
    EXPECT_EQ(package_->getEntry(0)->getName(), IString("."));
    EXPECT_EQ(package_->getEntry(0)->getOffset(), 85);
    EXPECT_TRUE(package_->getEntry(1) == nullptr && package_->getEntry(-1) == nullptr);
    // Nothing has changed, so nothing is written.
    fs::last_write_time(path("p"), fs::file_time_type());
    EXPECT_THAT(package_->update(), Succeeds());
    EXPECT_EQ(fs::last_write_time(path("p")), fs::file_time_type());
    // The other mark byte, and more in front of the header's end.
    std::string other =
        std::string(".") + header.substr(1, 58) + "more\n@\n" + pointerText(90) + directory({{".", 90, -1}});
    EXPECT_THAT(openBytes(other), Succeeds());
    EXPECT_THAT(add("a", "abc"), Succeeds());
    EXPECT_EQ(package_->getEntry(wide("a"))->getOffset(), 90);
}

TEST_F(PackageFile, EntriesAgainstAModel) {
    qvTest::SeededRandom random;
    std::map<std::string, std::string> model;
    std::map<std::string, std::string> saved;
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    auto const check = [&](std::map<std::string, std::string> const & expected) {
        ASSERT_EQ(package_->validate(), nullptr);
        ASSERT_EQ(package_->size(), static_cast<int>(expected.size()));
        auto at = expected.begin();
        for (auto const & [entry, index] : package_->getDirectory()) {
            ASSERT_EQ(entry, wide(at->first));
            ASSERT_EQ(package_->getEntry(index), package_->getEntry(entry));
            ASSERT_EQ(extracted(*package_, at->first), at->second);
            ++at;
        }
    };
    for (int step = 0; step < 600; ++step) {
        std::string const entry =
            std::string("d") + std::to_string(random.below(3)) + "/f" + std::to_string(random.below(6));
        int const action = random.below(20);
        if (action < 10) {
            std::string contents(static_cast<std::size_t>(random.below(300)), 'x');
            if (random.oneIn(8))
                contents.resize(static_cast<std::size_t>(random.below(600000)), 'y');
            for (std::size_t i = 0; i < contents.size(); i += 7)
                contents[i] = static_cast<char>(random.bits());
            ASSERT_THAT(add(entry, contents, random.oneIn(2)), Succeeds());
            model[entry] = contents;
        } else if (action < 16) {
            bool const isThere = model.erase(entry) != 0;
            Error const error = package_->deleteEntry(wide(entry));
            ASSERT_EQ(error.num(), isThere ? 0 : 13);
        } else if (action < 18) {
            ASSERT_THAT(package_->update(), Succeeds());
            package_ = std::make_unique<ioPackageFile>();
            ASSERT_THAT(package_->open(name("p")), Succeeds());
            check(model);
        } else if (action < 19) {
            std::int64_t stored = 0;
            for (auto const & [entryName, index] : package_->getDirectory())
                stored += package_->getEntry(index)->getSize();
            ASSERT_THAT(package_->write(name("q")), Succeeds());
            ASSERT_EQ(package_->getEntry(package_->size())->getOffset(), dataOffset + stored); // no free records
            check(model);
            fs::rename(path("q"), path("p"));
            ASSERT_THAT(package_->open(name("p")), Succeeds());
        } else
            check(model);
    }
    check(model);
}

TEST_F(PackageFile, HolesAreUsedAgainAndJoined) {
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    for (char const * const entry : {"a", "b", "c"})
        ASSERT_THAT(add(entry, std::string(10, *entry)), Succeeds());
    ASSERT_THAT(package_->deleteEntry(wide("b")), Succeeds());
    ASSERT_THAT(package_->update(), Succeeds());
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    EXPECT_EQ(package_->getEntry(1), nullptr);
    ASSERT_THAT(add("d", "dddd"), Succeeds());
    EXPECT_EQ(package_->getEntry(wide("d"))->getOffset(), dataOffset + 10);
    EXPECT_EQ(package_->getDirectory().at(wide("c")), 3);
    ASSERT_THAT(package_->deleteEntry(wide("d")), Succeeds());
    ASSERT_THAT(package_->deleteEntry(wide("a")), Succeeds());
    EXPECT_EQ(package_->getDirectory().at(wide("c")), 1);
    ASSERT_THAT(add("e", std::string(20, 'e')), Succeeds());
    EXPECT_EQ(package_->getEntry(wide("e"))->getOffset(), dataOffset);
    ASSERT_THAT(add("e", std::string(20, 'E')), Succeeds()); // its own place again
    EXPECT_EQ(package_->getEntry(wide("e"))->getOffset(), dataOffset);
    EXPECT_EQ(extracted(*package_, "c"), std::string(10, 'c'));
    EXPECT_EQ(package_->validate(), nullptr);
}

TEST_F(PackageFile, CleansNamesUp) {
    struct {
        char const * name;
        char const * clean;
    } const rows[] = {
        {"C:\\dir\\file", "dir/file"},
        {"./a", "a"},
        {"././../../a", "a"},
        {"/a", "a"},
        {"///./../a", "a"},
        {"a/../b", "a/../b"},
        {"a/./b", "a/./b"},
        {"./", "./"},
        {"../", "../"},
        {"..", ".."},
        {".", "."},
        {"/", ""},
        {"C:", ""},
        {"/C:/x", "x"},
        {"", ""},
        {"C:.\\x", "x"},
        {".hidden", ".hidden"},
    };
    for (auto const & row : rows)
        EXPECT_EQ(package_->cleanupName(IString(row.name)), IString(row.clean)) << row.name;
}

TEST_F(PackageFile, FailuresHaveTheirNumbers) {
    ioPackageFileEntry const * const none = nullptr;
    EXPECT_THAT(package_->update(), FailsWith(3, "The package file has not been opened yet."));
    EXPECT_THAT(add("a", ""), FailsWith(3, "The package file has not been opened yet."));
    EXPECT_THAT(package_->deleteEntry(wide("a")), FailsWith(3, "The package file has not been opened yet."));
    EXPECT_THAT(package_->write(name("q")), FailsWith(3, "The package file has not been opened yet."));
    EXPECT_THAT(package_->open(name("no/p")), FailsWith(2, "Can not create file: " + path("no/p")));
    EXPECT_TRUE(package_->getPackageFileName().isEmpty());
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    struct {
        char const * entry;
        int number;
        std::string text;
    } const names[] = {
        {"x/con", 11, "File is using a windows reserved device name.  Please choose another name: x/con"},
        {"/", 11, "The name can not be empty."},
        {"./", 12, "File is using a name which is not allowed: ./"},
        {"a/.", 12, "File is using a name which is not allowed: a/."},
        {"..", 12, "File is using a name which is not allowed: .."},
    };
    for (auto const & row : names)
        EXPECT_THAT(add(row.entry, "x"), FailsWith(row.number, row.text)) << row.entry;
    EXPECT_THAT(package_->addEntry(name("missing"), wide("a"), false),
                FailsWith(6, "File does not exist: " + path("missing") + "\n"));
    EXPECT_THAT(package_->addEntry(name("p"), wide("a"), false),
                FailsWith(15, "The source entry can not be in the package."));
    EXPECT_THAT(package_->addEntry(none, wide("a")), FailsWith(7, "The given package file entry is NULL."));
    EXPECT_THAT(package_->deleteEntry(wide("a")), FailsWith(13, "Can not delete named entry as it does not exist: a"));
    ASSERT_THAT(add("a", std::string(5000, 'a'), true), Succeeds());
    EXPECT_TRUE(package_->getEntry(wide("a"))->getCompressed());
    EXPECT_THAT(package_->addEntry(package_->getEntry(wide("a")), wide("b")),
                FailsWith(15, "The source entry can not be in the package."));
    ASSERT_THAT(package_->update(), Succeeds());
    ioPackageFile other;
    ASSERT_THAT(other.open(name("other")), Succeeds());
    EXPECT_THAT(other.addEntry(package_->getEntry(wide("a")), wide("/copy")), Succeeds());
    EXPECT_THAT(other.addEntry(package_->getEntry(wide("a")), wide("copy")),
                FailsWith(14, "The entry is already present in the package: copy"));
    EXPECT_EQ(extracted(other, "copy"), std::string(5000, 'a'));
    // Its own file, under whatever name.
    fs::create_hard_link(path("p"), path("again"));
    for (char const * const own : {"p", "again", "./p"})
        EXPECT_THAT(package_->write(name(own)), FailsWith(4, "The pacakge is not writable."));
    // Also when that was replaced, since it is read by its name.
    fs::copy_file(path("p"), path("newer"));
    fs::rename(path("newer"), path("p"));
    EXPECT_THAT(package_->write(name("p")), FailsWith(4, "The pacakge is not writable."));
    EXPECT_THAT(package_->extractEntry(package_->getEntry(wide("a")), name("p")),
                FailsWith(2, "Can not create file: " + path("p")));

    EXPECT_THAT(package_->extractEntry(none, name("x")), Succeeds());
    writeBytes(path("file"), "");
    ioPackageFileEntry const * const entry = package_->getEntry(wide("a"));
    EXPECT_THAT(package_->extractEntry(entry, name("file/x")), FailsWith(5, "File Exists"));
    fs::create_directory(path("dir"));
    EXPECT_THAT(package_->extractEntry(entry, name("dir")), FailsWith(2, "Can not create file: " + path("dir")));
    EXPECT_THAT(package_->extractEntry(entry, name("limited"), 4999),
                FailsWith(10, "Error writing file: " + path("limited")));
    EXPECT_FALSE(fs::exists(path("limited")));
    EXPECT_THAT(package_->extractEntry(entry, wide("/dev/full")), FailsWith(10, "Error writing file: /dev/full"));
    EXPECT_THAT(package_->extractEntry(entry, name("limited"), 5000), Succeeds());

    // A damaged entry is found, and the target stays as it was.
    std::string bytes = bytesOf(path("p"));
    bytes[dataOffset + 40] = static_cast<char>(bytes[dataOffset + 40] ^ 4);
    ASSERT_THAT(openBytes(bytes), Succeeds());
    writeBytes(path("kept"), "kept");
    EXPECT_THAT(package_->extractEntry(package_->getEntry(wide("a")), name("kept")),
                FailsWith(9, "Error reading package file entry: a"));
    EXPECT_EQ(bytesOf(path("kept")), "kept");
    fs::remove(path("p"));
    EXPECT_THAT(package_->extractEntry(package_->getEntry(wide("a")), name("kept")),
                FailsWith(7, "Could not read package file entry: a\n"));
}

TEST_F(PackageFile, StoresPlainWhatDoesNotShrink) {
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    for (std::string const contents : {"", "abc"}) {
        ASSERT_THAT(add("a", contents, true), Succeeds());
        EXPECT_FALSE(package_->getEntry(wide("a"))->getCompressed());
        EXPECT_EQ(package_->getEntry(wide("a"))->getSize(), static_cast<std::int64_t>(contents.size()));
        EXPECT_EQ(extracted(*package_, "a"), contents);
    }
    struct stat status;
    ASSERT_EQ(::stat(path("source").c_str(), &status), 0);
    EXPECT_EQ(package_->getEntry(wide("a"))->getTimeStamp(), status.st_mtime);
    ASSERT_EQ(::stat(path("out").c_str(), &status), 0);
    mode_t const mask = ::umask(0);
    ::umask(mask);
    EXPECT_EQ(status.st_mode & 0777U, 0666U & ~mask);
}

TEST_F(PackageFile, NamesComeBackAsTheyWere) {
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    writeBytes(path("source"), "x");
    // A byte order mark is part of a name, and half of a pair has no form on disk.
    IString const sound[] = {IString(L"a"),
                             IString(L"\xFEFF"
                                     L"a"),
                             IString(L"\xFEFF"), IString(L"\xD83D\xDE00")};
    IString const halves[] = {IString(L"a\xDC80"), IString(L"\xD83D"), IString(L"\xDE00\xD83D"),
                              IString(L"\xD83D\xD83D\xDE00")};
    for (IString const & each : sound)
        EXPECT_THAT(package_->addEntry(name("source"), each, false), Succeeds());
    for (IString const & each : halves)
        EXPECT_EQ(package_->addEntry(name("source"), each, false).num(), 12);
    ASSERT_THAT(package_->update(), Succeeds());
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    EXPECT_EQ(package_->size(), 4);
    for (IString const & each : sound)
        EXPECT_NE(package_->getEntry(each), nullptr) << each.asUTF8();
}

TEST_F(PackageFile, TakesFilesThatWereMadeReady) {
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    ioPackageFileSource source;
    EXPECT_THAT(package_->addEntry(source, wide("a")), FailsWith(7, "Could not read file: \n"));
    EXPECT_THAT(source.prepare(name("missing"), true), FailsWith(6, "File does not exist: " + path("missing") + "\n"));
    double furthest = 0;
    qvUtil::Progress progress;
    progress.getSigUpdate().addCallback([&](qvUtil::Progress & at) { furthest = at.get(); });
    // One is packed in memory, one in a temporary file, one is not worth it.
    for (std::size_t const size : {std::size_t{5000}, std::size_t{3} << 20, std::size_t{1}}) {
        std::string const contents(size, 's');
        writeBytes(path("source"), contents);
        ASSERT_THAT(source.prepare(name("source"), true, &progress), Succeeds());
        EXPECT_EQ(source.getCompressed(), size > 1);
        EXPECT_TRUE(size == 1 ? source.getSize() == 1 : source.getSize() < static_cast<std::int64_t>(size) / 4);
        EXPECT_EQ(furthest, 1.0);
        for (char const * entry : {"a", "b"}) {
            ASSERT_THAT(package_->addEntry(source, wide(entry)), Succeeds());
            EXPECT_EQ(package_->getEntry(wide(entry))->getTimeStamp(), source.getTimeStamp());
            EXPECT_TRUE(extracted(*package_, entry) == contents);
        }
    }
    ASSERT_THAT(source.prepare(name("p"), false), Succeeds());
    EXPECT_THAT(package_->addEntry(source, wide("c")), FailsWith(15, "The source entry can not be in the package."));
    EXPECT_THAT(package_->addEntry(name("p"), wide("c"), true),
                FailsWith(15, "The source entry can not be in the package."));
}

TEST_F(PackageFile, DirectoriesThatLieAreRefused) {
    constexpr std::int64_t end = dataOffset + 20;
    constexpr std::int64_t huge = INT64_MAX;
    char const * const noEnd = "the end marker is missing or elsewhere";
    char const * const gap = "there is a gap or an overlap";
    char const * const tooLarge = "a record reaches behind the data";
    char const * const twice = "two records have one name";
    struct {
        std::vector<Record> records;
        std::string fault;
    } const lies[] = {
        {{}, noEnd},
        {{{"a", 85, 20}}, noEnd},
        {{{"a", 85, 20}, {".", end, -1}, {".", end, -1}}, "there is a second end marker"},
        {{{".", end, -1}, {"a", 85, 20}}, noEnd},
        {{{"a", 85, 20}, {".", end + 1, -1}}, noEnd},
        {{{"a", 85, 19}, {".", end, -1}}, "there is a gap in front of the end marker"},
        {{{"a", 86, 19}, {".", end, -1}}, gap},
        {{{"a", 85, 10}, {"b", 96, 9}, {".", end, -1}}, gap},
        {{{"a", 85, 12}, {"b", 95, 10}, {".", end, -1}}, gap},
        {{{"b", 95, 10}, {"a", 85, 10}, {".", end, -1}}, gap},
        {{{"a", 85, 21}, {".", end, -1}}, tooLarge},
        {{{"a", 85, huge}, {".", end, -1}}, tooLarge},
        {{{"a", 85, huge}, {"b", 84, -huge}, {".", end, -1}}, tooLarge},
        {{{"a", 85, -5}, {"b", 80, 25}, {".", end, -1}}, tooLarge},
        {{{"a", -85, 190}, {".", end, -1}}, gap},
        {{{"a", 85, 10}, {"a", 95, 10}, {".", end, -1}}, twice},
        {{{"\xFF", 85, 10}, {"\xFE", 95, 10}, {".", end, -1}}, twice}, // once they are text
    };
    std::string const start = header + pointerText(end) + std::string(20, 'd');
    for (auto const & lie : lies) {
        EXPECT_THAT(openBytes(start + directory(lie.records)), FailsWith(17, "Error reading directory: " + path("p")));
        EXPECT_EQ(package_->getDirectoryFault(), lie.fault);
        EXPECT_TRUE(package_->getPackageFileName().isEmpty() && package_->size() == 0);
    }
    // A record that claims to define an object is no record.
    std::string claims = directory({{"a", 85, 20}, {".", end, -1}});
    std::size_t const flagAt = claims.find("@\n", claims.find("package.entry")) + 2 + 4;
    claims.replace(flagAt, 4, "\1\0\0\0"s);
    claims.insert(flagAt + 8, "\1\0\0\0"s);
    claims[flagAt + 4] = static_cast<char>(claims[flagAt + 4] + 4);
    EXPECT_THAT(openBytes(start + claims), FailsWith(17, "Error reading directory: " + path("p")));
    std::vector<Record> const sound = {{"a", 85, 5}, {"", 90, 5}, {"", 95, 10}, {".", end, -1}};
    EXPECT_THAT(openBytes(start + directory(sound, false)), FailsWith(17, "Error reading directory: " + path("p")));
    ASSERT_THAT(openBytes(start + directory(sound)), Succeeds());
    EXPECT_EQ(package_->validate(), nullptr); // the two free ones are one
    EXPECT_EQ(package_->getEntry(2)->getName(), IString("."));

    // The pointer: in the header, in its own field, at the end, behind it, no number.
    std::string const whole = start + directory(sound);
    for (std::string const pointer : {"61", "0", "-1", "99999999999999999999999", "x", "", "1000"})
        EXPECT_THAT(openBytes(header + (pointer + std::string(24, ' ')).substr(0, 23) + "\n" + whole.substr(85)),
                    FailsWith(17, "The file is not a package file: " + path("p")))
            << pointer;
    EXPECT_THAT(openBytes(header + pointerText(85) + ""), FailsWith(17, "Error reading directory: " + path("p")));
    EXPECT_THAT(openBytes(std::string("\x8E") + whole.substr(1)),
                FailsWith(17, "The file is not a package file: " + path("p")));
    EXPECT_THAT(package_->open(name("")), FailsWith(17, "The file is not a package file: " + path("")));
    // Cut anywhere, it is no package, or one whose directory cannot be read.
    for (std::size_t length = 0; length < whole.size(); ++length)
        ASSERT_EQ(openBytes(whole.substr(0, length)).num(), 17) << length;
    ASSERT_THAT(openBytes(whole + "what an older directory left"), Succeeds());
}

TEST_F(PackageFile, ExpandsNowhereElse) {
    struct {
        char const * name;
        bool isRefused;
    } const rows[] = {
        {"a/../../x", true}, {"../x", true},     {"/etc/x", true},   {"\\x", true},          {"C:x", true},
        {"link/x", true},    {"a/..", true},     {"gone/x", true},   {"a\\..\\..\\x", true}, {"a/../z", false},
        {"plain", false},    {"deep/er", false}, {"inner/x", false}, {"..x", false},
    };
    fs::create_directories(path("to/real"));
    fs::create_directory(path("outside"));
    fs::create_directory_symlink(path("outside"), path("to/link"));
    fs::create_directory_symlink(path("outside/gone"), path("to/gone"));
    fs::create_directory_symlink("real", path("to/inner")); // stays below
    std::vector<Record> records;
    std::string data;
    for (auto const & row : rows) {
        records.push_back({row.name, dataOffset + static_cast<std::int64_t>(data.size()), 1});
        data += 'x';
    }
    std::int64_t const end = dataOffset + static_cast<std::int64_t>(data.size());
    records.push_back({".", end, -1});
    ASSERT_THAT(openBytes(header + pointerText(end) + data + directory(records)), Succeeds());
    EXPECT_THAT(package_->expand(name("to")), FailsWith(12, "File is using a name which is not allowed: ../x"));
    for (auto const & row : rows) {
        IString file;
        Error const error = ioPackageFile::placeBelow(name("to"), IString(row.name), file);
        EXPECT_EQ(error.num(), row.isRefused ? 12 : 0) << row.name;
        EXPECT_EQ(!row.isRefused, fs::exists(file.isEmpty() ? "/missing" : file.asUTF8())) << row.name;
    }
    EXPECT_TRUE(fs::is_empty(path("outside")) && !fs::exists(path("x")));
    EXPECT_TRUE(fs::exists(path("to/real/x")) && fs::exists(path("to/z")));
    // Directories that joining makes shorter: a link below them is found all the same, and names stay below.
    fs::create_directory_symlink(path("to/real"), path("into"));
    fs::create_directory(path("c:"));
    for (std::string const & root : {path("to/real/.."), path("into/.."), path("to/real/../../to")}) {
        IString file;
        EXPECT_EQ(ioPackageFile::placeBelow(wide(root), wide("link/x"), file).num(), 12) << root;
        EXPECT_THAT(ioPackageFile::placeBelow(wide(root), wide("plain"), file), Succeeds());
        EXPECT_TRUE(fs::equivalent(file.asUTF8(), path("to/plain"))) << root;
    }
    fs::path const before = fs::current_path();
    fs::current_path(path("."));
    IString inDrive;
    EXPECT_THAT(ioPackageFile::placeBelow(wide("c:"), wide("d/x"), inDrive), Succeeds());
    std::string endless = "a";
    for (int i = 0; i < 500000; ++i)
        endless += "/a";
    for (std::string const & refused : {std::string("a/../c:"), std::string("a/../c:/x"), endless})
        EXPECT_EQ(ioPackageFile::placeBelow(IString(), wide(refused), inDrive).num(), 12);
    fs::current_path(before);
    EXPECT_EQ(fs::path(inDrive.asUTF8()), fs::canonical(path("c:")) / "d/x");
    EXPECT_THAT(package_->expand(name("fresh/deep")), testing::_);
    EXPECT_EQ(bytesOf(path("fresh/deep/deep/er")), "x");
}

TEST_F(PackageFile, EntriesComeOutInsideTheReportOfAnother) {
    std::string large;
    for (int i = 0; large.size() < 900000; ++i)
        large += std::to_string(i);
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    ASSERT_THAT(add("large", large), Succeeds());
    ASSERT_THAT(add("small", "contents"), Succeeds());
    qvUtil::Progress progress;
    int reports = 0;
    auto const extractSmall = [&](qvUtil::Progress &) {
        ++reports;
        EXPECT_EQ(extracted(*package_, "small"), "contents");
    };
    progress.getSigUpdate().addCallback(extractSmall);
    EXPECT_THAT(package_->extractEntry(package_->getEntry(wide("large")), name("big"), -1, &progress), Succeeds());
    EXPECT_TRUE(bytesOf(path("big")) == large);
    EXPECT_GT(reports, 2);
    EXPECT_EQ(progress.get(), 1);
    EXPECT_THAT(package_->extractEntry(package_->getEntry(2), name("end")),
                FailsWith(7, "Could not read package file entry: .\n"));
}

TEST_F(PackageFile, BeyondFourGigabytes) {
    constexpr std::int64_t big = std::int64_t{5} << 30;
    writeBytes(path("p"), header + pointerText(dataOffset + big));
    fs::resize_file(path("p"), static_cast<std::uintmax_t>(dataOffset + big));
    std::ofstream(path("p"), std::ios::app | std::ios::binary)
        << directory({{"big", dataOffset, big}, {".", dataOffset + big, -1}});
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    ASSERT_THAT(add("small", "contents"), Succeeds());
    ASSERT_THAT(package_->update(), Succeeds());
    ASSERT_THAT(package_->open(name("p")), Succeeds());
    EXPECT_EQ(package_->getEntry(wide("small"))->getOffset(), dataOffset + big);
    EXPECT_EQ(extracted(*package_, "small"), "contents");
    ASSERT_THAT(package_->deleteEntry(wide("big")), Succeeds());
    ASSERT_THAT(add("first", "1"), Succeeds());
    EXPECT_EQ(package_->getEntry(wide("first"))->getOffset(), dataOffset);
    EXPECT_EQ(package_->validate(), nullptr);
}

} // namespace
