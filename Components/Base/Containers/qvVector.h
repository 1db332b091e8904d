// qv::vector<T>: the growing array of the library's interfaces.

#ifndef qvVector_h
#define qvVector_h

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <ranges>

#include "Base/Containers/qvBitwiseMovable.h"
#include "Base/Containers/qvContainerSupport.h"
#include "Base/Containers/qvVectorImpl.h"

namespace qv {

/*
 * A growing array. It may cross the boundary of a module: storage and growth are the library's. Counts are of type int.
 *
 * Elements move bitwise when the array grows, so T must have the trait qv::isBitwiseMovable; for other types use
 * qv::list. T need not be copyable as long as nothing copies it. Whatever changes the capacity invalidates iterators,
 * insertion and removal also those behind the position.
 *
 * push_back, append and single insertions grow the capacity by 8 below 32 and double it from there on; operations that
 * add several elements make it exact when it does not suffice, and so do copies. Failures: std::bad_alloc;
 * std::length_error for a count below 0 (but reserve, which does nothing then) or above
 * 2^31 - 1; std::out_of_range from at. Adding one element, and reserve,
 * leave the vector as it was when they fail.
 *
 *     qv::vector<int> v = {1, 2, 3};
 *     v.append(4);
 *     for (int i : v) ...
 */
template <typename T>
class vector : private VectorImpl {
    static_assert(std::is_object_v<T> && !std::is_const_v<T> && !std::is_volatile_v<T>);
    using Functions = detail::ElementFunctions<T>;

public:
    using value_type = T;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = T &;
    using const_reference = T const &;
    using pointer = T *;
    using const_pointer = T const *;
    using iterator = T *;
    using const_iterator = T const *;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    using isBitwiseMovable = vector;

    vector() noexcept : VectorImpl(table()) {}
    explicit vector(int n) : VectorImpl(n, &Functions::valueConstructRange, table()) {}
    vector(int n, T const & value) : VectorImpl(n, std::addressof(value), copyTable()) {}
    vector(std::initializer_list<T> values) : vector(values.begin(), values.end()) {}
    template <detail::InputIterator I>
    vector(I first, I last) : vector() {
        insert(end(), first, last);
    }
    vector(vector const & other) : VectorImpl(copyTable()) { append(other); }
    vector(vector && other) noexcept : VectorImpl(table()) { swap(other); }
    ~vector() = default;

    vector & operator=(vector const & other) {
        copying().copy(other);
        return *this;
    }
    vector & operator=(vector && other) noexcept {
        vector(std::move(other)).swap(*this);
        return *this;
    }
    vector & operator=(std::initializer_list<T> values) {
        assign(values.begin(), values.end());
        return *this;
    }

    void assign(int n, T const & value) {
        vector copies(n, value);
        replaceBy(copies);
    }
    void assign(std::initializer_list<T> values) { assign(values.begin(), values.end()); }
    template <detail::InputIterator I>
    void assign(I first, I last) {
        if constexpr (detail::PlainMemoryOf<I, T>) {
            copying().assign(std::to_address(first), std::to_address(last));
        } else {
            vector copies(first, last);
            replaceBy(copies);
        }
    }

    // Elements

    iterator begin() { return data(); }
    iterator end() { return data() + size_; }
    const_iterator begin() const { return data(); }
    const_iterator end() const { return data() + size_; }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }

    T * data() { return static_cast<T *>(data_); }
    T const * data() const { return static_cast<T const *>(data_); }

    // The index must be below the size.
    T & operator[](int i) { return data()[i]; }
    T const & operator[](int i) const { return data()[i]; }
    template <std::integral N>
    T & operator[](N i) {
        return data()[i];
    }
    template <std::integral N>
    T const & operator[](N i) const {
        return data()[i];
    }
    template <std::integral N>
    T & at(N i) {
        return data()[checkedIndex(i)];
    }
    template <std::integral N>
    T const & at(N i) const {
        return data()[checkedIndex(i)];
    }

    // The vector must not be empty.
    T & front() { return *begin(); }
    T const & front() const { return *begin(); }
    T & back() { return end()[-1]; }
    T const & back() const { return end()[-1]; }

    bool contains(T const & value) const { return std::find(begin(), end(), value) != end(); }

    // Size

    bool empty() const { return size_ == 0; }
    using VectorImpl::capacity;
    using VectorImpl::size;
    static constexpr int max_size() { return std::numeric_limits<int>::max(); }

    using VectorImpl::clear;
    using VectorImpl::reserve;
    void shrink_to_fit() { setCapacity(size_); }

