#include "ObjFile.h"

#include "InputFile.h"
#include "ObjReader.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"

#include <stdexcept>
#include <string>

namespace mesh {

std::int64_t readObjFile(char const * name, Document & document, qvUtil::Progress & progress) {
    InputFile file(qvString::IString(name, qvString::UTF8), progress);
    if (file.open(qvOS::OpenRead))
        throw std::runtime_error(std::string(name) + ": cannot be opened");
    ioBufferedStreamInput stream;
    stream.openIOStream(&file);
    ObjReader reader(document);
    if (!reader.read(stream))
        throw std::runtime_error(std::string(name) + ":" + std::to_string(reader.line()) + ": " +
                                 reader.problem().asChar());
    return reader.skippedStatements();
}

} // namespace mesh
