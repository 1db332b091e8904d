// Texts in pieces: splitting, joining, quoted words, lines.

#ifndef qvUtilSplit_h
#define qvUtilSplit_h

#include "Base/Containers/qvVector.h"
#include "Base/Strings/qvStringCString.h"
#include "Base/Strings/qvStringIString.h"
#include "Base/Utility/qvUtilError.h"
#include "Base/qvBaseConfig.h"

namespace qvUtil {

/// The pieces between the characters that are delimiters, from left to right. Two delimiters side by side, or one at
/// the start, have an empty piece in front of the second, unless `skipEmpty`; a delimiter at the end has no empty piece
/// behind it. With `keepDelimiters` each delimiter is a piece of one character, and no piece is empty:
///
///     split("a,,b", ',', false, false)   "a" "" "b"
///     split("a,,b", ',', true, false)    "a" "b"
///     split("a,,b", ',', false, true)    "a" "," "," "b"
///     split(",a,", ',', false, false)    "" "a"
///
/// Zero characters are characters like others. Throws std::bad_alloc, and std::length_error for more pieces, or for
/// more characters in a piece, than an int counts.
QV_EXPORT qv::vector<qvString::CString> split(qvString::CString const & text, char delimiter, bool skipEmpty,
                                              bool keepDelimiters);
QV_EXPORT qv::vector<qvString::CString> split(qvString::CString const & text, bool (*isDelimiter)(char), bool skipEmpty,
                                              bool keepDelimiters);
QV_EXPORT qv::vector<qvString::IString> split(qvString::IString const & text, wchar_t delimiter, bool skipEmpty,
                                              bool keepDelimiters);
QV_EXPORT qv::vector<qvString::IString> split(qvString::IString const & text, bool (*isDelimiter)(wchar_t),
                                              bool skipEmpty, bool keepDelimiters);

/// The texts one behind the other, with nothing in between.
QV_EXPORT qvString::CString join(qv::vector<qvString::CString> const & texts);
QV_EXPORT qvString::IString join(qv::vector<qvString::IString> const & texts);

/// The words between white space, as qvString::isSpace() has it. A word that starts with a double quote goes to the
/// next one, white space included; it may be empty. A backslash means nothing.
///
/// `words` gets the words in front of the first fault, and `text` may be one of its elements. The faults, with a
/// position in the text as their number (it counts from 0):
///
///     "Unmatched double quote"                               behind the opening quote of a word that does not end
///     "Unexpected character before a double quote: 'x'"      of a quote inside an unquoted word
///     "Unexpected character after double quote: 'x'"         2 behind a closing quote that a word goes on behind
QV_EXPORT Error splitWithQuotes(qvString::CString const & text, qv::vector<qvString::CString> & words);

/// The same, but double quotes may stand anywhere: each begins or ends a part of the word in which white space is kept,
/// and does not get into the word. A backslash takes a double quote or another backslash into the word, inside quotes
/// and outside. The faults:
///
///     "Unmatched double quote"             behind the last opening quote
///     "Single backslash character"         the length of the text, which ends in the backslash
///     "Illegal escape of character 'x'"    behind the character
QV_EXPORT Error splitWithQuotesAndBackslash(qvString::CString const & text, qv::vector<qvString::CString> & words);

/// One more than there are new-line characters, as qvString::isNewLine() has it: carriage return and line feed together
/// are two.
QV_EXPORT int numMultiLines(qvString::CString const & text);
/// What stands between the new-line characters: numMultiLines() pieces, the last one empty when the text ends in one.
QV_EXPORT qv::vector<qvString::CString> splitMultiLines(qvString::CString const & text);

/// A copy with each backslash doubled.
QV_EXPORT qvString::IString rebackslash(qvString::IString const & text);

/// A sorted copy in which each text stands once.
QV_EXPORT qv::vector<qvString::CString> removeDuplicated(qv::vector<qvString::CString> const & texts);

} // namespace qvUtil

#endif
