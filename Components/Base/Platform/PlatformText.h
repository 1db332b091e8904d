// Text as the system sees it: the multibyte encoding and the collation of the C runtime's current locale. All of it is
// in terms of code points, because the runtime's own wide characters are not the library's.

#ifndef PlatformText_h
#define PlatformText_h

#include <cstddef>

namespace qvPlatform {

/// What is known about the multibyte encoding in force, so that common ones need not be asked character by character.
enum class MultibyteKind {
    Utf8,       ///< UTF-8
    AsciiBased, ///< a byte below 128 is the ASCII character of that value, wherever it stands
    Other       ///< nothing is known
};

/// The kind of the current locale's encoding. It costs a look-up of the codeset's name, so ask once for a text.
MultibyteKind multibyteKind();

/// The most bytes that encodeMultibyte() writes.
inline constexpr std::size_t maxMultibyteSize = 16;

/// Decodes the character at the start of `text`, of which at most `length` bytes are read, and none behind a
/// terminator. Gives the number of its bytes; 0 for the terminator; -1 where there is no whole character that UTF-16
/// can hold.
int decodeMultibyte(char const * text, std::size_t length, char32_t & value);

/// The most bytes of one character in the current encoding.
std::size_t longestMultibyte();

/// Encodes one code point. Gives the number of bytes written, or -1 when the encoding has no such character.
int encodeMultibyte(char32_t value, char (&bytes)[maxMultibyteSize]);

/// Negative, 0 or positive, as the current locale orders two terminated texts in its multibyte encoding.
int collate(char const * left, char const * right);

/// Whether the current locale orders texts by their codes, so that no conversion is needed to compare two.
bool collatesByCode();

/// Whether the current locale writes numbers with a plain '.' as their decimal point.
bool decimalPointIsDot();

} // namespace qvPlatform

#endif
