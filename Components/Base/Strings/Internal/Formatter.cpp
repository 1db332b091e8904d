#include "Base/Strings/Internal/Formatter.h"

#include "Base/Strings/Internal/MultibyteText.h"
#include "Base/Strings/Internal/Utf8.h"
#include "Base/Strings/qvStringEncoding.h"
#include "Base/Strings/qvStringFormat.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

namespace qvString {

namespace {

using qvPlatform::MultibyteKind;

enum class Size { Default, Char, Short, Long, LongLong, LongDouble };

// One specification of a format, from its '%' to its letter.
struct Specification {
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
unsigned codeOf(wchar_t c) {
    return c;
}

bool isDecimal(unsigned c) { return c - '0' < 10; }

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
void readFlags(Char const *& at, Specification & spec) {
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
void readSize(Char const *& at, Specification & spec) {
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

// Reads a specification behind its '%', its arguments for '*' included, and moves behind its letter.
template <class Char>
Specification readSpecification(Char const *& at, Arguments & args) {
    Specification spec;
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

// ---- where the text goes

template <class Char>
class Output {
public:
    Output(Char * buffer, std::size_t size)
        : at_(buffer), end_(size == 0 ? buffer : buffer + size - 1), hasTerminator_(size != 0) {}

    void put(Char c) {
        if (at_ != end_)
            *at_++ = c;
        ++length_;
    }
    void fill(Char c, std::size_t count) {
        at_ = std::fill_n(at_, std::min(count, room()), c);
        length_ += count;
    }
    template <class From>
    void copy(From const * text, std::size_t count) {
        std::size_t const stored = std::min(count, room());
        at_ = std::transform(text, text + stored, at_, [](From c) { return static_cast<Char>(codeOf(c)); });
        length_ += count;
    }
    // Puts all of a character or nothing, and nothing more behind one that did not fit.
    void putWhole(Char const * parts, std::size_t count) {
        if (count > room())
            end_ = at_;
        copy(parts, count);
    }
    void terminate() {
        if (hasTerminator_)
            *at_ = Char();
    }
    std::size_t length() const { return length_; }

private:
    std::size_t room() const { return static_cast<std::size_t>(end_ - at_); }

    Char * at_;
    Char * end_;
    std::size_t length_ = 0;
    bool hasTerminator_;
};

// Counts only: the width of a text must be known before its first character is put.
template <class Char>
class Counter {
public:
    template <class From>
    void copy(From const *, std::size_t count) {
        length_ += count;
    }
    void putWhole(Char const *, std::size_t count) { length_ += count; }
    std::size_t length() const { return length_; }

private:
    std::size_t length_ = 0;
};

// ---- the formatter

enum class Letters {
    Exchanged, // a plain %s is narrow and a plain %S wide in a wide format
    AsRuntime  // a lower-case letter means text of the format's own width
};

enum class Outcome { Formatted, Failed, NeedsExchange };

template <class Char>
class Formatter {
public:
    Formatter(Char * buffer, std::size_t size, Char const * format, std::va_list args, Letters letters)
        : out_(buffer, size), at_(format), args_(args), letters_(letters) {}

    Outcome run();
    std::size_t length() const { return out_.length(); }

private:
    static constexpr bool isWide = sizeof(Char) != 1;

    Outcome one();
    bool takesWideText(Specification const & spec) const;
    void character(Specification const & spec);
    void text(Specification const & spec);
    void integer(Specification const & spec);
    void digits(Specification const & spec, std::uint64_t magnitude, bool isNegative);
    bool number(Specification const & spec);
    void padded(Specification const & spec, char const * sign, std::size_t signLength, std::size_t zeros,
                char const * body, std::size_t bodyLength);
    template <class From>
    void textOf(Specification const & spec, From const * source);
    template <class From>
    void converted(Specification const & spec, From const * source, std::size_t length, std::size_t limit = SIZE_MAX);

    template <class From>
    std::size_t plainRun(From const * source, std::size_t most);
    template <class Sink>
    void widen(Sink & sink, char const * source, std::size_t length, std::size_t limit);
    template <class Sink>
    void narrow(Sink & sink, wchar_t const * source, std::size_t length, std::size_t limit);

    std::int64_t signedArgument(Size size);
    std::uint64_t unsignedArgument(Size size);
    MultibyteKind kind();

    Output<Char> out_;
    Char const * at_;
    Arguments args_;
    Letters letters_;
    MultibyteKind kind_ = MultibyteKind::Other;
    bool kindIsKnown_ = false;
};

template <class Char>
MultibyteKind Formatter<Char>::kind() {
    if (!kindIsKnown_) {
        kind_ = qvPlatform::multibyteKind();
        kindIsKnown_ = true;
    }
    return kind_;
}

template <class Char>
Outcome Formatter<Char>::run() {
    Outcome outcome = Outcome::Formatted;
    while (*at_ != Char() && outcome == Outcome::Formatted) {
        Char const * const start = at_;
        while (*at_ != Char() && codeOf(*at_) != '%')
            ++at_;
        out_.copy(start, static_cast<std::size_t>(at_ - start));
        if (*at_ != Char())
            outcome = one();
    }
    out_.terminate();
    return out_.length() <= INT_MAX ? outcome : Outcome::Failed;
}

// Handles what begins with the '%' at at_.
template <class Char>
Outcome Formatter<Char>::one() {
    Char const * const start = at_++;
    Specification const spec = readSpecification(at_, args_);
    switch (spec.isWhole ? spec.letter : 0U) {
    case '%':
        // Behind this the exchange is out of step with the specifications.
        if (isWide && letters_ == Letters::Exchanged && at_ - start != 2)
            return Outcome::NeedsExchange;
        out_.put(static_cast<Char>('%'));
        return Outcome::Formatted;
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
    case 'b':
    case 'B':
    case 'p':
        if (spec.grouped && (spec.letter == 'd' || spec.letter == 'i' || spec.letter == 'u'))
            return number(spec) ? Outcome::Formatted : Outcome::Failed;
        integer(spec);
        return Outcome::Formatted;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        return number(spec) ? Outcome::Formatted : Outcome::Failed;
    case 'c':
    case 'C':
        character(spec);
        return Outcome::Formatted;
    case 's':
    case 'S':
        text(spec);
        return Outcome::Formatted;
    case 'n':
        return Outcome::Failed;
    default:
        // Which arguments the rest would take is not known any more.
        at_ = start;
        while (*at_ != Char())
            out_.put(*at_++);
        return Outcome::Formatted;
    }
}

template <class Char>
std::int64_t Formatter<Char>::signedArgument(Size size) {
    switch (size) {
    case Size::Char:
        return static_cast<signed char>(va_arg(args_.list, int));
    case Size::Short:
        return static_cast<short>(va_arg(args_.list, int));
    case Size::Long:
        return va_arg(args_.list, long);
    case Size::LongLong:
    case Size::LongDouble:
        return va_arg(args_.list, long long);
    default:
        return va_arg(args_.list, int);
    }
}

template <class Char>
std::uint64_t Formatter<Char>::unsignedArgument(Size size) {
    switch (size) {
    case Size::Char:
        return static_cast<unsigned char>(va_arg(args_.list, unsigned));
    case Size::Short:
        return static_cast<unsigned short>(va_arg(args_.list, unsigned));
    case Size::Long:
        return va_arg(args_.list, unsigned long);
    case Size::LongLong:
    case Size::LongDouble:
        return va_arg(args_.list, unsigned long long);
    default:
        return va_arg(args_.list, unsigned);
    }
}

template <class Char>
void Formatter<Char>::integer(Specification const & spec) {
    if (spec.letter == 'd' || spec.letter == 'i') {
        std::int64_t const value = signedArgument(spec.size);
        std::uint64_t const magnitude = static_cast<std::uint64_t>(value);
        digits(spec, value < 0 ? 0 - magnitude : magnitude, value < 0);
    } else if (spec.letter == 'p')
        digits(spec, reinterpret_cast<std::uintptr_t>(va_arg(args_.list, void *)), false);
    else
        digits(spec, unsignedArgument(spec.size), false);
}

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

template <class Char>
void Formatter<Char>::digits(Specification const & spec, std::uint64_t magnitude, bool isNegative) {
    char buffer[64];
    char * const end = buffer + sizeof buffer;
    char * start = end;
    char sign[2];
    std::size_t signLength = 0;
    char const * const alphabet = spec.letter == 'X' ? "0123456789ABCDEF" : "0123456789abcdef";
    switch (spec.letter) {
    case 'd':
    case 'i':
        if (isNegative || spec.plus || spec.blank)
            sign[signLength++] = isNegative ? '-' : spec.plus ? '+' : ' ';
        [[fallthrough]];
    case 'u':
        start = writeDecimal(magnitude, end);
        break;
    case 'o':
        start = writeBits(magnitude, 3, alphabet, end);
        break;
    default:
        start = writeBits(magnitude, (spec.letter | 0x20U) == 'b' ? 1 : 4, alphabet, end);
        if (spec.alternate && magnitude != 0 && spec.letter != 'p') {
            sign[signLength++] = '0';
            sign[signLength++] = static_cast<char>(spec.letter);
        }
        break;
    }
    std::size_t const length = static_cast<std::size_t>(end - start);
    std::size_t const least = spec.precision < 0 ? 1 : static_cast<std::size_t>(spec.precision);
    std::size_t zeros = length < least ? least - length : 0;
    if (spec.letter == 'o' && spec.alternate && zeros == 0)
        zeros = 1;
    std::size_t const width = static_cast<std::size_t>(spec.width);
    if (spec.zero && !spec.left && spec.precision < 0 && width > signLength + zeros + length)
        zeros = width - signLength - length;
    padded(spec, sign, signLength, zeros, start, length);
}

// Puts a number: its sign or prefix, zeros, digits, with blanks up to the width on one side.
template <class Char>
void Formatter<Char>::padded(Specification const & spec, char const * sign, std::size_t signLength, std::size_t zeros,
                             char const * body, std::size_t bodyLength) {
    std::size_t const whole = signLength + zeros + bodyLength;
    std::size_t const width = static_cast<std::size_t>(spec.width);
    std::size_t const blanks = width > whole ? width - whole : 0;
    if (!spec.left)
        out_.fill(static_cast<Char>(' '), blanks);
    out_.copy(sign, signLength);
    out_.fill(static_cast<Char>('0'), zeros);
    out_.copy(body, bodyLength);
    if (spec.left)
        out_.fill(static_cast<Char>(' '), blanks);
}

// A number as the runtime writes it in the current locale, without its width.
struct RuntimeNumber {
    char fixed[128];
    std::unique_ptr<char[]> large;
    char const * text = fixed;
    std::size_t length = 0;

    template <class Value>
    bool write(char const * format, int precision, Value value) {
        int const size = std::snprintf(fixed, sizeof fixed, format, precision, value);
        if (size < 0)
            return false;
        length = static_cast<std::size_t>(size);
        if (length < sizeof fixed)
            return true;
        large.reset(new (std::nothrow) char[length + 1]);
        text = large.get();
        return text != nullptr && std::snprintf(large.get(), length + 1, format, precision, value) == size;
    }
};

// The specification for the runtime: flags that it understands, a precision to be passed, the largest size.
void writeRuntimeFormat(Specification const & spec, bool isFloat, char * format) {
    *format++ = '%';
    if (spec.plus)
        *format++ = '+';
    if (spec.blank)
        *format++ = ' ';
    if (spec.alternate)
        *format++ = '#';
    if (spec.grouped)
        *format++ = '\'';
    *format++ = '.';
    *format++ = '*';
    if (isFloat && spec.size == Size::LongDouble)
        *format++ = 'L';
    else if (!isFloat)
        *format++ = 'j';
    *format++ = static_cast<char>(spec.letter);
    *format = '\0';
}

// What needs the runtime: floating-point numbers, and digits grouped by the locale.
template <class Char>
bool Formatter<Char>::number(Specification const & spec) {
    bool const isFloat = std::strchr("eEfFgGaA", static_cast<int>(spec.letter)) != nullptr;
    char format[16];
    writeRuntimeFormat(spec, isFloat, format);
    RuntimeNumber number;
    bool isWritten;
    if (!isFloat && (spec.letter == 'd' || spec.letter == 'i'))
        isWritten = number.write(format, spec.precision, static_cast<std::intmax_t>(signedArgument(spec.size)));
    else if (!isFloat)
        isWritten = number.write(format, spec.precision, static_cast<std::uintmax_t>(unsignedArgument(spec.size)));
    else if (spec.size == Size::LongDouble)
        isWritten = number.write(format, spec.precision, va_arg(args_.list, long double));
    else
        isWritten = number.write(format, spec.precision, va_arg(args_.list, double));
    if (!isWritten)
        return false;

    // Zeros up to the width come behind the sign and the prefix, and only before digits.
    std::size_t signLength = number.text[0] == '+' || number.text[0] == '-' || number.text[0] == ' ';
    bool const isFinite = isDecimal(codeOf(number.text[signLength]));
    if (isFinite && (spec.letter | 0x20U) == 'a')
        signLength += 2;
    std::size_t zeros = 0;
    std::size_t const width = static_cast<std::size_t>(spec.width);
    if (spec.zero && !spec.left && isFinite && (isFloat || spec.precision < 0) && width > number.length)
        zeros = width - number.length;
    char const * const body = number.text + signLength;
    std::size_t const bodyLength = number.length - signLength;
    if (std::all_of(body, body + bodyLength, [](char c) { return codeOf(c) < 128; }))
        padded(spec, number.text, signLength, zeros, body, bodyLength);
    else
        converted(spec, number.text, number.length);
    return true;
}

// ---- characters and texts

template <class Char>
std::size_t lengthUpTo(Char const * text, std::size_t most) {
    std::size_t length = 0;
    while (length < most && text[length] != Char())
        ++length;
    return length;
}

template <class Char>
bool Formatter<Char>::takesWideText(Specification const & spec) const {
    if (spec.size == Size::Short || spec.size == Size::Char)
        return false;
    if (spec.size != Size::Default)
        return true;
    bool const isLowerCase = spec.letter == 's' || spec.letter == 'c';
    bool const isExchanged = isWide && letters_ == Letters::Exchanged && spec.isPlain;
    return (isLowerCase != isExchanged) == isWide;
}

template <class Char>
void Formatter<Char>::character(Specification const & spec) {
    int const argument = va_arg(args_.list, int);
    if (takesWideText(spec)) {
        wchar_t const unit = static_cast<wchar_t>(argument);
        converted(spec, &unit, 1);
    } else {
        char const byte = static_cast<char>(argument);
        converted(spec, &byte, 1);
    }
}

template <class Char>
void Formatter<Char>::text(Specification const & spec) {
    if (takesWideText(spec))
        textOf(spec, va_arg(args_.list, wchar_t const *));
    else
        textOf(spec, va_arg(args_.list, char const *));
}

template <class Char>
template <class From>
void Formatter<Char>::textOf(Specification const & spec, From const * source) {
    // A text that the precision cuts short need not be terminated: no more of it is read than is put.
    std::size_t const limit = spec.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(spec.precision);
    if (source == nullptr)
        converted(spec, "(null)", limit < 6 ? 0 : 6);
    else if (sizeof(From) == sizeof(Char) || limit == SIZE_MAX)
        converted(spec, source, lengthUpTo(source, limit));
    else
        converted(spec, source, SIZE_MAX, limit);
}

// Puts a text with its width: `length` elements of it, or up to its terminator for SIZE_MAX, but not more than `limit`
// of the result.
template <class Char>
template <class From>
void Formatter<Char>::converted(Specification const & spec, From const * source, std::size_t length,
                                std::size_t limit) {
    auto const putInto = [&](auto & sink) {
        if constexpr (sizeof(From) == sizeof(Char))
            sink.copy(source, length);
        else if constexpr (isWide)
            widen(sink, source, length, limit);
        else
            narrow(sink, source, length, limit);
    };
    std::size_t blanks = 0;
    if (spec.width != 0) {
        Counter<Char> counter;
        putInto(counter);
        std::size_t const width = static_cast<std::size_t>(spec.width);
        blanks = width > counter.length() ? width - counter.length() : 0;
    }
    if (!spec.left)
        out_.fill(static_cast<Char>(' '), blanks);
    putInto(out_);
    if (spec.left)
        out_.fill(static_cast<Char>(' '), blanks);
}

// How many elements at the start of a text are ASCII characters that stand for themselves.
template <class Char>
template <class From>
std::size_t Formatter<Char>::plainRun(From const * source, std::size_t most) {
    std::size_t run = 0;
    if (kind() != MultibyteKind::Other)
        while (run < most && codeOf(source[run]) - 1 < 127)
            ++run;
    return run;
}

template <class Char>
template <class Sink>
void Formatter<Char>::widen(Sink & sink, char const * source, std::size_t length, std::size_t limit) {
    for (;;) {
        std::size_t const run = plainRun(source, std::min(length, limit));
        sink.copy(source, run);
        source += run;
        limit -= run;
        length -= length == SIZE_MAX ? 0 : run;
        if (limit == 0 || length == 0 || (*source == '\0' && length == SIZE_MAX))
            return;
        char32_t value;
        int taken = decodeMultibyte(kind(), source, length, value);
        wchar_t units[2] = {getDefaultWChar(), 0};
        std::size_t const size = taken < 0 ? 1 : utf8::toUnits(value, units);
        if (size > limit)
            return;
        sink.putWhole(units, size);
        taken = std::max(taken, 1);
        source += taken;
        limit -= size;
        length -= length == SIZE_MAX ? 0 : static_cast<std::size_t>(taken);
    }
}

template <class Char>
template <class Sink>
void Formatter<Char>::narrow(Sink & sink, wchar_t const * source, std::size_t length, std::size_t limit) {
    for (;;) {
        std::size_t const run = plainRun(source, std::min(length, limit));
        sink.copy(source, run);
        source += run;
        limit -= run;
        length -= length == SIZE_MAX ? 0 : run;
        if (limit == 0 || length == 0 || (*source == 0 && length == SIZE_MAX))
            return;
        utf8::WideStep const step = utf8::decodeUnits(source, source + std::min<std::size_t>(length, 2));
        char bytes[qvPlatform::maxMultibyteSize];
        int size = encodeMultibyte(kind(), step.value, bytes);
        if (size < 0) {
            // As many default characters as there are units, like a conversion that meets such a character.
            size = static_cast<int>(step.length);
            std::fill_n(bytes, size, getDefaultMBChar());
        }
        if (static_cast<std::size_t>(size) > limit)
            return;
        sink.putWhole(bytes, static_cast<std::size_t>(size));
        source += step.length;
        limit -= static_cast<std::size_t>(size);
        length -= length == SIZE_MAX ? 0 : step.length;
    }
}

// Whether the runtime's formatter does with a narrow format what is told for ours.
bool isForRuntime(char const * format) {
    while ((format = std::strchr(format, '%')) != nullptr) {
        ++format;
        format += std::strspn(format, "-+ #0'123456789.*$");
        char const * const sizes = format;
        format += std::strspn(format, "hljztqL");
        bool const isLong = std::find(sizes, format, 'l') != format;
        if (*format == '\0' || std::strchr("diouxXbBeEfFgGaAcs%", *format) == nullptr ||
            (isLong && (*format == 's' || *format == 'c')))
            return false;
        ++format;
    }
    return true;
}

template <class Char>
std::ptrdiff_t result(Formatter<Char> const & formatter, Outcome outcome) {
    return outcome == Outcome::Formatted ? static_cast<std::ptrdiff_t>(formatter.length()) : formatFailed;
}

} // namespace

std::ptrdiff_t formatText(char * buffer, std::size_t size, char const * format, std::va_list args) {
    if (isForRuntime(format)) {
        int const length = std::vsnprintf(buffer, size, format, args);
        return length < 0 ? formatFailed : length;
    }
    Formatter<char> formatter(buffer, size, format, args, Letters::AsRuntime);
    return result(formatter, formatter.run());
}

std::ptrdiff_t formatText(wchar_t * buffer, std::size_t size, wchar_t const * format, std::va_list args) {
    Formatter<wchar_t> formatter(buffer, size, format, args, Letters::Exchanged);
    Outcome const outcome = formatter.run();
    if (outcome != Outcome::NeedsExchange)
        return result(formatter, outcome);
    std::unique_ptr<wchar_t, void (*)(void *)> const exchanged(KT_convert_string_format(format), std::free);
    if (exchanged == nullptr)
        return formatFailed;
    Formatter<wchar_t> again(buffer, size, exchanged.get(), args, Letters::AsRuntime);
    return result(again, again.run());
}

} // namespace qvString
