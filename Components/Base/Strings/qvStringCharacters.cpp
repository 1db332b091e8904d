#include "Base/Strings/qvStringCharacters.h"

#include <array>
#include <cctype>
#include <cstddef>
#include <cwctype>

namespace qvString {

namespace {

struct Range {
    wchar_t first;
    wchar_t last;
};

constexpr Range letterModifierRanges[] = {
    {0x2103, 0x2103}, {0x2116, 0x2116}, {0x2121, 0x2121}, {0x2190, 0x2193}, {0x21D2, 0x21D2}, {0x21D4, 0x21D4},
    {0x2200, 0x2200}, {0x2202, 0x2202}, {0x2203, 0x2203}, {0x2207, 0x2207}, {0x2208, 0x2208}, {0x220B, 0x220B},
    {0x2211, 0x2211}, {0x221A, 0x221A}, {0x221D, 0x2220}, {0x2225, 0x2225}, {0x2227, 0x222C}, {0x222E, 0x222E},
    {0x2234, 0x2234}, {0x2235, 0x2235}, {0x223D, 0x223D}, {0x2252, 0x2252}, {0x2260, 0x2260}, {0x2261, 0x2261},
    {0x2266, 0x2266}, {0x2267, 0x2267}, {0x226A, 0x226A}, {0x226B, 0x226B}, {0x2282, 0x2282}, {0x2283, 0x2283},
    {0x2286, 0x2286}, {0x2287, 0x2287}, {0x22A5, 0x22A5}, {0x22BF, 0x22BF}, {0x2312, 0x2312}, {0x2460, 0x2473},
    {0x2500, 0x2503}, {0x250C, 0x250C}, {0x250F, 0x250F}, {0x2510, 0x2510}, {0x2513, 0x2513}, {0x2514, 0x2514},
    {0x2517, 0x2517}, {0x2518, 0x2518}, {0x251B, 0x251B}, {0x251C, 0x251C}, {0x251D, 0x251D}, {0x2520, 0x2520},
    {0x2523, 0x2523}, {0x2524, 0x2524}, {0x2525, 0x2525}, {0x2528, 0x2528}, {0x252B, 0x252B}, {0x252C, 0x252C},
    {0x252F, 0x252F}, {0x2530, 0x2530}, {0x2533, 0x2533}, {0x2534, 0x2534}, {0x2537, 0x2537}, {0x2538, 0x2538},
    {0x253B, 0x253B}, {0x253C, 0x253C}, {0x253F, 0x253F}, {0x2542, 0x2542}, {0x254B, 0x254B}, {0x25A0, 0x25A0},
    {0x25A1, 0x25A1}, {0x25B2, 0x25B2}, {0x25B3, 0x25B3}, {0x25BC, 0x25BC}, {0x25BD, 0x25BD}, {0x25C6, 0x25C6},
    {0x25C7, 0x25C7}, {0x25CB, 0x25CB}, {0x25CE, 0x25CE}, {0x25CF, 0x25CF}, {0x25EF, 0x25EF}, {0x2605, 0x2605},
    {0x2606, 0x2606}, {0x2640, 0x2640}, {0x2642, 0x2642}, {0x266A, 0x266A}, {0x266D, 0x266D}, {0x266F, 0x266F},
    {0x3005, 0x3005}, {0x3012, 0x3012}, {0x3013, 0x3013}, {0x309B, 0x309E}, {0x30FC, 0x30FE}, {0x3231, 0x3231},
    {0x3232, 0x3232}, {0x3239, 0x3239}, {0x32A4, 0x32A8}, {0x3303, 0x3303}, {0x330D, 0x330D}, {0x3314, 0x3314},
    {0x3318, 0x3318}, {0x3322, 0x3322}, {0x3323, 0x3323}, {0x3326, 0x3326}, {0x3327, 0x3327}, {0x332B, 0x332B},
    {0x3336, 0x3336}, {0x333B, 0x333B}, {0x3349, 0x3349}, {0x334A, 0x334A}, {0x334D, 0x334D}, {0x3351, 0x3351},
    {0x3357, 0x3357}, {0x337B, 0x337E}, {0x338E, 0x338E}, {0x338F, 0x338F}, {0x339C, 0x339E}, {0x33A1, 0x33A1},
    {0x33C4, 0x33C4}, {0x33CD, 0x33CD}, {0xFF04, 0xFF04}, {0xFF0B, 0xFF0B}, {0xFF1C, 0xFF1E}, {0xFF3E, 0xFF3E},
    {0xFF40, 0xFF40}, {0xFF5C, 0xFF5C}, {0xFF5E, 0xFF5E}, {0xFFE0, 0xFFE5},
};

constexpr std::size_t countLetterModifiers() {
    std::size_t count = 0;
    for (Range const & range : letterModifierRanges)
        count += static_cast<std::size_t>(range.last - range.first) + 1;
    return count;
}

constexpr std::size_t letterModifierCount = countLetterModifiers();
static_assert(letterModifierCount == 178);

constexpr bool rangesAscend() {
    wchar_t before = 0;
    for (Range const & range : letterModifierRanges) {
        if (range.first <= before || range.last < range.first)
            return false;
        before = range.last;
    }
    return true;
}
static_assert(rangesAscend());

// One bit for each value, so that asking costs the same for every character: predicates run over whole texts.
constexpr std::array<unsigned, 0x10000 / 32> makeLetterModifierBits() {
    std::array<unsigned, 0x10000 / 32> bits{};
    for (Range const & range : letterModifierRanges)
        for (unsigned c = range.first; c <= range.last; ++c)
            bits[c / 32] |= 1U << (c % 32);
    return bits;
}
constexpr auto letterModifierBits = makeLetterModifierBits();

int byteOf(char c) { return static_cast<unsigned char>(c); }

std::wint_t unitOf(wchar_t c) { return c; }

// What the runtime gives for a unit must be one again.
wchar_t unitOr(std::wint_t value, wchar_t otherwise) {
    return value <= 0xFFFF ? static_cast<wchar_t>(value) : otherwise;
}

} // namespace

bool isAscii(char c) { return byteOf(c) < 128; }
bool isAscii(wchar_t c) { return c < 128; }

bool isAscii(char const * text) {
    if (text == nullptr)
        return true;
    for (; *text != '\0'; ++text)
        if (!isAscii(*text))
            return false;
    return true;
}

bool isUpper(char c) { return std::isupper(byteOf(c)) != 0; }
bool isUpper(wchar_t c) { return std::iswupper(unitOf(c)) != 0; }
bool isLower(char c) { return std::islower(byteOf(c)) != 0; }
bool isLower(wchar_t c) { return std::iswlower(unitOf(c)) != 0; }
bool isDigit(char c) { return std::isdigit(byteOf(c)) != 0; }
bool isDigit(wchar_t c) { return std::iswdigit(unitOf(c)) != 0; }
bool isXDigit(char c) { return std::isxdigit(byteOf(c)) != 0; }
bool isXDigit(wchar_t c) { return std::iswxdigit(unitOf(c)) != 0; }
bool isSpace(char c) { return std::isspace(byteOf(c)) != 0; }
bool isSpace(wchar_t c) { return std::iswspace(unitOf(c)) != 0; }
bool isCntrl(char c) { return std::iscntrl(byteOf(c)) != 0; }
bool isCntrl(wchar_t c) { return std::iswcntrl(unitOf(c)) != 0; }

bool isNewLine(char c) { return (c == '\n' || c == '\r') && isCntrl(c); }
bool isNewLine(wchar_t c) { return (c == L'\n' || c == L'\r') && isCntrl(c); }
bool isTab(char c) { return c == '\t' && isCntrl(c); }
bool isTab(wchar_t c) { return c == L'\t' && isCntrl(c); }

bool isLetterModifier(char) { return false; }
bool isLetterModifier(wchar_t c) { return (letterModifierBits[c / 32U] >> (c % 32U) & 1U) != 0; }

bool isAlnum(char c) { return std::isalnum(byteOf(c)) != 0 || isLetterModifier(c); }
bool isAlnum(wchar_t c) { return std::iswalnum(unitOf(c)) != 0 || isLetterModifier(c); }
bool isPunct(char c) { return std::ispunct(byteOf(c)) != 0 && !isLetterModifier(c); }
bool isPunct(wchar_t c) { return std::iswpunct(unitOf(c)) != 0 && !isLetterModifier(c); }
bool isPrint(char c) { return std::isprint(byteOf(c)) != 0 || isLetterModifier(c); }
bool isPrint(wchar_t c) { return c != L'\t' && (std::iswprint(unitOf(c)) != 0 || isLetterModifier(c)); }
bool isGraph(char c) { return std::isgraph(byteOf(c)) != 0 || isLetterModifier(c); }
bool isGraph(wchar_t c) { return std::iswgraph(unitOf(c)) != 0 || isLetterModifier(c); }
bool isAlpha(char c) { return isAlnum(c) && !isDigit(c); }
bool isAlpha(wchar_t c) { return isAlnum(c) && !isDigit(c); }

char toUpper(char c) { return static_cast<char>(std::toupper(byteOf(c))); }
wchar_t toUpper(wchar_t c) { return unitOr(std::towupper(unitOf(c)), c); }
char toLower(char c) { return static_cast<char>(std::tolower(byteOf(c))); }
wchar_t toLower(wchar_t c) { return unitOr(std::towlower(unitOf(c)), c); }

} // namespace qvString
