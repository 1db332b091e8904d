// What the ends of a chain have in common that read files.

#ifndef ioBufferReadAhead_h
#define ioBufferReadAhead_h

#include "Base/DataFiles/Internal/ioBuffer.h"

// A call of the system costs as much as copying some blocks, so blocks are read by the dozen: the current block moves
// along in a storage of several. What the caller can tell stays as with single blocks: only what can be sought back in
// is read ahead by more than a block, and it is given back when the position is asked for.
class ioBufferReadAhead : public ioBuffer {
public:
    // The storage has whole blocks, and holds so many bytes if that is not more than is worth while.
    ioBufferReadAhead(ioBufferDirection direction, std::int64_t wanted);
    char const * takeInPlace(int count) override;

protected:
    static constexpr int largestStorage = 28 * blockSize; // from the heap: larger pieces would be mapped anew each time
    int storageSize() const { return storageSize_; }
    static constexpr int wholeBlocks(int count) { return count - count % blockSize; }

    virtual bool canReadAhead() const = 0;
    // Reads like readBlock, but without a word on an end or a failure: the next fill will meet that.
    virtual int tryRead(char * bytes, int count) = 0;
    // The position moves back by so many bytes.
    virtual void giveBack(int count) = 0;

    void fillBlock() override;
    void dropBlock() override;
    int readLarge(char * bytes, int count) override;

    // Behind a change of the position: nothing is given back.
    void forgetBlocks();
    void countBlocks(int count);

private:
    void enterNextBlock();
    bool readAhead(int count);
    // What was read and lies behind the current block.
    int numAhead() const { return static_cast<int>(aheadEnd_ - block()) - limit(); }

    int storageSize_;
    char * aheadEnd_;
};

#endif
