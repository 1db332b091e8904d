#include "Base/Platform/PlatformText.h"

#include <climits>
#include <clocale>
#include <cstdlib>
#include <cstring>
#include <cuchar>
#include <cwchar>

#include <langinfo.h>

namespace qvPlatform {

static_assert(MB_LEN_MAX <= maxMultibyteSize);

MultibyteKind multibyteKind() {
    char const * codeset = ::nl_langinfo(CODESET);
    if (std::strcmp(codeset, "UTF-8") == 0)
        return MultibyteKind::Utf8;
    if (std::strcmp(codeset, "ANSI_X3.4-1968") == 0 || std::strncmp(codeset, "ISO-8859-", 9) == 0)
        return MultibyteKind::AsciiBased;
    return MultibyteKind::Other;
}

int decodeMultibyte(char const * text, std::size_t length, char32_t & value) {
    // Every character starts afresh. A few encodings want to see what follows before they give a character, or give
    // two for one: what they hold back would be lost here, so such a character counts as one that does not convert.
    std::mbstate_t state{};
    std::size_t const taken = std::mbrtoc32(&value, text, length, &state);
    if (taken > length || value > 0x10FFFF || (value & 0xFFFFF800) == 0xD800 || !std::mbsinit(&state))
        return -1;
    return static_cast<int>(taken);
}

std::size_t longestMultibyte() { return MB_CUR_MAX; }

int encodeMultibyte(char32_t value, char (&bytes)[maxMultibyteSize]) {
    // The runtime's UTF-8 would encode a surrogate without complaint.
    if ((value & 0xFFFFF800) == 0xD800)
        return -1;
    std::mbstate_t state{};
    std::size_t const written = std::c32rtomb(bytes, value, &state);
    bool const isHeldBack = written == 0 && value != 0;
    return written > maxMultibyteSize || isHeldBack ? -1 : static_cast<int>(written);
}

int collate(char const * left, char const * right) { return std::strcoll(left, right); }

bool collatesByCode() {
    char const * name = ::nl_langinfo(_NL_LOCALE_NAME(LC_COLLATE));
    return std::strcmp(name, "C") == 0 || std::strcmp(name, "POSIX") == 0;
}

bool decimalPointIsDot() { return std::strcmp(::nl_langinfo(RADIXCHAR), ".") == 0; }

} // namespace qvPlatform
