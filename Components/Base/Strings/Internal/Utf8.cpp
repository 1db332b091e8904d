#include "Base/Strings/Internal/Utf8.h"

#include <cstdint>
#include <cstring>

namespace qvString::utf8 {

namespace {

// Bytes and units are taken in blocks of this many, in loops that compilers turn into vector code.
constexpr std::ptrdiff_t block = 16;

unsigned byteAt(char const * text) { return static_cast<unsigned char>(*text); }

bool isAsciiBlock(char const * text) {
    std::uint64_t low;
    std::uint64_t high;
    std::memcpy(&low, text, 8);
    std::memcpy(&high, text + 8, 8);
    return ((low | high) & 0x8080808080808080U) == 0;
}

bool isAsciiBlock(wchar_t const * units) {
    std::uint64_t parts[4];
    std::memcpy(parts, units, sizeof parts);
    return ((parts[0] | parts[1] | parts[2] | parts[3]) & 0xFF80FF80FF80FF80U) == 0;
}

// The bounds of the second byte, which is where overlong forms, surrogates and what lies beyond U+10FFFF are told
// apart.
struct SecondByte {
    unsigned least;
    unsigned most;
};
SecondByte secondByteOf(unsigned lead) {
    switch (lead) {
    case 0xE0:
        return {0xA0, 0xBF};
    case 0xED:
        return {0x80, 0x9F};
    case 0xF0:
        return {0x90, 0xBF};
    case 0xF4:
        return {0x80, 0x8F};
    default:
        return {0x80, 0xBF};
    }
}

} // namespace

Step decode(char const * text, char const * end) {
    unsigned const lead = byteAt(text);
    if (lead < 0x80)
        return {lead, 1, true};
    if (lead < 0xC2 || lead > 0xF4)
        return {replacement, 1, false};
    unsigned const size = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    std::ptrdiff_t const there = end - text;
    SecondByte const second = secondByteOf(lead);
    if (there < 2 || byteAt(text + 1) < second.least || byteAt(text + 1) > second.most)
        return {replacement, 1, false};
    char32_t value = (lead & (0x7FU >> size)) << 6 | (byteAt(text + 1) & 0x3F);
    for (unsigned i = 2; i < size; ++i) {
        if (there <= static_cast<std::ptrdiff_t>(i) || (byteAt(text + i) & 0xC0) != 0x80)
            return {replacement, i, false};
        value = value << 6 | (byteAt(text + i) & 0x3F);
    }
    return {value, size, true};
}

unsigned encode(char32_t value, char * bytes) {
    if (value < 0x80) {
        bytes[0] = static_cast<char>(value);
        return 1;
    }
    if (value < 0x800) {
        bytes[0] = static_cast<char>(0xC0 | value >> 6);
        bytes[1] = static_cast<char>(0x80 | (value & 0x3F));
        return 2;
    }
    if (value < 0x10000) {
        bytes[0] = static_cast<char>(0xE0 | value >> 12);
        bytes[1] = static_cast<char>(0x80 | (value >> 6 & 0x3F));
        bytes[2] = static_cast<char>(0x80 | (value & 0x3F));
        return 3;
    }
    bytes[0] = static_cast<char>(0xF0 | value >> 18);
    bytes[1] = static_cast<char>(0x80 | (value >> 12 & 0x3F));
    bytes[2] = static_cast<char>(0x80 | (value >> 6 & 0x3F));
    bytes[3] = static_cast<char>(0x80 | (value & 0x3F));
    return 4;
}

Converted utf16Length(char const * text, std::size_t length) {
    char const * const end = text + length;
    Converted result{0, true};
    while (text != end) {
        if (end - text >= block && isAsciiBlock(text)) {
            text += block;
            result.count += block;
            continue;
        }
        Step const step = decode(text, end);
        text += step.length;
        result.count += step.value < 0x10000 ? 1 : 2;
        result.isWellFormed &= step.isWellFormed;
    }
    return result;
}

Converted toUtf16(char const * text, std::size_t length, wchar_t * units) {
    char const * const end = text + length;
    wchar_t * const start = units;
    bool isWellFormed = true;
    while (text != end) {
        if (end - text >= block && isAsciiBlock(text)) {
            for (int i = 0; i < block; ++i)
                units[i] = static_cast<unsigned char>(text[i]);
            text += block;
            units += block;
            continue;
        }
        Step const step = decode(text, end);
        text += step.length;
        units += toUnits(step.value, units);
        isWellFormed &= step.isWellFormed;
    }
    return {static_cast<std::size_t>(units - start), isWellFormed};
}

std::size_t utf8Length(wchar_t const * units, std::size_t length) {
    wchar_t const * const end = units + length;
    std::size_t count = 0;
    while (units != end) {
        WideStep const step = decodeUnits(units, end);
        units += step.length;
        count += step.value < 0x80 ? 1 : step.value < 0x800 ? 2 : step.value < 0x10000 ? 3 : 4;
    }
    return count;
}

std::size_t toUtf8(wchar_t const * units, std::size_t length, char * text) {
    wchar_t const * const end = units + length;
    char * const start = text;
    while (units != end) {
        if (end - units >= block && isAsciiBlock(units)) {
            for (int i = 0; i < block; ++i)
                text[i] = static_cast<char>(units[i]);
            units += block;
            text += block;
            continue;
        }
        WideStep const step = decodeUnits(units, end);
        units += step.length;
        text += encode((step.value & 0xFFFFF800) == 0xD800 ? replacement : step.value, text);
    }
    return static_cast<std::size_t>(text - start);
}

} // namespace qvString::utf8
