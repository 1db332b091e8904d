// A mark by which code can tell that it runs inside a test program. For C too.

#ifndef qvUtilUnitTest_h
#define qvUtilUnitTest_h

#include "Base/qvBaseConfig.h"

#ifndef __cplusplus
#include <stdbool.h>
#endif

#ifdef __cplusplus
extern "C" {
#endif

// A test program sets the mark when it starts; it stays until the process ends. The library itself never asks.
QV_EXPORT void setThisIsAUnitTest(void);
QV_EXPORT bool isThisAUnitTest(void);

#ifdef __cplusplus
}
#endif

#endif
