#include "Base/DataFiles/Internal/ioBufferFD.h"

#include <algorithm>

using qvPlatform::ConstantPiece;
using qvPlatform::MutablePiece;

ioBufferFD::ioBufferFD(ioBufferDirection direction) : ioBuffer(direction) {}

void ioBufferFD::open(qvString::IString const & name) {
    auto const result =
        input() ? qvPlatform::openForReading(name, descriptor_)
                : qvPlatform::openForWriting(
                      name, truncate_ ? qvPlatform::Truncation::truncate : qvPlatform::Truncation::keep, descriptor_);
    isOpen_ = result.good();
    if (!isOpen_) {
        descriptor_ = qvPlatform::noDescriptor;
        setStatus(ioBufferOpenFailed);
    }
}

void ioBufferFD::open(qvPlatform::Descriptor descriptor) {
    descriptor_ = descriptor;
    isOpen_ = descriptor >= 0;
    if (!isOpen_) {
        setStatus(ioBufferOpenFailed);
    }
}

void ioBufferFD::close() {
    if (isOpen_) {
        auto const result = qvPlatform::closeDescriptor(descriptor_);
        if (!result.good()) {
            takeFailure(result);
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

int ioBufferFD::readPieces(std::span<MutablePiece const> pieces) {
    if (descriptor_ < 0) {
        setStatus(ioBufferFailed);
        return 0;
    }
    auto const transfer = qvPlatform::readSome(descriptor_, pieces);
    if (!transfer.result.good()) {
        setStatus(ioBufferFailed);
    } else if (transfer.count == 0) {
        setStatus(ioBufferEOF);
    }
    return static_cast<int>(transfer.count);
}

int ioBufferFD::readBlock(char * bytes, int count) {
    MutablePiece const piece{bytes, static_cast<std::size_t>(count)};
    return readPieces({&piece, 1});
}

// One call of the system fills the caller's memory and the block behind it. What it delivers is counted in blocks,
// as single fills would have counted it.
int ioBufferFD::readBlocksAndFill(char * bytes, int count) {
    MutablePiece const pieces[] = {{bytes, static_cast<std::size_t>(count)}, {block(), blockSize}};
    dropBlock();
    int const got = readPieces(pieces);
    setLimit(std::max(got - count, 0));
    for (int counted = 0; counted < got; counted += blockSize) {
        countBlock(std::min(blockSize, got - counted));
    }
    return std::min(got, count);
}

void ioBufferFD::writeBlock(char * bytes, int count) {
    if (descriptor_ < 0) {
        setStatus(ioBufferFailed);
        return;
    }
    ConstantPiece const piece{bytes, static_cast<std::size_t>(count)};
    auto const transfer = qvPlatform::writeAll(descriptor_, {&piece, 1});
    if (!transfer.result.good()) {
        takeFailure(transfer.result);
    }
}

// One call of the system takes the full block and the whole blocks that follow it in the caller's memory.
bool ioBufferFD::flushAndWriteBlocks(char const * bytes, int count) {
    if (descriptor_ < 0) {
        return false;
    }
    ConstantPiece const pieces[] = {{block(), static_cast<std::size_t>(position())},
                                    {bytes, static_cast<std::size_t>(count)}};
    int const held = position();
    auto const transfer = qvPlatform::writeAll(descriptor_, pieces);
    if (!transfer.result.good()) {
        takeFailure(transfer.result);
    }
    dropBlock();
    for (int counted = 0; counted < held + count; counted += blockSize) {
        countBlock(blockSize);
    }
    return true;
}

bool ioBufferFD::seek(std::int64_t position) {
    return (position < 0 ? qvPlatform::seekToEnd(descriptor_) : qvPlatform::seekTo(descriptor_, position)).good();
}

std::int64_t ioBufferFD::tell() { return qvPlatform::currentPosition(descriptor_); }
