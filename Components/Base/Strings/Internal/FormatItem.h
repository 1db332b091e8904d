// One item of a printf-style format, from its '%' to its letter, and how it is read.

#ifndef FormatItem_h
#define FormatItem_h

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstddef>
#include <type_traits>

namespace qvString::formatting {

enum class Size { Default, Char, Short, Long, LongLong, LongDouble };

struct FormatItem {
    bool left = false;
    bool plus = false;
    bool blank = false;
    bool alternate = false;
    bool zero = false;
    bool grouped = false;
    bool isPlain = true; // no more than one '-', then digits, '.', digits: what the exchange of %s and %S recognises
    bool isWhole = true; // false where the text ends or a number is too large
    int width = 0;
    int precision = -1;
    Size size = Size::Default;
    unsigned letter = 0;
};

// A list that can be handed on by reference, whatever va_list is.
struct Arguments {
    explicit Arguments(std::va_list args) { va_copy(list, args); }
    ~Arguments() { va_end(list); }
    Arguments(Arguments const &) = delete;
    Arguments & operator=(Arguments const &) = delete;

    std::va_list list;
};

template <class Char>
unsigned codeOf(Char c) {
    return static_cast<std::make_unsigned_t<Char>>(c);
}
template <>
inline unsigned codeOf(wchar_t c) {
    return c;
}

inline bool isDecimal(unsigned c) { return c - '0' < 10; }

// Reads the digits of a number; false when it is too large for an int.
template <class Char>
bool readNumber(Char const *& at, int & number) {
    long value = 0;
    for (; isDecimal(codeOf(*at)); ++at) {
        value = value * 10 + static_cast<int>(codeOf(*at) - '0');
        if (value > INT_MAX - 64)
            return false;
    }
    number = static_cast<int>(value);
    return true;
}

template <class Char>
void readFlags(Char const *& at, FormatItem & spec) {
    int count = 0;
    for (;; ++at, ++count) {
        switch (codeOf(*at)) {
        case '-':
            spec.isPlain = spec.isPlain && count == 0;
            spec.left = true;
            break;
        case '0':
            spec.zero = true;
            break;
        case '+':
            spec.plus = true;
            spec.isPlain = false;
            break;
        case ' ':
            spec.blank = true;
            spec.isPlain = false;
            break;
        case '#':
            spec.alternate = true;
            spec.isPlain = false;
            break;
        case '\'':
            spec.grouped = true;
            spec.isPlain = false;
            break;
        default:
            return;
        }
    }
}

template <class Char>
void readSize(Char const *& at, FormatItem & spec) {
    Char const * const start = at;
    switch (codeOf(*at)) {
    case 'h':
        spec.size = codeOf(*++at) == 'h' ? (++at, Size::Char) : Size::Short;
        break;
    case 'l':
        spec.size = codeOf(*++at) == 'l' ? (++at, Size::LongLong) : Size::Long;
        break;
    case 'w':
    case 'z':
    case 't':
        spec.size = Size::Long;
        ++at;
        break;
    case 'j':
    case 'q':
        spec.size = Size::LongLong;
        ++at;
        break;
    case 'L':
        spec.size = Size::LongDouble;
        ++at;
        break;
    case 'I':
        ++at;
        if (codeOf(at[0]) == '6' && codeOf(at[1]) == '4') {
            spec.size = Size::LongLong;
            at += 2;
        } else if (codeOf(at[0]) == '3' && codeOf(at[1]) == '2')
            at += 2;
        else
            spec.size = Size::Long;
        break;
    default:
        break;
    }
    spec.isPlain = spec.isPlain && at == start;
}
static_assert(sizeof(long) == sizeof(void *) && sizeof(long) == sizeof(std::size_t));

// Reads an item behind its '%', its arguments for '*' included, and moves behind its letter.
template <class Char>
FormatItem readItem(Char const *& at, Arguments & args) {
    FormatItem spec;
    readFlags(at, spec);
    if (codeOf(*at) == '*') {
        ++at;
        spec.isPlain = false;
        spec.width = va_arg(args.list, int);
        if (spec.width < 0) {
            spec.left = true;
            spec.isWhole = spec.width != INT_MIN;
            spec.width = spec.isWhole ? -spec.width : 0;
        }
    } else
        spec.isWhole = readNumber(at, spec.width);
    if (spec.isWhole && codeOf(*at) == '.') {
        ++at;
        if (codeOf(*at) == '*') {
            ++at;
            spec.isPlain = false;
            spec.precision = std::max(va_arg(args.list, int), -1);
        } else
            spec.isWhole = readNumber(at, spec.precision);
    }
    if (!spec.isWhole)
        return spec;
    readSize(at, spec);
    spec.letter = codeOf(*at);
    if (spec.letter == 0)
        spec.isWhole = false;
    else
        ++at;
    return spec;
}

} // namespace qvString::formatting

#endif
