// The filter of a chain that adds sums to the data and tests them.

#ifndef ioBufferChecksum_h
#define ioBufferChecksum_h

#include "Base/DataFiles/Internal/ioBuffer.h"

#include <memory>

// Each block becomes a frame:
//
//     offset  width
//          0      4  number of data bytes, most significant byte first
//          4      4  the bitwise complement of it, likewise
//          8      2  the running sum behind this frame's data, in the machine's byte order
//         10         the data
//
// The sum is the one's-complement sum of 16-bit words, without a final complement, over all data since the filter was
// made; it comes out byte-swapped on a machine of the other byte order, so stored natively it has the same bytes. A
// frame that fails its tests sets ioBufferChecksumFailed.
class ioBufferChecksum : public ioBuffer {
public:
    explicit ioBufferChecksum(ioBufferDirection direction) : ioBuffer(direction) {}
    void finish() override;
    int bufferType() const override { return 2; }
    void close() override;
    int readBlock(char * bytes, int count) override;
    void writeBlock(char * bytes, int count) override;

protected:
    int readLarge(char * bytes, int count) override;
    int writeLarge(char const * bytes, int count) override;

private:
    void addToSum(char const * bytes, int count);
    void writeFrame(char const * bytes, int count);
    int readFrame(char * bytes, int count);
    int keepFrame(int size);
    int serveKept(char * bytes, int count);

    struct Free {
        void operator()(char * bytes) const;
    };

    std::uint16_t sum_ = 0;
    // A frame larger than the request for it.
    std::unique_ptr<char, Free> kept_;
    int keptCapacity_ = 0;
    int keptLength_ = 0;
    int keptPosition_ = 0;
};

#endif
