// A file that tells how far it has been read.

#ifndef InputFile_h
#define InputFile_h

#include "Base/OS/qvOSFile.h"
#include "Base/Utility/qvUtilProgress.h"

#include <cstdint>

namespace mesh {

// To be read by a buffered stream, from its start to its end; the progress lives longer.
class InputFile : public qvOS::File {
public:
    InputFile(qvString::IString const & name, qvUtil::Progress & progress);

    // In bytes, as it was at the start.
    std::int64_t size() const { return size_; }
    qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) override;

private:
    qvUtil::Progress & progress_;
    std::int64_t size_;
    std::int64_t done_ = 0;
};

} // namespace mesh

#endif
