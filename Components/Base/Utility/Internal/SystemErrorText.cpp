#include "Base/Utility/Internal/SystemErrorText.h"

#include "Base/Platform/PlatformError.h"
#include "Base/Strings/qvStringFormat.h"

namespace qvUtil {

qvString::IString systemErrorText(unsigned code) {
    char known[qvPlatform::maxErrorTextSize];
    if (qvPlatform::errorText(code, known))
        return qvString::IString(known);
    wchar_t unknown[64];
    KT_swprintf(unknown, 64, L"An unknown WIN32 error occurred: %d", static_cast<int>(code));
    return qvString::IString(unknown);
}

qvString::IString lastErrorText() { return systemErrorText(qvPlatform::lastErrorNumber()); }

qvString::IString lastSocketErrorText() { return systemErrorText(qvPlatform::lastSocketErrorNumber()); }

} // namespace qvUtil
