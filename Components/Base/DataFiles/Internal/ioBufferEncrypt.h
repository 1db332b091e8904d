// The filter of a chain that enciphers.

#ifndef ioBufferEncrypt_h
#define ioBufferEncrypt_h

#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/DataFiles/Internal/ioCipherBlocks.h"

// The stream begins with a byte that tells the writer's byte order, 1 for little-endian and 0 for the other. Frames
// follow: one byte with a length of up to 240, and so many bytes, of which the whole blocks of 16 are enciphered and
// the rest is in the clear. Reading, an order mark of another value or a frame that is cut short sets ioBufferFailed; a
// stream without any byte is at its end.
class ioBufferEncrypt : public ioBuffer {
public:
    explicit ioBufferEncrypt(ioBufferDirection direction) : ioBuffer(direction) {}
    void finish() override;
    int bufferType() const override { return 4; }
    void close() override;
    int readBlock(char * bytes, int count) override;
    // Works in the caller's bytes.
    void writeBlock(char * bytes, int count) override;

private:
    static constexpr int frameStoreSize = 256;

    void buildKey();
    bool readOrderMark();
    int readFrame();

    bool initialised_ = false;
    bool swap_ = false;
    unsigned table_[ioCipher::tableWords];
    char frame_[frameStoreSize];
    int frameLength_ = 0;
    int framePosition_ = 0;
};

#endif
