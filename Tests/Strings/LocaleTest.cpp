// A locale that no machine has, made for the test: an encoding that is not UTF-8, an order of its own, a decimal point
// of two bytes.

#include "Base/Strings/qvStringFormat.h"
#include "Base/Strings/qvStringIString.h"

#include "Support/ScopedLocale.h"
#include "Support/ScratchDirectory.h"
#include "Support/StringPrinters.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace qvString {
namespace {

constexpr char const * localeSource = "comment_char %\nescape_char /\n"
                                      "LC_CTYPE\ncopy \"POSIX\"\nEND LC_CTYPE\n"
                                      "LC_COLLATE\norder_start forward\n<U0062>\n<U0061>\n<U4E2D>\nUNDEFINED\n"
                                      "order_end\nEND LC_COLLATE\n"
                                      "LC_MONETARY\ncopy \"POSIX\"\nEND LC_MONETARY\n"
                                      "LC_NUMERIC\ndecimal_point \"<U3001>\"\nthousands_sep \"\"\ngrouping -1\n"
                                      "END LC_NUMERIC\n"
                                      "LC_TIME\ncopy \"POSIX\"\nEND LC_TIME\n"
                                      "LC_MESSAGES\ncopy \"POSIX\"\nEND LC_MESSAGES\n";

TEST(OtherLocale, DecidesConversionsNumbersAndOrder) {
    qvTest::ScratchDirectory const directory;
    std::ofstream(directory.path("source")) << localeSource;
    std::string const command = "localedef -c -i '" + directory.path("source") + "' -f EUC-JP '" +
                                directory.path("test.EUC-JP") + "' > /dev/null 2>&1";
    // What it says of the categories that are left out is no failure.
    if (std::system(command.c_str()) < 0 || !std::filesystem::exists(directory.path("test.EUC-JP/LC_NUMERIC")))
        GTEST_SKIP() << "no localedef, or no description of EUC-JP";
    setenv("LOCPATH", directory.path(".").c_str(), 1);
    qvTest::ScopedLocale const locale("test.EUC-JP");
    unsetenv("LOCPATH");

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
    wide.format(L"%08.2f|%8.1f", -3.5, 2.5);
    EXPECT_EQ(wide, u"-0003\x3001\x0035\x0030|     2\x3001\x0035");
    narrow.format("%.2f", 2.5);
    EXPECT_EQ(narrow, "2\xA1\xA2\x35\x30");

    EXPECT_LT(CString("b").collate("a"), 0);
    EXPECT_LT(IString(L"b").collate(L"a"), 0);
    EXPECT_LT(IString(L"a").collate(L"\x4E2D"), 0);
}

} // namespace
} // namespace qvString
