// A trace file of one test, with room for the test's own lines between those of the library, so that one text shows the
// order of everything.

#ifndef qvTestUndoSupport_h
#define qvTestUndoSupport_h

#include "Base/Undo/qvUndoCommand.h"
#include "Base/Undo/qvUndoManager.h"
#include "Base/Undo/qvUndoReport.h"
#include "Support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>

namespace qvTest {

inline std::string formatted(char const * format, ...) {
    char text[512];
    std::va_list args;
    va_start(args, format);
    std::vsnprintf(text, sizeof text, format, args);
    va_end(args);
    return text;
}

class Trace {
public:
    Trace() {
        qvUndoReportInit(scratch_.path("trace").c_str());
        EXPECT_EQ(news(), "\n------------------------------\n\n");
    }
    ~Trace() { qvUndoReportInit(nullptr); }

    std::string path() const { return scratch_.path("trace"); }

    // What was written since the last call.
    std::string news() {
        std::ifstream file(path(), std::ios::binary);
        file.seekg(read_);
        std::string const text{std::istreambuf_iterator<char>(file), {}};
        read_ += std::streamoff(text.size());
        return text;
    }

private:
    ScratchDirectory scratch_;
    std::streamoff read_ = 0;
};

inline unsigned long long addressOf(void const * p) { return reinterpret_cast<std::uintptr_t>(p); }

} // namespace qvTest

#endif
