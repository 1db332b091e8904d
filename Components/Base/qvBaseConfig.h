// What every other header builds on: the export macro and the one thing that is asked of a client's compiler. For C
// too.

#ifndef qvBaseConfig_h
#define qvBaseConfig_h

#include "Base/qvBaseExport.h"

#ifndef __cplusplus
#include <assert.h>
#include <stddef.h>
#endif

// Wide text is UTF-16 in the interface of every class. The CMake target qvbase::qvbase and the pkg-config file
// qvbase hand the flag to whoever uses them.
static_assert(sizeof(wchar_t) == 2, "qvbase needs a 16-bit wchar_t: compile with -fshort-wchar");

#endif
