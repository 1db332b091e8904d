// The end of a chain that reads or writes a file descriptor.

#ifndef ioBufferFD_h
#define ioBufferFD_h

#include "Base/DataFiles/Internal/ioBufferReadAhead.h"
#include "Base/Platform/PlatformFile.h"

#include <optional>

// Output gathers blocks in the storage as input reads them ahead. What is gathered is written before the stream's
// status is told, before the position is asked for or changed, at a flush and at close, and when the link is deleted.
class ioBufferFD : public ioBufferReadAhead {
public:
    // Unused are the blocks of a link that another one asks for raw transfers only.
    enum class Blocks { used, unused };
    explicit ioBufferFD(ioBufferDirection direction, Blocks blocks = Blocks::used);
    // Leaves the descriptor open, and loses what is in the block.
    ~ioBufferFD() override;
    bool seek(std::int64_t position) override;
    std::int64_t tell() override;
    // The position then, which is the size of the file; -1 where it has none.
    std::int64_t seekToEnd();
    int bufferType() const override { return 0; }
    void close() override;
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;

    bool canReadAhead() const override;
    int tryRead(char * bytes, int count) override;

    // Sets ioBufferOpenFailed when the system refuses.
    void open(qvString::IString const & name);
    // Takes over a descriptor; close will close it.
    void open(qvPlatform::Descriptor descriptor);
    // Whether an output file is emptied when it is opened by name. True at first.
    void setTruncate(bool truncate) { truncate_ = truncate; }

protected:
    void giveBack(int count) override;
    void passBlock(int count) override;
    void settle() override;
    int writeLarge(char const * bytes, int count) override;

private:
    void opened(qvPlatform::Descriptor descriptor);
    void takeFailure(qvPlatform::FileResult result);
    void writePieces(std::span<qvPlatform::ConstantPiece const> pieces);
    // Output: the passed blocks lie between the storage's begin and the current block.
    int numGathered() const { return static_cast<int>(block() - storage()); }

    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
    bool isOpen_ = false;
    bool truncate_ = true;
    mutable std::optional<bool> canSeek_; // asked for when it matters
};

#endif
