#include "Base/Strings/qvStringCharacters.h"

#include "Support/ScopedLocale.h"

#include <cctype>
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
    for (unsigned const unit : {0x2103U, 0x2190U, 0x2193U, 0x21D2U, 0x2260U, 0x2473U, 0x254BU, 0x266FU, 0x3005U,
                                0x30FEU, 0x33CDU, 0xFF04U, 0xFFE0U, 0xFFE5U})
        EXPECT_TRUE(isLetterModifier(static_cast<wchar_t>(unit))) << std::hex << unit;
    for (unsigned const unit : {0U, 0x41U, 0x2102U, 0x2104U, 0x2194U, 0x21D3U, 0x2474U, 0x254CU, 0x3004U, 0x33CEU,
                                0xFF05U, 0xFFDFU, 0xFFE6U, 0xFFFFU})
        EXPECT_FALSE(isLetterModifier(static_cast<wchar_t>(unit))) << std::hex << unit;
}

void checkWideClasses() {
    forEveryUnit([](wchar_t c, unsigned unit) {
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
        ASSERT_EQ(unsigned{toUpper(c)}, std::towupper(unit)) << unit;
        ASSERT_EQ(unsigned{toLower(c)}, std::towlower(unit)) << unit;
    });
}

TEST(Characters, WideClassesAreTheRuntimesWithTheSymbolsAsLetters) {
    checkWideClasses();
    qvTest::ScopedLocale const locale(qvTest::utf8Locale);
    checkWideClasses();
    EXPECT_TRUE(isUpper(L'\x0416') && isAlpha(L'\x0436') && isPunct(L'\x2014') && !isPrint(L'\t'));
    EXPECT_TRUE(std::iswpunct(0x2190) != 0 && isAlpha(L'\x2190') && isPrint(L'\x2190') && !isPunct(L'\x2190'));
}

TEST(Characters, NarrowClassesTakeEveryByte) {
    for (int value = 0; value < 256; ++value) {
        char const c = static_cast<char>(value);
        EXPECT_EQ(isAlnum(c), std::isalnum(value) != 0) << value;
        EXPECT_EQ(isAlpha(c), std::isalpha(value) != 0) << value;
        EXPECT_EQ(isPunct(c), std::ispunct(value) != 0) << value;
        EXPECT_EQ(isPrint(c), std::isprint(value) != 0) << value;
        EXPECT_EQ(isGraph(c), std::isgraph(value) != 0) << value;
        EXPECT_EQ(isUpper(c), std::isupper(value) != 0) << value;
        EXPECT_EQ(isLower(c), std::islower(value) != 0) << value;
        EXPECT_EQ(isSpace(c), std::isspace(value) != 0) << value;
        EXPECT_EQ(isCntrl(c), std::iscntrl(value) != 0) << value;
        EXPECT_EQ(isDigit(c), std::isdigit(value) != 0) << value;
        EXPECT_EQ(isXDigit(c), std::isxdigit(value) != 0) << value;
        EXPECT_EQ(isNewLine(c), value == 10 || value == 13) << value;
        EXPECT_EQ(isTab(c), value == 9) << value;
        EXPECT_EQ(isAscii(c), value < 128) << value;
        EXPECT_EQ(toUpper(c), static_cast<char>(std::toupper(value))) << value;
        EXPECT_EQ(toLower(c), static_cast<char>(std::tolower(value))) << value;
        EXPECT_FALSE(isLetterModifier(c)) << value;
    }
    EXPECT_TRUE(isAscii(static_cast<char const *>(nullptr)) && isAscii("") && isAscii("a\x7F"));
    EXPECT_FALSE(isAscii("a\x80z"));
}

} // namespace
} // namespace qvString
