#include "Base/DataFiles/Internal/ioBufferTCP.h"

ioBufferTCP::ioBufferTCP(ioBufferDirection direction, qvOS::IOStream * socket) : ioBufferStreamEnd(direction) {
    setStream(socket);
}
