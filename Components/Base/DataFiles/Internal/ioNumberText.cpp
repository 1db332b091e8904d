#include "Base/DataFiles/Internal/ioNumberText.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace ioNumberText {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

struct Sign {
    bool negative = false;
    char const * behind;
};

Sign signAt(char const * begin, char const * end) {
    while (begin != end && isWhite(*begin)) {
        ++begin;
    }
    if (begin != end && (*begin == '-' || *begin == '+')) {
        return {*begin == '-', begin + 1};
    }
    return {false, begin};
}

template <typename Unsigned>
struct Magnitude {
    Unsigned value;
    bool overflow;
};

// The digits' value, or the largest value when they say more.
template <typename Unsigned>
Magnitude<Unsigned> magnitude(char const *& at, char const * end) {
    constexpr Unsigned largest = std::numeric_limits<Unsigned>::max();
    Unsigned value = 0;
    bool overflow = false;
    for (; at != end && isDigit(*at); ++at) {
        auto const digit = static_cast<Unsigned>(*at - '0');
        overflow = overflow || value > (largest - digit) / 10;
        value = static_cast<Unsigned>(value * 10 + digit);
    }
    return {overflow ? largest : value, overflow};
}

template <typename Signed, typename Unsigned>
Signed parseSigned(char const * begin, char const * end, char const ** next) {
    Sign const sign = signAt(begin, end);
    char const * at = sign.behind;
    Unsigned const value = magnitude<Unsigned>(at, end).value;
    if (next) {
        *next = at == sign.behind ? begin : at;
    }
    constexpr auto largest = static_cast<Unsigned>(std::numeric_limits<Signed>::max());
    if (sign.negative) {
        return value > largest ? std::numeric_limits<Signed>::min() : static_cast<Signed>(-static_cast<Signed>(value));
    }
    return static_cast<Signed>(value > largest ? largest : value);
}

template <typename Unsigned>
Unsigned parseUnsigned(char const * begin, char const * end, char const ** next) {
    Sign const sign = signAt(begin, end);
    char const * at = sign.behind;
    auto const [value, overflow] = magnitude<Unsigned>(at, end);
    if (next) {
        *next = at == sign.behind ? begin : at;
    }
    // A number that is too large stays the largest one, whatever its sign.
    return sign.negative && !overflow ? static_cast<Unsigned>(Unsigned{0} - value) : value;
}

bool isHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

bool startsHexadecimal(char const * at, char const * end) {
    return end - at > 2 && at[0] == '0' && (at[1] == 'x' || at[1] == 'X');
}

// Whether a number that no double holds is too large, rather than too small: the exponent of its first digit that
// is not zero tells.
bool isTooLarge(char const * at, char const * end, bool hexadecimal) {
    std::int64_t exponent = 0;
    bool behindPoint = false;
    bool significant = false;
    auto const isExponentSign = [&](char c) { return hexadecimal ? (c | 0x20) == 'p' : (c | 0x20) == 'e'; };
    int const step = hexadecimal ? 4 : 1;
    for (; at != end && !isExponentSign(*at); ++at) {
        if (*at == '.') {
            behindPoint = true;
            continue;
        }
        significant = significant || *at != '0';
        if (significant && !behindPoint) {
            exponent += step;
        } else if (!significant && behindPoint) {
            exponent -= step;
        }
    }
    if (at != end) {
        exponent += parseSigned<std::int32_t, std::uint32_t>(at + 1, end, nullptr);
    }
    return exponent > 0;
}

double parseMagnitude(char const *& at, char const * end) {
    bool const hexadecimal = startsHexadecimal(at, end);
    auto const format = hexadecimal ? std::chars_format::hex : std::chars_format::general;
    char const * const begin = hexadecimal ? at + 2 : at;
    double value = 0;
    auto const result = std::from_chars(begin, end, value, format);
    // Behind the prefix stand digits or the point: no sign, no "inf" and no "nan".
    bool const isNumber = begin != end && (hexadecimal ? isHexDigit(*begin) || *begin == '.' : *begin != '-');
    if (result.ec == std::errc::invalid_argument || !isNumber) {
        at += hexadecimal ? 1 : 0; // the 0 in front of the x is a number
        return 0;
    }
    if (result.ec == std::errc::result_out_of_range) {
        value = isTooLarge(begin, result.ptr, hexadecimal) ? std::numeric_limits<double>::infinity() : 0.0;
    }
    at = result.ptr;
    return value;
}

// As "%.<precision>g" prints.
template <int precision, typename Float>
char * writeGeneral(char * out, Float value) {
    return std::to_chars(out, out + maxLength, static_cast<double>(value), std::chars_format::general, precision).ptr;
}

} // namespace

char * writeInt(char * out, std::int32_t value) { return std::to_chars(out, out + maxLength, value).ptr; }
char * writeUInt(char * out, std::uint32_t value) { return std::to_chars(out, out + maxLength, value).ptr; }
char * writeInt64(char * out, std::int64_t value) { return std::to_chars(out, out + maxLength, value).ptr; }
char * writeUInt64(char * out, std::uint64_t value) { return std::to_chars(out, out + maxLength, value).ptr; }

char * writeFloat(char * out, float value) { return writeGeneral<7>(out, value); }

char * writeDouble(char * out, double value) { return writeGeneral<16>(out, value); }

std::int32_t parseInt(char const * begin, char const * end, char const ** next) {
    return parseSigned<std::int32_t, std::uint32_t>(begin, end, next);
}

std::uint32_t parseUInt(char const * begin, char const * end, char const ** next) {
    return parseUnsigned<std::uint32_t>(begin, end, next);
}

std::int64_t parseInt64(char const * begin, char const * end, char const ** next) {
    return parseSigned<std::int64_t, std::uint64_t>(begin, end, next);
}

std::uint64_t parseUInt64(char const * begin, char const * end, char const ** next) {
    return parseUnsigned<std::uint64_t>(begin, end, next);
}

double parseDouble(char const * begin, char const * end, char const ** next) {
    Sign const sign = signAt(begin, end);
    char const * at = sign.behind;
    double const value = parseMagnitude(at, end);
    if (next) {
        *next = at == sign.behind ? begin : at;
    }
    return sign.negative && at != sign.behind ? -value : value;
}

} // namespace ioNumberText
