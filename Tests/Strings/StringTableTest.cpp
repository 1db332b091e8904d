// Keys, tables and catalogs of texts.

#include "Base/OS/qvOSFilename.h"
#include "Base/Strings/Internal/StringTableBody.h"
#include "Base/Strings/qvStringCharacters.h"
#include "Base/Strings/qvStringTableManager.h"
#include "Base/Strings/qvStringTableStringTable.h"
#include "Base/Utility/qvUtilSplit.h"

#include "Support/CountingNew.h"
#include "Support/ErrorMatchers.h"
#include "Support/FailingSystem.h"
#include "Support/ScopedLocale.h"
#include "Support/ScratchDirectory.h"
#include "Support/SeededRandom.h"
#include "Support/StringPrinters.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <new>
#include <string>
#include <vector>

using namespace qvStringTable;
using namespace qvTest;
using qvString::CString;
using qvString::IString;

namespace {

// ---- keys

TEST(StringTableKey, PartsAreThoseOfSplit) {
    SeededRandom random;
    for (int round = 0; round < 3000; ++round) {
        std::string text;
        for (int n = random.below(8); n > 0; --n)
            text += "ab..._-"[random.below(7)];
        CString const key(text.c_str());
        qv::vector<CString> const parts = qvUtil::split(key, '.', false, false);
        CString setID("old");
        CString name("old");
        EXPECT_EQ(Key(key).getSubParts(setID, name), parts.size() == 2);
        EXPECT_EQ(setID, parts.size() == 2 ? parts[0] : CString()) << text;
        EXPECT_EQ(name, parts.size() == 2 ? parts[1] : key) << text;
        bool const isValid = parts.size() == 2 && !parts[0].isEmpty() && !parts[1].isEmpty();
        EXPECT_EQ(Key::isValidKeyString(key), isValid && text.find('-') == text.npos) << text;
    }
    EXPECT_TRUE(Key::isValidKeyString("a.b."));
    EXPECT_TRUE(Key("z.a") > Key("a.z"));
    EXPECT_LT(Key("a.z").compareSetID("b.a"), 0);
    EXPECT_EQ(Key("a.z").compareSetID("a.b"), 0);
    EXPECT_EQ(Key("a").compareSetID("b.c.d"), 0);
    EXPECT_GT(Key("\xC3.a").compareSetID("z.a"), 0);
}

// ---- tables

TEST(StringTable, IsAMap) {
    SeededRandom random;
    StringTable table;
    std::map<std::string, int> model;
    for (int round = 0; round < 15000; ++round) {
        // Sets that begin alike, keys in no set, and the empty set.
        char const * const sets[] = {"", "a.", "a_.", "ab.", ".", "a.b."};
        std::string const key = sets[random.below(6)] + std::to_string(random.below(300));
        int const action = random.below(12);
        if (action < 6) {
            EXPECT_TRUE(table.assign(key.c_str(), IString(std::to_string(round).c_str())));
            model[key] = round;
        } else if (action < 10) {
            EXPECT_EQ(table.remove(key.c_str()), model.erase(key) == 1);
        } else if (random.oneIn(5000)) {
            table.clear();
            model.clear();
        }
        bool found = false;
        IString const fallback(L"fallback");
        auto const entry = model.find(key);
        IString const & text = table.getString(key.c_str(), fallback, &found);
        ASSERT_EQ(found, entry != model.end());
        ASSERT_EQ(&text == &fallback, !found);
        ASSERT_EQ(text, found ? IString(std::to_string(entry->second).c_str()) : fallback);
        ASSERT_EQ(table.size(), static_cast<int>(model.size()));
        if (round % 1000 == 0) {
            qv::vector<Key> keys = {"left.over"};
            for (char const * reference : {"a.", "a.x", "a_.x", "ab.y", ".z", "none.x", "a.b.c"}) {
                qv::vector<Key> expected;
                for (auto const & [text2, value] : model)
                    if (Key(reference).compareSetID(text2.c_str()) == 0)
                        expected.append(text2.c_str());
                EXPECT_EQ(table.getKeysInSet(reference, keys), expected.size());
                EXPECT_EQ(keys, expected) << reference;
            }
        }
    }
}

TEST(StringTable, TextsStayWhereTheyAre) {
    StringTable table;
    bool found = true;
    IString const & none = table.getString("a.b", &found);
    EXPECT_FALSE(found);
    EXPECT_TRUE(table.isEmpty());
    wchar_t const withZero[] = {'x', 0, 'y'};
    IString const text(withZero, 3);
    table.assign("a.b", text);
    EXPECT_EQ(table.getString("a.b"), text);
    table.assign("a.c", table.getString("a.b"));
    for (int i = 0; i < 1000; ++i)
        table.assign(("a.c" + std::to_string(i)).c_str(), table.getString("a.c"));
    table.assign("a.c", table.getString("a.c"));
    EXPECT_EQ(table.getString("a.c"), text);
    EXPECT_TRUE(none.isEmpty());
    EXPECT_TRUE(table.keyExists("a.c999"));
    auto const always = [](Key const & reference, Key const & key) {
        return reference == "ref" && key.value().length() < 4 ? 0 : 1;
    };
    qv::vector<Key> keys = {"ref"};
    EXPECT_EQ(table.getKeys(always, keys[0], keys), 2);
    EXPECT_EQ(keys[0], Key("a.b"));
}

void expectEntries(StringTable const & table, std::map<std::string, std::string> const & expected) {
    qv::vector<Key> keys;
    EXPECT_EQ(table.getKeys([](Key const &, Key const &) { return 0; }, Key(), keys), table.size());
    ASSERT_EQ(table.size(), static_cast<int>(expected.size()));
    int i = 0;
    for (auto const & [key, text] : expected) {
        ASSERT_EQ(keys[i++], Key(key.c_str()));
        ASSERT_EQ(table.getString(key.c_str()).asUTF8(), text) << key;
    }
}

// Proper keys for which the index has the same slot.
std::vector<std::string> keysThatCollide(int count) {
    std::vector<std::string> keys;
    for (int i = 0; static_cast<int>(keys.size()) < count; ++i)
        if (std::string const key = "set.name" + std::to_string(i); StringTable::Body::hashOf(key) % 4096 == 0)
            keys.push_back(key);
    return keys;
}

TEST(StringTable, ServesOnWhenKeysCollide) {
    StringTable table;
    std::map<std::string, std::string> model;
    std::vector<std::string> const keys = keysThatCollide(1100);
    for (std::string const & key : keys) {
        for (std::string const & one : {key, "other." + key.substr(4)}) { // some that do not collide
            table.assign(one.c_str(), wide(one));
            model[one] = one;
        }
    }
    EXPECT_TRUE(table.body().isCrowded());
    for (std::size_t i = 0; i < keys.size(); i += 3) {
        EXPECT_TRUE(table.remove(keys[i].c_str()));
        EXPECT_FALSE(table.remove(keys[i].c_str()) || table.keyExists(keys[i].c_str()));
        model.erase(keys[i]);
        table.assign(keys[i + 1].c_str(), L"again");
        model[keys[i + 1]] = "again";
    }
    expectEntries(table, model);
    table.clear();
    EXPECT_FALSE(table.body().isCrowded() || table.keyExists(keys[1].c_str()));
    table.assign("a.b", L"x");
    expectEntries(table, {{"a.b", "x"}});
}

TEST(StringTable, WithoutMemoryItStaysAsItWas) {
    StringTable table;
    std::map<std::string, std::string> model;
    IString const text = wide("a text that is too long to be kept inside of a string");
    for (int round = 0; round < 200; ++round) {
        std::string const name = "a set with a long name." + std::to_string(round % 150); // some are there
        Key const key(name.c_str());
        IString const other = round < 150 ? text : wide(name);
        for (long n = 1;; ++n) {
            failingAllocation = n;
            try {
                table.assign(key, other);
                break;
            } catch (std::bad_alloc const &) {
                ASSERT_EQ(table.keyExists(key), model.count(name) == 1);
                ASSERT_TRUE(!table.keyExists(key) || table.getString(key) == text);
            }
        }
        failingAllocation = 0;
        model[name] = other.asUTF8();
        if (round % 5 == 0) { // the next one gets its place
            table.remove(key);
            model.erase(name);
        }
    }
    expectEntries(table, model);
}

// ---- catalogs

class Catalog : public testing::Test {
protected:
    Catalog() { appStringTable().clear(); }
    ~Catalog() override { appStringTable().clear(); }

