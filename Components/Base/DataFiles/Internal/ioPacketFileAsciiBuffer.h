// A packet in its ASCII encoding.

#ifndef ioPacketFileAsciiBuffer_h
#define ioPacketFileAsciiBuffer_h

#include "Base/Containers/qvVector.h"
#include "Base/DataFiles/Internal/ioPacketBytes.h"
#include "Base/DataFiles/Internal/ioPacketFileBuffer.h"

class ioPacketFileAsciiBuffer : public ioPacketFileBuffer {
public:
    ioPacketFileAsciiBuffer() = default;
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

    ioPacketBytes & bytes() { return bytes_; }

    // Reading: the text that is left of the packet.
    char const * at() const { return at_; }
    char const * end() const { return end_; }
    // Goes to the place, which lies in that text.
    void moveTo(char const * place) { at_ = place; }
    // Goes behind the next blank, or to the end of the chunk or container when that comes first.
    void skipBehindBlank();
    // No further field of the chunk or container stands at the position.
    bool atFieldEnd() const;
    // Asked at a field end: whether that is a regular one, behind which a newer reader looks for fields that the
    // file's writer did not know, and not the end of the whole packet or a bracket that belongs to nothing.
    bool isRegularEnd() const { return isRegularEndAt(level()); }

private:
    bool isRegularEndAt(int level) const;
    template <std::size_t size>
    bool startsWith(char const (&text)[size]) const;
    bool loadText(ioBufferedStreamInput & stream);
    int takeFrameNumber();
    void stepOver(int count);

    ioPacketBytes bytes_;
    char const * at_ = nullptr;
    char const * end_ = nullptr;
    qv::vector<bool> chunkHasData_; // by level
    int absentLevels_ = 0;          // innermost sub-packets that the client asked for and the text has not
};

#endif
