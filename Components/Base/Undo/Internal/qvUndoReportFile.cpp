#include "Base/Undo/Internal/qvUndoReportFile.h"

#include "Base/Strings/qvStringIString.h"

namespace qvUndo {

void ReportFile::open(char const * path) {
    qvPlatform::Descriptor descriptor = qvPlatform::noDescriptor;
    if (qvPlatform::openForAppending(qvString::IString(path), descriptor).good())
        descriptor_ = descriptor;
}

void ReportFile::close() {
    if (isOpen())
        qvPlatform::closeDescriptor(descriptor_);
    descriptor_ = qvPlatform::noDescriptor;
}

void ReportFile::write(std::string_view text) {
    qvPlatform::ConstantPiece const piece{text.data(), text.size()};
    qvPlatform::writeAll(descriptor_, {&piece, 1});
}

} // namespace qvUndo
