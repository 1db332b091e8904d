// Character classes, each for a narrow character and for a wide one, so that both string classes can be handled alike.

#ifndef qvStringCharacters_h
#define qvStringCharacters_h

#include "Base/qvBaseConfig.h"

namespace qvString {

// The classes are those of the C runtime in its current locale, but for some 180 symbols (arrows, mathematical signs,
// box drawing, circled numbers and the like) that count as letters here: see isLetterModifier(). A narrow character is
// one byte of the current encoding; a byte above 127 is classified by its value, never by a negative index. A wide
// character is one UTF-16 unit; half of a surrogate pair is of no class.

/// Below 128.
QV_EXPORT bool isAscii(char c);
QV_EXPORT bool isAscii(wchar_t c);
/// Whether every byte of a terminated text is below 128; so for an empty one and a null pointer too.
QV_EXPORT bool isAscii(char const * text);

QV_EXPORT bool isUpper(char c);
QV_EXPORT bool isUpper(wchar_t c);
QV_EXPORT bool isLower(char c);
QV_EXPORT bool isLower(wchar_t c);
QV_EXPORT bool isDigit(char c);
QV_EXPORT bool isDigit(wchar_t c);
QV_EXPORT bool isXDigit(char c);
QV_EXPORT bool isXDigit(wchar_t c);
QV_EXPORT bool isSpace(char c);
QV_EXPORT bool isSpace(wchar_t c);
QV_EXPORT bool isCntrl(char c);
QV_EXPORT bool isCntrl(wchar_t c);

/// A line feed or a carriage return.
QV_EXPORT bool isNewLine(char c);
QV_EXPORT bool isNewLine(wchar_t c);
/// A horizontal tab.
QV_EXPORT bool isTab(char c);
QV_EXPORT bool isTab(wchar_t c);

/// A symbol that counts as a letter here, whatever the runtime says of it; no byte is one.
QV_EXPORT bool isLetterModifier(char c);
QV_EXPORT bool isLetterModifier(wchar_t c);

/// The runtime's class, or a letter modifier.
QV_EXPORT bool isAlnum(char c);
QV_EXPORT bool isAlnum(wchar_t c);
/// The runtime's class, but no letter modifier.
QV_EXPORT bool isPunct(char c);
QV_EXPORT bool isPunct(wchar_t c);
/// The runtime's class, or a letter modifier. A wide tab is never printable.
QV_EXPORT bool isPrint(char c);
QV_EXPORT bool isPrint(wchar_t c);
/// The runtime's class, or a letter modifier.
QV_EXPORT bool isGraph(char c);
QV_EXPORT bool isGraph(wchar_t c);
/// Alphanumeric, but no digit.
QV_EXPORT bool isAlpha(char c);
QV_EXPORT bool isAlpha(wchar_t c);

/// The other case of a letter in the current locale; any other character comes back as it is.
QV_EXPORT char toUpper(char c);
QV_EXPORT wchar_t toUpper(wchar_t c);
QV_EXPORT char toLower(char c);
QV_EXPORT wchar_t toLower(wchar_t c);

} // namespace qvString

#endif
