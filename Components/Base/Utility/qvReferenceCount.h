// The count of an object that is shared inside one thread and dies with its last holder.

#ifndef qvReferenceCount_h
#define qvReferenceCount_h

#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qv {

// Base of counted objects. Derive from it and hold the object through qv::Reference<T>:
//
//     class Shape : public qv::ReferenceCount { ... };
//     qv::Reference<Shape> shape(new Shape);
//
// A new object has the count 0 and belongs to whoever takes the first count. It is deleted by the `unref` that takes
// the last one, so it lives on the heap only: an object on the stack or inside another one must never be counted up
// and back to 0. Lowering a count of 0 is the caller's error.
//
// The count is no part of the object's value: a const object can be counted, a copy starts at 0, and an assignment
// leaves both counts alone. It is changed without atomic operations, hence by one thread at a time.
class QV_EXPORT ReferenceCount {
public:
    ReferenceCount(ReferenceCount const &) noexcept {}
    ReferenceCount & operator=(ReferenceCount const &) noexcept { return *this; }

    void ref() const noexcept { ++count_; }

    // Deletes the object when this was the last count.
    void unref() const {
        if (--count_ == 0)
            delete this;
    }

    int refs() const noexcept { return count_; }

protected:
    ReferenceCount() noexcept = default;
    virtual ~ReferenceCount() = default;

private:
    mutable std::int32_t count_ = 0;
};

} // namespace qv

#endif
