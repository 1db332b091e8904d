// The end of a chain that reads or writes a socket.

#ifndef ioBufferTCP_h
#define ioBufferTCP_h

#include "Base/DataFiles/Internal/ioBufferStreamEnd.h"

// Sockets are streams, so this knows no more of them. It asks for whole blocks, for which a socket waits until all has
// come or the connection ends; a read that gets nothing is a failure, since a connection has no regular end.
class ioBufferTCP : public ioBufferStreamEnd {
public:
    ioBufferTCP(ioBufferDirection direction, qvOS::IOStream * socket);
    int bufferType() const override { return 3; }

protected:
    ioBufferStatus statusOfEmptyRead() const override { return ioBufferFailed; }
};

#endif