    void setSize(int n) { VectorImpl::setSize(n, &Functions::valueConstructRange); }
    void setSize(int n, T const & value) { copying().setSize(n, std::addressof(value)); }
    void resize(int n) { setSize(n); }
    void resize(int n, T const & value) { setSize(n, value); }

    // At the end

    void append(T const & value) { emplace_back(value); }
    void append(T && value) { emplace_back(std::move(value)); }
    void push_back(T const & value) { emplace_back(value); }
    void push_back(T && value) { emplace_back(std::move(value)); }

    template <typename... Args>
    T & emplace_back(Args &&... args) {
        if (size_ < capacity_) [[likely]] {
            std::construct_at(end(), std::forward<Args>(args)...);
        } else if constexpr (std::is_trivially_copyable_v<T> && (std::is_same_v<std::remove_cvref_t<Args>, T> && ...)) {
            // Without a call that gets the address of an argument: what is written to memory for that costs every round
            // of a loop more than the rest.
            T const element(std::forward<Args>(args)...);
            setStorage(sGrown({data_, capacity_}, table()));
            std::construct_at(end(), element);
        } else {
            setStorage(grownWith({data_, capacity_}, size_, std::forward<Args>(args)...));
        }
        ++size_;
        return end()[-1];
    }

    // Copies of all elements of another vector, or of this one. The capacity becomes the new size exactly.
    void append(vector const & other) { copying().append(static_cast<VectorImpl const &>(other)); }

    // The vector must not be empty.
    void pop_back() noexcept {
        --size_;
        std::destroy_at(end());
    }
    void eraseBack() noexcept { pop_back(); }

    // Anywhere. Insertions go in front of pos and give the first new element; removals give the one behind the last
    // removed.

    iterator insert(const_iterator pos, T const & value) { return emplace(pos, value); }
    iterator insert(const_iterator pos, T && value) { return emplace(pos, std::move(value)); }
    iterator insert(const_iterator pos, int n, T const & value) {
        difference_type const index = pos - begin();
        copying().insert(untyped(pos), n, std::addressof(value));
        return begin() + index;
    }
    iterator insert(const_iterator pos, std::initializer_list<T> values) {
        return insert(pos, values.begin(), values.end());
    }
    template <detail::InputIterator I>
    iterator insert(const_iterator pos, I first, I last) {
        difference_type const index = pos - begin();
        if constexpr (detail::PlainMemoryOf<I, T>)
            copying().insert(untyped(pos), std::to_address(first), std::to_address(last));
        else
            insertGathered(int(index), first, last);
        return begin() + index;
    }

    template <typename... Args>
    iterator emplace(const_iterator pos, Args &&... args) {
        int const index = int(pos - begin());
        if (size_ == capacity_) {
            setStorage(grownWith({data_, capacity_}, index, std::forward<Args>(args)...));
            ++size_;
            return begin() + index;
        }
        // Built before the slot opens: the arguments may lie in the vector, and a constructor that throws finds it
        // untouched.
        Carrier carrier(std::forward<Args>(args)...);
        return carrier.moveTo(openSlot(index));
    }

    iterator erase(const_iterator pos) noexcept { return static_cast<T *>(VectorImpl::erase(untyped(pos))); }
    iterator erase(const_iterator first, const_iterator last) noexcept {
        return static_cast<T *>(VectorImpl::erase(untyped(first), untyped(last)));
    }

    // Each keeps its own table of functions: the other's may lie in a module that goes first.
    void swap(vector & other) noexcept { VectorImpl::swap(other); }
    friend void swap(vector & a, vector & b) noexcept { a.swap(b); }

    using VectorImpl::validate;

private:
    // An element on its way into a slot, to which it moves bitwise.
    class Carrier {
    public:
        template <typename... Args>
        explicit Carrier(Args &&... args) {
            std::construct_at(element(), std::forward<Args>(args)...);
        }
        Carrier(Carrier const &) = delete;
        Carrier & operator=(Carrier const &) = delete;
        ~Carrier() {
            if (full_)
                std::destroy_at(element());
        }
        T * moveTo(void * slot) noexcept {
            std::memcpy(slot, bytes_, sizeof(T));
            full_ = false;
            return static_cast<T *>(slot);
        }

    private:
        T * element() { return reinterpret_cast<T *>(bytes_); }

        alignas(T) unsigned char bytes_[sizeof(T)];
        bool full_ = true;
    };