    qvUtil::Error load(std::string const & bytes) const {
        writeBytes(path_, bytes);
        return Manager::loadCatalog(wide(path_));
    }
    std::string parseFault(int line, std::string const & message, std::string const & entry) const {
        return "String file parsing error encountered, line " + std::to_string(line) + ", file " + path_ + ": \n" +
               message + ": " + entry + "\n";
    }
    std::string conversionFault(int line, std::string const & text) const {
        return "String file conversion error encountered, line " + std::to_string(line) + ", file " + path_ +
               ": \nError interpreting input as UTF-8: " + text + "\n";
    }
    // With its line feed.
    static std::string entry(std::string const & key, std::string const & text) {
        return key + " = \"" + text + "\"\n";
    }
    static std::string text(char const * key) { return appStringTable().getString(key).asUTF8(); }

    ScopedLocale locale_{utf8Locale};
    ScratchDirectory scratch_;
    std::string path_ = scratch_.path("\xC3\xA9.catalog");
};

std::string const formatFault = "Expected idToken = \"quoted value string\" format";
std::string const quotesFault =
    "Expected quotes surrounding value string. Illegal character(s) encountered at start or end of string";
std::string const asciiFault = "Key string contains non-ascii characters";
std::string const keyFault = "Key string does not have valid format";

TEST_F(Catalog, EntriesAreReadAsTold) {
    struct {
        char const * file;
        char const * text;
    } const cases[] = {
        {"a.b = \"x\"", "x"},
        {"// note\n // note\n\xC3\xA9//\n\n \t\na.b = \"x\"\n", "x"},
        {"\ta.b\t= \t\"x\" \r\n", "x"},
        {"\xEF\xBB\xBFx.y = \"\"\n\xEF\xBB\xBF\xEF\xBB\xBF//\n\xEF\xBB\xBF"
         "a.b = \"x\"",
         "x"},
        {"\xE2\x80\x83"
         "a.b =\xE3\x80\x80\"x\"\xE2\x80\x83",
         "x"},
        {"a.bX=\"x\"", "x"}, // the character in front of the sign goes
        {"a.b\xF0\x9F\x98\x80=\"x\"", "x"},
        {"a.b = \"http://x\"", "http://x"},
        {"a.b = \\ // \"note\"\n\"x\"", "x"},
        {"a.b = \"one \\\n  two\\\n\n// note\n three\"\n", "one twothree"},
        {"a.b = \"\\r\\n\\n\\t\\r\\\\n\\\"\"\\\"\\x\"", "\r\n\n\t\\r\\\n\"\"\\x"},
        {"a.b = \"x\"\na.c = \"y\" \\", "x"}, // open at the end
    };
    for (auto const & [file, expected] : cases) {
        appStringTable().clear();
        EXPECT_THAT(load(file), Succeeds()) << file;
        EXPECT_EQ(text("a.b"), expected) << file;
        EXPECT_FALSE(appStringTable().keyExists("a.c"));
    }
    EXPECT_THAT(load(std::string("a.b = \"z\"\0 not read\nq.r = \"\"", 29)), Succeeds()); // over at a zero
    EXPECT_EQ(text("a.b"), "z");
    EXPECT_TRUE(appStringTable().keyExists("q.r"));
}

TEST_F(Catalog, FaultsNameLineAndEntry) {
    struct {
        char const * file;
        int line;
        std::string message;
        char const * entry;
    } const cases[] = {
        {"\n= \"x\"", 2, formatFault, "= \"x\""},
        {" a.b = \n", 1, formatFault, "a.b ="},
        {"  // note\n", 1, formatFault, "// note"},
        {"\xF0\x9F\x98\x80// note\n", 1, formatFault, "\xF0\x9F\x98\x80// note"},
        {"a.b = \"x\" // note", 1, quotesFault, "a.b = \"x\" // note"},
        {"a.b = \"x\" // \"note\"\n\n\na", 4, formatFault, "a"},
        {"a.b = \xC2\xA9 // \"x\"", 1, quotesFault, "a.b = \xC2\xA9"},
        {"a.\xC3\xA9 = \"x\"", 1, asciiFault, "a.\xC3\xA9 = \"x\""},
        {"a.b=\"x\"", 1, keyFault, "a.b=\"x\""},
        {"a.b.c = \"\"", 1, keyFault, "a.b.c = \"\""},
        {"a.b = \\\r\n \r\nx \\\r\ny", 4, quotesFault, "a.b = x y"},
    };
    for (auto const & [file, line, message, entry] : cases) {
        EXPECT_THAT(load("s.ok = \"kept\" \\\n\n\n"), Succeeds());
        EXPECT_THAT(load(file), FailsWith(3, parseFault(line, message, entry))) << file;
    }
    EXPECT_THAT(load("a.ok = \"kept\"\na.c\na.d = \"\""), FailsWith(3, parseFault(2, formatFault, "a.c")));
    EXPECT_EQ(text("a.ok"), "kept");
    EXPECT_FALSE(appStringTable().keyExists("a.d"));
    EXPECT_THAT(load("a.e = \"x\"\n// \xC3\r\n"), FailsWith(5, conversionFault(2, "// \xEF\xBF\xBD\n")));
    EXPECT_THAT(load("\xEF\xBB\xBF\xED\xA0\x80"), FailsWith(5, testing::HasSubstr("line 1, file " + path_)));
    EXPECT_TRUE(appStringTable().keyExists("a.e"));
}

TEST_F(Catalog, FilesThatCannotBeRead) {
    std::string const missing = scratch_.path("missing");
    EXPECT_THAT(Manager::loadCatalog(wide(missing)),
                FailsWith(1, "Can't open catalog file " + missing + " for read: No such file or directory\n"));
    std::string const directory = std::filesystem::path(missing).parent_path().string();
    EXPECT_THAT(Manager::loadCatalog(qvOS::Filename(wide(directory))),
                FailsWith(2, "Error reading file " + directory + ": Is a directory\n"));
}

TEST_F(Catalog, LinesInFrontOfAReadErrorStay) {
    std::string bytes;
    for (int i = 10000; i < 20000; ++i)
        bytes += entry("s.n" + std::to_string(i), "x");
    int const lineLength = static_cast<int>(bytes.size()) / 10000;
    for (int numLines : {3, 10000}) { // in one piece with the end behind it, and in several
        writeBytes(path_, bytes.substr(0, static_cast<std::size_t>(numLines * lineLength)) + "s.open");
        for (FaultLasts const lasts : {FaultLasts::once, FaultLasts::fromThenOn}) {
            int before = 0;
            for (int call = 1;; ++call) { // behind the call that opens
                appStringTable().clear();
                FailingSystem const failing(SystemFault::inputOutput, lasts, call);
                qvUtil::Error const error = Manager::loadCatalog(wide(path_));
                if (error.num() != 2)
                    break; // the file is closed, and ends in what is no entry
                EXPECT_THAT(error, FailsWith(2, "Error reading file " + path_ + ": Input/output error\n"));
                int const size = appStringTable().size();
                EXPECT_GE(size, std::min(numLines, (call - 1) * 60000 / lineLength));
                EXPECT_TRUE(size == 0 || appStringTable().keyExists(("s.n" + std::to_string(9999 + size)).c_str()));
                before = size;
            }
            EXPECT_EQ(before, numLines);
        }
    }
}

TEST_F(Catalog, OverlongLinesComeInPieces) {
    std::string const start = "a.b = \"";
    // The quote and the line feed are the 4096th and the 4097th byte, with a return or without.
    std::string const whole(4095 - start.size(), 'x');
    EXPECT_THAT(load(start + whole + "\"\n"), Succeeds());
    EXPECT_THAT(load(start + whole + "\"\r\n"), Succeeds());
    EXPECT_EQ(text("a.b"), whole);
    std::string const line = start + whole + "x\"";
    EXPECT_THAT(load(line), Succeeds()); // nothing behind it
    EXPECT_THAT(load(line + "\na"), FailsWith(3, parseFault(3, formatFault, "a")));
    EXPECT_THAT(load(line + "\r\r\n"), Succeeds());
    EXPECT_THAT(load(start + whole + "yz\"\n"), FailsWith(3, parseFault(1, quotesFault, start + whole + "yz")));
    // Two bytes, three or four that would be cut anywhere begin the next piece, which here is a comment.
    for (std::string const character : {"\xC3\xA9", "\xE2\x82\xAC", "\xF0\x9F\x98\x80"}) {
        for (std::size_t before = 1; before < character.size(); ++before) {
            std::string piece = start + whole.substr(before - 1) + "\"";
            piece += std::string(4097 - before - piece.size(), ' ');
            EXPECT_THAT(load(piece + character + "//\n"),
                        character.size() < 4 ? testing::Matcher<qvUtil::Error>(Succeeds())
                                             : FailsWith(3, parseFault(2, formatFault, character + "//")));
        }
    }
    EXPECT_THAT(load(std::string(5000, '\xA9')), FailsWith(5, testing::HasSubstr("line 1,")));
    // Several buffers of one line that goes on.
    std::string value;
    for (int i = 0; value.size() < 500000; ++i)
        value += "piece " + std::to_string(i) + " \\\n";
    EXPECT_THAT(load("a.b = \"" + value + "end\""), Succeeds());
    EXPECT_GT(appStringTable().getString("a.b").length(), 400000U);
}

// ---- the format against a slow reading of it, with the operations of the strings

class SlowReader {
public:
    std::map<std::string, std::string> entries;
    std::string fault; // its text, empty for none
    int line = 0;

