// Fixed-size elements cut from larger blocks, with a free list.

#ifndef qvBlockAllocator_h
#define qvBlockAllocator_h

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

#include "Base/qvBaseConfig.h"

namespace qv {

/*
 * Hands out elements of one size. Blocks of several elements come from the heap; a freed element goes on a free list
 * and is the next to be handed out. Blocks go back to the heap only when everything is freed, so that the allocator
 * suits containers whose nodes come and go, and data structures that are thrown away as a whole.
 *
 * Elements lie in a block without padding. The first is aligned for every type of ordinary alignment, and so are the
 * others when the element size is a multiple of the alignment.
 *
 * One thread at a time. The destructor frees all blocks; what lived in the elements is the owner's to destroy.
 */
class QV_EXPORT BlockAllocator {
public:
    // elementSize in bytes; what is smaller than a pointer is raised to that. elementsInBlock below 1 counts as 1.
    // alignment is that of the elements when it goes beyond what malloc gives, a power of two; 0 asks for nothing.
    // Allocates nothing. Throws std::length_error when a block would not fit in 32 bits.
    BlockAllocator(unsigned elementSize, int elementsInBlock, unsigned alignment = 0)
        : elementSize_(std::max(elementSize, unsigned(sizeof(void *)))), elementsInBlock_(std::max(elementsInBlock, 1)),
          headerSize_(sHeaderSize(alignment)), blockBytes_(sBlockBytes(elementSize_, elementsInBlock_, headerSize_)) {}
    BlockAllocator(BlockAllocator const &) = delete;
    BlockAllocator & operator=(BlockAllocator const &) = delete;
    ~BlockAllocator() { sFreeBlocks(blocks_); }

    // An uninitialised element. Throws std::bad_alloc; std::length_error for more elements than 32 bits count.
    void * alloc() {
        void * p = freeList_;
        if (p) {
            std::memcpy(&freeList_, p, sizeof freeList_);
            --freed_;
        } else {
            if (!blocks_ || blocks_->count == elementsInBlock_)
                blocks_ = sNewBlock(blocks_, blockBytes_, headerSize_, std::int64_t(allocated_) + elementsInBlock_);
            p = elementsOf(blocks_) + std::size_t(elementSize_) * unsigned(blocks_->count);
            ++blocks_->count;
        }
        ++allocated_;
        return p;
    }

    // Takes an element back. Null is ignored.
    void free(void * p) noexcept {
        if (!p)
            return;
        // The element may lie at any address, so the link is copied and not assigned.
        std::memcpy(p, &freeList_, sizeof freeList_);
        freeList_ = p;
        --allocated_;
        ++freed_;
    }

    // Puts every element that was taken from the blocks on the free list. The blocks stay.
    void freeAll() noexcept;

    // Returns all blocks to the heap, whether their elements were freed or not.
    void freeEverything() noexcept {
        sFreeBlocks(std::exchange(blocks_, nullptr));
        freeList_ = nullptr;
        allocated_ = 0;
        freed_ = 0;
    }

    // Ignored unless no element was ever taken since the construction or the last freeEverything. Throws
    // std::length_error as the constructor does.
    void setNumElementsInBlock(int n);

    // A mark for the owner; it changes nothing here.
    void setLazy() { lazy_ = 1; }

    // Elements in use, and elements on the free list. Their sum is the number of elements ever taken from blocks.
    int numAllocated() const { return allocated_; }
    int numFreed() const { return freed_; }

    void swap(BlockAllocator & other) noexcept;

    // For tests: whether blocks, free list and counters agree.
    bool validate() const;

private:
    struct Block {
        int count; // elements handed out
        Block * next;
    };

    // These are given values and not the allocator: an allocator that is used in one function alone, and of which no
    // call gets the address, is kept in registers, where taking and giving back an element cost next to nothing.
    static unsigned sHeaderSize(unsigned alignment);
    static unsigned sBlockBytes(unsigned elementSize, int n, unsigned headerSize);
    static Block * sNewBlock(Block * next, unsigned bytes, unsigned headerSize, std::int64_t elements);
    static void sFreeBlocks(Block * first) noexcept;

    unsigned char * elementsOf(Block * block) const { return reinterpret_cast<unsigned char *>(block) + headerSize_; }

    Block * blocks_ = nullptr; // newest first; only that one is ever filled
    void * freeList_ = nullptr;
    unsigned elementSize_;
    int elementsInBlock_;
    unsigned headerSize_; // in bytes; that of a Block, or the elements' alignment where that is larger
    unsigned blockBytes_;
    int allocated_ = 0;
    int freed_ = 0;
    unsigned char lazy_ = 0;
};

} // namespace qv

#endif
