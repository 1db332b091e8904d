// A mark by which code can tell that it runs inside a test program.

#ifndef qvUtilUnitTest_h
#define qvUtilUnitTest_h

#include "Base/qvBaseConfig.h"

extern "C" {

// A test program sets the mark when it starts; it stays until the process ends. The library itself never asks.
QV_EXPORT void setThisIsAUnitTest();
QV_EXPORT bool isThisAUnitTest();
}

#endif