    void read(std::string const & bytes) {
        for (std::size_t at = 0; at < bytes.size() && fault.empty();) {
            std::size_t const end = std::min(bytes.find('\n', at), bytes.size() - 1) + 1;
            ++line;
            addLine(bytes.substr(at, end - at));
            at = end;
        }
    }

private:
    void addLine(std::string const & bytes) {
        bool ok = false;
        IString text(bytes.c_str(), qvString::UTF8, &ok);
        if (!ok)
            return fail("Error interpreting input as UTF-8");
        text.rstrip(L'\n');
        unsigned const slashes = text.find(L"//");
        if (slashes == 0 || slashes == 1)
            return;
        unsigned const quote = text.find(L'"');
        if (slashes != IString::npos && quote != IString::npos && quote > slashes)
            text.assign(text.substr(0, slashes - 1));
        text.stripSpaces();
        text.rstripSpaces();
        if (text.isEmpty())
            return;
        if (text[text.last()] == L'\\') {
            text.remove(text.last());
            open_.append(text);
            return;
        }
        open_.append(text);
        parse(open_);
        open_ = IString();
    }

    void parse(IString const & entry) {
        unsigned const equals = entry.find(L'=');
        if (equals == IString::npos || equals == 0 || equals == entry.last())
            return fail(formatFault);
        IString key = entry.substr(0, equals - 1);
        IString value = entry.substr(equals + 1);
        for (IString * part : {&key, &value}) {
            part->stripSpaces();
            part->rstripSpaces();
        }
        if (value.length() < 2 || value[0] != L'"' || value[value.last()] != L'"')
            return fail(quotesFault);
        if (!key.isAscii())
            return fail(asciiFault);
        if (!Key::isValidKeyString(key.convertToCString()))
            return fail(keyFault);
        IString text = value.substr(1, value.length() - 2);
        text.replace(L"\\r\\n", L"\r\n").replace(L"\\n", L"\n").replace(L"\\t", L"\t");
        text.replace(L"\"\"", L"\"").replace(L"\\\"", L"\"");
        entries[key.asUTF8()] = text.asUTF8();
    }

