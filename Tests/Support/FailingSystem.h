// Lets the n-th system call of the library's binding fail, or ends the process there. For programs that are linked from
// the library's objects with qv_test_failing_system(<target>).

#ifndef qvTestFailingSystem_h
#define qvTestFailingSystem_h

#include <functional>
#include <string>

namespace qvTest {

enum class SystemFault {
    diskFull,
    inputOutput,
    denied,
    invalid,
    interrupted,   // the call is to be repeated
    shortTransfer, // half of the bytes, at least one; other calls go well
    killed         // the process ends in front of the call
};

enum class FaultLasts { once, fromThenOn };

// From its construction to its end; the calls count from 0. With a path in `only`, those alone count that change that
// file or give the name to another.
class FailingSystem {
public:
    FailingSystem(SystemFault fault, FaultLasts lasts, int n, std::string const & only = "");
    FailingSystem(FailingSystem const &) = delete;
    FailingSystem & operator=(FailingSystem const &) = delete;
    ~FailingSystem();

    // Whether any call was met.
    static bool struck();
};

// Runs the function in a process that ends in front of its n-th system call; false when it came to its end, where the
// function gives true.
bool endsAt(int n, std::function<bool()> const & function);

// Descriptors that the process has open.
int numOpenDescriptors();

} // namespace qvTest

#endif
