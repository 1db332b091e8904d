// The file behind the trace.

#ifndef qvUndoReportFile_h
#define qvUndoReportFile_h

#include "Base/Platform/PlatformFile.h"

#include <string_view>

namespace qvUndo {

class ReportFile {
public:
    constexpr ReportFile() = default;
    ReportFile(ReportFile const &) = delete;
    ReportFile & operator=(ReportFile const &) = delete;
    ~ReportFile() { close(); }

    // Stays closed when the file cannot be opened.
    void open(char const * path);
    void close();
    bool isOpen() const { return descriptor_ != qvPlatform::noDescriptor; }

    // What cannot be written is lost: an undo does not fail for its trace.
    void write(std::string_view text);

private:
    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
};

// Defined with the other load-time objects. What a line of the trace tells is computed only when this is open, so
// callers ask first.
extern ReportFile reportFile;

} // namespace qvUndo

#endif
