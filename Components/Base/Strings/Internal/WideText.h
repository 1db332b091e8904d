// Wide text inside the library: a standard string of 16-bit wchar_t. The standard library's own character traits for
// wchar_t call functions of the C runtime that take 32-bit characters, so these traits stand in for them.

#ifndef WideText_h
#define WideText_h

#include "Base/qvBaseConfig.h"

#include <bit>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <ios>
#include <string>

namespace qvString {

struct WideTraits {
    using char_type = wchar_t;
    using int_type = int;
    using off_type = std::streamoff;
    using pos_type = std::streampos;
    using state_type = std::mbstate_t;
    using comparison_category = std::strong_ordering;

    static constexpr void assign(wchar_t & to, wchar_t const & from) { to = from; }
    static constexpr bool eq(wchar_t a, wchar_t b) { return a == b; }
    static constexpr bool lt(wchar_t a, wchar_t b) { return a < b; }

    static constexpr int compare(wchar_t const * a, wchar_t const * b, std::size_t n) {
        std::size_t i = 0;
        // Four at a time, and of four that differ the first that does.
        if (!std::is_constant_evaluated()) {
            while (i + 4 <= n && fourAt(a + i) == fourAt(b + i))
                i += 4;
            if (i + 4 <= n) {
                std::uint64_t const difference = fourAt(a + i) ^ fourAt(b + i);
                i += static_cast<std::size_t>(std::endian::native == std::endian::little
                                                  ? std::countr_zero(difference)
                                                  : std::countl_zero(difference)) /
                     16;
                return a[i] < b[i] ? -1 : 1;
            }
        }
        for (; i < n; ++i)
            if (a[i] != b[i])
                return a[i] < b[i] ? -1 : 1;
        return 0;
    }
    static constexpr std::size_t length(wchar_t const * text) {
        std::size_t n = 0;
        while (text[n] != 0)
            ++n;
        return n;
    }
    static wchar_t const * find(wchar_t const * text, std::size_t n, wchar_t const & c) {
        // Four at a time: the lane of a word that is 0 borrows when 1 is taken from it.
        constexpr std::uint64_t ones = 0x0001000100010001;
        std::uint64_t const wanted = c * ones;
        std::size_t i = 0;
        for (; i + 4 <= n; i += 4) {
            std::uint64_t const word = fourAt(text + i) ^ wanted;
            if (((word - ones) & ~word & 0x8000 * ones) != 0)
                break;
        }
        for (; i < n; ++i)
            if (text[i] == c)
                return text + i;
        return nullptr;
    }
    static wchar_t * move(wchar_t * to, wchar_t const * from, std::size_t n) {
        if (n != 0)
            std::memmove(to, from, n * sizeof(wchar_t));
        return to;
    }
    static wchar_t * copy(wchar_t * to, wchar_t const * from, std::size_t n) {
        if (n != 0)
            std::memcpy(to, from, n * sizeof(wchar_t));
        return to;
    }
    static wchar_t * assign(wchar_t * to, std::size_t n, wchar_t c) {
        for (std::size_t i = 0; i < n; ++i)
            to[i] = c;
        return to;
    }

    static constexpr int eof() { return -1; }
    static constexpr int not_eof(int c) { return c == eof() ? 0 : c; }
    static constexpr int to_int_type(wchar_t c) { return c; }
    static constexpr wchar_t to_char_type(int c) { return static_cast<wchar_t>(c); }
    static constexpr bool eq_int_type(int a, int b) { return a == b; }

private:
// The compiler does not see through the loops above that texts of fewer units than four never come here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Warray-bounds"
    static std::uint64_t fourAt(wchar_t const * text) {
        std::uint64_t word;
        std::memcpy(&word, text, sizeof word);
        return word;
    }
#pragma GCC diagnostic pop
};

using WideText = std::basic_string<wchar_t, WideTraits>;
using WideView = std::basic_string_view<wchar_t, WideTraits>;

} // namespace qvString

#endif
