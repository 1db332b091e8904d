// Lets the n-th heap allocation of the library's own code fail. For programs that are linked from the library's objects
// with qv_test_failing_allocation(<target>).

#ifndef qvTestFailingAllocation_h
#define qvTestFailingAllocation_h

namespace qvTest {

// From its construction to its end malloc, realloc and aligned_alloc succeed n times and fail from then on.
class FailingAllocation {
public:
    explicit FailingAllocation(int n);
    FailingAllocation(FailingAllocation const &) = delete;
    FailingAllocation & operator=(FailingAllocation const &) = delete;
    ~FailingAllocation();

    // Whether an allocation was refused.
    bool struck() const;
};

} // namespace qvTest

#endif
