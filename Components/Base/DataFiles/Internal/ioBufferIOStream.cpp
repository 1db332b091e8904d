#include "Base/DataFiles/Internal/ioBufferIOStream.h"

ioBufferIOStream::ioBufferIOStream(ioBufferDirection direction, qvOS::IOStream * stream)
    : ioBufferStreamEnd(direction) {
    setStream(stream);
}
