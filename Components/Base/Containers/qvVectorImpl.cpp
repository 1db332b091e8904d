#include "Base/Containers/qvVectorImpl.h"

#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <utility>

#include "Base/Containers/Internal/Storage.h"

namespace qv {

namespace {

constexpr int largeStep = 32; // from this capacity on it doubles
constexpr int smallStep = 8;

int grownCapacity(int capacity) {
    constexpr int most = std::numeric_limits<int>::max();
    if (capacity == most)
        throw std::length_error("qv: container too long");
    int const step = capacity < largeStep ? smallStep : capacity;
    return step > most - capacity ? most : capacity + step;
}

// Where a source inside the vector's own storage is after a change of the storage; other sources stay where they are.
class Source {
public:
    Source(void const * p, void const * data, std::size_t usedBytes) : p_(static_cast<unsigned char const *>(p)) {
        auto const * const begin = static_cast<unsigned char const *>(data);
        inside_ = begin && std::less_equal<>()(begin, p_) && std::less<>()(p_, begin + usedBytes);
        if (inside_)
            offset_ = std::size_t(p_ - begin);
    }

    bool isInside() const { return inside_; }

    // The storage is at data now, and from the byte gapBegin on everything moved up by gapBytes.
    void const * in(void const * data, std::size_t gapBegin, std::size_t gapBytes) const {
        if (!inside_)
            return p_;
        return static_cast<unsigned char const *>(data) + offset_ + (offset_ >= gapBegin ? gapBytes : 0);
    }

private:
    unsigned char const * p_;
    bool inside_;
    std::size_t offset_ = 0;
};

} // namespace

// Storage

unsigned char * VectorImpl::at(int index) const {
    return static_cast<unsigned char *>(data_) + std::size_t(unsigned(index)) * unsigned(typeUtil_->elementSize);
}

int VectorImpl::indexOf(void const * pos) const {
    return pos ? int((static_cast<unsigned char const *>(pos) - at(0)) / typeUtil_->elementSize) : 0;
}

bool VectorImpl::contains(void const * p) const { return Source(p, data_, std::size_t(at(size_) - at(0))).isInside(); }

void VectorImpl::reallocate(int n) {
    std::size_t const elementSize = unsigned(typeUtil_->elementSize);
    data_ = detail::reallocateStorage(data_, elementSize * unsigned(size_), elementSize * unsigned(n),
                                      std::size_t(unsigned(typeUtil_->alignment)));
    capacity_ = n;
}

// Room for n elements in all, without the growth steps.
void VectorImpl::enlargeTo(int n) {
    if (n > capacity_)
        reallocate(n);
}

void VectorImpl::reserve(int n) { enlargeTo(n); }

void * VectorImpl::setCapacity(int n) {
    detail::checkedCount(n);
    if (n < size_) {
        destroy(n, size_ - n);
        size_ = n;
    }
    if (n == 0) {
        std::free(data_);
        data_ = nullptr;
        capacity_ = 0;
    } else if (n != capacity_) {
        reallocate(n);
    }
    return data_;
}

void * VectorImpl::growByOne() {
    reallocate(grownCapacity(capacity_));
    return data_;
}

void VectorImpl::freeStorage() noexcept { sFreeStorage(data_, size_, typeUtil_); }

void VectorImpl::sFreeStorage(void * data, int size, TypeUtil const * typeUtil) noexcept {
    if (size > 0 && typeUtil->destructRange)
        typeUtil->destructRange(data, size);
    std::free(data);
}

VectorImpl::Storage VectorImpl::sGrown(Storage full, TypeUtil const * typeUtil) {
    std::size_t const elementSize = unsigned(typeUtil->elementSize);
    int const capacity = grownCapacity(full.capacity);
    void * const data =
        detail::reallocateStorage(full.data, elementSize * unsigned(full.capacity), elementSize * unsigned(capacity),
                                  std::size_t(unsigned(typeUtil->alignment)));
    return {data, capacity};
}

VectorImpl::Storage VectorImpl::sAllocatedStep(Storage full, TypeUtil const * typeUtil) {
    int const capacity = grownCapacity(full.capacity);
    std::size_t const bytes = std::size_t(unsigned(typeUtil->elementSize)) * unsigned(capacity);
    return {detail::allocateStorage(bytes, std::size_t(unsigned(typeUtil->alignment))), capacity};
}

void VectorImpl::sMoveInto(Storage larger, int index, Storage full, TypeUtil const * typeUtil) noexcept {
    std::size_t const elementSize = unsigned(typeUtil->elementSize);
    std::size_t const front = elementSize * unsigned(index);
    auto * const to = static_cast<unsigned char *>(larger.data);
    auto * const from = static_cast<unsigned char *>(full.data);
    if (from) {
        std::memcpy(to, from, front);
        std::memcpy(to + front + elementSize, from + front, elementSize * unsigned(full.capacity) - front);
    }
    std::free(from);
}

void VectorImpl::sFree(void * storage) noexcept { std::free(storage); }

void VectorImpl::destroy(int index, int n) noexcept {
    if (n > 0 && typeUtil_->destructRange)
        typeUtil_->destructRange(at(index), n);
}

// Construction

void VectorImpl::initialize(VectorImpl const & other) {
    initialize(other.typeUtil_);
    detail::Rollback freeAgain([this] { freeStorage(); });
    append(other);
    freeAgain.release();
}

void VectorImpl::initialize(int n, void (*constructRange)(void *, int), TypeUtil const * typeUtil) {
    initialize(typeUtil);
    detail::Rollback freeAgain([this] { freeStorage(); });
    setSize(n, constructRange);
    freeAgain.release();
}

void VectorImpl::initialize(int n, void const * value, TypeUtil const * typeUtil) {
    initialize(typeUtil);
    detail::Rollback freeAgain([this] { freeStorage(); });
    setSize(n, value);
    freeAgain.release();
}

// Size

void VectorImpl::clear() noexcept {
    destroy(0, size_);
    size_ = 0;
}

void VectorImpl::setSize(int n, void (*constructRange)(void *, int)) {
    detail::checkedCount(n);
    if (n > size_) {
        enlargeTo(n);
        if (constructRange)
            constructRange(at(size_), n - size_);
    } else {
        destroy(n, size_ - n);
    }
    size_ = n;
}

void VectorImpl::setSize(int n, void const * value) {
    detail::checkedCount(n);
    if (n > size_) {
        insert(at(size_), n - size_, value);
        return;
    }
    destroy(n, size_ - n);
    size_ = n;
}

// One element

// A slot in front of the element at index, which construct fills; it gets the slot. When it throws the slot closes
// again.
template <typename Construct>
void * VectorImpl::insertOne(int index, Construct construct) {
    void * const slot = openSlot(index);
    detail::Rollback closeAgain([&] { closeGap(index, 1); });
    construct(slot);
    closeAgain.release();
    return slot;
}

void * VectorImpl::openSlot(int index) {
    if (size_ == capacity_)
        growByOne();
    if (index != size_)
        shiftUp(index);
    ++size_;
    return at(index);
}

// Elements of 4 bytes take this way too: an unrolled copy of words from the top is as fast for a hundred of them, but
// takes 1.7 times as long for a thousand and more (x86-64).
void VectorImpl::shiftUp(int index) noexcept {
    unsigned char * const from = at(index);
    std::size_t const bytes = std::size_t(at(size_) - from);
    std::memmove(from + typeUtil_->elementSize, from, bytes);
}

void VectorImpl::append(void const * value) { append(value, typeUtil_->copyConstruct); }

void VectorImpl::append(void const * value, void (*copyOne)(void *, void const *)) {
    Source const source(value, data_, std::size_t(at(size_) - at(0)));
    if (size_ == capacity_)
        growByOne();
    copyOne(at(size_), source.in(data_, SIZE_MAX, 0));
    ++size_;
}

void VectorImpl::append(void (*construct)(void *)) {
    if (size_ == capacity_)
        growByOne();
    if (construct)
        construct(at(size_));
    ++size_;
}

void VectorImpl::appendAndAssignPtr(void const * p) {
    if (size_ == capacity_)
        growByOne();
    static_cast<void const **>(data_)[size_++] = p;
}

void VectorImpl::growByOneAndAssignPtr(void const * p) {
    --size_;
    appendAndAssignPtr(p);
}

void * VectorImpl::appendAndReturnPtr() { return openSlot(size_); }

void * VectorImpl::insert(void * pos, void const * value) { return insert(pos, value, typeUtil_->copyConstruct); }

void * VectorImpl::insert(void * pos, void const * value, void (*copyOne)(void *, void const *)) {
    int const index = indexOf(pos);
    Source const source(value, data_, std::size_t(at(size_) - at(0)));
    return insertOne(index, [&](void * slot) {
        std::size_t const gapBegin = std::size_t(static_cast<unsigned char *>(slot) - at(0));
        copyOne(slot, source.in(data_, gapBegin, std::size_t(unsigned(typeUtil_->elementSize))));
    });
}

void * VectorImpl::insert(void * pos, void (*construct)(void *)) {
    return insertOne(indexOf(pos), [construct](void * slot) {
        if (construct)
            construct(slot);
    });
}

void * VectorImpl::insertAndAssignPtr(void * pos, void const * p) {
    void * const slot = openSlot(indexOf(pos));
    *static_cast<void const **>(slot) = p;
    return slot;
}

void * VectorImpl::insertAndReturnPtr(void * pos) { return openSlot(indexOf(pos)); }

// Several elements

void * VectorImpl::openGap(int index, int n) {
    int const newSize = detail::addCounts(size_, n);
    enlargeTo(newSize);
    unsigned char * const gap = at(index);
    if (index != size_)
        std::memmove(at(index + n), gap, std::size_t(at(size_) - gap));
    size_ = newSize;
    return gap;
}

void VectorImpl::closeGap(int index, int n) noexcept {
    unsigned char * const behind = at(index + n);
    if (index + n != size_)
        std::memmove(at(index), behind, std::size_t(at(size_) - behind));
    size_ -= n;
}

void VectorImpl::insert(void * pos, int n, void const * value) {
    if (detail::checkedCount(n) == 0)
        return;
    int const index = indexOf(pos);
    Source const source(value, data_, std::size_t(at(size_) - at(0)));
    void * const gap = openGap(index, n);
    int done = 0;
    detail::Rollback closeAgain([&] {
        destroy(index, done);
        closeGap(index, n);
    });
    std::size_t const gapBegin = std::size_t(static_cast<unsigned char *>(gap) - at(0));
    void const * const from = source.in(data_, gapBegin, std::size_t(at(n) - at(0)));
    for (; done < n; ++done)
        typeUtil_->copyConstruct(at(index + done), from);
    closeAgain.release();
}

void VectorImpl::insert(void * pos, void const * first, void const * last) {
    insert(pos, first, last, typeUtil_->distance, typeUtil_->copyConstructRange);
}

void VectorImpl::insert(void * pos, void const * first, void const * last, int (*distance)(void const *, void const *),
                        void (*copyRange)(void *, void const *, int)) {
    int const n = detail::checkedCount(distance(last, first));
    if (n == 0)
        return;
    int const index = indexOf(pos);
    if (contains(first)) {
        // The gap would split or move the source, of which nobody here knows the unit.
        VectorImpl copies(typeUtil_);
        copies.fill(first, n, copyRange);
        insertMoved(index, copies);
        return;
    }
    openGap(index, n);
    detail::Rollback closeAgain([&] { closeGap(index, n); });
    copyRange(at(index), first, n);
    closeAgain.release();
}

// Of an empty vector.
void VectorImpl::fill(void const * first, int n, void (*copyRange)(void *, void const *, int)) {
    reserve(n);
    if (n)
        copyRange(data_, first, n);
    size_ = n;
}

void VectorImpl::insertMoved(int index, VectorImpl & other) {
    if (other.size_ == 0)
        return;
    if (capacity_ == 0 && other.capacity_ == other.size_) {
        swap(other);
        return;
    }
    void * const gap = openGap(index, other.size_);
    std::memcpy(gap, other.data_, std::size_t(other.at(other.size_) - other.at(0)));
    other.size_ = 0;
}

void VectorImpl::replaceBy(VectorImpl & other) noexcept {
    if (other.size_ > capacity_) {
        swap(other);
        other.clear();
        return;
    }
    clear();
    if (other.size_)
        std::memcpy(data_, other.data_, std::size_t(other.at(other.size_) - other.at(0)));
    size_ = std::exchange(other.size_, 0);
}

void VectorImpl::append(VectorImpl const & other) {
    // Read before anything moves: the other may be this one, or lie in an element of this one.
    int const n = other.size_;
    bool const isThis = this == &other;
    void const * const source = other.data_;
    setCapacity(detail::addCounts(size_, n));
    if (n == 0)
        return;
    typeUtil_->copyConstructRange(at(size_), isThis ? data_ : source, n);
    size_ += n;
}

void VectorImpl::assign(void const * first, void const * last) {
    assign(first, last, typeUtil_->distance, typeUtil_->copyConstructRange);
}

void VectorImpl::assign(void const * first, void const * last, int (*distance)(void const *, void const *),
                        void (*copyRange)(void *, void const *, int)) {
    int const n = detail::checkedCount(distance(last, first));
    if (!typeUtil_->destructRange && !contains(first)) {
        size_ = 0;
        fill(first, n, copyRange);
        return;
    }
    // The old elements go last: the source may lie in one of them, or in memory that one of them owns.
    VectorImpl copies(typeUtil_);
    copies.fill(first, n, copyRange);
    replaceBy(copies);
}

void VectorImpl::copy(VectorImpl const & other) {
    if (this == &other)
        return;
    // The old elements go last: the other may lie in one of them.
    VectorImpl copied(typeUtil_);
    copied.append(other);
    swap(copied);
}

// Removal

void VectorImpl::eraseBack() noexcept {
    --size_;
    if (typeUtil_->destruct)
        typeUtil_->destruct(at(size_));
}

void * VectorImpl::erase(void * pos) noexcept {
    if (typeUtil_->destruct)
        typeUtil_->destruct(pos);
    closeGap(indexOf(pos), 1);
    return pos;
}

void * VectorImpl::erase(void * first, void * last) noexcept {
    if (first == last)
        return first;
    int const index = indexOf(first);
    int const n = indexOf(last) - index;
    destroy(index, n);
    closeGap(index, n);
    return first;
}

bool VectorImpl::validate() const {
    return typeUtil_ && size_ >= 0 && size_ <= capacity_ && (data_ != nullptr) == (capacity_ != 0);
}

} // namespace qv
