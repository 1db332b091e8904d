// Reads a document from a packet file.

#ifndef DocumentReader_h
#define DocumentReader_h

#include "MeshModel.h"

#include <cstdint>

class ioBufferedStreamInput;

namespace mesh {

struct ReadResult {
    qvString::CString problem; // empty when the document was read
    int packets = 0;
};

// Reads into an empty document. `fileSize` bounds what is allocated for a file that announces more than it can hold.
// When there is a problem the document may be in any state but can be destroyed.
ReadResult readDocument(ioBufferedStreamInput & stream, std::int64_t fileSize, Document & document);

} // namespace mesh

#endif
