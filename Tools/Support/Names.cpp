#include "Support/Names.h"

#include <algorithm>
#include <cstdio>

using qvString::IString;

namespace {

constexpr unsigned strangeByte = 0xDC00;

bool isStrange(unsigned unit) { return unit >= strangeByte + 0x80 && unit <= strangeByte + 0xFF; }
bool isLead(unsigned unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isControl(unsigned unit) { return unit < 0x20 || (unit >= 0x7F && unit < 0xA0); }

// Whether a text can be shown as it is; some that could take the longer way.
bool isHarmless(IString const & text) {
    wchar_t const * const units = text.asWChar();
    return std::none_of(units, units + text.length(), [](unsigned unit) { return isControl(unit) || isStrange(unit); });
}

// The longest run from `start` on that is whole characters of UTF-8.
std::size_t soundPrefix(std::string const & bytes, std::size_t start, IString & text) {
    constexpr std::size_t longest = 4;
    for (std::size_t length = std::min(longest, bytes.size() - start); length > 0; --length) {
        bool ok = false;
        // A mark of the byte order is a character of a name like others.
        std::string piece(1, 'x');
        piece += bytes.substr(start, length);
        IString const read(piece.c_str(), qvString::UTF8, &ok);
        if (ok && read.length() == (length == longest ? 3U : 2U)) {
            text = read.substr(1);
            return length;
        }
    }
    return 0;
}

} // namespace

IString nameOf(std::string const & bytes) {
    if (std::all_of(bytes.begin(), bytes.end(), [](char c) { return static_cast<signed char>(c) > 0; }))
        return IString(bytes.c_str(), qvString::UTF8);
    bool isSound = false;
    IString const whole((std::string(1, 'x') + bytes).c_str(), qvString::UTF8, &isSound);
    if (isSound && bytes.find('\0') == std::string::npos)
        return whole.substr(1);
    IString name;
    for (std::size_t at = 0; at < bytes.size();) {
        unsigned char const byte = static_cast<unsigned char>(bytes[at]);
        IString text;
        std::size_t const taken = byte < 0x80 ? 0 : soundPrefix(bytes, at, text);
        if (taken > 0)
            name.append(text);
        else
            name.append(static_cast<wchar_t>(byte < 0x80 ? byte : strangeByte + byte));
        at += std::max<std::size_t>(taken, 1);
    }
    return name;
}

std::string bytesOf(IString const & name) {
    if (!hasStrangeBytes(name))
        return name.asUTF8();
    std::string bytes;
    for (unsigned i = 0; i < name.length(); ++i) {
        bool const isPair = isLead(name[i]) && i + 1 < name.length();
        if (isStrange(name[i]))
            bytes += static_cast<char>(static_cast<unsigned char>(name[i] - strangeByte));
        else
            bytes += name.substr(i, isPair ? 2 : 1).asUTF8();
        i += isPair;
    }
    return bytes;
}

bool hasStrangeBytes(IString const & name) {
    wchar_t const * const units = name.asWChar();
    for (unsigned i = 0; i < name.length(); ++i)
        if (isStrange(units[i]) && (i == 0 || !isLead(units[i - 1])))
            return true;
    return false;
}

std::string shown(IString const & name) {
    if (isHarmless(name))
        return name.asUTF8();
    std::string text;
    for (unsigned i = 0; i < name.length(); ++i) {
        unsigned const unit = name[i];
        bool const isPair = isLead(unit) && i + 1 < name.length();
        if (isControl(unit) || isStrange(unit)) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\x%02X", unit & 0xFF);
            text += escaped;
        } else {
            text += name.substr(i, isPair ? 2 : 1).asUTF8();
            i += isPair;
        }
    }
    return text;
}

std::string shown(std::string const & bytes) { return shown(nameOf(bytes)); }
