#include "Base/DataFiles/Internal/ioPacketBytes.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t initialSize = 50000;
constexpr std::size_t maxSize = std::numeric_limits<int>::max();

} // namespace

ioPacketBytes::~ioPacketBytes() { std::free(begin_); }

void ioPacketBytes::allocate() {
    begin_ = static_cast<char *>(std::malloc(initialSize));
    if (!begin_) {
        throw std::bad_alloc();
    }
    cursor_ = begin_;
    end_ = begin_ + initialSize;
}

bool ioPacketBytes::grow(std::size_t count) {
    auto const used = static_cast<std::size_t>(cursor_ - begin_);
    if (!begin_ || count >= maxSize - used) {
        overflowed_ = true;
        return false;
    }
    std::size_t wanted = static_cast<std::size_t>(end_ - begin_);
    while (wanted - used <= count) {
        wanted = std::min(wanted * 2, maxSize);
    }
    auto * const larger = static_cast<char *>(std::realloc(begin_, wanted));
    if (!larger) {
        throw std::bad_alloc();
    }
    begin_ = larger;
    cursor_ = larger + used;
    end_ = larger + wanted;
    return true;
}
