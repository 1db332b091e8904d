// Runs a program of the project through the shell, in a scratch directory.

#ifndef qvTestRunProgram_h
#define qvTestRunProgram_h

#include "Support/ScratchDirectory.h"

#include <cstdlib>
#include <ostream>
#include <string>
#include <sys/wait.h>

namespace qvTest {

struct Outcome {
    int status; // of the exit, -1 when it was none
    std::string out;
    std::string err;
    bool operator==(Outcome const &) const = default;
};

inline void PrintTo(Outcome const & outcome, std::ostream * stream) {
    *stream << outcome.status << "\nout: " << outcome.out << "\nerr: " << outcome.err;
}

// Output without end stops at some 100 MB.
inline Outcome runProgram(ScratchDirectory const & scratch, std::string const & program,
                          std::string const & arguments) {
    std::string line = "ulimit -f 200000 && cd " + scratch.path("") + " && '";
    line += program + "' 2> .err > .out " + arguments;
    int const status = std::system(line.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, bytesOf(scratch.path(".out")), bytesOf(scratch.path(".err"))};
}

} // namespace qvTest

#endif
