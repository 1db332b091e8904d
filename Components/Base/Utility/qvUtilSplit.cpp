#include "Base/Utility/qvUtilSplit.h"

#include "Base/Strings/qvStringCharacters.h"

#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

namespace qvUtil {

namespace {

using qvString::CString;
using qvString::IString;

// ---- split and join

// The units of an IString are wchar_t for its callers and char16_t in the standard library's views.
char sameUnit(char c) { return c; }
char16_t sameUnit(wchar_t c) { return static_cast<char16_t>(c); }

// `find` gives the position of the first delimiter in a view, or its size.
template <class String, class View, class Find>
qv::vector<String> splitAt(View rest, Find find, bool skipEmpty, bool keepDelimiters) {
    qv::vector<String> pieces;
    while (!rest.empty()) {
        std::size_t const found = find(rest);
        if (found != 0 || (!keepDelimiters && !skipEmpty))
            pieces.emplace_back(rest.substr(0, found));
        if (found == rest.size())
            break;
        if (keepDelimiters)
            pieces.emplace_back(rest.substr(found, 1));
        rest.remove_prefix(found + 1);
    }
    return pieces;
}

template <class View, class Unit>
auto finder(Unit delimiter) {
    return [delimiter = sameUnit(delimiter)](View view) { return std::min(view.find(delimiter), view.size()); };
}

template <class View, class Unit>
auto finder(bool (*isDelimiter)(Unit)) {
    return [isDelimiter](View view) {
        auto const isOne = [isDelimiter](auto unit) { return isDelimiter(static_cast<Unit>(unit)); };
        return static_cast<std::size_t>(std::find_if(view.begin(), view.end(), isOne) - view.begin());
    };
}

template <class String>
String joined(qv::vector<String> const & texts) {
    std::uint64_t length = 0;
    for (String const & text : texts)
        length += text.length();
    String whole;
    if (length > whole.maxSize())
        throw std::length_error("qvUtil::join");
    whole.reserve(static_cast<unsigned>(length));
    for (String const & text : texts)
        whole.append(text);
    return whole;
}

// ---- words

std::size_t behindSpaces(std::string_view text, std::size_t pos) {
    while (pos != text.size() && qvString::isSpace(text[pos]))
        ++pos;
    return pos;
}

// A position as the number of an error; those that an int does not hold are its greatest one.
int code(std::size_t pos) { return pos < INT_MAX ? static_cast<int>(pos) : INT_MAX; }

Error unmatchedQuote(std::size_t behindQuote) { return Error(code(behindQuote), "Unmatched double quote"); }

// Each reads the word at `pos` and leaves `pos` behind it.

Error readQuotedWord(std::string_view text, std::size_t & pos, CString & word) {
    std::size_t const first = pos + 1;
    std::size_t const closing = text.find('"', first);
    if (closing == text.npos)
        return unmatchedQuote(first);
    pos = closing + 1;
    if (pos != text.size() && !qvString::isSpace(text[pos]))
        return Error(code(pos + 1), "Unexpected character after double quote: '%c'", text[pos]);
    word = CString(text.substr(first, closing - first));
    return Error();
}

Error readWord(std::string_view text, std::size_t & pos, CString & word) {
    if (text[pos] == '"')
        return readQuotedWord(text, pos, word);
    std::size_t const first = pos;
    for (; pos != text.size() && !qvString::isSpace(text[pos]); ++pos)
        if (text[pos] == '"')
            return Error(code(pos), "Unexpected character before a double quote: '%c'", text[pos - 1]);
    word = CString(text.substr(first, pos - first));
    return Error();
}

Error readEscapedWord(std::string_view text, std::size_t & pos, CString & word) {
    std::string characters;
    bool isQuoted = false;
    std::size_t behindQuote = 0;
    for (; pos != text.size() && (isQuoted || !qvString::isSpace(text[pos])); ++pos) {
        if (text[pos] == '"') {
            isQuoted = !isQuoted;
            behindQuote = pos + 1;
            continue;
        }
        if (text[pos] == '\\') {
            if (++pos == text.size())
                return Error(code(pos), "Single backslash character");
            if (text[pos] != '\\' && text[pos] != '"')
                return Error(code(pos + 1), "Illegal escape of character '%c'", text[pos]);
        }
        characters += text[pos];
    }
    if (isQuoted)
        return unmatchedQuote(behindQuote);
    word = CString(std::string_view(characters));
    return Error();
}

// The words go into a vector of their own first: the text may be an element of the caller's.
template <class Read>
Error readWords(std::string_view text, qv::vector<CString> & words, Read read) {
    qv::vector<CString> found;
    Error error;
    for (std::size_t pos = behindSpaces(text, 0); pos != text.size(); pos = behindSpaces(text, pos)) {
        CString word;
        error = read(text, pos, word);
        if (error)
            break;
        found.emplace_back(std::move(word));
    }
    words.swap(found);
    return error;
}

bool isLineEnd(char c) { return qvString::isNewLine(c); }

} // namespace

qv::vector<CString> split(CString const & text, char delimiter, bool skipEmpty, bool keepDelimiters) {
    using View = std::string_view;
    return splitAt<CString>(View(text), finder<View>(delimiter), skipEmpty, keepDelimiters);
}
qv::vector<CString> split(CString const & text, bool (*isDelimiter)(char), bool skipEmpty, bool keepDelimiters) {
    using View = std::string_view;
    return splitAt<CString>(View(text), finder<View>(isDelimiter), skipEmpty, keepDelimiters);
}
qv::vector<IString> split(IString const & text, wchar_t delimiter, bool skipEmpty, bool keepDelimiters) {
    using View = std::u16string_view;
    return splitAt<IString>(View(text), finder<View>(delimiter), skipEmpty, keepDelimiters);
}
qv::vector<IString> split(IString const & text, bool (*isDelimiter)(wchar_t), bool skipEmpty, bool keepDelimiters) {
    using View = std::u16string_view;
    return splitAt<IString>(View(text), finder<View>(isDelimiter), skipEmpty, keepDelimiters);
}

CString join(qv::vector<CString> const & texts) { return joined(texts); }
IString join(qv::vector<IString> const & texts) { return joined(texts); }

Error splitWithQuotes(CString const & text, qv::vector<CString> & words) { return readWords(text, words, readWord); }
Error splitWithQuotesAndBackslash(CString const & text, qv::vector<CString> & words) {
    return readWords(text, words, readEscapedWord);
}

int numMultiLines(CString const & text) {
    std::string_view const view = text;
    return code(1 + static_cast<std::size_t>(std::count_if(view.begin(), view.end(), isLineEnd)));
}

qv::vector<CString> splitMultiLines(CString const & text) {
    qv::vector<CString> lines;
    std::string_view rest = text;
    for (;;) {
        auto const end = std::find_if(rest.begin(), rest.end(), isLineEnd);
        std::size_t const length = static_cast<std::size_t>(end - rest.begin());
        lines.emplace_back(rest.substr(0, length));
        if (length == rest.size())
            return lines;
        rest.remove_prefix(length + 1);
    }
}

IString rebackslash(IString const & text) {
    IString result;
    result.assign(text);
    result.replace(IString(L"\\"), IString(L"\\\\"));
    return result; // a copy would end at the first zero
}

qv::vector<CString> removeDuplicated(qv::vector<CString> const & texts) {
    qv::vector<std::string_view> views;
    views.reserve(texts.size());
    for (CString const & text : texts)
        views.push_back(text);
    std::sort(views.begin(), views.end());
    return qv::vector<CString>(views.begin(), std::unique(views.begin(), views.end()));
}

} // namespace qvUtil
