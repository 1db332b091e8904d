// The end of a chain that reads or writes a file descriptor.

#ifndef ioBufferFD_h
#define ioBufferFD_h

#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/Platform/PlatformFile.h"

// A call of the system costs as much as copying some blocks, so blocks go to it by the dozen: the current block moves
// along in a storage of several. What the caller can tell stays as with single blocks. On output, what is gathered is
// written before the stream's status is told, before the position is asked for or changed, at a flush and at close,
// and when the link is deleted. On input, only what can be sought back in is read ahead by more than a block, and it is
// given back when the position is asked for, and at close.
class ioBufferFD : public ioBuffer {
public:
    explicit ioBufferFD(ioBufferDirection direction);
    // Leaves the descriptor open, and loses what is in the block.
    ~ioBufferFD() override;
    bool seek(std::int64_t position) override;
    std::int64_t tell() override;
    int bufferType() const override { return 0; }
    void close() override;
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;
    char const * takeInPlace(int count) override;

    // Sets ioBufferOpenFailed when the system refuses.
    void open(qvString::IString const & name);
    // Takes over a descriptor; close will close it.
    void open(qvPlatform::Descriptor descriptor);
    // Whether an output file is emptied when it is opened by name. True at first.
    void setTruncate(bool truncate) { truncate_ = truncate; }

protected:
    void fillBlock() override;
    void dropBlock() override;
    void passBlock(int count) override;
    void settle() override;
    int readLarge(char * bytes, int count) override;
    int writeLarge(char const * bytes, int count) override;

private:
    void opened(qvPlatform::Descriptor descriptor);
    void takeFailure(qvPlatform::FileResult result);
    void enterNextBlock();
    bool readAhead(int count);
    void writePieces(std::span<qvPlatform::ConstantPiece const> pieces);
    void countBlocks(int count);
    // Output: the passed blocks lie between the storage's begin and the current block.
    int numGathered() const { return static_cast<int>(block() - storage()); }
    // Input: what was read and lies behind the current block.
    int numAhead() const { return static_cast<int>(aheadEnd_ - block()) - limit(); }

    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
    bool isOpen_ = false;
    bool truncate_ = true;
    bool canSeek_ = false;
    char * aheadEnd_;
};

#endif
