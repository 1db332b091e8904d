#include "Base/Strings/Internal/CatalogReader.h"

#include "Base/Strings/Internal/KeyParts.h"
#include "Base/Strings/Internal/StringTableBody.h"
#include "Base/Strings/Internal/Utf8.h"
#include "Base/Strings/qvStringCharacters.h"
#include "Base/Utility/Internal/SystemErrorText.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <memory>
#include <stdexcept>

namespace qvStringTable {

using qvString::IString;
using qvUtil::Error;

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isAsciiByte(char c) { return static_cast<unsigned char>(c) < 0x80; }
bool isInsideCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

// Of what is well-formed. The white space of the locale is asked for only where there may be any.
std::string_view withoutSpaces(std::string_view text) {
    auto const isSpaceAt = [&text](std::size_t at, std::size_t & length) {
        length = 1;
        unsigned char const byte = static_cast<unsigned char>(text[at]);
        if (byte < 0x80)
            return byte <= ' ' && qvString::isSpace(static_cast<wchar_t>(byte));
        auto const step = qvString::utf8::decode(text.data() + at, text.data() + text.size());
        length = step.length;
        return step.value < 0x10000 && qvString::isSpace(static_cast<wchar_t>(step.value));
    };
    std::size_t length = 0;
    while (!text.empty() && isSpaceAt(0, length))
        text.remove_prefix(length);
    while (!text.empty()) {
        std::size_t last = text.size() - 1;
        while (last > 0 && isInsideCharacter(text[last]))
            --last;
        if (!isSpaceAt(last, length))
            break;
        text.remove_suffix(text.size() - last);
    }
    return text;
}

// The text in front of the character that ends before `pos`, which is above 0.
std::string_view beforeCharacter(std::string_view text, std::size_t pos) {
    do {
        --pos;
    } while (pos > 0 && isInsideCharacter(text[pos]));
    return text.substr(0, pos);
}

// Whether there is but one UTF-16 unit.
bool isOneUnit(std::string_view text) {
    return text.size() == 1 || ((text.size() == 2 || text.size() == 3) && !isAsciiByte(text[0]) &&
                                beforeCharacter(text, text.size()).empty());
}

// The line without its comment. A // with a quote in front of it stays, as it may stand in a text.
std::string_view withoutComment(std::string_view line) {
    std::size_t const slashes = line.find("//");
    if (slashes == line.npos)
        return line;
    if (slashes == 0 || isOneUnit(line.substr(0, slashes)))
        return {};
    std::size_t const quote = line.find('"');
    return quote != line.npos && quote > slashes ? beforeCharacter(line, slashes) : line;
}

// Each, from the start on; `with` is not longer than `what`.
void replaceAll(std::string & text, std::string_view what, std::string_view with) {
    std::size_t found = text.find(what);
    if (found == text.npos)
        return;
    std::size_t done = found;
    while (found != text.npos) {
        done += with.copy(text.data() + done, with.size());
        std::size_t const from = found + what.size();
        found = text.find(what, from);
        std::size_t const kept = std::min(found, text.size()) - from;
        std::memmove(text.data() + done, text.data() + from, kept);
        done += kept;
    }
    text.resize(done);
}

// Well-formed text in UTF-16, in a buffer of its own or, mostly, here.
class WideUnits {
public:
    explicit WideUnits(std::string_view text) {
        if (text.size() > std::size(local_)) {
            if (text.size() > INT_MAX)
                throw std::length_error("qvStringTable");
            units_ = (large_ = std::make_unique_for_overwrite<wchar_t[]>(text.size())).get();
        }
        count_ = static_cast<int>(qvString::utf8::toUtf16(text.data(), text.size(), units_).count);
    }
    wchar_t const * units() const { return units_; }
    int count() const { return count_; }

private:
    std::unique_ptr<wchar_t[]> large_;
    wchar_t local_[512];
    wchar_t * units_ = local_;
    int count_;
};

IString wide(std::string_view text) {
    WideUnits const converted(text);
    return IString(converted.units(), converted.count());
}

bool isWellFormed(std::string_view text) { return qvString::utf8::utf16Length(text.data(), text.size()).isWellFormed; }

} // namespace

