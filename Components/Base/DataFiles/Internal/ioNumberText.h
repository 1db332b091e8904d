// Numbers as text, the same in every locale: written as the C locale prints them, read as its atoi, strtoul and
// strtod read them, with the limits of a 32-bit long.

#ifndef ioNumberText_h
#define ioNumberText_h

#include <cstdint>

namespace ioNumberText {

// The longest text of any number below, e.g. -1.234567890123456e-308.
inline constexpr int maxLength = 32;

// White space as the readers skip it.
constexpr bool isWhite(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Each writes at most maxLength characters, without a terminator, and gives the end of what it wrote.
char * writeInt(char * out, std::int32_t value);
char * writeUInt(char * out, std::uint32_t value);
char * writeInt64(char * out, std::int64_t value);
char * writeUInt64(char * out, std::uint64_t value);
char * writeFloat(char * out, float value);   // "%.7g"
char * writeDouble(char * out, double value); // "%.16g"

// Each reads the number that stands at the front of [begin, end), behind white space and a sign, and ignores what
// follows. Where none stands the result is 0. Integers are clamped to their limits; the unsigned ones take a minus
// sign and negate. If `next` is given it receives the place behind the number.
std::int32_t parseInt(char const * begin, char const * end, char const ** next = nullptr);
std::uint32_t parseUInt(char const * begin, char const * end, char const ** next = nullptr);
std::int64_t parseInt64(char const * begin, char const * end, char const ** next = nullptr);
std::uint64_t parseUInt64(char const * begin, char const * end, char const ** next = nullptr);
double parseDouble(char const * begin, char const * end, char const ** next = nullptr);

} // namespace ioNumberText

#endif
