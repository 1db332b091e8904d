#include "Base/Strings/qvStringTableKey.h"

#include "Base/Strings/Internal/KeyParts.h"
#include "Base/Strings/qvStringCharacters.h"

#include <algorithm>

namespace qvStringTable {

using qvString::CString;

KeyParts partsOf(std::string_view key) {
    KeyParts const whole = {{}, key, false};
    std::size_t const dot = key.find('.');
    if (dot == key.npos || dot + 1 == key.size())
        return whole;
    std::string_view const rest = key.substr(dot + 1);
    std::size_t const nextDot = rest.find('.');
    if (nextDot != rest.npos && nextDot + 1 < rest.size())
        return whole;
    return {key.substr(0, dot), rest.substr(0, nextDot), true};
}

bool isValidKey(std::string_view key) {
    auto const isAllowed = [](char c) {
        // Most need no look into the locale.
        bool const isPlain = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
        return isPlain || c == '.' || c == '_' || qvString::isAlnum(c);
    };
    KeyParts const parts = partsOf(key);
    return parts.areTwo && !parts.setID.empty() && !parts.name.empty() &&
           std::all_of(key.begin(), key.end(), isAllowed);
}

int Key::compareSetID(Key const & other) const { return partsOf(value()).setID.compare(partsOf(other.value()).setID); }

bool Key::getSubParts(CString & setID, CString & name) const {
    // The results may be what the parts are views of.
    KeyParts const parts = partsOf(text_);
    CString newSetID(parts.setID);
    CString newName(parts.name);
    bool const areTwo = parts.areTwo;
    setID.swap(newSetID);
    name.swap(newName);
    return areTwo;
}

bool Key::isValidKeyString(CString const & text) { return isValidKey(text); }

} // namespace qvStringTable