    void fail(std::string const & message) { fault = message; }

    IString open_;
};

TEST_F(Catalog, ReadsWhatASlowReaderReads) {
    SeededRandom random;
    // With a ' in between.
    qv::vector<CString> const tokens =
        qvUtil::split("a'b'.'='='\"'\"'\\'\\\n'//'/'\n'\n'\r\n' '\t'n't'\\r'\\n'\xC3\xA9'\xE2\x80\x83'\xEF\xBB\xBF'"
                      "a.b = \"'b.a = \"x\"\n'// \"'\\\"'\"\"' = ",
                      '\'', false, false);
    int faults = 0;
    for (int round = 0; round < 1500; ++round) {
        std::string bytes;
        for (int n = random.below(25); n > 0; --n)
            bytes += tokens[random.below(tokens.size())].asChar();
        if (random.oneIn(20))
            bytes += char(random.below(255) + 1);
        if (bytes.ends_with("\xEF\xBB\xBF"))
            continue; // the converter reports a mark alone, a catalog does not
        SlowReader slow;
        slow.read(bytes);
        appStringTable().clear();
        qvUtil::Error const error = load(bytes);
        std::string const message = error.message();
        ASSERT_EQ(error.num() != 0, !slow.fault.empty()) << bytes << message << slow.fault;
        if (error) {
            ++faults;
            ASSERT_NE(message.find("line " + std::to_string(slow.line) + ", "), message.npos) << bytes << message;
            ASSERT_NE(message.find(": \n" + slow.fault + ": "), message.npos) << bytes << message << slow.fault;
        }
        ASSERT_NO_FATAL_FAILURE(expectEntries(appStringTable(), slow.entries)) << bytes;
    }
    EXPECT_GT(faults, 250);
    EXPECT_LT(faults, 1450);
}

TEST_F(Catalog, OneAddsToAnotherInAnyOrder) {
    SeededRandom random;
    for (int round = 0; round < 60; ++round) {
        std::map<std::string, std::string> model;
        appStringTable().clear();
        auto const common = std::string(std::size_t(random.below(80)), 'k');
        for (int file = 0; file < 4; ++file) {
            std::string bytes;
            for (int i = random.below(200); i > 0; --i) {
                std::string const key =
                    common + random.text(9) + "." + (random.oneIn(9) ? common : "") + "_" + random.text(3);
                if (key[0] == '.')
                    continue;
                model[key] = std::to_string(i);
                bytes += entry(key, model[key]);
            }
            EXPECT_THAT(load(bytes), Succeeds());
            ASSERT_NO_FATAL_FAILURE(expectEntries(appStringTable(), model));
        }
    }
}

TEST_F(Catalog, KeysThatCollideAreFewerThanTheyMayBe) {
    std::map<std::string, std::string> model;
    std::string bytes;
    for (std::string const & key : keysThatCollide(1010)) {
        bytes.insert(0, entry(key, key)); // against the order
        model[key] = key;
    }
    std::string const first = model.begin()->first;
    EXPECT_THAT(load(bytes + entry(first, "again") + entry("a.b", "x")), Succeeds());
    model[first] = "again";
    model["a.b"] = "x";
    EXPECT_TRUE(appStringTable().body().isCrowded());
    expectEntries(appStringTable(), model);
}

} // namespace
