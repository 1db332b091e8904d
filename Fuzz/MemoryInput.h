// An input stream on bytes in memory.

#ifndef MemoryInput_h
#define MemoryInput_h

#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"

#include <algorithm>
#include <cstdint>

class MemoryInputEnd : public ioBuffer {
public:
    MemoryInputEnd(std::uint8_t const * bytes, std::size_t size)
        : ioBuffer(ioBufferDirection::input), bytes_(bytes), size_(size) {}
    int bufferType() const override { return 0; }
    void close() override {}
    int readBlock(char * to, int count) override {
        auto const n = std::min(static_cast<std::size_t>(count), size_);
        std::copy_n(bytes_, n, to);
        bytes_ += n;
        size_ -= n;
        if (n == 0) {
            setStatus(ioBufferEOF);
        }
        return static_cast<int>(n);
    }
    void writeBlock(char *, int) override { setStatus(ioBufferFailed); }

private:
    std::uint8_t const * bytes_;
    std::size_t size_;
};

class MemoryInput : public ioBufferedStreamInput {
public:
    MemoryInput(std::uint8_t const * bytes, std::size_t size) { openOn(new MemoryInputEnd(bytes, size)); }
};

#endif
