// The fatal path of the packet files: for errors which mean that a program and its data do not fit together.

#ifndef ioPacketFileError_h
#define ioPacketFileError_h

#include "Base/qvBaseConfig.h"

// Reports a message of at most 1023 bytes, formatted as printf formats, to the function that is installed, otherwise
// to standard error.
QV_EXPORT void ioPacketFileError(char const * format, ...);

// Installs the function that receives the messages; null goes back to standard error. Process-wide and without a
// lock: install before use.
QV_EXPORT void ioPacketFileErrorInit(void (*function)(char *));

// Installs a function that is called before a fatal error ends the process; null for none. It may leave by an
// exception and so keep the process. Process-wide and without a lock: install before use.
QV_EXPORT void ioPacketFileAbortInit(void (*function)());

#endif
