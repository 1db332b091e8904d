// An input stream on bytes in memory.

#ifndef MemoryInput_h
#define MemoryInput_h

#include "Base/DataFiles/Internal/ioBufferReadAhead.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"

#include <algorithm>
#include <cstdint>

// Read ahead like a file.
class MemoryInputEnd : public ioBufferReadAhead {
public:
    MemoryInputEnd(std::uint8_t const * bytes, std::size_t size)
        : ioBufferReadAhead(ioBufferDirection::input, largestStorage), bytes_(bytes), size_(size) {}
    int bufferType() const override { return 0; }
    void close() override {}
    int readBlock(char * to, int count) override {
        int const n = tryRead(to, count);
        if (n == 0) {
            setStatus(ioBufferEOF);
        }
        return n;
    }
    void writeBlock(char *, int) override { setStatus(ioBufferFailed); }

protected:
    bool canReadAhead() const override { return true; }
    int tryRead(char * to, int count) override {
        // In pieces that end anywhere, so that bodies lie over their borders.
        auto const n = std::min({static_cast<std::size_t>(count), size_, mostAtOnce});
        std::copy_n(bytes_, n, to);
        bytes_ += n;
        size_ -= n;
        return static_cast<int>(n);
    }
    void giveBack(int count) override {
        bytes_ -= count;
        size_ += static_cast<std::size_t>(count);
    }

private:
    static constexpr std::size_t mostAtOnce = 1999;

    std::uint8_t const * bytes_;
    std::size_t size_;
};

class MemoryInput : public ioBufferedStreamInput {
public:
    MemoryInput(std::uint8_t const * bytes, std::size_t size) { openOn(new MemoryInputEnd(bytes, size)); }
};

#endif
