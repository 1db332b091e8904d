#include "Text.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace {

constexpr std::size_t pieceSize = 1 << 16;

unsigned byteAt(std::string_view text, std::size_t at) { return static_cast<unsigned char>(text[at]); }

// The length of the UTF-8 sequence at the front, 0 when there is none or its character does not print.
std::size_t printableSequence(std::string_view text) {
    unsigned const first = byteAt(text, 0);
    if (first < 0x80) {
        return first >= 0x20 && first != 0x7F ? 1 : 0;
    }
    std::size_t const length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    unsigned character = first & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((byteAt(text, i) & 0xC0) != 0x80) {
            return 0;
        }
        character = character << 6 | (byteAt(text, i) & 0x3F);
    }
    bool const overlong = (length == 3 && character < 0x800) || (length == 4 && character < 0x10000);
    bool const surrogate = character >= 0xD800 && character < 0xE000;
    // The second row of control characters, and those that turn the direction of a line.
    bool const control = character < 0xA0 || character == 0x061C || (character >= 0x200E && character <= 0x200F) ||
                         (character >= 0x2028 && character <= 0x202E) || (character >= 0x2066 && character <= 0x2069);
    return overlong || surrogate || control || character > 0x10FFFF ? 0 : length;
}

void appendEscaped(std::string & out, unsigned byte) {
    static constexpr char digits[] = "0123456789abcdef";
    switch (byte) {
    case '\n':
        out += "\\n";
        return;
    case '\t':
        out += "\\t";
        return;
    case '"':
    case '\\':
        out += '\\';
        out += static_cast<char>(byte);
        return;
    default:
        out += "\\x";
        out += digits[byte >> 4];
        out += digits[byte & 15];
    }
}

} // namespace

std::string printable(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        bool const special = text[0] == '"' || text[0] == '\\';
        std::size_t const length = special ? 0 : printableSequence(text);
        if (length == 0) {
            appendEscaped(out, byteAt(text, 0));
        } else {
            out += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

Output & Output::operator<<(std::string_view text) {
    text_ += text;
    flushWhenFull();
    return *this;
}

Output & Output::operator<<(std::size_t number) { return *this << std::string_view(std::to_string(number)); }

void Output::rightAligned(std::string_view text, std::size_t columns) {
    blanks(columns > text.size() ? columns - text.size() : 0);
    *this << text;
}

void Output::rightAligned(std::size_t number, std::size_t columns) { rightAligned(std::to_string(number), columns); }

void Output::blanks(std::size_t count) {
    text_.append(count, ' ');
    flushWhenFull();
}

void Output::hexadecimal(std::size_t number, std::size_t digits) {
    char text[16];
    auto const length = static_cast<std::size_t>(std::to_chars(text, text + sizeof text, number, 16).ptr - text);
    text_.append(digits > length ? digits - length : 0, '0');
    text_.append(text, length);
    flushWhenFull();
}

void Output::flushWhenFull() {
    if (text_.size() >= pieceSize) {
        flush();
    }
}

bool Output::flush() {
    std::fwrite(text_.data(), 1, text_.size(), stdout);
    text_.clear();
    return std::fflush(stdout) == 0 && !std::ferror(stdout);
}
