// The end of a chain that reads or writes a qvOS::IOStream.

#ifndef ioBufferIOStream_h
#define ioBufferIOStream_h

#include "Base/DataFiles/Internal/ioBufferStreamEnd.h"

// A read without bytes is the end of the data: a stream reports that as an Error of its own like any other.
class ioBufferIOStream : public ioBufferStreamEnd {
public:
    ioBufferIOStream(ioBufferDirection direction, qvOS::IOStream * stream);
    int bufferType() const override { return 5; }

protected:
    ioBufferStatus statusOfEmptyRead() const override { return ioBufferEOF; }
};

#endif
