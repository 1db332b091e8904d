#include "Base/Strings/qvStringCharacters.h"

#include "Support/ScopedLocale.h"

#include <cwctype>

namespace qvString {
namespace {

// Every character, as a number for messages: wide characters do not reach a test macro.
template <class Check>
void forEveryUnit(Check check) {
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit)
        check(static_cast<wchar_t>(unit), unit);
}

TEST(Characters, LetterModifiersAreTheListedSymbols) {
    unsigned count = 0;
    unsigned long long sum = 0;
    forEveryUnit([&](wchar_t c, unsigned unit) {
        if (isLetterModifier(c)) {
            ++count;
            sum = sum * 31 + unit;
        }
    });
    EXPECT_EQ(count, 178U);
    EXPECT_EQ(sum, 0x99CA1AE59F1F9F9FU);
}

// Those of the runtime for wide characters, with the symbols as letters.
template <class Char>
void checkClasses(Char c, unsigned unit) {
    bool const isModifier = isLetterModifier(c);
    ASSERT_EQ(isAlnum(c), std::iswalnum(unit) != 0 || isModifier) << unit;
    ASSERT_EQ(isPunct(c), std::iswpunct(unit) != 0 && !isModifier) << unit;
    ASSERT_EQ(isGraph(c), std::iswgraph(unit) != 0 || isModifier) << unit;
    ASSERT_EQ(isPrint(c), unit != 9 && (std::iswprint(unit) != 0 || isModifier)) << unit;
    ASSERT_EQ(isAlpha(c), isAlnum(c) && std::iswdigit(unit) == 0) << unit;
    ASSERT_EQ(isUpper(c), std::iswupper(unit) != 0) << unit;
    ASSERT_EQ(isLower(c), std::iswlower(unit) != 0) << unit;
    ASSERT_EQ(isDigit(c), std::iswdigit(unit) != 0) << unit;
    ASSERT_EQ(isXDigit(c), std::iswxdigit(unit) != 0) << unit;
    ASSERT_EQ(isSpace(c), std::iswspace(unit) != 0) << unit;
    ASSERT_EQ(isCntrl(c), std::iswcntrl(unit) != 0) << unit;
    ASSERT_EQ(isNewLine(c), unit == 10 || unit == 13) << unit;
    ASSERT_EQ(isTab(c), unit == 9) << unit;
    ASSERT_EQ(isAscii(c), unit < 128) << unit;
    ASSERT_TRUE(toUpper(c) == static_cast<Char>(std::towupper(unit))) << unit;
    ASSERT_TRUE(toLower(c) == static_cast<Char>(std::towlower(unit))) << unit;
}

TEST(Characters, WideClassesAreTheRuntimesWithTheSymbolsAsLetters) {
    forEveryUnit(checkClasses<wchar_t>);
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    forEveryUnit(checkClasses<wchar_t>);
    EXPECT_TRUE(isUpper(L'\x0416') && isAlpha(L'\x0436') && isPunct(L'\x2014') && !isPrint(L'\t'));
    EXPECT_TRUE(std::iswpunct(0x2190) != 0 && isAlpha(L'\x2190') && isPrint(L'\x2190') && !isPunct(L'\x2190'));
}

TEST(Characters, NarrowClassesTakeEveryByte) {
    for (int value = 0; value < 256; ++value) {
        checkClasses(static_cast<char>(value), static_cast<unsigned>(value)); // in the C locale both are alike
        EXPECT_FALSE(isLetterModifier(static_cast<char>(value))) << value;
    }
    EXPECT_TRUE(isAscii(static_cast<char const *>(nullptr)) && isAscii("") && isAscii("a\x7F"));
    EXPECT_FALSE(isAscii("a\x80z"));
}

} // namespace
} // namespace qvString
