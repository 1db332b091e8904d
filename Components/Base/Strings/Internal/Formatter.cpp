#include "Base/Strings/Internal/Formatter.h"

#include "Base/Strings/Internal/FormatItem.h"
#include "Base/Strings/Internal/FormatNumber.h"
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

namespace qvString {

namespace {

using namespace formatting;
using qvPlatform::MultibyteKind;

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
        if constexpr (sizeof(From) == sizeof(Char))
            at_ = std::copy_n(text, stored, at_);
        else
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

enum class Letters {
    Exchanged, // a plain %s is narrow and a plain %S wide in a wide format
    AsRuntime  // a lower-case letter means text of the format's own width
};

enum class Outcome {
    Formatted,
    Failed,
    NeedsExchange, // the format is to be rewritten first
    NeedsRuntime   // it has numbered arguments
};

template <class Char>
class Formatter {
public:
    Formatter(Char * buffer, std::size_t size, Char const * format, std::va_list args, Letters letters)
        : out_(buffer, size), format_(format), at_(format), args_(args), letters_(letters) {}

    Outcome run();
    std::size_t length() const { return out_.length(); }

private:
    static constexpr bool isWide = sizeof(Char) != 1;

    Outcome one();
    bool takesWideText(FormatItem const & item) const;
    void character(FormatItem const & item);
    void text(FormatItem const & item);
    bool integer(FormatItem const & item);
    bool floating(FormatItem const & item);
    void number(FormatItem const & item, NumberText const & text);
    template <class From>
    void textOf(FormatItem const & item, From const * source);
    template <class From>
    void converted(FormatItem const & item, From const * source, std::size_t length, std::size_t limit = SIZE_MAX);

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
    Char const * format_;
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
    FormatItem const item = readItem(at_, args_);
    switch (item.isWhole ? item.letter : 0U) {
    case '%':
        // Behind this the exchange is out of step with the items.
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
        return integer(item) ? Outcome::Formatted : Outcome::Failed;
    case 'e':
    case 'E':
    case 'f':
    case 'F':
    case 'g':
    case 'G':
    case 'a':
    case 'A':
        return floating(item) ? Outcome::Formatted : Outcome::Failed;
    case 'c':
    case 'C':
        character(item);
        return Outcome::Formatted;
    case 's':
    case 'S':
        text(item);
        return Outcome::Formatted;
    case 'n':
        return Outcome::Failed;
    default:
        if constexpr (!isWide)
            if (item.letter == '$' && isForRuntime(format_))
                return Outcome::NeedsRuntime;
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
bool Formatter<Char>::integer(FormatItem const & item) {
    std::uint64_t magnitude;
    bool isNegative = false;
    if (item.letter == 'd' || item.letter == 'i') {
        std::int64_t const value = signedArgument(item.size);
        isNegative = value < 0;
        magnitude = isNegative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    } else if (item.letter == 'p')
        magnitude = reinterpret_cast<std::uintptr_t>(va_arg(args_.list, void *));
    else
        magnitude = unsignedArgument(item.size);
    NumberText text;
    if (!item.grouped || (item.letter != 'd' && item.letter != 'i' && item.letter != 'u'))
        text.setInteger(item, magnitude, isNegative);
    else if (!text.setGrouped(item, magnitude, isNegative))
        return false;
    number(item, text);
    return true;
}

template <class Char>
bool Formatter<Char>::floating(FormatItem const & item) {
    NumberText text;
    bool const isWritten = item.size == Size::LongDouble ? text.setFloating(item, va_arg(args_.list, long double))
                                                         : text.setFloating(item, va_arg(args_.list, double));
    if (isWritten)
        number(item, text);
    return isWritten;
}

// Puts a number with blanks up to the width on one side.
template <class Char>
void Formatter<Char>::number(FormatItem const & item, NumberText const & text) {
    auto const putBody = [&](auto & sink) {
        if constexpr (isWide)
            if (!text.isAscii())
                return widen(sink, text.body(), text.bodyLength(), SIZE_MAX);
        sink.copy(text.body(), text.bodyLength());
    };
    Counter<Char> body;
    putBody(body);
    std::size_t const whole = text.signLength() + text.zeros() + body.length();
    std::size_t const width = static_cast<std::size_t>(item.width);
    std::size_t const padding = width > whole ? width - whole : 0;
    std::size_t const zeros = text.zeros() + (text.isFilledWithZeros() ? padding : 0);
    std::size_t const blanks = text.isFilledWithZeros() ? 0 : padding;
    if (!item.left)
        out_.fill(static_cast<Char>(' '), blanks);
    out_.copy(text.sign(), text.signLength());
    out_.fill(static_cast<Char>('0'), zeros);
    putBody(out_);
    if (item.left)
        out_.fill(static_cast<Char>(' '), blanks);
}

// ---- characters and texts

std::size_t lengthUpTo(wchar_t const * text, std::size_t most) {
    std::size_t length = 0;
    while (length < most && text[length] != 0)
        ++length;
    return length;
}
std::size_t lengthUpTo(char const * text, std::size_t most) {
    if (most == SIZE_MAX)
        return std::strlen(text);
    void const * const zero = std::memchr(text, 0, most);
    return zero == nullptr ? most : static_cast<std::size_t>(static_cast<char const *>(zero) - text);
}

template <class Char>
bool Formatter<Char>::takesWideText(FormatItem const & item) const {
    if (item.size == Size::Short || item.size == Size::Char)
        return false;
    if (item.size != Size::Default)
        return true;
    bool const isLowerCase = item.letter == 's' || item.letter == 'c';
    bool const isExchanged = isWide && letters_ == Letters::Exchanged && item.isPlain;
    return (isLowerCase != isExchanged) == isWide;
}

template <class Char>
void Formatter<Char>::character(FormatItem const & item) {
    int const argument = va_arg(args_.list, int);
    if (takesWideText(item)) {
        wchar_t const unit = static_cast<wchar_t>(argument);
        converted(item, &unit, 1);
    } else {
        char const byte = static_cast<char>(argument);
        converted(item, &byte, 1);
    }
}

template <class Char>
void Formatter<Char>::text(FormatItem const & item) {
    if (takesWideText(item))
        textOf(item, va_arg(args_.list, wchar_t const *));
    else
        textOf(item, va_arg(args_.list, char const *));
}

template <class Char>
template <class From>
void Formatter<Char>::textOf(FormatItem const & item, From const * source) {
    // A text that the precision cuts short need not be terminated: no more of it is read than is put, but for the unit
    // behind half of a surrogate pair.
    std::size_t const limit = item.precision < 0 ? SIZE_MAX : static_cast<std::size_t>(item.precision);
    if (source == nullptr)
        converted(item, "(null)", limit < 6 ? 0 : 6);
    else if (sizeof(From) == sizeof(Char) || limit == SIZE_MAX)
        converted(item, source, lengthUpTo(source, limit));
    else
        converted(item, source, SIZE_MAX, limit);
}

// Puts a text with its width: `length` elements of it, or up to its terminator for SIZE_MAX, but not more than `limit`
// of the result.
template <class Char>
template <class From>
void Formatter<Char>::converted(FormatItem const & item, From const * source, std::size_t length, std::size_t limit) {
    auto const putInto = [&](auto & sink) {
        if constexpr (sizeof(From) == sizeof(Char))
            sink.copy(source, length);
        else if constexpr (isWide)
            widen(sink, source, length, limit);
        else
            narrow(sink, source, length, limit);
    };
    std::size_t blanks = 0;
    if (item.width != 0) {
        Counter<Char> counter;
        putInto(counter);
        std::size_t const width = static_cast<std::size_t>(item.width);
        blanks = width > counter.length() ? width - counter.length() : 0;
    }
    if (!item.left)
        out_.fill(static_cast<Char>(' '), blanks);
    putInto(out_);
    if (item.left)
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

template <class Char>
std::ptrdiff_t result(Formatter<Char> const & formatter, Outcome outcome) {
    return outcome == Outcome::Formatted ? static_cast<std::ptrdiff_t>(formatter.length()) : formatFailed;
}

} // namespace

std::ptrdiff_t formatText(char * buffer, std::size_t size, char const * format, std::va_list args) {
    Formatter<char> formatter(buffer, size, format, args, Letters::AsRuntime);
    Outcome const outcome = formatter.run();
    if (outcome != Outcome::NeedsRuntime)
        return result(formatter, outcome);
    int const length = std::vsnprintf(buffer, size, format, args);
    return length < 0 ? formatFailed : length;
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
