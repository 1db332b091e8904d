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
void readFlags(Char const *& at, FormatItem & item) {
    int count = 0;
    for (;; ++at, ++count) {
        switch (codeOf(*at)) {
        case '-':
            item.isPlain = item.isPlain && count == 0;
            item.left = true;
            break;
        case '0':
            item.zero = true;
            break;
        case '+':
            item.plus = true;
            item.isPlain = false;
            break;
        case ' ':
            item.blank = true;
            item.isPlain = false;
            break;
        case '#':
            item.alternate = true;
            item.isPlain = false;
            break;
        case '\'':
            item.grouped = true;
            item.isPlain = false;
            break;
        default:
            return;
        }
    }
}

template <class Char>
void readSize(Char const *& at, FormatItem & item) {
    Char const * const start = at;
    switch (codeOf(*at)) {
    case 'h':
        item.size = codeOf(*++at) == 'h' ? (++at, Size::Char) : Size::Short;
        break;
    case 'l':
        item.size = codeOf(*++at) == 'l' ? (++at, Size::LongLong) : Size::Long;
        break;
    case 'w':
    case 'z':
    case 't':
        item.size = Size::Long;
        ++at;
        break;
    case 'j':
    case 'q':
        item.size = Size::LongLong;
        ++at;
        break;
    case 'L':
        item.size = Size::LongDouble;
        ++at;
        break;
    case 'I':
        ++at;
        if (codeOf(at[0]) == '6' && codeOf(at[1]) == '4') {
            item.size = Size::LongLong;
            at += 2;
        } else if (codeOf(at[0]) == '3' && codeOf(at[1]) == '2')
            at += 2;
        else
            item.size = Size::Long;
        break;
    default:
        break;
    }
    item.isPlain = item.isPlain && at == start;
}
static_assert(sizeof(long) == sizeof(void *) && sizeof(long) == sizeof(std::size_t));

// Reads an item behind its '%', its arguments for '*' included, and moves behind its letter.
template <class Char>
FormatItem readItem(Char const *& at, Arguments & args) {
    FormatItem item;
    readFlags(at, item);
    if (codeOf(*at) == '*') {
        ++at;
        item.isPlain = false;
        item.width = va_arg(args.list, int);
        if (item.width < 0) {
            item.left = true;
            item.isWhole = item.width != INT_MIN;
            item.width = item.isWhole ? -item.width : 0;
        }
    } else
        item.isWhole = readNumber(at, item.width);
    if (item.isWhole && codeOf(*at) == '.') {
        ++at;
        if (codeOf(*at) == '*') {
            ++at;
            item.isPlain = false;
            item.precision = std::max(va_arg(args.list, int), -1);
        } else
            item.isWhole = readNumber(at, item.precision);
    }
    if (!item.isWhole)
        return item;
    readSize(at, item);
    item.letter = codeOf(*at);
    if (item.letter == 0)
        item.isWhole = false;
    else
        ++at;
    return item;
}

} // namespace qvString::formatting

#endif