    static constexpr TypeUtil const * table() {
        static_assert(
            qv::isBitwiseMovable<T>::value,
            "qv::vector moves its elements bitwise: the element type must have the trait qv::isBitwiseMovable");
        return &sTable;
    }
    // The table with the copy functions. It comes into play with the first copy only, so that a vector of elements that
    // cannot be copied compiles.
    static constexpr TypeUtil const * copyTable() {
        static_assert(std::is_copy_constructible_v<T>, "the elements of this qv::vector cannot be copied");
        static_assert(
            qv::isBitwiseMovable<T>::value,
            "qv::vector moves its elements bitwise: the element type must have the trait qv::isBitwiseMovable");
        return &sCopyTable;
    }
    VectorImpl & copying() {
        typeUtil_ = copyTable();
        return *this;
    }

    static constexpr TypeUtil makeTable(void (*copy)(void *, void const *),
                                        void (*copyRange)(void *, void const *, int)) {
        return {copy,
                copyRange,
                Functions::destruct,
                Functions::destructRange,
                &Functions::distance,
                detail::countOf(sizeof(T)),
                int(detail::alignmentBeyondMalloc<T>)};
    }
    static TypeUtil const sTable;
    static TypeUtil const sCopyTable;

    static void * untyped(const_iterator pos) { return const_cast<T *>(pos); }

    template <std::integral N>
    std::size_t checkedIndex(N i) const {
        if (std::cmp_less(i, 0) || std::cmp_greater_equal(i, size_))
            detail::throwOutOfRange();
        return std::size_t(i);
    }

    // Whether the arguments are the same behind the construction of an element, since none can be moved from.
    template <typename... Args>
    static constexpr bool keepsArguments = ((std::is_lvalue_reference_v<Args> ||
                                             std::is_trivially_copyable_v<Args>)&&...);

    // Larger storage than a full one, with a new element at index. The arguments may lie in the old storage, so that
    // the element is built before that goes; and they must not get lost when there is no memory.
    template <typename... Args>
    [[gnu::noinline]] static Storage grownWith(Storage full, int index, Args &&... args) {
        if constexpr (keepsArguments<Args...>) {
            Carrier carrier(std::forward<Args>(args)...);
            Storage const grown = sGrown(full, table());
            T * const slot = static_cast<T *>(grown.data) + index;
            if (index != full.capacity)
                std::memmove(static_cast<void *>(slot + 1), static_cast<void const *>(slot),
                             sizeof(T) * std::size_t(full.capacity - index));
            carrier.moveTo(slot);
            return grown;
        } else {
            Storage const larger = sAllocatedStep(full, table());
            detail::OnFailure freeAgain([&larger] { sFree(larger.data); });
            std::construct_at(static_cast<T *>(larger.data) + index, std::forward<Args>(args)...);
            freeAgain.release();
            sMoveInto(larger, index, full, table());
            return larger;
        }
    }
    void setStorage(Storage storage) {
        data_ = storage.data;
        capacity_ = storage.capacity;
    }

    // The elements gather in a vector of their own first: the iterators may lead through this one.
    template <typename I>
    void insertGathered(int index, I first, I last) {
        vector arrivals;
        if constexpr (std::forward_iterator<I>)
            arrivals.reserve(detail::countOf(std::distance(first, last)));
        for (; first != last; ++first)
            arrivals.emplace_back(*first);
        insertMoved(index, arrivals);
    }
};

template <typename T>
constexpr VectorImpl::TypeUtil vector<T>::sTable = makeTable(nullptr, nullptr);

template <typename T>
constexpr VectorImpl::TypeUtil vector<T>::sCopyTable = makeTable(&Functions::copyConstruct,
                                                                 &Functions::copyConstructRange);

template <typename T>
requires std::equality_comparable<T>
bool operator==(vector<T> const & a, vector<T> const & b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}
template <detail::Ordered T>
auto operator<=>(vector<T> const & a, vector<T> const & b) {
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(), detail::ThreeWay());
}

template <typename I>
vector(I, I) -> vector<std::iter_value_t<I>>;

// Erase all elements that equal the value, or for which the predicate holds; give their number.
template <typename T, typename Predicate>
int erase_if(vector<T> & v, Predicate predicate) {
    auto const kept = std::remove_if(v.begin(), v.end(), predicate);
    int const n = int(v.end() - kept);
    v.erase(kept, v.end());
    return n;
}
template <typename T, typename U>
int erase(vector<T> & v, U const & value) {
    return erase_if(v, [&value](T const & element) { return element == value; });
}

} // namespace qv

#endif
