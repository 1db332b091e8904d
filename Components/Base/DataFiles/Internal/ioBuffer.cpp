#include "Base/DataFiles/Internal/ioBuffer.h"

#include <algorithm>
#include <cstring>
#include <utility>

ioBuffer::ioBuffer(ioBufferDirection direction) : direction_(direction) {}

ioBuffer::~ioBuffer() {
    // Unrolled, so that a chain of any length goes without recursion.
    while (next_) {
        next_ = std::move(next_->next_);
    }
}

bool ioBuffer::seek(std::int64_t) { return false; }

std::int64_t ioBuffer::tell() { return 0; }

void ioBuffer::finish() {}

int ioBuffer::readBlocksAndFill(char *, int) { return 0; }

bool ioBuffer::flushAndWriteBlocks(char const *, int) { return false; }

void ioBuffer::dropBlock() {
    position_ = 0;
    limit_ = 0;
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
            int const wanted = count - copied;
            if (wanted >= blockSize) {
                if (int const direct = readBlocksAndFill(bytes + copied, wanted - wanted % blockSize)) {
                    copied += direct;
                    continue;
                }
            }
            if (good()) {
                fill();
            }
            if (position_ == limit_) {
                break;
            }
        }
        int const piece = std::min(count - copied, limit_ - position_);
        std::memcpy(bytes + copied, data_ + position_, static_cast<std::size_t>(piece));
        position_ += piece;
        copied += piece;
    }
    return copied;
}

void ioBuffer::write(char const * bytes, int count) {
    while (count > 0 && good()) {
        if (position_ == blockSize) {
            int const whole = count - count % blockSize;
            if (whole > 0 && flushAndWriteBlocks(bytes, whole)) {
                bytes += whole;
                count -= whole;
                continue;
            }
            flushBuffer();
            continue;
        }
        int const piece = std::min(count, blockSize - position_);
        std::memcpy(data_ + position_, bytes, static_cast<std::size_t>(piece));
        position_ += piece;
        bytes += piece;
        count -= piece;
    }
}

void ioBuffer::fill() {
    if (!good()) {
        return;
    }
    position_ = 0;
    limit_ = 0;
    limit_ = std::clamp(readBlock(data_, blockSize), 0, blockSize);
    countBlock(limit_);
}

void ioBuffer::flushBuffer() {
    if (!good()) {
        return;
    }
    if (input()) {
        dropBlock();
    } else if (position_ > 0) {
        int const count = position_;
        writeBlock(data_, count);
        dropBlock();
        countBlock(count);
    }
}

void ioBuffer::flushChain() {
    flushBuffer();
    if (next_) {
        next_->flushChain();
        promoteStatus(ioBufferEnds::included);
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
