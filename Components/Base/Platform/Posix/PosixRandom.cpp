#include "Base/Platform/PlatformRandom.h"

#include "Base/Platform/Posix/PosixCall.h"

#include <atomic>
#include <cstddef>
#include <new>

#include <sys/mman.h>
#include <sys/random.h>
#include <unistd.h>

namespace qvPlatform {

namespace {

using Generation = std::atomic<std::uint32_t>;

// Memory that the kernel fills with zeros in the child of a fork, however that fork is made: handlers of the C runtime
// do not see every one. Null where the system has no such memory. It stays until the process ends.
Generation * forkedMemory() {
    std::size_t const size = std::size_t(::sysconf(_SC_PAGESIZE));
    void * const page = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (page == MAP_FAILED)
        return nullptr;
    if (::madvise(page, size, MADV_WIPEONFORK) != 0) {
        ::munmap(page, size);
        return nullptr;
    }
    return new (page) Generation(0);
}

// Tells processes on one line of descent apart: it is never 0, and a child's differs from those of its ancestors. 0
// when a fork could not be told.
std::uint32_t generation() {
    static Generation * const current = forkedMemory();
    static Generation last(0);
    if (!current)
        return 0;
    std::uint32_t known = current->load(std::memory_order_relaxed);
    if (known == 0) {
        // Of several threads that see the zero first, one sets the number.
        std::uint32_t const next = last.fetch_add(1, std::memory_order_relaxed) + 1;
        if (current->compare_exchange_strong(known, next, std::memory_order_relaxed))
            known = next;
    }
    return known;
}

bool fill(void * bytes, std::size_t size) {
    auto * to = static_cast<unsigned char *>(bytes);
    while (size != 0) {
        int number = 0;
        ssize_t const got = posix::repeated([&] { return ::getrandom(to, size, 0); }, number);
        if (got <= 0)
            return false;
        to += got;
        size -= std::size_t(got);
    }
    return true;
}

// Small enough that the system gives it in one call, whatever signals arrive.
constexpr std::size_t poolSize = 64;

struct Pool {
    std::uint32_t numbers[poolSize];
    std::size_t left = 0;
    std::uint32_t generation = 0;
};
thread_local Pool pool;

} // namespace

bool randomBits(std::uint32_t & bits) {
    std::uint32_t const now = generation();
    if (now == 0)
        return fill(&bits, sizeof bits);
    if (pool.left == 0 || pool.generation != now) {
        pool.left = 0;
        if (!fill(pool.numbers, sizeof pool.numbers))
            return false;
        pool.left = poolSize;
        pool.generation = now;
    }
    bits = pool.numbers[--pool.left];
    return true;
}

} // namespace qvPlatform
