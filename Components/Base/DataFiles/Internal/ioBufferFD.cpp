#include "Base/DataFiles/Internal/ioBufferFD.h"

#include <algorithm>
#include <cstring>

ioBufferFD::ioBufferFD(ioBufferDirection direction, Blocks blocks)
    : ioBufferReadAhead(direction, blocks == Blocks::used ? largestStorage : 0) {}

ioBufferFD::~ioBufferFD() {
    if (!input()) {
        settle();
    }
}

void ioBufferFD::opened(qvPlatform::Descriptor descriptor) {
    isOpen_ = descriptor >= 0;
    descriptor_ = isOpen_ ? descriptor : qvPlatform::noDescriptor;
    canSeek_.reset();
    if (!isOpen_) {
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

bool ioBufferFD::canReadAhead() const {
    if (!canSeek_) {
        canSeek_ = qvPlatform::currentPosition(descriptor_) >= 0;
    }
    return *canSeek_;
}

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

int ioBufferFD::tryRead(char * bytes, int count) {
    qvPlatform::MutablePiece const piece{bytes, static_cast<std::size_t>(count)};
    return static_cast<int>(qvPlatform::readSome(descriptor_, {&piece, 1}).count);
}

void ioBufferFD::giveBack(int count) {
    qvPlatform::seekTo(descriptor_, qvPlatform::currentPosition(descriptor_) - count);
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
    if (storage() + storageSize() - block() < blockSize) {
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
    if (whole < storageSize()) {
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
        forgetBlocks();
    }
    return position < 0 ? qvPlatform::seekToEnd(descriptor_) >= 0 : qvPlatform::seekTo(descriptor_, position).good();
}

std::int64_t ioBufferFD::seekToEnd() {
    std::int64_t const end = qvPlatform::seekToEnd(descriptor_);
    canSeek_ = end >= 0;
    return end;
}

std::int64_t ioBufferFD::tell() { return qvPlatform::currentPosition(descriptor_); }
