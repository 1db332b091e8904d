#include "Base/DataFiles/Internal/ioBufferFD.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr int storageSize = 32 * ioBuffer::blockSize;

constexpr int wholeBlocks(int count) { return count - count % ioBuffer::blockSize; }

} // namespace

ioBufferFD::ioBufferFD(ioBufferDirection direction) : ioBuffer(direction, storageSize), aheadEnd_(storage()) {}

ioBufferFD::~ioBufferFD() {
    if (!input()) {
        settle();
    }
}

void ioBufferFD::opened(qvPlatform::Descriptor descriptor) {
    isOpen_ = descriptor >= 0;
    descriptor_ = isOpen_ ? descriptor : qvPlatform::noDescriptor;
    if (isOpen_) {
        canSeek_ = qvPlatform::currentPosition(descriptor_) >= 0;
    } else {
        setStatus(ioBufferOpenFailed);
    }
}

void ioBufferFD::open(qvString::IString const & name) {
    auto descriptor = qvPlatform::noDescriptor;
    if (input()) {
        qvPlatform::openForReading(name, descriptor);
    } else {
        auto const truncation = truncate_ ? qvPlatform::Truncation::truncate : qvPlatform::Truncation::keep;
        qvPlatform::openForWriting(name, truncation, descriptor);
    }
    opened(descriptor);
}

void ioBufferFD::open(qvPlatform::Descriptor descriptor) { opened(descriptor); }

void ioBufferFD::close() {
    if (isOpen_) {
        if (input()) {
            dropBlock();
        } else {
            settle();
        }
        if (!qvPlatform::closeDescriptor(descriptor_).good() && good()) {
            setStatus(ioBufferFailed);
        }
    }
    descriptor_ = qvPlatform::noDescriptor;
    isOpen_ = false;
}

// A failure never covers an earlier one.
void ioBufferFD::takeFailure(qvPlatform::FileResult result) {
    if (good()) {
        setStatus(result.outcome == qvPlatform::FileOutcome::diskFull ? ioBufferDiskFull : ioBufferFailed);
    }
}

// --- input ---

int ioBufferFD::readBlock(char * bytes, int count) {
    if (descriptor_ < 0) {
        setStatus(ioBufferFailed);
        return 0;
    }
    qvPlatform::MutablePiece const piece{bytes, static_cast<std::size_t>(count)};
    auto const transfer = qvPlatform::readSome(descriptor_, {&piece, 1});
    if (!transfer.result.good()) {
        setStatus(ioBufferFailed);
    } else if (transfer.count == 0) {
        setStatus(ioBufferEOF);
    }
    return static_cast<int>(transfer.count);
}

// Makes the next block of what was read the current one. Blocks are counted as the reader comes to them, however many
// were read at once.
void ioBufferFD::enterNextBlock() {
    int const count = std::min(blockSize, numAhead());
    setBlock(block() + limit(), 0, count);
    countBlock(count);
}

void ioBufferFD::fillBlock() {
    if (numAhead() == 0) {
        setBlock(storage(), 0, 0);
        aheadEnd_ = storage();
        aheadEnd_ += readBlock(storage(), canSeek_ ? storageSize : blockSize);
    }
    enterNextBlock();
}

void ioBufferFD::dropBlock() {
    int const ahead = numAhead();
    if (ahead > 0) {
        qvPlatform::seekTo(descriptor_, qvPlatform::currentPosition(descriptor_) - ahead);
    }
    setBlock(storage(), 0, 0);
    aheadEnd_ = storage();
}

// Brings so many bytes behind the position into one piece of the storage. False when the data ends or fails before;
// the next fill will meet that itself. What is held already is moved to the end of the storage's first block, so that
// whole blocks are read into whole blocks.
bool ioBufferFD::readAhead(int count) {
    if (count > storageSize - blockSize || !canSeek_ || !good()) {
        return false;
    }
    char const * const at = available();
    int const held = static_cast<int>(aheadEnd_ - at);
    char * const start = storage() + (blockSize - held % blockSize) % blockSize;
    std::memmove(start, at, static_cast<std::size_t>(held));
    setBlock(start, 0, numAvailable());
    aheadEnd_ = start + held;
    while (aheadEnd_ - start < count) {
        auto const room = static_cast<std::size_t>(storage() + storageSize - aheadEnd_);
        qvPlatform::MutablePiece const piece{aheadEnd_, room};
        auto const transfer = qvPlatform::readSome(descriptor_, {&piece, 1});
        if (transfer.count == 0) {
            return false;
        }
        aheadEnd_ += transfer.count;
    }
    return true;
}

char const * ioBufferFD::takeInPlace(int count) {
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

int ioBufferFD::readLarge(char * bytes, int count) {
    if (wholeBlocks(count) < storageSize || numAhead() > 0) {
        return 0;
    }
    dropBlock();
    int const got = readBlock(bytes, wholeBlocks(count));
    countBlocks(got);
    return got;
}

void ioBufferFD::countBlocks(int count) {
    for (int left = count; left > 0; left -= blockSize) {
        countBlock(std::min(left, blockSize));
    }
}

// --- output ---

void ioBufferFD::writePieces(std::span<qvPlatform::ConstantPiece const> pieces) {
    if (descriptor_ < 0) {
        setStatus(ioBufferFailed);
        return;
    }
    auto const transfer = qvPlatform::writeAll(descriptor_, pieces);
    if (!transfer.result.good()) {
        takeFailure(transfer.result);
    }
}

void ioBufferFD::writeBlock(char * bytes, int count) {
    qvPlatform::ConstantPiece const piece{bytes, static_cast<std::size_t>(count)};
    writePieces({&piece, 1});
}

void ioBufferFD::passBlock(int count) {
    setBlock(block() + count, 0, 0);
    if (storage() + storageSize - block() < blockSize) {
        settle();
    }
    countBlock(count);
}

void ioBufferFD::settle() {
    if (numGathered() == 0) {
        return;
    }
    if (good()) {
        writeBlock(storage(), numGathered());
    }
    int const held = position();
    std::memmove(storage(), block(), static_cast<std::size_t>(held));
    setBlock(storage(), held, 0);
}

int ioBufferFD::writeLarge(char const * bytes, int count) {
    constexpr int mostAtOnce = 1 << 30;
    int const whole = wholeBlocks(std::min(count, mostAtOnce));
    if (whole < storageSize) {
        return 0;
    }
    int const held = position();
    qvPlatform::ConstantPiece const pieces[] = {{storage(), static_cast<std::size_t>(numGathered() + held)},
                                                {bytes, static_cast<std::size_t>(whole)}};
    writePieces(pieces);
    setBlock(storage(), 0, 0);
    countBlocks(held + whole);
    return whole;
}

bool ioBufferFD::seek(std::int64_t position) {
    if (input()) {
        setBlock(storage(), 0, 0);
        aheadEnd_ = storage();
    }
    return (position < 0 ? qvPlatform::seekToEnd(descriptor_) : qvPlatform::seekTo(descriptor_, position)).good();
}

std::int64_t ioBufferFD::tell() { return qvPlatform::currentPosition(descriptor_); }
