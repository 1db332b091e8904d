// Locales made for the test: one that no machine has, with an encoding that is not UTF-8, an order of its own and a
// decimal point of two bytes, and one with a byte for each character.

#include "Base/Strings/qvStringCharacters.h"
#include "Base/Strings/qvStringFormat.h"
#include "Base/Strings/qvStringIString.h"

#include "Support/ScopedLocale.h"
#include "Support/ScratchDirectory.h"
#include "Support/StringPrinters.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>

namespace qvString {
namespace {

constexpr char const * localeSource = "comment_char %\nescape_char /\n"
                                      "LC_CTYPE\ncopy \"POSIX\"\nEND LC_CTYPE\n"
                                      "LC_COLLATE\norder_start forward\n<U0062>\n<U0061>\n<U4E2D>\nUNDEFINED\n"
                                      "order_end\nEND LC_COLLATE\n"
                                      "LC_MONETARY\ncopy \"POSIX\"\nEND LC_MONETARY\n"
                                      "LC_NUMERIC\ndecimal_point \"<U3001>\"\nthousands_sep \"<U002E>\"\ngrouping 3;3\n"
                                      "END LC_NUMERIC\n"
                                      "LC_TIME\ncopy \"POSIX\"\nEND LC_TIME\n"
                                      "LC_MESSAGES\ncopy \"POSIX\"\nEND LC_MESSAGES\n";

class OtherLocale : public testing::Test {
protected:
    // Makes and enters the locale "test.<charset>"; false when the machine cannot.
    bool enter(std::string const & source, std::string const & charset) {
        std::string const name = "test." + charset;
        std::string const command =
            "localedef -c -i '" + source + "' -f " + charset + " '" + directory_.path(name) + "' > /dev/null 2>&1";
        // What it says of the categories that are left out is no failure.
        if (std::system(command.c_str()) < 0 || !std::filesystem::exists(directory_.path(name + "/LC_NUMERIC")))
            return false;
        setenv("LOCPATH", directory_.path(".").c_str(), 1);
        locale_.emplace(name.c_str());
        unsetenv("LOCPATH");
        return true;
    }

    qvTest::ScratchDirectory const directory_;

private:
    std::optional<qvTest::ScopedLocale> locale_;
};

TEST_F(OtherLocale, OfOneByteForEachCharacter) {
    ASSERT_TRUE(enter("de_DE", "ISO-8859-15")) << "localedef cannot make it";
    bool ok = false;
    EXPECT_STREQ(IString(u"a\x20AC\x00E4").asMultibyte(Multibyte, &ok), "a\xA4\xE4");
    EXPECT_TRUE(ok);
    EXPECT_EQ(IString("a\xA4\xE4", Multibyte, &ok), u"a\x20AC\x00E4");
    EXPECT_TRUE(ok);
    EXPECT_STREQ(IString(u"a\x00A4\x4E2Dz").asMultibyte(Multibyte, &ok), "a??z");
    EXPECT_FALSE(ok);
    CString narrow;
    narrow.format("%S|%.2S|%C|%.1f", L"\x20AC!", L"\x00E4\x00F6\x00FC", L'\x20AC', 0.5);
    EXPECT_EQ(narrow, "\xA4!|\xE4\xF6|\xA4|0,5");
    // A byte above 127 has a class and a case of its own here.
    EXPECT_TRUE(isAlpha('\xE4') && isLower('\xE4') && isUpper('\xC4') && isPunct('\xA7') && isSpace('\xA0') == false);
    EXPECT_EQ(toUpper('\xE4'), '\xC4');
    EXPECT_EQ(toLower('\xDC'), '\xFC');
    CString text("\xC4\xD6 a");
    text.toLowerCase();
    EXPECT_EQ(text, "\xE4\xF6 a");
}

TEST_F(OtherLocale, DecidesConversionsNumbersAndOrder) {
    std::ofstream(directory_.path("source")) << localeSource;
    ASSERT_TRUE(enter(directory_.path("source"), "EUC-JP")) << "localedef cannot make it";

    bool ok = false;
    char const * const bytes = "a\x8F\xAB\xB1\xC3\xE6z";
    EXPECT_STREQ(IString(u"a\x00E9\x4E2Dz").asMultibyte(Multibyte, &ok), bytes);
    EXPECT_TRUE(ok);
    EXPECT_EQ(IString(bytes, Multibyte, &ok), u"a\x00E9\x4E2Dz");
    EXPECT_TRUE(ok);
    EXPECT_STREQ(IString(u"a\x4E2D\xD83D\xDE00z").asMultibyte(Multibyte, &ok), "a???z");
    EXPECT_FALSE(ok);
    EXPECT_EQ(IString("\xC3\xE6\xC3", Multibyte, &ok), u"\x4E2D?");
    EXPECT_FALSE(ok);

    // Precision counts the result: bytes of a narrow one, and no character is cut.
    CString narrow;
    narrow.format("%.5S|%.6S|%5S|%lc", L"a\x00E9\x4E2D", L"a\x00E9\x4E2D", L"\x00E9", L'\x4E2D');
    EXPECT_EQ(narrow, "a\x8F\xAB\xB1|a\x8F\xAB\xB1\xC3\xE6|  \x8F\xAB\xB1|\xC3\xE6");
    IString wide;
    wide.format(L"%.2s|%4s|%c", bytes, "\xC3\xE6", '\xC3');
    EXPECT_EQ(wide, u"a\x00E9|   \x4E2D|?");
    // A decimal point of two bytes is one character.
    wide.format(L"%08.2f|%8.1f|%08.2f", -3.5, 2.5, -123.45);
    EXPECT_EQ(wide, u"-0003\x3001\x0035\x0030|     2\x3001\x0035|-0123\x3001\x0034\x0035");
    wide.format(L"%'d|%'011d|%'u|%'.1f", 1234567, -1234567, 999, 1000.25);
    EXPECT_EQ(wide, u"1.234.567|-01.234.567|999|1.000\x3001\x0032");
    narrow.format("%.2f", 2.5);
    EXPECT_EQ(narrow, "2\xA1\xA2\x35\x30");

    EXPECT_LT(CString("b").collate("a"), 0);
    EXPECT_LT(IString(L"b").collate(L"a"), 0);
    EXPECT_LT(IString(L"a").collate(L"\x4E2D"), 0);
}

} // namespace
} // namespace qvString
