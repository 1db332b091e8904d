// The filter of a chain that compresses.

#ifndef ioBufferCompress_h
#define ioBufferCompress_h

#include "Base/DataFiles/Internal/ioBuffer.h"

#include <memory>

class ioLzwDecoder;
class ioLzwEncoder;

// LZW; ioLzwFormat.h tells the format. Writing, only whole groups of codes go to the next link before the end; the end
// code goes out by finish or close, of a stream without data too. Reading, the end code sets ioBufferCompressEnd and
// leaves the next link at the byte behind the stream; whatever no writer makes, a missing end included, sets
// ioBufferFailed, and so do tables that there is no memory for. The tables are made by the first byte.
class ioBufferCompress : public ioBuffer {
public:
    explicit ioBufferCompress(ioBufferDirection direction);
    ~ioBufferCompress() override;
    // Input: when all data has been read but its end has not been met, takes the end code, so that what lies behind can
    // be read.
    void finish() override;
    int bufferType() const override { return 1; }
    void close() override;
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;

private:
    bool prepareEncoder();
    void writeOutput();

    std::unique_ptr<ioLzwEncoder> encoder_;
    std::unique_ptr<ioLzwDecoder> decoder_;
    bool finished_ = false;
};

#endif