Error CatalogReader::read() {
    if (qvPlatform::FileResult const opened = lines_.open(name_); !opened.good())
        return fileError(1, "Can't open catalog file %s for read: %s\n", opened);
    StringTable::Body::Filling const filling(table_.body());
    for (;;) {
        CatalogLines::Line line;
        switch (lines_.next(line)) {
        case CatalogLines::Outcome::end:
            return Error();
        case CatalogLines::Outcome::failed:
            return fileError(2, "Error reading file %s: %s\n", lines_.failure());
        case CatalogLines::Outcome::line:
            line_ += line_ < INT_MAX;
            if (Error error = addLine(line))
                return error;
        }
    }
}

Error CatalogReader::fileError(int number, char const * format, qvPlatform::FileResult const & result) const {
    IString const text = qvUtil::systemErrorText(static_cast<unsigned>(result.systemNumber));
    return Error(number, format, name_.asMultibyte(), text.asMultibyte());
}

Error CatalogReader::textError(int number, char const * kind, char const * message, std::string_view text) const {
    return Error(number, L"String file %s error encountered, line %d, file %S: \n%s: %S\n", kind, line_,
                 name_.asWChar(), message, wide(text).asWChar());
}

Error CatalogReader::parseError(char const * message, std::string_view entry) const {
    return textError(3, "parsing", message, entry);
}

Error CatalogReader::addLine(CatalogLines::Line const & line) {
    std::string_view text = line.text;
    std::size_t const zero = text.find('\0');
    bool const hasEnd = line.hasEnd && zero == text.npos;
    text = text.substr(0, zero);
    if (text.starts_with(byteOrderMark))
        text.remove_prefix(byteOrderMark.size());
    if (!isWellFormed(text))
        return textError(5, "conversion", "Error interpreting input as UTF-8",
                         std::string(text) + (hasEnd ? "\n" : ""));
    text = withoutSpaces(withoutComment(text));
    if (text.empty())
        return Error();
    if (text.back() == '\\') {
        entry_.append(text.substr(0, text.size() - 1));
        return Error();
    }
    if (entry_.empty())
        return parse(text);
    entry_.append(text);
    Error result = parse(entry_);
    entry_.clear();
    return result;
}

Error CatalogReader::parse(std::string_view entry) {
    std::size_t const equals = entry.find('=');
    if (equals == entry.npos || equals == 0 || equals + 1 == entry.size())
        return parseError("Expected idToken = \"quoted value string\" format", entry);
    // The character in front of the sign is a blank, and goes whatever it is.
    std::string_view const key = withoutSpaces(beforeCharacter(entry, equals));
    std::string_view const value = withoutSpaces(entry.substr(equals + 1));
    if (value.size() < 2 || value.front() != '"' || value.back() != '"')
        return parseError("Expected quotes surrounding value string. Illegal character(s) encountered at start or end "
                          "of string",
                          entry);
    if (!std::all_of(key.begin(), key.end(), isAsciiByte))
        return parseError("Key string contains non-ascii characters", entry);
    if (!isValidKey(key))
        return parseError("Key string does not have valid format", entry);
    return assign(key, value.substr(1, value.size() - 2));
}

Error CatalogReader::assign(std::string_view key, std::string_view value) {
    WideUnits const text(withoutEscapes(value));
    if (table_.body().assign(key, text.units(), text.count()))
        return Error();
    // This table takes everything, so nobody gets here. It is what a caller of another one would be told.
    return Error(4, "Error assigning string table entry for key:%s, value%s\n", std::string(key).c_str(),
                 wide(withoutEscapes(value)).asMultibyte());
}

// One after the other over the whole text: a later one finds what an earlier one has left.
std::string_view CatalogReader::withoutEscapes(std::string_view value) {
    if (value.find('\\') == value.npos && value.find('"') == value.npos)
        return value;
    value_.assign(value);
    replaceAll(value_, "\\r\\n", "\r\n");
    replaceAll(value_, "\\n", "\n");
    replaceAll(value_, "\\t", "\t");
    replaceAll(value_, "\"\"", "\"");
    replaceAll(value_, "\\\"", "\"");
    return value_;
}

} // namespace qvStringTable
