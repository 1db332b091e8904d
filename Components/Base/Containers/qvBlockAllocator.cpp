#include "Base/Containers/qvBlockAllocator.h"

#include <limits>

#include "Base/Containers/Internal/Storage.h"

namespace qv {

unsigned BlockAllocator::sHeaderSize(unsigned alignment) {
    return std::max(unsigned(sizeof(Block)), alignment > detail::mallocAlignment ? alignment : 0);
}

unsigned BlockAllocator::sBlockBytes(unsigned elementSize, int n, unsigned headerSize) {
    std::uint64_t const bytes = std::uint64_t(elementSize) * unsigned(n) + headerSize;
    if (bytes > std::numeric_limits<unsigned>::max())
        throw std::length_error("qv::BlockAllocator: block too large");
    return unsigned(bytes);
}

// elements is how many there are with those of the new block; the counters are 32-bit.
BlockAllocator::Block * BlockAllocator::sNewBlock(Block * next, unsigned bytes, unsigned headerSize,
                                                  std::int64_t elements) {
    if (elements > std::numeric_limits<int>::max())
        throw std::length_error("qv: container too long");
    std::size_t const alignment = headerSize > sizeof(Block) ? headerSize : detail::mallocAlignment;
    auto * const block = static_cast<Block *>(detail::allocateStorage(bytes, alignment));
    block->count = 0;
    block->next = next;
    return block;
}

void BlockAllocator::sFreeBlocks(Block * first) noexcept {
    while (first)
        std::free(std::exchange(first, first->next));
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

void BlockAllocator::setNumElementsInBlock(int n) {
    if (allocated_ || freed_)
        return;
    n = std::max(n, 1);
    blockBytes_ = sBlockBytes(elementSize_, n, headerSize_);
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
    std::swap(headerSize_, other.headerSize_);
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
