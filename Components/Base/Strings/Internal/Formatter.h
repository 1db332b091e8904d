// The printf-style formatting under the KT_ functions and the string classes.

#ifndef Formatter_h
#define Formatter_h

#include "Base/qvBaseConfig.h"

#include <cstdarg>
#include <cstddef>

namespace qvString {

/// What formatText() gives for a format that it refuses.
inline constexpr std::ptrdiff_t formatFailed = -1;

/// Formats as told in qvStringFormat.h. Writes as much as fits in `size` characters, always with a terminator when
/// `size` is not 0, and gives the length of the whole text, or formatFailed.
std::ptrdiff_t formatText(char * buffer, std::size_t size, char const * format, std::va_list args);
std::ptrdiff_t formatText(wchar_t * buffer, std::size_t size, wchar_t const * format, std::va_list args);

} // namespace qvString

#endif
