// Single characters of the multibyte encoding in force, without asking the runtime where the encoding is well known.

#ifndef MultibyteText_h
#define MultibyteText_h

#include "Base/Platform/PlatformText.h"
#include "Base/Strings/Internal/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace qvString {

/// A character of a text that has `length` bytes or a terminator: the number of its bytes, 0 for the terminator, -1 for
/// an invalid one. Nothing is read behind the character's last byte.
inline int decodeMultibyte(qvPlatform::MultibyteKind kind, char const * text, std::size_t length, char32_t & value) {
    unsigned char const lead = static_cast<unsigned char>(*text);
    if (lead < 128 && kind != qvPlatform::MultibyteKind::Other) {
        value = lead;
        return lead != 0;
    }
    if (kind != qvPlatform::MultibyteKind::Utf8)
        return qvPlatform::decodeMultibyte(text, std::min(length, qvPlatform::longestMultibyte()), value);
    // The terminator is no continuation byte, so the step ends in front of it.
    utf8::Step const step = utf8::decode(text, text + std::min<std::size_t>(length, 4));
    value = step.value;
    return step.isWellFormed ? static_cast<int>(step.length) : -1;
}

/// The bytes of one character; -1 when the encoding does not have it.
inline int encodeMultibyte(qvPlatform::MultibyteKind kind, char32_t value,
                           char (&bytes)[qvPlatform::maxMultibyteSize]) {
    if (value < 128 && kind != qvPlatform::MultibyteKind::Other) {
        bytes[0] = static_cast<char>(value);
        return 1;
    }
    if (kind != qvPlatform::MultibyteKind::Utf8)
        return qvPlatform::encodeMultibyte(value, bytes);
    return (value & 0xFFFFF800) == 0xD800 ? -1 : static_cast<int>(utf8::encode(value, bytes));
}

} // namespace qvString

#endif
