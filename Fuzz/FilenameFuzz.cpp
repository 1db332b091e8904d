// Any text as a path: it has its parts, and a place below a directory lies there.

#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFileOperations.h"
#include "Base/OS/qvOSFilename.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

using qvOS::Filename;
using qvString::IString;

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

void checkParts(Filename const & file) {
    require(file.components().size() == 5);
    require(file.prefix().isEmpty() || file.dirname().find(file.prefix()) == 0);
    require(file.name().length() >= file.basename().length());
    require(file.basename().length() <= file.baseTrunk().length() + file.baseSuffix().length() + 1);
    static_cast<void>(file.isAbsolute());
    static_cast<void>(qvOS::isWindowsReservedDeviceName(file));
}

// Whether a path stays below /d when ".." is followed.
bool staysBelow(IString const & path) {
    std::string const text = path.asUTF8();
    int depth = 0;
    for (std::size_t at = 0; at < text.size();) {
        std::size_t const end = std::min(text.find('/', at), text.size());
        std::string const part = text.substr(at, end - at);
        depth += part == ".." ? -1 : part.empty() || part == "." ? 0 : 1;
        if (depth < 1 && end > 2) {
            return false;
        }
        at = end + 1;
    }
    return depth > 1;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    std::u16string text(size / 2, u'\0');
    std::memcpy(text.data(), data, text.size() * 2);
    if (size % 2 == 1) { // mostly bytes
        text.assign(data, data + size);
    }
    std::erase(text, u'\0'); // copies of a name end at one
    IString const name{std::u16string_view(text)};
    for (wchar_t const separator : {L'/', L'\\', L':'}) {
        checkParts(Filename(name, separator));
    }
    unsigned const half = name.length() / 2;
    checkParts(Filename(name.substr(0, half), name.substr(half)));
    ioPackageFile const package;
    require(package.cleanupName(name).length() <= name.length());
    IString place;
    if (!ioPackageFile::placeBelow(IString(L"/d"), name, place)) {
        require(place.find(L"/d/") == 0 && staysBelow(place));
    }
    // Below the directory at hand.
    if (!ioPackageFile::placeBelow(IString(), name, place)) {
        bool const isRelative = place[0] != L'/' && (place.length() < 2 || place[1] != L':');
        require(isRelative && staysBelow(IString(L"/d/") + place));
    }
    return 0;
}
