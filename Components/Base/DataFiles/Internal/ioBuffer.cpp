#include "Base/DataFiles/Internal/ioBuffer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace {

// The system copies whole pages fastest.
constexpr std::align_val_t storageAlignment{ioBuffer::blockSize};

} // namespace

ioBuffer::ioBuffer(ioBufferDirection direction, int storageSize)
    : storage_(static_cast<char *>(::operator new(static_cast<std::size_t>(storageSize), storageAlignment))),
      block_(storage_.get()), direction_(direction) {}

void ioBuffer::StorageDelete::operator()(char * storage) const { ::operator delete(storage, storageAlignment); }

ioBuffer::~ioBuffer() {
    // Unrolled, so that a chain of any length goes without recursion.
    while (next_) {
        next_ = std::move(next_->next_);
    }
}

bool ioBuffer::seek(std::int64_t) { return false; }

std::int64_t ioBuffer::tell() { return 0; }

void ioBuffer::finish() {}

void ioBuffer::settle() {}

int ioBuffer::readLarge(char *, int) { return 0; }

int ioBuffer::writeLarge(char const *, int) { return 0; }

void ioBuffer::dropBlock() { setBlock(block_, 0, 0); }

void ioBuffer::fillBlock() {
    setBlock(block_, 0, 0);
    int const count = std::clamp(readBlock(block_, blockSize), 0, blockSize);
    setBlock(block_, 0, count);
    countBlock(count);
}

void ioBuffer::passBlock(int count) {
    writeBlock(block_, count);
    setBlock(block_, 0, 0);
    countBlock(count);
}

char const * ioBuffer::takeInPlace(int count) {
    if (numAvailable() < count) {
        return nullptr;
    }
    char const * const bytes = available();
    consume(count);
    return bytes;
}

void ioBuffer::setBlock(char * block, int position, int limit) {
    block_ = block;
    position_ = position;
    limit_ = limit;
}

void ioBuffer::countBlock(int count) {
    total_ = static_cast<int>(static_cast<unsigned>(total_) + static_cast<unsigned>(count));
    if (progress_) {
        progress_(total_);
    }
}

int ioBuffer::read(char * bytes, int count) {
    int copied = 0;
    while (copied < count) {
        if (position_ == limit_) {
            if (!good()) {
                break;
            }
            int const moved = readLarge(bytes + copied, count - copied);
            if (moved == 0) {
                fill();
            }
            copied += moved;
            continue;
        }
        int const piece = std::min(count - copied, limit_ - position_);
        std::memcpy(bytes + copied, block_ + position_, static_cast<std::size_t>(piece));
        position_ += piece;
        copied += piece;
    }
    return copied;
}

void ioBuffer::write(char const * bytes, int count) {
    while (count > 0 && good()) {
        if (position_ == blockSize) {
            if (int const moved = writeLarge(bytes, count)) {
                bytes += moved;
                count -= moved;
            } else {
                flushBuffer();
            }
            continue;
        }
        int const piece = std::min(count, blockSize - position_);
        std::memcpy(block_ + position_, bytes, static_cast<std::size_t>(piece));
        position_ += piece;
        bytes += piece;
        count -= piece;
    }
}

void ioBuffer::fill() {
    if (good()) {
        fillBlock();
    }
}

void ioBuffer::flushBuffer() {
    if (!good()) {
        return;
    }
    if (input()) {
        dropBlock();
    } else if (position_ > 0) {
        passBlock(position_);
    }
}

void ioBuffer::flushChain() {
    flushBuffer();
    if (next_) {
        next_->flushChain();
        promoteStatus(ioBufferEnds::included);
    } else if (!input()) {
        settle();
    }
}

void ioBuffer::settleChain() {
    if (next_) {
        next_->settleChain();
        promoteStatus(ioBufferEnds::ignored);
    } else {
        settle();
    }
}

void ioBuffer::promoteStatus(ioBufferEnds ends) {
    if (!next_) {
        return;
    }
    ioBufferStatus const below = next_->status_;
    bool const isEnd = below == ioBufferEOF || below == ioBufferCompressEnd;
    if (below != ioBufferGood && (!isEnd || ends == ioBufferEnds::included)) {
        status_ = below;
    }
}

std::unique_ptr<ioBuffer> ioBuffer::popNext() {
    finish();
    return std::move(next_);
}
