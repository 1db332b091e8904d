#include "Base/DataFiles/Internal/ioBufferReadAhead.h"

#include <algorithm>
#include <cstring>

namespace {

int sizeFor(std::int64_t wanted, int largest) {
    constexpr int block = ioBuffer::blockSize;
    return static_cast<int>(std::clamp<std::int64_t>(wanted, 1, largest) + block - 1) / block * block;
}

} // namespace

ioBufferReadAhead::ioBufferReadAhead(ioBufferDirection direction, std::int64_t wanted)
    : ioBuffer(direction, sizeFor(wanted, largestStorage)), storageSize_(sizeFor(wanted, largestStorage)),
      aheadEnd_(storage()) {}

// Makes the next block of what was read the current one. Blocks are counted as the reader comes to them, however many
// were read at once.
void ioBufferReadAhead::enterNextBlock() {
    int const count = std::min(blockSize, numAhead());
    setBlock(block() + limit(), 0, count);
    countBlock(count);
}

void ioBufferReadAhead::fillBlock() {
    if (numAhead() == 0) {
        forgetBlocks();
        aheadEnd_ += std::max(0, readBlock(storage(), canReadAhead() ? storageSize_ : blockSize));
    }
    enterNextBlock();
}

void ioBufferReadAhead::dropBlock() {
    if (int const ahead = numAhead(); ahead > 0) {
        giveBack(ahead);
    }
    forgetBlocks();
}

void ioBufferReadAhead::forgetBlocks() {
    setBlock(storage(), 0, 0);
    aheadEnd_ = storage();
}

// Brings so many bytes behind the position into one piece of the storage. False when the data ends or fails before;
// the next fill will meet that itself. What is held already is moved to the end of the storage's first block, so that
// whole blocks are read into whole blocks.
bool ioBufferReadAhead::readAhead(int count) {
    if (count > storageSize_ - blockSize || !canReadAhead() || !good()) {
        return false;
    }
    char const * const at = available();
    int const held = static_cast<int>(aheadEnd_ - at);
    char * const start = storage() + (blockSize - held % blockSize) % blockSize;
    std::memmove(start, at, static_cast<std::size_t>(held));
    setBlock(start, 0, numAvailable());
    aheadEnd_ = start + held;
    while (aheadEnd_ - start < count) {
        int const got = tryRead(aheadEnd_, static_cast<int>(storage() + storageSize_ - aheadEnd_));
        if (got <= 0) {
            return false;
        }
        aheadEnd_ += got;
    }
    return true;
}

char const * ioBufferReadAhead::takeInPlace(int count) {
    if (aheadEnd_ - available() < count && !readAhead(count)) {
        return nullptr;
    }
    char const * const bytes = available();
    for (int left = count; left > 0;) {
        if (numAvailable() == 0) {
            enterNextBlock();
        }
        int const piece = std::min(left, numAvailable());
        consume(piece);
        left -= piece;
    }
    return bytes;
}

int ioBufferReadAhead::readLarge(char * bytes, int count) {
    if (wholeBlocks(count) < storageSize_ || numAhead() > 0) {
        return 0;
    }
    dropBlock();
    int const got = std::max(0, readBlock(bytes, wholeBlocks(count)));
    countBlocks(got);
    return got;
}

void ioBufferReadAhead::countBlocks(int count) {
    for (int left = count; left > 0; left -= blockSize) {
        countBlock(std::min(left, blockSize));
    }
}
