#include "Base/DataFiles/Internal/ioPacketFileBuffer.h"

#include <algorithm>

namespace {

constexpr int initialCapacity = 10;

} // namespace

ioPacketFileBuffer::ioPacketFileBuffer()
    : chunkOpen_(new bool[initialCapacity]()), capacity_(initialCapacity), level_(0), valid_(true), type_(nullptr) {}

ioPacketFileBuffer::~ioPacketFileBuffer() { delete[] chunkOpen_; }

void ioPacketFileBuffer::reset() {
    level_ = 0;
    chunkOpen_[0] = false;
    type_ = nullptr;
    valid_ = true;
    failed_ = false;
}

void ioPacketFileBuffer::enterLevel() {
    if (level_ + 1 == capacity_) {
        auto * const larger = new bool[static_cast<std::size_t>(capacity_) * 2]();
        std::copy(chunkOpen_, chunkOpen_ + capacity_, larger);
        delete[] chunkOpen_;
        chunkOpen_ = larger;
        capacity_ *= 2;
    }
    chunkOpen_[++level_] = false;
}
