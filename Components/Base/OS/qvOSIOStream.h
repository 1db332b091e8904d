// What every source and sink of bytes has in common.

#ifndef qvOSIOStream_h
#define qvOSIOStream_h

#include "Base/Utility/qvUtilError.h"
#include "Base/qvBaseConfig.h"

namespace qvOS {

// Files, memory streams and sockets are read and written through this. The end of the data is an Error too, with a
// number and a text of each stream's own; the last bytes may come together with it, so count is looked at first.
class QV_EXPORT IOStream {
public:
    virtual ~IOStream();
    // Reads up to size bytes. count, when not null, receives the number of bytes delivered.
    virtual qvUtil::Error read(void * buffer, unsigned int size, unsigned int * count) = 0;
    // Writes size bytes. count, when not null, receives the number of bytes taken.
    virtual qvUtil::Error write(void const * buffer, unsigned int size, unsigned int * count) = 0;
};

} // namespace qvOS

#endif
