// The conversions between UTF-8 and UTF-16 that everything else in the library rests on.

#ifndef Utf8_h
#define Utf8_h

#include <cstddef>

namespace qvString::utf8 {

/// What stands in for an ill-formed sequence.
inline constexpr char32_t replacement = 0xFFFD;

/// One step through UTF-8.
struct Step {
    char32_t value;    ///< the code point, `replacement` where the bytes are ill-formed
    unsigned length;   ///< bytes that it takes up; of ill-formed ones a maximal subpart
    bool isWellFormed; ///< false for a replacement
};

/// Decodes what stands at `text`, which has at least one byte before `end`.
Step decode(char const * text, char const * end);

/// Writes the one to four bytes of a code point that is no surrogate, and gives their number.
unsigned encode(char32_t value, char * bytes);

/// A number of units, and whether the text that they are made from is well-formed.
struct Converted {
    std::size_t count;
    bool isWellFormed;
};

/// The units that toUtf16() writes; never more than there are bytes.
Converted utf16Length(char const * text, std::size_t length);

/// Converts to UTF-16, with U+FFFD for each maximal subpart that is ill-formed. `units` has room for the result.
Converted toUtf16(char const * text, std::size_t length, wchar_t * units);

/// The bytes that toUtf8() writes; never more than three times the units.
std::size_t utf8Length(wchar_t const * units, std::size_t length);

/// Converts to UTF-8, with U+FFFD for each surrogate that stands alone. `text` has room for the result.
std::size_t toUtf8(wchar_t const * units, std::size_t length, char * text);

inline bool isHighSurrogate(wchar_t unit) { return (unit & 0xFC00) == 0xD800; }
inline bool isLowSurrogate(wchar_t unit) { return (unit & 0xFC00) == 0xDC00; }
inline bool isSurrogate(wchar_t unit) { return (unit & 0xF800) == 0xD800; }

inline char32_t fromSurrogates(wchar_t high, wchar_t low) {
    return 0x10000 + ((static_cast<char32_t>(high) & 0x3FF) << 10) + (low & 0x3FF);
}

/// Writes the one or two units of a code point and gives their number.
inline unsigned toUnits(char32_t value, wchar_t * units) {
    if (value < 0x10000) {
        units[0] = static_cast<wchar_t>(value);
        return 1;
    }
    units[0] = static_cast<wchar_t>(0xD7C0 + (value >> 10));
    units[1] = static_cast<wchar_t>(0xDC00 + (value & 0x3FF));
    return 2;
}

/// The code point at the start of some units, of which there is at least one, and how many of them it takes. A
/// surrogate that stands alone comes out as it is.
struct WideStep {
    char32_t value;
    unsigned length;
};
inline WideStep decodeUnits(wchar_t const * units, wchar_t const * end) {
    if (isHighSurrogate(units[0]) && end - units > 1 && isLowSurrogate(units[1]))
        return {fromSurrogates(units[0], units[1]), 2};
    return {units[0], 1};
}

} // namespace qvString::utf8

#endif
