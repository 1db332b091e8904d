// The byte stream under both data-file formats: what its input and its output form have in common.

#ifndef ioBufferedStream_h
#define ioBufferedStream_h

#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvString {
class IString;
}
namespace qvTCP {
class Socket;
}

class ioBuffer;

// Status of a buffered stream.
enum ioStreamStatus : int {
    ioStreamGood = 0,           // no failure
    ioStreamOpenFailed = 1,     // the stream could not be opened
    ioStreamEOF = 2,            // end of the data
    ioStreamCompressEnd = 3,    // a compressed stream ended normally
    ioStreamDiskFull = 4,       // the disk is full
    ioStreamChecksumFailed = 5, // data failed a checksum
    ioStreamFailed = 6          // any other failure, or an operation on a closed stream
};

// A stream owns a chain of links: one end that touches the outside world, and filters stacked on it. It is closed
// after construction, after close and after a failed open; an open on an open stream closes it first.
//
// Failures are never thrown. The first one sets the status, which stays until resetStatus or the next open; what is
// asked of a closed stream sets ioStreamFailed and gives zero or nothing. A stream belongs to one thread at a time
// and is not copied.
class QV_EXPORT ioBufferedStream {
public:
    // Deletes the chain without flushing it: call close first when the data matters.
    virtual ~ioBufferedStream();
    // Opens a file. Failure sets ioStreamOpenFailed and leaves the stream closed.
    virtual void openFile(qvString::IString const & name) = 0;
    // Closes the chain from its top and deletes it. Nothing on a closed stream.
    virtual void close();
    // Opens the stream on a socket, which stays the caller's. No build has sockets yet: ioStreamOpenFailed.
    virtual void openSocket(qvTCP::Socket * socket) = 0;

    ioBufferedStream(ioBufferedStream const &) = delete;
    ioBufferedStream & operator=(ioBufferedStream const &) = delete;

    bool good() const { return getStatus() == ioStreamGood; }
    // Of everything that was read or written so far, but for what the links still hold in their blocks.
    ioStreamStatus getStatus() const {
        if (!input_ && top_ && status_ == ioStreamGood) {
            settle();
        }
        return status_;
    }
    // Forgets the stream's failure, but not that of a link of the chain: a chain that has met the end of its data or
    // a failure moves nothing any more, behind a seek either. Open the stream again.
    void resetStatus() { status_ = ioStreamGood; }
    bool isOpen() const { return top_ != nullptr; }

    // Goes to an absolute position in bytes, or to the end of the file for a position below 0. Output is flushed,
    // input that was read ahead is dropped. False, with the status left good, when a filter is on top.
    bool seek(std::int64_t position);
    // The position of the underlying file in bytes. On input this drops what was read ahead, so that the next read
    // continues from the position given.
    std::int64_t tell();

    // The function is called with the running count of bytes (which wraps at 2 GiB) after each block that passes
    // the top link. Filters that are pushed later go on top of it and do not have it.
    void associateProgressFunction(void (*progress)(int));

    // Size in bytes of the named file, which need not be open; -1 for an empty name or where there is none.
    static std::int64_t fileSize(qvString::IString const & name);

protected:
    explicit ioBufferedStream(bool input);

    void setStatus(ioStreamStatus status) { status_ = status; }
    // Takes over the status of the top link, unless that is good.
    void promoteBufferStatus() const;
    // The status so far, without asking for the fate of blocks that are on their way.
    bool goodSoFar() const { return status_ == ioStreamGood; }
    // Makes the link the top of an empty chain; when its status is not good it is deleted and the stream is closed.
    void openOn(ioBuffer * end);
    // False on a closed stream, with the status set for it.
    bool requireOpen();
    bool input() const { return input_; }
    ioBuffer * top() const { return top_; }

private:
    void settle() const;
    void addBufferToChain(ioBuffer * link);
    void popBufferChain();

    mutable ioStreamStatus status_;
    bool input_;
    ioBuffer * top_;
};

#endif
