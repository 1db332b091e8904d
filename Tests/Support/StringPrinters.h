// How the test library shows strings when they differ: as UTF-8, between quotes, with zeros and controls escaped.

#ifndef qvTestStringPrinters_h
#define qvTestStringPrinters_h

#include "Base/Strings/qvStringIString.h"

#include <cstdio>
#include <ostream>
#include <string>

namespace qvString {

namespace printing {

inline void printQuoted(std::string const & utf8, std::ostream * stream) {
    *stream << '"';
    for (char const c : utf8) {
        char escaped[8];
        std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned>(static_cast<unsigned char>(c)));
        if (static_cast<unsigned char>(c) < 32 || c == 127)
            *stream << escaped;
        else
            *stream << c;
    }
    *stream << '"';
}

} // namespace printing

inline void PrintTo(IString const & text, std::ostream * stream) {
    std::string utf8(3 * text.length() + 1, '\0');
    utf8.resize(WCStoUTF8(text.asWChar(), text.length(), utf8.data(), static_cast<unsigned>(utf8.size()), nullptr));
    printing::printQuoted(utf8, stream);
    *stream << " (" << text.length() << " units)";
}

inline void PrintTo(CString const & text, std::ostream * stream) {
    printing::printQuoted(std::string(text.asChar(), text.length()), stream);
}

} // namespace qvString

#endif
