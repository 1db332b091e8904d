// One link of the chain through which a buffered stream moves its bytes: the common machinery of filters and ends.

#ifndef ioBuffer_h
#define ioBuffer_h

#include "Base/Utility/qvUtilError.h"

#include <cstdint>
#include <memory>

enum ioBufferStatus : int {
    ioBufferGood = 0,
    ioBufferOpenFailed = 1,
    ioBufferEOF = 2,
    ioBufferDiskFull = 3,
    ioBufferChecksumFailed = 4,
    ioBufferCompressEnd = 5,
    ioBufferFailed = 6
};

enum class ioBufferDirection { output, input };

// Whether promoteStatus passes on the two regular ends of data as well.
enum class ioBufferEnds { ignored, included };

// A chain has one end that touches the outside world and any number of filters on top of it, each owning the link
// below. It moves data in one direction. Once a link's status is not good it takes and gives nothing new, so that
// the first failure stays visible; what an input link still holds in its block can be read out. Not exported;
// belongs to one thread at a time.
class ioBuffer {
public:
    static constexpr int blockSize = 4096;

    // The storage holds at least one block. An end may have room for several, and move its block along in it.
    explicit ioBuffer(ioBufferDirection direction, int storageSize = blockSize);
    // Neither flushes nor closes.
    virtual ~ioBuffer();
    // A position below 0 is the end of the data. False where the link cannot seek.
    virtual bool seek(std::int64_t position);
    virtual std::int64_t tell();
    // Ends a filter's own stream before the filter leaves the chain.
    virtual void finish();
    virtual int bufferType() const = 0;
    virtual void close() = 0;
    // Raw transfer of this link. The reader gives the number of bytes delivered, 0 to count; at an end or a failure
    // it sets the status. One that delivers nothing and stays good is asked again: an end of a chain never does that.
    virtual int readBlock(char * bytes, int count) = 0;
    virtual void writeBlock(char * bytes, int count) = 0;

    ioBuffer(ioBuffer const &) = delete;
    ioBuffer & operator=(ioBuffer const &) = delete;

    int read(char * bytes, int count);
    void write(char const * bytes, int count);
    void fill();
    void flushBuffer();
    void flushChain();
    // Output: writes what the end of the chain has gathered, so that the statuses are those of single blocks. The
    // blocks that the links hold stay there.
    void settleChain();
    void promoteStatus(ioBufferEnds ends);
    // Finishes this link and hands over what is below it.
    std::unique_ptr<ioBuffer> popNext();

    bool good() const { return status_ == ioBufferGood; }
    // Whether this is the link that touches the outside world.
    bool isEnd() const { return !next_; }
    bool input() const { return direction_ == ioBufferDirection::input; }
    ioBufferStatus status() const { return status_; }
    void setStatus(ioBufferStatus status) { status_ = status; }
    void setNext(std::unique_ptr<ioBuffer> next) { next_ = std::move(next); }
    void setProgress(void (*progress)(int)) { progress_ = progress; }
    qvUtil::Error const & error() const { return error_; }

    // The bytes of an input link that are there without a fill, and their consumption.
    char const * available() const { return block_ + position_; }
    int numAvailable() const { return limit_ - position_; }
    void consume(int count) { position_ += count; }

    // Takes so many bytes that lie in one piece, without copying them; they stay until the next operation on the
    // link. Null, with nothing taken, where the link cannot do that.
    virtual char const * takeInPlace(int count);

protected:
    ioBuffer * next() const { return next_.get(); }
    void setError(qvUtil::Error const & error) { error_ = error; }

    // Input: makes the next block current, empty at an end or a failure.
    virtual void fillBlock();
    // Input: forgets the current block, and what was read ahead of it.
    virtual void dropBlock();
    // Output: sends so many bytes of the current block on their way and makes an empty block current.
    virtual void passBlock(int count);
    // Output: writes the passed blocks that an end has gathered. The current block stays.
    virtual void settle();
    // A transfer so large that the link's storage is not worth its while: whole blocks straight from or into the
    // caller's memory. The result is the number of bytes moved, 0 when the link prefers its blocks.
    virtual int readLarge(char * bytes, int count);
    virtual int writeLarge(char const * bytes, int count);

    char * storage() const { return storage_.get(); }
    char * block() const { return block_; }
    int position() const { return position_; }
    int limit() const { return limit_; }
    void setBlock(char * block, int position, int limit);
    void countBlock(int count);

private:
    struct StorageDelete {
        void operator()(char * storage) const;
    };

    qvUtil::Error error_;
    std::unique_ptr<char, StorageDelete> storage_;
    char * block_;
    int position_ = 0;
    int limit_ = 0;
    int total_ = 0; // wraps on long streams; only the progress function sees it
    ioBufferStatus status_ = ioBufferGood;
    ioBufferDirection direction_;
    std::unique_ptr<ioBuffer> next_;
    void (*progress_)(int) = nullptr;
};

#endif
