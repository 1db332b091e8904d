#include "Base/Containers/qvBlockAllocator.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <limits>
#include <utility>

#include "Base/Containers/Internal/Storage.h"

namespace qv {

BlockAllocator::BlockAllocator(unsigned elementSize, int elementsInBlock, unsigned alignment)
    : elementSize_(std::max(elementSize, unsigned(sizeof(void *)))), elementsInBlock_(std::max(elementsInBlock, 1)) {
    if (alignment > detail::mallocAlignment)
        alignmentShift_ = static_cast<unsigned char>(std::countr_zero(alignment));
    blockBytes_ = bytesOfBlock(elementsInBlock_);
}

std::size_t BlockAllocator::headerSize() const {
    return std::max(sizeof(Block), alignmentShift_ ? std::size_t(1) << alignmentShift_ : 1);
}

unsigned BlockAllocator::bytesOfBlock(int n) const {
    std::uint64_t const bytes = std::uint64_t(elementSize_) * unsigned(n) + headerSize();
    if (bytes > std::numeric_limits<unsigned>::max())
        throw std::length_error("qv::BlockAllocator: block too large");
    return unsigned(bytes);
}

unsigned char * BlockAllocator::elementsOf(Block * block) const {
    return reinterpret_cast<unsigned char *>(block) + headerSize();
}

void * BlockAllocator::allocFromBlock() {
    if (!blocks_ || blocks_->count == elementsInBlock_)
        addBlock();
    void * const p = elementsOf(blocks_) + std::size_t(elementSize_) * unsigned(blocks_->count);
    ++blocks_->count;
    ++allocated_;
    return p;
}

void BlockAllocator::addBlock() {
    // The counters are 32-bit, and their sum never falls.
    detail::addCounts(detail::addCounts(allocated_, freed_), elementsInBlock_);
    std::size_t const alignment = std::size_t(1) << alignmentShift_;
    auto * const block = static_cast<Block *>(detail::allocateStorage(blockBytes_, alignment));
    block->count = 0;
    block->next = blocks_;
    blocks_ = block;
}

void BlockAllocator::freeAll() noexcept {
    freed_ += allocated_;
    allocated_ = 0;
    freeList_ = nullptr;
    // Backwards, so that elements are handed out again in the order of their addresses within a block.
    for (Block * block = blocks_; block; block = block->next) {
        for (int i = block->count; i-- > 0;) {
            void * const p = elementsOf(block) + std::size_t(elementSize_) * unsigned(i);
            std::memcpy(p, &freeList_, sizeof freeList_);
            freeList_ = p;
        }
    }
}

void BlockAllocator::freeEverything() noexcept {
    for (Block * block = blocks_; block;)
        std::free(std::exchange(block, block->next));
    blocks_ = nullptr;
    freeList_ = nullptr;
    allocated_ = 0;
    freed_ = 0;
}

void BlockAllocator::setNumElementsInBlock(int n) {
    if (allocated_ || freed_)
        return;
    n = std::max(n, 1);
    blockBytes_ = bytesOfBlock(n);
    elementsInBlock_ = n;
}

void BlockAllocator::swap(BlockAllocator & other) noexcept {
    std::swap(blocks_, other.blocks_);
    std::swap(freeList_, other.freeList_);
    std::swap(elementSize_, other.elementSize_);
    std::swap(elementsInBlock_, other.elementsInBlock_);
    std::swap(blockBytes_, other.blockBytes_);
    std::swap(allocated_, other.allocated_);
    std::swap(freed_, other.freed_);
    std::swap(lazy_, other.lazy_);
    std::swap(alignmentShift_, other.alignmentShift_);
}

bool BlockAllocator::validate() const {
    std::int64_t taken = 0;
    for (Block const * block = blocks_; block; block = block->next) {
        bool const full = block->count == elementsInBlock_;
        if (block->count < 1 || block->count > elementsInBlock_ || (block != blocks_ && !full))
            return false;
        taken += block->count;
    }
    int onList = 0;
    for (void * p = freeList_; p; std::memcpy(&p, p, sizeof p)) {
        if (++onList > freed_)
            return false;
    }
    return onList == freed_ && allocated_ >= 0 && taken == std::int64_t(allocated_) + freed_;
}

} // namespace qv
