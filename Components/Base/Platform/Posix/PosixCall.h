// What every source of the binding does around a system call.

#ifndef PosixCall_h
#define PosixCall_h

#include "Base/Platform/PlatformFile.h"
#include "Base/Strings/qvStringIString.h"

#include <cerrno>

namespace qvPlatform::posix {

// The outcome that callers tell apart for a number of errno; 0 is good.
FileResult outcomeOf(int number);

// Repeats a system call while a signal interrupts it. The number of the failure is taken at once.
template <typename Call>
auto repeated(Call call, int & number) {
    for (;;) {
        auto const result = call();
        number = result < 0 ? errno : 0;
        if (number != EINTR) {
            return result;
        }
    }
}

// The outcome of a call that gives something below 0 when it fails.
template <typename Call>
FileResult outcomeOfCall(Call call) {
    int number = 0;
    repeated(call, number);
    return outcomeOf(number);
}

// A name in the system's form, which refuses a name with a zero inside: the system would take the part in front of it.
class SystemName {
public:
    explicit SystemName(qvString::IString const & name) : bytes_(systemName(name)), isWhole_(!hasZero(name)) {}

    // Runs a call that takes the name and gives something below 0 when it fails.
    template <typename Call>
    FileResult run(Call call) const {
        return isWhole_ ? outcomeOfCall([&] { return call(bytes_.get()); }) : outcomeOf(ENOENT);
    }

    bool isWhole() const { return isWhole_; }
    char const * get() const { return bytes_.get(); }

private:
    static bool hasZero(qvString::IString const & name) { return name.find(L'\0', 0) != qvString::IString::npos; }

    std::unique_ptr<char[]> bytes_;
    bool isWhole_;
};

} // namespace qvPlatform::posix

#endif
