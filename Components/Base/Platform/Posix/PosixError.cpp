#include "Base/Platform/PlatformError.h"

#include <cerrno>
#include <climits>
#include <cstring>

namespace qvPlatform {

unsigned lastErrorNumber() { return static_cast<unsigned>(errno); }

unsigned lastSocketErrorNumber() { return static_cast<unsigned>(errno); }

bool errorText(unsigned number, char (&text)[maxErrorTextSize]) {
    if (number > INT_MAX || ::strerrorname_np(static_cast<int>(number)) == nullptr)
        return false;
    // This variant of the call gives a pointer, which need not be to the buffer.
    char const * known = ::strerror_r(static_cast<int>(number), text, maxErrorTextSize);
    if (known != text) {
        std::strncpy(text, known, maxErrorTextSize - 1);
        text[maxErrorTextSize - 1] = '\0';
    }
    return true;
}

} // namespace qvPlatform
