// Formatted text with one meaning of %s, and 64-bit integers as text. Plain C can include this header and call these.

#ifndef qvStringFormat_h
#define qvStringFormat_h

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#include "Base/qvBaseConfig.h"

// Formats are those of printf, with these additions and differences:
//
// - In narrow and in wide formats alike, %s and %c take narrow arguments, in the multibyte encoding of the C runtime's
//   current locale, and %S and %C take wide ones. In a wide format this holds for what KT_convert_string_format
//   recognises: %s, %S, %c and %C with no flag but '-', and with width and precision in digits. With another flag or
//   a '*' the letters of a wide format have the meaning of the runtime's wide formatter: %s and %c wide, %S and %C
//   narrow.
// - %ls and %lc are wide and %hs and %hc narrow everywhere.
// - %I64d, %I64u, %I64x and so on take 64-bit integers; I32 stands for 32 bits, a lone I for the size of a pointer.
// - %p prints the hexadecimal digits of the pointer and nothing before them.
// - %n is refused: a format that holds it fails.
// - Width and precision of a text count characters of the result: bytes of a narrow one, UTF-16 units of a wide one.
//   Where an argument of the other width is converted, no character is cut in two, and text that the other encoding
//   does not have shows as the default character '?'. A null pointer prints as (null).
// - An item that is not known ends the formatting: it and what follows it come out as they stand. So do numbered
//   arguments ("%1$d") in a wide format, and in a narrow one that also takes wide arguments; any other narrow format
//   with numbered arguments is the runtime's as a whole, with its way of %p.
//
// Numbers are written as the current locale has them.

#ifdef __cplusplus
extern "C" {
#endif

/// Formats into `buf`, which has room for `size` characters with the terminator. Gives the length of the text, or -1
/// when it did not fit or the format was refused. A text fits when it is at least two characters shorter than `size`;
/// of one that does not, as much as there is room for is left in `buf`, terminated; nothing is for a null `fmt`.
QV_EXPORT int KT_vsnprintf(char * buf, unsigned size, char const * fmt, va_list args);
QV_EXPORT int KT_snprintf(char * buf, unsigned size, char const * fmt, ...);

/// The same for wide text; `size` and the result count UTF-16 units.
QV_EXPORT int KT_vswprintf(wchar_t * buf, unsigned size, wchar_t const * fmt, va_list args);
QV_EXPORT int KT_swprintf(wchar_t * buf, unsigned size, wchar_t const * fmt, ...);

/// Copies a wide format, with %s and %S, and %c and %C, exchanged wherever the item has at most the flag '-'
/// and a width and a precision in digits. The copy is the caller's, to be released with free(); null for a null `fmt`
/// or when there is no memory.
QV_EXPORT wchar_t * KT_convert_string_format(wchar_t const * fmt);

/// The decimal digits of `value`, in one of three static buffers, which `slot` (0, 1 or 2) chooses; any other slot
/// counts as its remainder by three. The text stays until the next call of the same function with the same slot, from
/// any thread.
QV_EXPORT char * int64ToAscii(int64_t value, unsigned slot);
QV_EXPORT char * uint64ToAscii(uint64_t value, unsigned slot);

/// The number at the start of `text`, behind white space: 0 when there is none or `text` is null. What is too large
/// gives the largest number of the type, what is too small for a signed one the smallest. An unsigned number may have a
/// minus sign, which is applied modulo 2^64: "-1" is the largest number.
QV_EXPORT int64_t asciiToInt64(char const * text);
QV_EXPORT uint64_t asciiToUInt64(char const * text);

#ifdef __cplusplus
}
#endif

#endif
