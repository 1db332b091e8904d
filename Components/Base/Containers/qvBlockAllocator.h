// Fixed-size elements cut from larger blocks, with a free list.

#ifndef qvBlockAllocator_h
#define qvBlockAllocator_h

#include <cstddef>
#include <cstring>

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
    BlockAllocator(unsigned elementSize, int elementsInBlock, unsigned alignment = 0);
    BlockAllocator(BlockAllocator const &) = delete;
    BlockAllocator & operator=(BlockAllocator const &) = delete;
    ~BlockAllocator() { freeEverything(); }

    // An uninitialised element. Throws std::bad_alloc.
    void * alloc() {
        void * const p = freeList_;
        if (!p)
            return allocFromBlock();
        std::memcpy(&freeList_, p, sizeof freeList_);
        ++allocated_;
        --freed_;
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
    void freeEverything() noexcept;

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

    void * allocFromBlock();
    void addBlock();
    std::size_t headerSize() const;
    unsigned bytesOfBlock(int n) const;
    unsigned char * elementsOf(Block * block) const;

    Block * blocks_ = nullptr; // newest first; only that one is ever filled
    void * freeList_ = nullptr;
    unsigned elementSize_;
    int elementsInBlock_;
    unsigned blockBytes_ = 0;
    int allocated_ = 0;
    int freed_ = 0;
    unsigned char lazy_ = 0;
    unsigned char alignmentShift_ = 0; // of elements aligned beyond what malloc gives, else 0
};

} // namespace qv

#endif
