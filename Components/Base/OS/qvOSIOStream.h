// What every source and sink of bytes has in common.

#ifndef qvOSIOStream_h
#define qvOSIOStream_h

#include "Base/Utility/qvUtilError.h"

namespace qvOS {

/// A stream of bytes: a file, a block of memory, a socket. Each kind has numbers and texts of its own for its failures,
/// the end of the data among them. The order of the virtual operations, here and in the classes below, is what
/// subclasses in other modules rely on.
class QV_EXPORT IOStream {
public:
    IOStream() = default;
    IOStream(IOStream const &) = default;
    IOStream & operator=(IOStream const &) = default;
    virtual ~IOStream();

    /// Reads up to `size` bytes. `count`, which may be null, receives the number of bytes delivered. The end of the
    /// data is reported as a failure, and the last bytes come with it: they count too.
    virtual qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) = 0;
    /// Writes `size` bytes. `count`, which may be null, receives the number of bytes taken.
    virtual qvUtil::Error write(void const * buffer, unsigned int size, unsigned int * count) = 0;
};

} // namespace qvOS

#endif
