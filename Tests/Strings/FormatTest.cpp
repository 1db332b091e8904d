#include "Base/Strings/qvStringFormat.h"

#include "Base/Strings/qvStringIString.h"

#include "RandomText.h"
#include "Support/ScopedLocale.h"
#include "Support/StringPrinters.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>

namespace qvString {
namespace {

template <class... Arguments>
std::string formatted(char const * format, Arguments... arguments) {
    char buffer[2000];
    int const length = KT_snprintf(buffer, sizeof buffer, format, arguments...);
    return length < 0 ? "failed" : std::string(buffer, static_cast<std::size_t>(length));
}

// The UTF-8 of a wide result.
template <class... Arguments>
std::string formatted(wchar_t const * format, Arguments... arguments) {
    wchar_t buffer[2000];
    int const length = KT_swprintf(buffer, 2000, format, arguments...);
    return length < 0 ? "failed" : IString(buffer, length).asUTF8();
}

IString rewritten(wchar_t const * format) {
    std::unique_ptr<wchar_t, void (*)(void *)> const copy(KT_convert_string_format(format), std::free);
    return IString(copy.get());
}

TEST(Format, TextMustBeTwoCharactersShorter) {
    char narrow[8];
    wchar_t wide[8];
    for (unsigned size = 0; size <= 8; ++size)
        for (unsigned length = 0; length < 12; ++length) {
            std::string const text(length, 'x');
            int const expected = length + 2 <= size ? static_cast<int>(length) : -1;
            EXPECT_EQ(KT_snprintf(narrow, size, "%s", text.c_str()), expected) << size << ' ' << length;
            EXPECT_EQ(KT_swprintf(wide, size, L"%s", text.c_str()), expected) << size << ' ' << length;
            EXPECT_EQ(KT_snprintf(narrow, size, "%S", IString(text).asWChar()), expected) << size << ' ' << length;
            if (size != 0) {
                EXPECT_EQ(std::string(narrow), text.substr(0, size - 1));
                EXPECT_EQ(IString(wide), IString(text.substr(0, size - 1)));
            }
        }
}

TEST(Format, ExchangesLettersOfPlainItemsOnly) {
    struct Case {
        wchar_t const * format;
        char const * rewritten;
    };
    Case const cases[] = {
        {L"%-10s:%5.3S %d %%", "%-10S:%5.3s %d %%"},
        {L"%s%S%c%C", "%S%s%C%c"},
        {L"%05s %.s %5.C %-.3c", "%05S %.S %5.c %-.3C"},
        {L"no item sScC", "no item sScC"},
        {L"%ls %hs %+5s %*s %#S % c %--s %.-3s %5-s", "%ls %hs %+5s %*s %#S % c %--s %.-3s %5-s"},
        {L"%%s %%%s %", "%%s %%%S %"},
        {L"%-5%s %5%%s %d%s", "%-5%S %5%%s %d%S"},
        {L"", ""},
    };
    for (Case const & c : cases)
        EXPECT_EQ(rewritten(c.format), c.rewritten);
    EXPECT_TRUE(KT_convert_string_format(nullptr) == nullptr);
}

TEST(Format, TextArgumentsHaveOneMeaning) {
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    char const * const narrow = "n\xC3\xA9\xF0\x9F\x98\x80";
    wchar_t const * const wide = L"w\x20AC\xD83D\xDE00";
    // Plain items, whatever the width of the format.
    EXPECT_EQ(formatted("%s|%S", narrow, wide), "n\xC3\xA9\xF0\x9F\x98\x80|w\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(formatted(L"%s|%S", narrow, wide), "n\xC3\xA9\xF0\x9F\x98\x80|w\xE2\x82\xAC\xF0\x9F\x98\x80");
    EXPECT_EQ(formatted("%hs|%ls|%hS|%lS", narrow, wide, narrow, wide),
              formatted("%s|%S|%s|%S", narrow, wide, narrow, wide));
    EXPECT_EQ(formatted(L"%hs|%ls|%hS|%lS", narrow, wide, narrow, wide),
              formatted("%s|%S|%s|%S", narrow, wide, narrow, wide));
    EXPECT_EQ(formatted("%c%C%hc%lc", 'n', L'\x20AC', 'n', L'w'), "n\xE2\x82\xACnw");
    EXPECT_EQ(formatted(L"%c%C%hc%lc", 'n', L'\x20AC', 'n', L'w'), "n\xE2\x82\xACnw");
    // What is not rewritten keeps the meaning of its width.
    EXPECT_EQ(formatted("%*s|%+S|%*c", 3, "n", L"w", 2, 'n'), "  n|w| n");
    EXPECT_EQ(formatted(L"%*s|%+S|%*c|%#C", 3, wide, "n", 2, L'w', 'n'), "w\xE2\x82\xAC\xF0\x9F\x98\x80|n| w|n");
    EXPECT_EQ(formatted(L"%--3s|%0-3s|%-03s|%5.s", L"wx", L"yz", "n", "n"), "wx |yz |n  |     ");
    EXPECT_EQ(formatted(L"%-5%s %s", "n"), "%S n");
    EXPECT_EQ(formatted(L"%5%%s", L"w"), "%w");
    // Widths and precisions count characters of the result; what is converted is not cut inside a character.
    EXPECT_EQ(formatted("%6S|%-6S|%.5S|%.4S|%.3S", L"\x20AC", L"\x20AC", wide, wide, wide),
              "   \xE2\x82\xAC|\xE2\x82\xAC   |w\xE2\x82\xAC|w\xE2\x82\xAC|w");
    EXPECT_EQ(formatted(L"%4s|%-4s|%.4s|%.3s|%.2s|%5.2S", "\xC3\xA9", "\xC3\xA9", narrow, narrow, narrow, wide),
              "   \xC3\xA9|\xC3\xA9   |n\xC3\xA9\xF0\x9F\x98\x80|n\xC3\xA9|n\xC3\xA9|   w\xE2\x82\xAC");
    char const open[] = {'a', '\xC3', '\xA9'};
    wchar_t const wideOpen[] = {L'a', L'\x20AC'};
    EXPECT_EQ(formatted(L"%.2s|%.2S", open, wideOpen), "a\xC3\xA9|a\xE2\x82\xAC");
    EXPECT_EQ(formatted("%.4S|%.3s", wideOpen, open), "a\xE2\x82\xAC|a\xC3\xA9");
    // What cannot be converted.
    EXPECT_EQ(formatted(L"a%sz%c", "\xC3(\xFF", '\xE9'), "a?(?z?");
    EXPECT_EQ(formatted("a%Sz%C", L"\xD800(", L'\xDC00'), "a?(z?");
    char const * const noNarrow = nullptr;
    wchar_t const * const noWide = nullptr;
    EXPECT_EQ(formatted("%s|%S|%8S|%.3S", noNarrow, noWide, noWide, noWide), "(null)|(null)|  (null)|");
    EXPECT_EQ(formatted(L"%s|%S|%.6s|%.5s", noNarrow, noWide, noNarrow, noNarrow), "(null)|(null)|(null)|");
    {
        qvTest::ScopedLocale const inC("C");
        EXPECT_EQ(formatted("%S", L"\x20AC\xD83D\xDE00!"), "?\?\?!");
        EXPECT_EQ(formatted(L"%s", "\xC3\xA9!"), "?\?!");
    }
    IString zero;
    EXPECT_EQ(zero.format(L"a%Cb%c", 0, 0), 4U);
    EXPECT_EQ(zero, IString(L"a\0b\0", 4));
}

TEST(Format, RefusesAndSurvivesBadFormats) {
    int written = 7;
    EXPECT_EQ(formatted("abc%n", &written), "failed");
    EXPECT_EQ(formatted(L"abc%n", &written), "failed");
    EXPECT_EQ(written, 7);
    EXPECT_EQ(formatted("100%"), "100%");
    EXPECT_EQ(formatted(L"100%"), "100%");
    EXPECT_EQ(formatted("%d %y %d %S", 1, 2), "1 %y %d %S");
    EXPECT_EQ(formatted(L"%d %1$d %s", 1, 2), "1 %1$d %s");
    EXPECT_EQ(formatted(L"%99999999999d|%S", 1), "%99999999999d|%S");
    EXPECT_EQ(formatted(L"%2147483000d%2147483000d", 1, 2), "failed");
    EXPECT_EQ(formatted(L"%*d", std::numeric_limits<int>::min(), 1), "%*d");
    EXPECT_EQ(KT_snprintf(nullptr, 0, nullptr), -1);
    EXPECT_EQ(KT_swprintf(nullptr, 0, nullptr), -1);
    EXPECT_EQ(formatted("%p %p|%6p", reinterpret_cast<void *>(0xAB0), nullptr, reinterpret_cast<void *>(0xC)),
              "ab0 0|     c");
    EXPECT_EQ(formatted(L"0x%p", reinterpret_cast<void *>(0xAB0)), "0xab0");
}

// One random item without its letter, and the arguments for its stars.
struct RandomItem {
    std::string flags;
    int stars[2] = {0, 0};
    int starCount = 0;

    RandomItem(qvTest::Random & random, char const * possibleFlags) {
        for (char const * flag = possibleFlags; *flag != '\0'; ++flag)
            if (random.oneIn(4))
                flags += *flag;
        if (random.oneIn(2))
            number(random, 24, -24);
        if (random.oneIn(2)) {
            flags += '.';
            number(random, 20, -2);
        }
    }
    void number(qvTest::Random & random, int most, int leastOfStar) {
        if (random.oneIn(3)) {
            flags += '*';
            stars[starCount++] =
                static_cast<int>(random.below(static_cast<unsigned>(most - leastOfStar))) + leastOfStar;
        } else if (!random.oneIn(4))
            flags += std::to_string(random.below(static_cast<unsigned>(most)));
    }
};

// Formats a value by the runtime, by the narrow formatter of ours, and by the wide one.
template <class Value>
void compare(RandomItem const & item, char const * ours, char const * runtimes, Value value) {
    std::string const expectedFormat = "<%" + item.flags + runtimes + ">";
    std::string const format = "%S<%" + item.flags + ours + ">";
    char expected[1000];
    auto const check = [&](auto... stars) {
        std::snprintf(expected, sizeof expected, expectedFormat.c_str(), stars..., value);
        ASSERT_EQ(formatted(format.c_str(), L"", stars..., value), expected) << format;
        ASSERT_EQ(formatted(IString(format).asWChar(), L"", stars..., value), expected) << format;
    };
    if (item.starCount == 0)
        check();
    else if (item.starCount == 1)
        check(item.stars[0]);
    else
        check(item.stars[0], item.stars[1]);
}

void compareIntegers(qvTest::Random & random, RandomItem const & item) {
    struct Size {
        char const * ours;
        char const * runtimes;
        bool isLong;
    };
    static constexpr Size sizes[] = {{"", "", false},    {"h", "h", false},   {"hh", "hh", false}, {"l", "l", true},
                                     {"ll", "ll", true}, {"I64", "ll", true}, {"I32", "", false},  {"I", "l", true},
                                     {"j", "j", true},   {"z", "z", true},    {"t", "t", true},    {"q", "ll", true}};
    Size const & size = random.oneOf(sizes);
    bool const isSigned = random.oneIn(2);
    char const letter = isSigned ? "di"[random.below(2)] : "uoxXbB"[random.below(6)];
    std::uint64_t const edges[] = {0, 1, 9, 10, 99, 100, 1ULL << 31, 1ULL << 63, ~0ULL, ~0ULL >> 1, 0xFFFFFFFF};
    std::uint64_t const value = random.oneIn(2) ? random.oneOf(edges) : random.longBits() >> random.below(64);
    std::string const ours = size.ours + std::string(1, letter);
    std::string const runtimes = size.runtimes + std::string(1, letter);
    if (size.isLong)
        compare(item, ours.c_str(), runtimes.c_str(), value);
    else
        compare(item, ours.c_str(), runtimes.c_str(), static_cast<unsigned>(value));
}

void compareFloats(qvTest::Random & random, RandomItem const & item) {
    double const edges[] = {0.0,       -0.0,         1.0,  0.5,       1.5,      2.5,        1e100,
                            -1e-300,   123456.789,   0.1,  9.9999995, 1e-5,     5e-324,     INFINITY,
                            -INFINITY, std::nan(""), 1e15, 1e16,      999999.5, 0.000123456};
    double const value = random.oneIn(2)
                             ? random.oneOf(edges)
                             : std::ldexp(static_cast<double>(random.longBits()), -static_cast<int>(random.below(90)));
    char const letter[] = {"eEfFgGaA"[random.below(8)], '\0'};
    compare(item, letter, letter, value);
    std::string const large = std::string("L") + letter;
    compare(item, large.c_str(), large.c_str(), static_cast<long double>(value));
}

TEST(Format, NumbersAreWrittenAsTheRuntimeWritesThem) {
    qvTest::Random random;
    for (int round = 0; round < 20000 && !testing::Test::HasFailure(); ++round) {
        compareIntegers(random, RandomItem(random, "-+ #0"));
        compareFloats(random, RandomItem(random, "-+ #0"));
    }
    char expected[1000];
    std::string const parts = "%.200f|%'d|%0*.3f";
    char const * const format = parts.c_str();
    std::snprintf(expected, sizeof expected, format, 1e60, 1234567, 300, -2.5);
    EXPECT_EQ(formatted(IString(format).asWChar(), 1e60, 1234567, 300, -2.5), expected);
}

TEST(Format, TextsHaveTheRuntimesWidthsAndPrecisions) {
    qvTest::Random random;
    static constexpr char const * texts[] = {"", "a", "text", "a text that is longer"};
    for (int round = 0; round < 5000; ++round) {
        RandomItem const item(random, "-");
        char const * const text = random.oneOf(texts);
        compare(item, "hs", "s", text);
        compare(item, "hc", "c", 'x');
        // The wide formatter's own meaning of a letter, where a '*' keeps it from being exchanged.
        std::string const format = "<%" + item.flags + "s>";
        IString const wideText(text);
        if (item.starCount == 0) {
            ASSERT_EQ(formatted(IString(format).asWChar(), text), formatted(format.c_str(), text)) << format;
        } else if (item.starCount == 1) {
            ASSERT_EQ(formatted(IString(format).asWChar(), item.stars[0], wideText.asWChar()),
                      formatted(format.c_str(), item.stars[0], text))
                << format;
        }
    }
}

TEST(Format, StringsGrowToWhatIsFormatted) {
    for (unsigned const length : {1U, 14U, 252U, 253U, 254U, 255U, 256U, 300U, 1022U, 1023U, 1024U, 70000U}) {
        std::string const text(length - 1, 'y');
        for (unsigned const initial : {0U, 1U, 256U, 1000U, 100000U, 0xFFFFFFFFU}) {
            CString narrow("x");
            ASSERT_EQ(narrow.format(initial, "%s%s", narrow.asChar(), text.c_str()), length);
            ASSERT_EQ(narrow, "x" + CString(text));
            IString wide(L"x");
            ASSERT_EQ(wide.format(initial, L"%S%s", wide.asWChar(), text.c_str()), length);
            ASSERT_EQ(wide, IString("x" + CString(text)));
        }
    }
}

template <class String>
void checkEmptyResults(String const & old, String const & emptyFormat, String const & refused, String const & digits) {
    String string(old);
    EXPECT_EQ(string.format(""), String::npos);
    EXPECT_EQ(string.format("%s", ""), String::npos);
    EXPECT_EQ(string.format("%n", nullptr), String::npos);
    EXPECT_EQ(string.format(&emptyFormat), String::npos);
    EXPECT_EQ(string.format(9U, &refused, nullptr), String::npos);
    EXPECT_EQ(string.format(static_cast<String const *>(nullptr)), String::npos);
    EXPECT_EQ(string.format(static_cast<char const *>(nullptr)), String::npos);
    EXPECT_EQ(string, old);
    EXPECT_EQ(string.format(&digits, 12), 2U);
    EXPECT_EQ(string.format(9U, &digits, 345), 3U);
    EXPECT_EQ(string, "345");
    EXPECT_EQ(string.format(9U, "%s", "narrow"), 6U);
    EXPECT_EQ(string, "narrow");
    // The format itself.
    EXPECT_EQ((string = digits).format(&string, 6), 1U);
    EXPECT_EQ(string, "6");
}

TEST(Format, EmptyResultsLeaveTheString) {
    checkEmptyResults<CString>("old", "", "%n", "%d");
    checkEmptyResults<IString>("old", "", "%n", "%d");
    IString wide(L"old");
    EXPECT_EQ(wide.format(L""), IString::npos);
    EXPECT_EQ(wide.format(static_cast<wchar_t const *>(nullptr)), IString::npos);
    EXPECT_EQ(wide.format(9U, L"%n", nullptr), IString::npos);
    EXPECT_EQ(wide, u"old");
    std::string const longFormat = std::string(3000, 'f') + "%s";
    EXPECT_EQ(wide.format(longFormat.c_str(), "!"), 3001U);
    CString numbered;
    EXPECT_EQ(numbered.format("%2$s %1$d", 7, longFormat.c_str()), 3004U);
    EXPECT_EQ(numbered, CString(longFormat) + " 7");
}

TEST(Int64Text, KeepsThreeTextsOfEachKind) {
    char * const minusOne = int64ToAscii(-1, 2);
    char * const least = int64ToAscii(std::numeric_limits<std::int64_t>::min(), 0);
    char * const zero = int64ToAscii(0, 1);
    char * const most = uint64ToAscii(std::numeric_limits<std::uint64_t>::max(), 2);
    EXPECT_STREQ(minusOne, "-1");
    EXPECT_STREQ(least, "-9223372036854775808");
    EXPECT_STREQ(zero, "0");
    EXPECT_STREQ(most, "18446744073709551615");
    EXPECT_EQ(minusOne - zero, 28);
    EXPECT_EQ(zero - least, 28);
    EXPECT_EQ(int64ToAscii(5, 0), least);
    EXPECT_EQ(least[27] + zero[27] + minusOne[27] + most[27], 0);
}

TEST(Int64Text, ReadsWhatStandsAtTheStart) {
    EXPECT_EQ(asciiToInt64("x"), 0);
    EXPECT_EQ(asciiToInt64(""), 0);
    EXPECT_EQ(asciiToInt64(nullptr), 0);
    EXPECT_EQ(asciiToInt64(" \t-12x"), -12);
    EXPECT_EQ(asciiToInt64("+7"), 7);
    EXPECT_EQ(asciiToInt64("-9223372036854775808"), std::numeric_limits<std::int64_t>::min());
    EXPECT_EQ(asciiToInt64("99999999999999999999"), std::numeric_limits<std::int64_t>::max());
    EXPECT_EQ(asciiToUInt64("18446744073709551615"), std::numeric_limits<std::uint64_t>::max());
    EXPECT_EQ(asciiToUInt64("-"), 0U);
    EXPECT_EQ(asciiToUInt64(nullptr), 0U);
}

} // namespace
} // namespace qvString
