// What the ends of a chain that transfer by a stream's read and write have in common.

#ifndef ioBufferStreamEnd_h
#define ioBufferStreamEnd_h

#include "Base/DataFiles/Internal/ioBuffer.h"

namespace qvOS {
class IOStream;
}

// The stream stays its owner's, and open. Each transfer leaves its Error in the link. A read that gives neither bytes
// nor an Error counts as one that gives an Error, and so does a write that takes nothing: neither is asked again for
// ever. Without a stream every transfer sets ioBufferFailed.
class ioBufferStreamEnd : public ioBuffer {
public:
    explicit ioBufferStreamEnd(ioBufferDirection direction) : ioBuffer(direction) {}
    // Forgets the stream.
    void close() override;
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;

protected:
    void setStream(qvOS::IOStream * stream);
    // What a read that gave no bytes sets.
    virtual ioBufferStatus statusOfEmptyRead() const = 0;

private:
    qvOS::IOStream * stream_ = nullptr;
};

#endif
