#include "Base/Strings/qvStringFormat.h"

#include "Base/Strings/Internal/Formatter.h"
#include "Base/Strings/Internal/WideText.h"

#include <charconv>
#include <cstdlib>
#include <cstring>

namespace {

template <class Char>
int formatWhole(Char * buf, unsigned size, Char const * fmt, std::va_list args) {
    if (fmt == nullptr)
        return -1;
    std::ptrdiff_t const length = qvString::formatText(buf, size, fmt, args);
    // The last character but one of the buffer is never used by a text that counts as fitting.
    return length < 0 || length + 1 >= static_cast<std::ptrdiff_t>(size) ? -1 : static_cast<int>(length);
}

bool isDecimal(wchar_t c) { return c >= L'0' && c <= L'9'; }

// Exchanges the letter of the item behind a '%', if it is one of the four, and gives where to go on.
wchar_t * exchangeLetter(wchar_t * at) {
    if (*at == L'%')
        return at + 1;
    if (*at == L'-')
        ++at;
    while (isDecimal(*at))
        ++at;
    if (*at == L'.')
        ++at;
    while (isDecimal(*at))
        ++at;
    if (*at != L's' && *at != L'S' && *at != L'c' && *at != L'C')
        return at;
    *at = static_cast<wchar_t>(*at ^ 0x20);
    return at + 1;
}

constexpr unsigned slots = 3;
constexpr unsigned slotSize = 28;

// The last byte of a buffer is never written, so it stays 0.
using SlotBuffers = char[slots][slotSize];

template <class Integer>
char * writeDigits(SlotBuffers & buffers, unsigned slot, Integer value) {
    char * const buffer = buffers[slot % slots];
    *std::to_chars(buffer, buffer + slotSize - 1, value).ptr = '\0';
    return buffer;
}

} // namespace

int KT_vsnprintf(char * buf, unsigned size, char const * fmt, va_list args) {
    return formatWhole(buf, size, fmt, args);
}

int KT_snprintf(char * buf, unsigned size, char const * fmt, ...) {
    va_list args;
    va_start(args, fmt);
    int const length = KT_vsnprintf(buf, size, fmt, args);
    va_end(args);
    return length;
}

int KT_vswprintf(wchar_t * buf, unsigned size, wchar_t const * fmt, va_list args) {
    return formatWhole(buf, size, fmt, args);
}

int KT_swprintf(wchar_t * buf, unsigned size, wchar_t const * fmt, ...) {
    va_list args;
    va_start(args, fmt);
    int const length = KT_vswprintf(buf, size, fmt, args);
    va_end(args);
    return length;
}

wchar_t * KT_convert_string_format(wchar_t const * fmt) {
    if (fmt == nullptr)
        return nullptr;
    std::size_t const bytes = (qvString::WideTraits::length(fmt) + 1) * sizeof(wchar_t);
    wchar_t * const copy = static_cast<wchar_t *>(std::malloc(bytes));
    if (copy == nullptr)
        return nullptr;
    std::memcpy(copy, fmt, bytes);
    for (wchar_t * at = copy; *at != 0;)
        at = *at == L'%' ? exchangeLetter(at + 1) : at + 1;
    return copy;
}

char * int64ToAscii(int64_t value, unsigned slot) {
    static SlotBuffers buffers;
    return writeDigits(buffers, slot, value);
}

char * uint64ToAscii(uint64_t value, unsigned slot) {
    static SlotBuffers buffers;
    return writeDigits(buffers, slot, value);
}

int64_t asciiToInt64(char const * text) { return text == nullptr ? 0 : std::strtoll(text, nullptr, 10); }

uint64_t asciiToUInt64(char const * text) { return text == nullptr ? 0 : std::strtoull(text, nullptr, 10); }
