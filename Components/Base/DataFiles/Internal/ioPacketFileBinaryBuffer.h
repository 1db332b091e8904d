// A packet in its binary encoding.

#ifndef ioPacketFileBinaryBuffer_h
#define ioPacketFileBinaryBuffer_h

#include "Base/Containers/qvVector.h"
#include "Base/DataFiles/Internal/ioPacketBytes.h"
#include "Base/DataFiles/Internal/ioPacketFileBuffer.h"
#include "Base/DataFiles/Internal/ioStreamBlock.h"

class ioPacketFileBinaryBuffer : public ioPacketFileBuffer, private ioStreamBorrower {
public:
    ioPacketFileBinaryBuffer() = default;
    ~ioPacketFileBinaryBuffer() override { giveBack(); }
    // Gives the buffer its memory. Without it there is room for nothing and nothing to read: so a context answers
    // calls outside packets.
    void allocate() { bytes_.allocate(); }

    void beginWrite(ioWriteContext & context, bool hasReference, ioPacketType const * type) override;
    void endWrite(ioWriteContext & context, ioBufferedStreamOutput & stream) override;
    void writeChunkStart(ioWriteContext & context) override;
    void writeChunkEnd(ioWriteContext & context) override;
    void writeSubPacketStart(ioWriteContext & context) override;
    void writeSubPacketEnd(ioWriteContext & context) override;
    int readFromStream(ioReadContext & context, ioBufferedStreamInput & stream) override;
    void endRead(ioReadContext & context) override;
    void readChunkStart(ioReadContext & context) override;
    bool readChunkValid() override;
    void readChunkEnd(ioReadContext & context) override;
    void readSubPacketStart(ioReadContext & context) override;
    void readSubPacketEnd(ioReadContext & context) override;

    // Bytes of the caller's own that endWrite sends behind those of the packet, as its last field. No more than a
    // parcel holds.
    void setTrailer(void const * bytes, std::size_t count) {
        trailer_ = static_cast<char const *>(bytes);
        trailerSize_ = static_cast<int>(count);
    }

    bool put(void const * bytes, std::size_t count) { return bytes_.put(bytes, count); }

    // Reading: from here on no use of the stream moves the body.
    void own() {
        if (lender_) {
            giveBackAndCopy();
        }
    }
    // Reading: what is left of the innermost chunk or container.
    char const * at() const { return at_; }
    std::size_t available() const { return static_cast<std::size_t>(limit_ - at_); }
    void advance(std::size_t count) { at_ += count; }
    bool atFieldEnd() const { return at_ == limit_; }
    // A field was asked for that is not there: steps to the limit. Whether that is a regular end, behind which a
    // newer reader looks for fields that the file's writer did not know.
    bool endOfFields();

private:
    // Sizes and ends are positions in the packet. The chunk entries are those of the chunk that is open.
    struct Nesting {
        int subPacketSize = 0;
        int chunkSize = 0;
        int containerEnd = 0;
        int chunkEnd = 0;
        bool inChunk = false;
        bool chunkHasData = false;
        int outerLimit = 0; // up to where fields could be read outside
    };

    int readPosition() const { return static_cast<int>(at_ - body_); }
    int readLimit() const { return static_cast<int>(limit_ - body_); }
    void setReadLimit(int position) { limit_ = body_ + position; }
    int readFrameSize(ioReadContext & context, int containerEnd);
    int loadBody(ioBufferedStreamInput & stream, int size);
    void takeOver() override;
    void giveBack();
    void giveBackAndCopy();
    void patchSize(ioWriteContext & context, int sizePosition);

    ioPacketBytes bytes_;
    char const * trailer_ = nullptr;
    int trailerSize_ = 0;
    // Reading: the body, which lies in the array, or still in the storage of the stream that lends it.
    ioBufferedStreamInput * lender_ = nullptr;
    int lentSize_ = 0;
    char const * body_ = nullptr;
    char const * at_ = nullptr;
    char const * limit_ = nullptr;
    bool readingFrame_ = false;
    qv::vector<Nesting> nesting_;
};

#endif
