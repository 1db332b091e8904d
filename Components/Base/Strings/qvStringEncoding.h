// Conversion between narrow and wide text. What cannot be converted is replaced by a default character and reported, so
// a conversion never stops halfway.

#ifndef qvStringEncoding_h
#define qvStringEncoding_h

#include "Base/qvBaseConfig.h"

namespace qvString {

/// What the bytes of a narrow text mean.
enum Encoding {
    Multibyte = 0, ///< the encoding of the C runtime's current locale
    UTF8 = 1
};

/// What stands in for a character that the other encoding does not have: '?'.
QV_EXPORT char getDefaultMBChar();
QV_EXPORT wchar_t getDefaultWChar();

// In all converters sizes are counted in elements of the buffer's own type, the all-ones value (unsigned)-1 as a
// source's length means that the text is terminated, and a null destination asks for the count alone. A result of 0 for
// a text that is not empty means failure or too little room, and nothing was written. `ok` may be null; *ok false means
// that something was lost or replaced, and the text that was given is usable all the same. Nothing throws.

/// The units of the wide form of a terminated multibyte text without its terminator, or (unsigned)-1 when the text has
/// an invalid sequence. With a destination, no more of the text is looked at than fits: at most `len` units are stored,
/// followed by the terminator if there is room, and the stored ones counted; a surrogate pair is never stored in part.
/// 0 for a null `src`.
QV_EXPORT unsigned getMultiByteStringSize(wchar_t * dst, char const * src, unsigned len);

/// Converts a terminated text in the multibyte encoding. The count leaves out the terminator, which is written.
/// `srcLen` is the text's length or more; with less the result is 0, a leading part is never converted. The result with
/// its terminator must fit in `dstCap`. Each invalid byte becomes the default wide character, with *ok false.
QV_EXPORT unsigned MBStoWCS(char const * src, unsigned srcLen, wchar_t * dst, unsigned dstCap, bool * ok);

/// Converts a terminated wide text to the multibyte encoding, with the same rules for lengths and room. When a
/// character has no multibyte form, *ok is false and the result has one byte for each unit: its byte where it has one
/// of a single byte, the default character otherwise.
QV_EXPORT unsigned WCStoMBS(wchar_t const * src, unsigned srcLen, char * dst, unsigned dstCap, bool * ok);

/// 3 when the text begins with the byte order mark of UTF-8, otherwise 0. `len` is -1 for a terminated text.
QV_EXPORT int detectUTF8BOM(char const * text, int len);

/// Converts UTF-8. With an explicit length the result is neither counted with a terminator nor given one; with the
/// length -1 both. The count must not be above `dstCap`. A leading byte order mark is left out, unless `ignoreBOM` says
/// not to look for one. Of an ill-formed part, each maximal subpart becomes U+FFFD, and *ok is false; so it is when
/// nothing was converted, the mark alone with an explicit length included.
QV_EXPORT unsigned UTF8toWCS(char const * src, unsigned srcLen, wchar_t * dst, unsigned dstCap, bool ignoreBOM,
                             bool * ok);

/// Converts to UTF-8, with the same rules for lengths and room. Half of a surrogate pair that stands alone becomes
/// U+FFFD; *ok is false only when nothing was converted.
QV_EXPORT unsigned WCStoUTF8(wchar_t const * src, unsigned srcLen, char * dst, unsigned dstCap, bool * ok);

} // namespace qvString

#endif
