#include "InputFile.h"

#include "Base/DataFiles/ioBufferedStream.h"

namespace mesh {

InputFile::InputFile(qvString::IString const & name, qvUtil::Progress & progress)
    : File(name), progress_(progress), size_(ioBufferedStream::fileSize(name)) {}

qvUtil::Error InputFile::read(void * buffer, unsigned int size, unsigned int * count) {
    unsigned int taken = 0;
    qvUtil::Error error = File::read(buffer, size, &taken);
    done_ += taken;
    if (size_ > 0)
        progress_.set(static_cast<double>(done_) / static_cast<double>(size_));
    if (count)
        *count = taken;
    return error;
}

} // namespace mesh
