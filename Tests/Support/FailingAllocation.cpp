#include "Support/FailingAllocation.h"

#include <cstddef>

namespace {

constexpr int unlimited = -1;
int left = unlimited;
bool refused = false;

bool refuse() {
    if (left == unlimited)
        return false;
    if (left == 0) {
        refused = true;
        return true;
    }
    --left;
    return false;
}

} // namespace

// The linker's --wrap turns the calls of the linked objects to these names; the compiler's and the test library's own
// go on as ever.
extern "C" {
void * __real_malloc(std::size_t size);
void * __real_realloc(void * p, std::size_t size);
void * __real_aligned_alloc(std::size_t alignment, std::size_t size);
void * __wrap_malloc(std::size_t size);
void * __wrap_realloc(void * p, std::size_t size);
void * __wrap_aligned_alloc(std::size_t alignment, std::size_t size);

void * __wrap_malloc(std::size_t size) { return refuse() ? nullptr : __real_malloc(size); }
void * __wrap_realloc(void * p, std::size_t size) { return refuse() ? nullptr : __real_realloc(p, size); }
void * __wrap_aligned_alloc(std::size_t alignment, std::size_t size) {
    return refuse() ? nullptr : __real_aligned_alloc(alignment, size);
}
}

namespace qvTest {

FailingAllocation::FailingAllocation(int n) {
    left = n;
    refused = false;
}

FailingAllocation::~FailingAllocation() { left = unlimited; }

bool FailingAllocation::struck() const { return refused; }

} // namespace qvTest
