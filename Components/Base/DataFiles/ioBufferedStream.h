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
class ioStreamBorrower;

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
    // Opens the stream on a socket, which stays the caller's. A null one sets ioStreamFailed. No build has sockets yet:
    // ioStreamOpenFailed for any other.
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
    // input that was read ahead is dropped. False, with the status left good, when a filter is on top; nothing is
    // dropped then.
    bool seek(std::int64_t position);
    // The position of the underlying file in bytes. On input this drops what was read ahead, so that the next read
    // continues from the position given. 0 when a filter is on top; nothing is dropped then.
    std::int64_t tell();

    // Push a filter on top of the chain, or take the top filter off, whichever it is. Data that is written passes the
    // filter that was pushed last first, and reading needs the same filters pushed in the same order. Taken off, a
    // filter ends its own stream, and what is written or read next lies behind that in the file. Off where no filter
    // is on the chain sets ioStreamFailed.
    //
    // compress packs the data. Reading past its end gives ioStreamCompressEnd, which compress(false) turns into good.
    // Nothing is stored for data that was not written but by compress, which then stores an empty stream. A missing
    // end and data that compress never makes give ioStreamFailed.
    void compress(bool on);
    // checksum finds out when the data was changed: ioStreamChecksumFailed.
    void checksum(bool on);
    // encrypt hides the data from a casual look, see ioBlockCipher.h; the last bytes of a block that are fewer than 16
    // stay as they are. Broken framing gives ioStreamFailed, data that was changed is not noticed.
    void encrypt(bool on);

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
    // The two halves of openOn, behind the reset of the status.
    void adopt(ioBuffer * end);
    void abandonChain();
    // False on a closed stream, with the status set for it. Every operation on the data begins so.
    bool requireOpen();
    // Who is to be told before the bytes in the chain's storage move; null for nobody.
    void setBorrower(ioStreamBorrower * borrower) { borrower_ = borrower; }
    bool input() const { return input_; }
    ioBuffer * top() const { return top_; }

private:
    void settle() const;
    void recall();
    bool hasPosition();
    template <class Filter>
    void pushOrPop(bool on);
    void addBufferToChain(ioBuffer * link);
    void popBufferChain();

    mutable ioStreamStatus status_;
    bool input_;
    ioBuffer * top_;
    ioStreamBorrower * borrower_ = nullptr;
};

#endif
