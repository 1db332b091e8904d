// Reads the OBJ file that a program is given.

#ifndef ObjFile_h
#define ObjFile_h

#include "MeshModel.h"

#include "Base/Utility/qvUtilProgress.h"

#include <cstdint>

namespace mesh {

// Reads the file into an empty document and gives the number of statements that were skipped. Throws std::runtime_error
// with the name, the line and what is wrong.
std::int64_t readObjFile(char const * name, Document & document, qvUtil::Progress & progress);

} // namespace mesh

#endif
