// What narrow and wide strings do alike, on the standard strings inside them.

#ifndef TextOperations_h
#define TextOperations_h

#include "Base/Strings/Internal/Formatter.h"
#include "Base/Strings/qvStringString.h"

#include <algorithm>
#include <cstdarg>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string_view>

namespace qvString::text {

template <class Text>
using ViewOf = std::basic_string_view<typename Text::value_type, typename Text::traits_type>;

/// A terminated text; a null pointer counts as empty.
template <class Text>
ViewOf<Text> viewOf(typename Text::value_type const * terminated) {
    return terminated == nullptr ? ViewOf<Text>() : ViewOf<Text>(terminated);
}

/// The part of a text before its first zero.
template <class Text>
ViewOf<Text> beforeZero(ViewOf<Text> view) {
    return view.substr(0, view.find(typename Text::value_type()));
}

/// Throws when a text of `length` characters cannot take `more`: lengths are handed out in 32 bits.
inline void checkRoom(std::size_t length, std::size_t more, unsigned maxSize) {
    if (length > maxSize || more > maxSize - length)
        throw std::length_error("qvString: text too long");
}

// The largest size_t becomes the largest unsigned; the positions themselves fit.
inline unsigned asPosition(std::size_t position) { return static_cast<unsigned>(position); }

template <class Text>
unsigned find(Text const & text, ViewOf<Text> what, unsigned pos) {
    return text.empty() || what.empty() ? String::npos : asPosition(text.find(what, pos));
}

template <class Text>
unsigned rfind(Text const & text, ViewOf<Text> what, unsigned pos) {
    return text.empty() || what.empty() ? String::npos : asPosition(text.rfind(what, pos));
}

template <class Text, class Predicate>
unsigned findIf(Text const & text, Predicate predicate, unsigned pos) {
    for (std::size_t i = pos; i < text.size(); ++i)
        if (predicate(text[i]))
            return asPosition(i);
    return String::npos;
}

template <class Text, class Predicate>
unsigned rfindIf(Text const & text, Predicate predicate, unsigned pos) {
    for (std::size_t i = text.size(); i-- != 0;)
        if (i <= pos && predicate(text[i]))
            return asPosition(i);
    return String::npos;
}

template <class Text>
std::size_t lengthWithout(Text const & text, unsigned pos, unsigned n) {
    return pos < text.size() ? text.size() - std::min<std::size_t>(n, text.size() - pos) : text.size();
}

template <class Text>
void replace(Text & text, unsigned pos, unsigned n, ViewOf<Text> with, unsigned maxSize) {
    checkRoom(lengthWithout(text, pos, n), with.size(), maxSize);
    text.replace(pos, n, with);
}
template <class Text>
void replace(Text & text, unsigned pos, unsigned n, typename Text::value_type with, unsigned maxSize) {
    checkRoom(lengthWithout(text, pos, n), 1, maxSize);
    text.replace(pos, n, 1, with);
}

template <class Text>
void insert(Text & text, unsigned pos, ViewOf<Text> what, unsigned maxSize) {
    replace(text, pos, 0, what, maxSize);
}
template <class Text>
void insert(Text & text, unsigned pos, typename Text::value_type what, unsigned maxSize) {
    replace(text, pos, 0, what, maxSize);
}

template <class Text>
void append(Text & text, ViewOf<Text> what, unsigned maxSize) {
    checkRoom(text.size(), what.size(), maxSize);
    text.append(what);
}

template <class Text>
void assign(Text & text, ViewOf<Text> what, unsigned maxSize) {
    checkRoom(0, what.size(), maxSize);
    text.assign(what);
}

template <class Text>
void erase(Text & text, unsigned pos, unsigned n) {
    if (!text.empty())
        text.erase(pos, n);
}

template <class Text, class Predicate>
void stripIf(Text & text, Predicate predicate) {
    text.erase(text.begin(), std::find_if_not(text.begin(), text.end(), predicate));
}

template <class Text, class Predicate>
void rstripIf(Text & text, Predicate predicate) {
    text.erase(std::find_if_not(text.rbegin(), text.rend(), predicate).base(), text.end());
}

/// A copy with its terminator, to be released with free().
template <class Text>
typename Text::value_type * mallocCopy(Text const & text) {
    std::size_t const bytes = (text.size() + 1) * sizeof(typename Text::value_type);
    void * const copy = std::malloc(bytes);
    if (copy == nullptr)
        throw std::bad_alloc();
    std::memcpy(copy, text.c_str(), bytes);
    return static_cast<typename Text::value_type *>(copy);
}

/// Replaces a text by a formatted one, unless that is empty or refused, and gives the length that was formatted; npos
/// when nothing was. The result is complete before `text` changes: the arguments may point into it.
template <class Text>
unsigned replaceByFormatted(Text & text, unsigned initialSize, typename Text::value_type const * format,
                            std::va_list args) {
    // Most texts fit here, so that nothing is allocated but their place in the string. What is asked for as a first
    // size is no more than a hint, so it is not believed beyond reason.
    typename Text::value_type local[1024];
    std::size_t const mostAtFirst = 0x10000;
    if (format == nullptr)
        return String::npos;
    Text large;
    std::size_t room = std::size(local);
    if (initialSize > room) {
        room = std::min<std::size_t>(initialSize, mostAtFirst);
        large.resize(room);
    }
    for (;;) {
        std::va_list attempt;
        va_copy(attempt, args);
        std::ptrdiff_t const length = formatText(large.empty() ? local : large.data(), room, format, attempt);
        va_end(attempt);
        if (length <= 0)
            return String::npos;
        std::size_t const size = static_cast<std::size_t>(length);
        if (size < room) {
            if (large.empty())
                text.assign(local, size);
            else {
                large.resize(size);
                text.swap(large);
            }
            return asPosition(size);
        }
        large.resize(size + 1);
        room = size + 1;
    }
}

} // namespace qvString::text

#endif
