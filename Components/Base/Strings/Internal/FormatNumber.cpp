#include "Base/Strings/Internal/FormatNumber.h"

#include "Base/Platform/PlatformText.h"

#include <cfenv>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace qvString::formatting {

namespace {

constexpr char pairsOfDigits[] = "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
                                 "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
                                 "8081828384858687888990919293949596979899";

// Writes the digits of a number before `end`, none for 0, and gives where they start.
char * writeDecimal(std::uint64_t value, char * end) {
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, pairsOfDigits + value % 100 * 2, 2);
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, pairsOfDigits + value * 2, 2);
    } else if (value != 0)
        *--end = static_cast<char>('0' + value);
    return end;
}

char * writeBits(std::uint64_t value, unsigned bitsPerDigit, char const * alphabet, char * end) {
    for (; value != 0; value >>= bitsPerDigit)
        *--end = alphabet[value & ((1U << bitsPerDigit) - 1)];
    return end;
}

bool isLetter(FormatItem const & item, char lowerCase) {
    return (item.letter | 0x20U) == static_cast<unsigned char>(lowerCase);
}

} // namespace

void NumberText::setInteger(FormatItem const & item, std::uint64_t magnitude, bool isNegative) {
    char * const end = buffer_ + sizeof buffer_;
    char * start;
    char const * const alphabet = item.letter == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
    sign_ = buffer_;
    signLength_ = 0;
    switch (item.letter) {
    case 'd':
    case 'i':
        if (isNegative || item.plus || item.blank)
            buffer_[signLength_++] = isNegative ? '-' : item.plus ? '+' : ' ';
        [[fallthrough]];
    case 'u':
        start = writeDecimal(magnitude, end);
        break;
    case 'o':
        start = writeBits(magnitude, 3, alphabet, end);
        break;
    default:
        start = writeBits(magnitude, isLetter(item, 'b') ? 1 : 4, alphabet, end);
        if (item.alternate && magnitude != 0 && item.letter != 'p') {
            buffer_[signLength_++] = '0';
            buffer_[signLength_++] = static_cast<char>(item.letter);
        }
        break;
    }
    body_ = start;
    bodyLength_ = static_cast<std::size_t>(end - start);
    std::size_t const least = item.precision < 0 ? 1 : static_cast<std::size_t>(item.precision);
    zeros_ = bodyLength_ < least ? least - bodyLength_ : 0;
    if (item.letter == 'o' && item.alternate && zeros_ == 0)
        zeros_ = 1;
    isFilledWithZeros_ = item.zero && !item.left && item.precision < 0;
}

// Lets the runtime write a number without its width, with the flags that are left to it.
template <class Value>
bool NumberText::writeByRuntime(FormatItem const & item, char const * sizeAndLetter, Value value) {
    std::string format = "%"; // short enough to need no memory
    if (item.plus)
        format += '+';
    if (item.blank)
        format += ' ';
    if (item.alternate)
        format += '#';
    if (item.grouped)
        format += '\'';
    format += ".*";
    format += sizeAndLetter;

    char * text = buffer_;
    int const size = std::snprintf(buffer_, sizeof buffer_, format.c_str(), item.precision, value);
    if (size < 0)
        return false;
    std::size_t const length = static_cast<std::size_t>(size);
    if (length >= sizeof buffer_) {
        large_.reset(new (std::nothrow) char[length + 1]);
        text = large_.get();
        if (text == nullptr || std::snprintf(text, length + 1, format.c_str(), item.precision, value) != size)
            return false;
    }
    splitFloating(item, text, length);
    return true;
}

// Zeros up to the width come behind the sign and the prefix, and only before digits.
void NumberText::splitFloating(FormatItem const & item, char const * text, std::size_t length) {
    bool const hasSign = text[0] == '+' || text[0] == '-' || text[0] == ' ';
    bool const isFinite = isDecimal(codeOf(text[hasSign]));
    sign_ = text;
    signLength_ = hasSign + (isFinite && isLetter(item, 'a') ? 2U : 0U);
    body_ = text + signLength_;
    bodyLength_ = length - signLength_;
    isFilledWithZeros_ = item.zero && !item.left && isFinite;
}

// What the runtime writes in a locale whose decimal point is a dot, several times as fast.
bool NumberText::writePlainly(FormatItem const & item, double value) {
    if (item.alternate || item.grouped || isLetter(item, 'a') || !qvPlatform::decimalPointIsDot() ||
        std::fegetround() != FE_TONEAREST)
        return false;
    std::chars_format const form = isLetter(item, 'f')   ? std::chars_format::fixed
                                   : isLetter(item, 'e') ? std::chars_format::scientific
                                                         : std::chars_format::general;
    buffer_[0] = item.plus ? '+' : ' ';
    char * const start = buffer_ + 1;
    auto const [end, error] =
        std::to_chars(start, buffer_ + sizeof buffer_, value, form, item.precision < 0 ? 6 : item.precision);
    if (error != std::errc())
        return false;
    if (item.letter < 'a')
        std::transform(start, end, start, [](char c) { return c >= 'a' ? static_cast<char>(c - 0x20) : c; });
    char const * const text = *start != '-' && (item.plus || item.blank) ? buffer_ : start;
    splitFloating(item, text, static_cast<std::size_t>(end - text));
    return true;
}

bool NumberText::setFloating(FormatItem const & item, double value) {
    char const letter[] = {static_cast<char>(item.letter), '\0'};
    return writePlainly(item, value) || writeByRuntime(item, letter, value);
}

bool NumberText::setFloating(FormatItem const & item, long double value) {
    char const letter[] = {'L', static_cast<char>(item.letter), '\0'};
    return writeByRuntime(item, letter, value);
}

bool NumberText::setGrouped(FormatItem const & item, std::uint64_t magnitude, bool isNegative) {
    FormatItem widthless = item;
    widthless.zero = item.zero && item.precision < 0;
    if (item.letter == 'u')
        return writeByRuntime(widthless, "ju", static_cast<std::uintmax_t>(magnitude));
    return writeByRuntime(widthless, "jd", static_cast<std::intmax_t>(isNegative ? 0 - magnitude : magnitude));
}

bool NumberText::isAscii() const {
    return std::all_of(body_, body_ + bodyLength_, [](char c) { return codeOf(c) < 128; });
}

} // namespace qvString::formatting
