// Writes a document as a packet file.

#ifndef DocumentWriter_h
#define DocumentWriter_h

#include "MeshModel.h"

#include "Base/DataFiles/ioHeader.h"
#include "Base/Utility/qvUtilProgress.h"

class ioBufferedStreamOutput;

namespace mesh {

// False when the file could not be written whole. The stream stays open; close it, and look at its status then. The
// progress is told what part of the arrays is written.
bool writeDocument(ioBufferedStreamOutput & stream, ioWriteMethod method, Document const & document,
                   qvUtil::Progress & progress);

} // namespace mesh

#endif
