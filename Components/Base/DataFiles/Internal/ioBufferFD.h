// The end of a chain that reads or writes a file descriptor.

#ifndef ioBufferFD_h
#define ioBufferFD_h

#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/Platform/PlatformFile.h"

class ioBufferFD : public ioBuffer {
public:
    explicit ioBufferFD(ioBufferDirection direction);
    bool seek(std::int64_t position) override;
    std::int64_t tell() override;
    int bufferType() const override { return 0; }
    // Deleting the link without this leaves the descriptor open.
    void close() override;
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;

    // Sets ioBufferOpenFailed when the system refuses.
    void open(qvString::IString const & name);
    // Takes over a descriptor; close will close it.
    void open(qvPlatform::Descriptor descriptor);
    // Whether an output file is emptied when it is opened by name. True at first.
    void setTruncate(bool truncate) { truncate_ = truncate; }

protected:
    int readBlocksAndFill(char * bytes, int count) override;
    bool flushAndWriteBlocks(char const * bytes, int count) override;

private:
    void takeFailure(qvPlatform::FileResult result);
    int readPieces(std::span<qvPlatform::MutablePiece const> pieces);

    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
    bool isOpen_ = false;
    bool truncate_ = true;
};

#endif
