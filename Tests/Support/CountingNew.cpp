#include "Support/CountingNew.h"

#include <cstdlib>
#include <new>

long allocations = 0;
long failingAllocation = 0;

void * operator new(std::size_t size) {
    ++allocations;
    if (failingAllocation > 0 && --failingAllocation == 0)
        throw std::bad_alloc();
    if (void * const block = std::malloc(size))
        return block;
    throw std::bad_alloc();
}

void operator delete(void * block) noexcept { std::free(block); }
void operator delete(void * block, std::size_t) noexcept { std::free(block); }
