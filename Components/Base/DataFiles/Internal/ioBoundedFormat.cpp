#include "Base/DataFiles/Internal/ioBoundedFormat.h"

#include "Base/Strings/qvStringCString.h"
#include "Base/Strings/qvStringFormat.h"

#include <algorithm>
#include <cstring>

// The formatter says only that a text does not fit, and leaves its buffer undefined then. A text that is too long is
// therefore formatted whole and cut.
ioBoundedFormat::ioBoundedFormat(char const * format, va_list arguments) {
    va_list again;
    va_copy(again, arguments);
    if (KT_vsnprintf(text_, sizeof text_, format, arguments) < 0) {
        qvString::CString whole;
        whole.vformat(format, again);
        auto const length = std::min<std::size_t>(whole.length(), sizeof text_ - 1);
        std::memcpy(text_, whole.asChar(), length);
        text_[length] = 0;
    }
    va_end(again);
}
