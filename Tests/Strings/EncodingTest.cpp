#include "Base/Strings/qvStringEncoding.h"

#include "RandomText.h"
#include "Support/ScopedLocale.h"

#include <array>
#include <string>
#include <unordered_set>

namespace qvString {
namespace {

using Bytes = std::string;
using Units = std::u16string;

constexpr unsigned terminated = static_cast<unsigned>(-1);

wchar_t const * wide(Units const & units) { return reinterpret_cast<wchar_t const *>(units.data()); }
wchar_t * wide(Units & units) { return reinterpret_cast<wchar_t *>(units.data()); }

// ---- a model of UTF-8 that knows nothing but which byte sequences there are

Bytes encoded(char32_t c) {
    auto const byte = [](char32_t value) { return static_cast<char>(value); };
    if (c < 0x80)
        return {byte(c)};
    if (c < 0x800)
        return {byte(0xC0 + c / 64), byte(0x80 + c % 64)};
    if (c < 0x10000)
        return {byte(0xE0 + c / 4096), byte(0x80 + c / 64 % 64), byte(0x80 + c % 64)};
    return {byte(0xF0 + c / 262144), byte(0x80 + c / 4096 % 64), byte(0x80 + c / 64 % 64), byte(0x80 + c % 64)};
}

bool isSurrogate(char32_t c) { return c >= 0xD800 && c < 0xE000; }

struct Utf8Model {
    std::unordered_set<Bytes> whole;
    std::unordered_set<Bytes> starts;

    Utf8Model() {
        for (char32_t c = 0; c <= 0x10FFFF; ++c)
            if (!isSurrogate(c)) {
                Bytes const bytes = encoded(c);
                whole.insert(bytes);
                for (std::size_t n = 1; n < bytes.size(); ++n)
                    starts.insert(bytes.substr(0, n));
            }
    }

    static void put(Units & units, char32_t c) {
        if (c >= 0x10000) {
            units += static_cast<char16_t>(0xD800 + (c - 0x10000) / 1024);
            units += static_cast<char16_t>(0xDC00 + (c - 0x10000) % 1024);
        } else
            units += static_cast<char16_t>(c);
    }

    static char32_t valueOf(Bytes const & bytes) {
        unsigned const lead = static_cast<unsigned char>(bytes[0]);
        char32_t value = lead % (bytes.size() == 1 ? 128U : 256U >> (bytes.size() + 1));
        for (std::size_t i = 1; i < bytes.size(); ++i)
            value = value * 64 + static_cast<unsigned char>(bytes[i]) % 64;
        return value;
    }

