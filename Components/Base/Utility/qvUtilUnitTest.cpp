#include "Base/Utility/qvUtilUnitTest.h"

#include <atomic>

namespace {

constinit std::atomic<bool> unitTest = false;

} // namespace

void setThisIsAUnitTest() { unitTest.store(true, std::memory_order_relaxed); }

bool isThisAUnitTest() { return unitTest.load(std::memory_order_relaxed); }
