// All objects of the library that run code when it is loaded or unloaded. The language orders such objects inside one
// source file only, so they are all defined in this one, each subsystem's with the declaration in a header of its own.
// The places of the order, where those of subsystems that are not there stay empty:
//
//      1. network constants                   8. output of the undo report
//      2. application output, debug channel   9. pointer-tracking signals
//      3. initializer of the file factory    10. default thread pool and task queue
//      4. constants of file-name forms       11. npos of the strings
//      5. application locale                 12. application string table
//      6. seed of the random generator       13. tolerances, then constants of linear algebra
//      7. frequency of the stop watch        14. identification string
//                                            15. mutex of the messages
//
// They are destroyed in the reverse order. No object may use one that follows it, nor what `initializeAll` sets up.
// What a constant expression can make stands with its subsystem instead and is there before any code has run: so are
// the lists of `qvUtil::Initializer`, 11, 13 and 14.

#include "Base/Utility/Internal/LoadTime.h"

#include "Base/OS/Internal/FileFactoryImpl.h"
#include "Base/Strings/qvStringTableStringTable.h"
#include "Base/Threads/Internal/SimpleQueue.h"
#include "Base/Threads/Internal/SimpleThreadPool.h"
#include "Base/Undo/Internal/qvUndoReportFile.h"

#include <cstdlib>
#include <ctime>

namespace qvUtil::loadTime {

namespace {

qvOS::FileFactoryInitializer fileFactoryInitializer;

struct RandomSeed {
    RandomSeed() { std::srand(static_cast<unsigned>(std::time(nullptr))); }
} const randomSeed;

} // namespace

} // namespace qvUtil::loadTime

// The rest is ready before any code runs; only the ends are ordered here.

namespace qvUndo {

constinit ReportFile reportFile;

} // namespace qvUndo

namespace qvUtil::loadTime {

constinit PointerSignal pointerInitSignal;
constinit PointerSignal pointerAcquireSignal;
constinit PointerSignal pointerReleaseSignal;
constinit PointerSignal pointerDeleteSignal;

// The same holds for these two.
constinit SimpleThreadPool singleThreadedPool;
constinit SimpleQueue singleThreadedQueue;

// Made by the first call, which may come from here.
namespace {
[[maybe_unused]] auto const & stringTable = qvStringTable::appStringTable();
}

} // namespace qvUtil::loadTime
