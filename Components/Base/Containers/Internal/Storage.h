// Heap storage of the container cores: malloc and its kin, with failures raised and alignments beyond malloc's.

#ifndef qvContainersStorage_h
#define qvContainersStorage_h

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>

namespace qv::detail {

constexpr std::size_t mallocAlignment = alignof(std::max_align_t);

constexpr std::size_t roundUp(std::size_t size, std::size_t alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

// Never null. alignment is a power of two; whatever malloc gives anyway costs nothing. Goes back with std::free.
inline void * allocateStorage(std::size_t size, std::size_t alignment) {
    void * const p =
        alignment <= mallocAlignment ? std::malloc(size) : std::aligned_alloc(alignment, roundUp(size, alignment));
    if (!p)
        throw std::bad_alloc();
    return p;
}

// Never null; on a failure the old storage stays as it was.
inline void * reallocateStorage(void * old, std::size_t usedSize, std::size_t size, std::size_t alignment) {
    if (alignment <= mallocAlignment) {
        void * const p = std::realloc(old, size);
        if (!p)
            throw std::bad_alloc();
        return p;
    }
    void * const p = allocateStorage(size, alignment);
    if (usedSize)
        std::memcpy(p, old, usedSize);
    std::free(old);
    return p;
}

// Counts are 32-bit: the sum of two counts, or std::length_error.
inline int addCounts(int a, int b) {
    if (b > std::numeric_limits<int>::max() - a)
        throw std::length_error("qv: container too long");
    return a + b;
}

inline int checkedCount(int n) {
    if (n < 0)
        throw std::length_error("qv: negative count");
    return n;
}

// Runs its action unless it was released: takes back what was begun when a constructor of an element throws.
template <typename Action>
class [[nodiscard]] Rollback {
public:
    explicit Rollback(Action action) : action_(action) {}
    Rollback(Rollback const &) = delete;
    Rollback & operator=(Rollback const &) = delete;
    ~Rollback() {
        if (armed_)
            action_();
    }
    void release() { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

} // namespace qv::detail

#endif
