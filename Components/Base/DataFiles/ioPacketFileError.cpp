#include "Base/DataFiles/ioPacketFileError.h"

#include "Base/DataFiles/Internal/ioBoundedFormat.h"
#include "Base/DataFiles/Internal/ioPacketFileAbort.h"

#include <cstdio>

namespace {

void (*errorHook)(char *) = nullptr;
void (*abortHook)() = nullptr;

} // namespace

void ioPacketFileErrorInit(void (*function)(char *)) { errorHook = function; }

void ioPacketFileAbortInit(void (*function)()) { abortHook = function; }

void ioPacketFileRunAbortHook() {
    if (abortHook) {
        abortHook();
    }
}

void ioPacketFileError(char const * format, ...) {
    va_list arguments;
    va_start(arguments, format);
    ioBoundedFormat message(format, arguments);
    va_end(arguments);
    if (errorHook) {
        errorHook(message.text());
    } else {
        std::fputs(message.text(), stderr);
    }
}