    Units decoded(Bytes const & text, bool & isWellFormed) const {
        Units units;
        isWellFormed = true;
        for (std::size_t at = 0, taken = 1; at < text.size(); at += taken) {
            taken = 1;
            while (at + taken < text.size() && starts.contains(text.substr(at, taken)) &&
                   (starts.contains(text.substr(at, taken + 1)) || whole.contains(text.substr(at, taken + 1))))
                ++taken;
            bool const isWhole = whole.contains(text.substr(at, taken));
            put(units, isWhole ? valueOf(text.substr(at, taken)) : 0xFFFD);
            isWellFormed &= isWhole;
        }
        return units;
    }
};

Utf8Model const & utf8Model() {
    static Utf8Model const model;
    return model;
}

// Converts with the length given, checks the contract for counts and room, and gives the result.
Units convertedUtf8(Bytes const & text, bool & ok) {
    unsigned const length = static_cast<unsigned>(text.size());
    bool countOk;
    unsigned const count = UTF8toWCS(text.data(), length, nullptr, 0, true, &countOk);
    Units units(count + 3, u'#');
    if (count != 0) {
        EXPECT_EQ(UTF8toWCS(text.data(), length, wide(units), count - 1, true, &ok), 0U);
        EXPECT_EQ(units, Units(count + 3, u'#'));
    }
    EXPECT_EQ(UTF8toWCS(text.data(), length, wide(units), count, true, nullptr), count);
    Units roomy(text.size() + 3, u'#');
    EXPECT_EQ(UTF8toWCS(text.data(), length, wide(roomy), length, true, &ok), count);
    EXPECT_EQ(ok, countOk);
    EXPECT_EQ(units.substr(count), u"###");
    units.resize(count);
    EXPECT_EQ(roomy, units + Units(text.size() + 3 - count, u'#'));
    return units;
}

void checkUtf8(Bytes const & text) {
    bool isWellFormed;
    Units const expected = utf8Model().decoded(text, isWellFormed);
    bool ok;
    ASSERT_EQ(convertedUtf8(text, ok), expected) << testing::PrintToString(text);
    ASSERT_EQ(ok, isWellFormed) << testing::PrintToString(text);
}

TEST(Utf8, ShortSequencesDecodeAsTheModelHasThem) {
    Bytes const edges = "\x01\x41\x7F\x80\x8F\x90\x9F\xA0\xBF\xC0\xC1\xC2\xDF\xE0\xE1\xEC\xED\xEE\xEF\xF0\xF1\xF3\xF4"
                        "\xF5\xFF";
    for (char const a : edges)
        for (char const b : edges)
            for (char const c : edges) {
                checkUtf8({a, b, c});
                checkUtf8({a, b, c, '\xBF'});
                if (HasFatalFailure())
                    return;
            }
    for (int value = 0; value < 0x10000; ++value)
        checkUtf8({static_cast<char>(value >> 8), static_cast<char>(value)});
}

// Texts of runs of one kind of character, broken here and there: what steps over several characters at once meets every
// border between runs at every place.
Bytes randomUtf8(qvTest::Random & random) {
    static constexpr std::array<std::array<unsigned, 2>, 6> kinds = {
        {{1, 0x7F}, {0x80, 0x7FF}, {0x800, 0xD7FF}, {0xE000, 0xFFFF}, {0x10000, 0x10FFFF}, {0x410, 0x44F}}};
    Bytes text;
    for (unsigned runs = random.below(6); runs-- != 0;) {
        auto const [least, most] = random.oneOf(kinds);
        for (unsigned count = random.below(40); count-- != 0;)
            text += encoded(random.between(least, most));
    }
    for (unsigned breaks = random.below(3); breaks-- != 0 && !text.empty();) {
        std::size_t const at = random.below(static_cast<unsigned>(text.size()));
        switch (random.below(3)) {
        case 0:
            text[at] = static_cast<char>(random.below(256));
            break;
        case 1:
            text.erase(at, 1);
            break;
        default:
            text.resize(at);
        }
    }
    return text;
}

TEST(Utf8, LongTextsConvertAsTheModelHasThemBothWays) {
    qvTest::Random random;
    for (int round = 0; round < 6000; ++round) {
        Bytes const text = randomUtf8(random);
        if (text.empty())
            continue;
        ASSERT_NO_FATAL_FAILURE(checkUtf8(text)) << round;

        bool ok;
        Units units = convertedUtf8(text, ok);
        Bytes expected;
        for (unsigned breaks = random.below(3); breaks-- != 0;)
            units[random.below(static_cast<unsigned>(units.size()))] =
                static_cast<char16_t>(random.between(0xD800, 0xDFFF));
        for (std::size_t i = 0; i < units.size(); ++i) {
            bool const isPair = units[i] >= 0xD800 && units[i] < 0xDC00 && i + 1 < units.size() &&
                                units[i + 1] >= 0xDC00 && units[i + 1] < 0xE000;
            if (isPair)
                expected += encoded(0x10000U + (units[i] - 0xD800U) * 1024U + (units[i + 1] - 0xDC00U));
            else
                expected += encoded(isSurrogate(units[i]) ? 0xFFFD : units[i]);
            i += isPair;
        }
        unsigned const length = static_cast<unsigned>(units.size());
        unsigned const size = static_cast<unsigned>(expected.size());
        Bytes result(size + 2, '#');
        ASSERT_EQ(WCStoUTF8(wide(units), length, nullptr, 0, &ok), size) << round;
        ASSERT_EQ(WCStoUTF8(wide(units), length, result.data(), size - 1, &ok), 0U) << round;
        ASSERT_EQ(result, Bytes(size + 2, '#')) << round;
        ASSERT_EQ(WCStoUTF8(wide(units), length, result.data(), size, &ok), size) << round;
        ASSERT_TRUE(ok);
        ASSERT_EQ(result, expected + "##") << round;
        Bytes roomy(3 * units.size(), '#');
        ASSERT_EQ(WCStoUTF8(wide(units), length, roomy.data(), 3 * length, nullptr), size) << round;
        ASSERT_EQ(roomy, expected + Bytes(roomy.size() - size, '#')) << round;
    }
}

TEST(Utf8, LengthsTerminatorsAndMarks) {
    struct Case {
        char const * text;
        unsigned length;
        bool ignoreBOM;
        Units result; // as counted
        bool ok;
    };
    Case const cases[] = {
        {nullptr, 4, false, u"", false},
        {"", terminated, false, u"", true},
        {"abc", 0, false, u"", true},
        {"abc", terminated, false, Units(u"abc\0", 4), true},
        {"abc", 3, false, u"abc", true},
        {"abc", 2, false, u"ab", true},
        {"a\0b", 3, false, Units(u"a\0b", 3), true},
        {"\xEF\xBB\xBFz", terminated, false, Units(u"z\0", 2), true},
        {"\xEF\xBB\xBFz", 4, false, u"z", true},
        {"\xEF\xBB\xBFz", 4, true, u"\xFEFFz", true},
        {"\xEF\xBB\xBFz", terminated, true, Units(u"\xFEFFz\0", 3), true},
        {"\xEF\xBB\xBF", terminated, false, Units(u"\0", 1), true},
        {"\xEF\xBB\xBF", 3, false, u"", false},
        {"\xEF\xBB", 2, false, u"\xFFFD", false},
        {"a\xE2\x82", terminated, false, Units(u"a\xFFFD\0", 3), false},
        {"a\xF0\x9F\x98\x80\xFFz", 7, false, u"a\xD83D\xDE00\xFFFDz", false},
    };
    for (Case const & c : cases) {
        bool ok = !c.ok;
        unsigned const count = static_cast<unsigned>(c.result.size());
        EXPECT_EQ(UTF8toWCS(c.text, c.length, nullptr, 0, c.ignoreBOM, &ok), count) << testing::PrintToString(c.text);
        EXPECT_EQ(ok, c.ok) << testing::PrintToString(c.text);
        Units units(count, u'#');
        EXPECT_EQ(UTF8toWCS(c.text, c.length, wide(units), count, c.ignoreBOM, &ok), count);
        EXPECT_EQ(units, c.result);
        EXPECT_EQ(ok, c.ok) << testing::PrintToString(c.text);
    }
    EXPECT_EQ(detectUTF8BOM("\xEF\xBB\xBF", -1), 3);
    EXPECT_EQ(detectUTF8BOM("\xEF\xBB\xBFx", 3), 3);
    EXPECT_EQ(detectUTF8BOM("\xEF\xBB\xBFx", 2) + detectUTF8BOM("\xEF\xBB\xBFx", -2) + detectUTF8BOM("\xEF", -1) +
                  detectUTF8BOM("xyz", 3) + detectUTF8BOM(nullptr, 3),
              0);

    bool ok = false;
    char bytes[4] = "##";
    EXPECT_EQ(WCStoUTF8(L"", terminated, bytes, 4, &ok), 0U);
    EXPECT_TRUE(ok);
    EXPECT_EQ(WCStoUTF8(nullptr, 3, bytes, 4, &ok), 0U);
    EXPECT_FALSE(ok);
    EXPECT_EQ(WCStoUTF8(L"ab", 0, bytes, 4, &ok), 0U);
    EXPECT_TRUE(ok);
    EXPECT_EQ(WCStoUTF8(L"\x20AC", terminated, bytes, 4, &ok), 4U);
    EXPECT_STREQ(bytes, "\xE2\x82\xAC");
}

// ---- the multibyte encoding

struct MultibyteCase {
    char const * narrow;
    Units wide;
    bool ok;
};

void checkFromMultibyte(MultibyteCase const & c) {
    SCOPED_TRACE(testing::PrintToString(c.narrow));
    unsigned const length = static_cast<unsigned>(std::string(c.narrow).size());
    unsigned const count = static_cast<unsigned>(c.wide.size());
    for (unsigned const srcLen : {terminated, length, length + 1}) {
        bool ok = !c.ok;
        EXPECT_EQ(MBStoWCS(c.narrow, srcLen, nullptr, 0, &ok), count);
        EXPECT_EQ(ok, c.ok);
        Units units(count + 2, u'#');
        EXPECT_EQ(MBStoWCS(c.narrow, srcLen, wide(units), count, &ok), 0U);
        EXPECT_EQ(units, Units(count + 2, u'#'));
        EXPECT_EQ(MBStoWCS(c.narrow, srcLen, wide(units), count + 1, &ok), count);
        EXPECT_EQ(units, c.wide + Units(1, u'\0') + u"#");
        EXPECT_EQ(ok, c.ok);
        EXPECT_EQ(MBStoWCS(c.narrow, srcLen, wide(units), count + 1, nullptr), count);
    }
    bool ok = false;
    unsigned const tooShort = length == 0 ? 0 : length - 1;
    EXPECT_EQ(MBStoWCS(c.narrow, tooShort, nullptr, 0, &ok), 0U);
    EXPECT_TRUE(ok);
    EXPECT_EQ(getMultiByteStringSize(nullptr, c.narrow, 0), c.ok ? count : terminated);
    Units units(count + 2, u'#');
    if (c.ok) {
        EXPECT_EQ(getMultiByteStringSize(wide(units), c.narrow, count), count);
        EXPECT_EQ(units, c.wide + u"##");
        EXPECT_EQ(getMultiByteStringSize(wide(units), c.narrow, count + 1), count);
        EXPECT_EQ(units, c.wide + Units(1, u'\0') + u"#");
    }
}

void checkToMultibyte(Units const & text, char const * narrow, bool isClean) {
    SCOPED_TRACE(testing::PrintToString(text));
    unsigned const length = static_cast<unsigned>(text.size());
    Bytes const expected(narrow);
    unsigned const size = static_cast<unsigned>(expected.size());
    for (unsigned const srcLen : {terminated, length, length + 1}) {
        bool ok = !isClean;
        EXPECT_EQ(WCStoMBS(wide(text), srcLen, nullptr, 0, &ok), size);
        EXPECT_EQ(ok, isClean);
        Bytes bytes(size + 2, '#');
        EXPECT_EQ(WCStoMBS(wide(text), srcLen, bytes.data(), size, nullptr), 0U);
        EXPECT_EQ(bytes, Bytes(size + 2, '#'));
        EXPECT_EQ(WCStoMBS(wide(text), srcLen, bytes.data(), size + 1, &ok), size);
        EXPECT_EQ(bytes, expected + Bytes(1, '\0') + "#");
        EXPECT_EQ(ok, isClean);
    }
    bool ok = false;
    EXPECT_EQ(WCStoMBS(wide(text), length - 1, nullptr, 0, &ok), 0U);
    EXPECT_TRUE(ok);
}

TEST(Multibyte, ConvertsInTheCLocale) {
    for (MultibyteCase const & c :
         {MultibyteCase{"", u"", true}, MultibyteCase{"plain \x01\x7F", u"plain \x01\x7F", true},
          MultibyteCase{"a\xC3\xA9z", u"a??z", false}, MultibyteCase{"\xFF", u"?", false}})
        checkFromMultibyte(c);
    checkToMultibyte(u"plain \x7F", "plain \x7F", true);
    checkToMultibyte(u"a\x00E9\xD83D\xDE00z", "a???z", false);
}

TEST(Multibyte, ConvertsInAnEncodingOfSeveralBytes) {
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    for (MultibyteCase const & c :
         {MultibyteCase{"plain", u"plain", true}, MultibyteCase{"a\xC3\xA9\xE2\x82\xACz", u"a\x00E9\x20ACz", true},
          MultibyteCase{"\xF0\x9F\x98\x80", u"\xD83D\xDE00", true}, MultibyteCase{"a\xE2\x82z", u"a??z", false},
          MultibyteCase{"\xED\xA0\x80", u"???", false}, MultibyteCase{"\xF4\x90\x80\x80", u"????", false},
          MultibyteCase{"\xC3\xA9\xFF\xF0\x9F\x98\x80", u"\x00E9?\xD83D\xDE00", false},
          MultibyteCase{"\xF0\x9F\x98", u"???", false}})
        checkFromMultibyte(c);
    checkToMultibyte(u"a\x00E9\x20AC\xD83D\xDE00z", "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80z", true);
    // One byte for each unit as soon as anything is lost.
    checkToMultibyte(u"a\x00E9\xD800z\xD83D\xDE00", "a??z??", false);

    Units units(4, u'#');
    EXPECT_EQ(getMultiByteStringSize(wide(units), "ab\xF0\x9F\x98\x80", 3), 2U);
    // What lies behind the end of the room is not looked at.
    EXPECT_EQ(getMultiByteStringSize(wide(units), "ab\xFF", 2), 2U);
    EXPECT_EQ(getMultiByteStringSize(wide(units), "\xFF", 0), 0U);
    EXPECT_EQ(getMultiByteStringSize(wide(units), "ab\xFF", 3), static_cast<unsigned>(-1));
    EXPECT_EQ(units, u"ab##");
}

TEST(Multibyte, NothingGivesNothing) {
    bool ok = false;
    wchar_t unit = 7;
    char byte = 7;
    EXPECT_EQ(MBStoWCS(nullptr, terminated, &unit, 1, &ok), 0U);
    EXPECT_TRUE(ok && unit == 7);
    ok = false;
    EXPECT_EQ(WCStoMBS(nullptr, terminated, &byte, 1, &ok), 0U);
    EXPECT_TRUE(ok && byte == 7);
    EXPECT_EQ(MBStoWCS("", terminated, &unit, 0, &ok), 0U);
    EXPECT_EQ(unsigned{unit}, 7U);
    EXPECT_EQ(getDefaultMBChar(), '?');
    EXPECT_EQ(unsigned{getDefaultWChar()}, 0x3FU);
}

} // namespace
} // namespace qvString
