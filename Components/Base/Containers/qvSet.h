// qv::set<K> and qv::multiset<K>: ordered sets of keys.

#ifndef qvSet_h
#define qvSet_h

#include "Base/Containers/qvTreeContainer.h"

namespace qv {

/*
 * An ordered set. It may cross the boundary of a module. Counts are of type int; search, insertion and removal take
 * logarithmic time. Elements stay where they are as long as they live, and iterators stay valid with them. K need not
 * be copyable as long as nothing copies it. C is the ordering, a strict weak order, whose copies must not throw.
 *
 * Failures: std::bad_alloc; std::length_error for more than 2^31 - 1 elements. Inserting one element leaves the set as
 * it was when it fails.
 */
template <typename K, typename C = less<K>>
class set : public detail::TreeContainer<K, K, C, detail::Keys::areUnique> {
    using Base = detail::TreeContainer<K, K, C, detail::Keys::areUnique>;

public:
    set() : Base(C()) {}
    explicit set(C const & compare) : Base(compare) {}
    set(std::initializer_list<K> elements, C const & compare = C()) : Base(compare) { this->insert(elements); }
    template <detail::InputIterator I>
    set(I first, I last, C const & compare = C()) : Base(compare) {
        this->insert(first, last);
    }
    set(set const &) = default;
    set(set &&) noexcept = default;
    ~set() = default;

    set & operator=(set const &) = default;
    set & operator=(set &&) noexcept = default;
    set & operator=(std::initializer_list<K> elements) { return *this = set(elements, this->key_comp()); }
};

// A set in which equal keys may stand more than once, in the order of their insertion.
template <typename K, typename C = less<K>>
class multiset : public detail::TreeContainer<K, K, C, detail::Keys::mayRepeat> {
    using Base = detail::TreeContainer<K, K, C, detail::Keys::mayRepeat>;

public:
    multiset() : Base(C()) {}
    explicit multiset(C const & compare) : Base(compare) {}
    multiset(std::initializer_list<K> elements, C const & compare = C()) : Base(compare) { this->insert(elements); }
    template <detail::InputIterator I>
    multiset(I first, I last, C const & compare = C()) : Base(compare) {
        this->insert(first, last);
    }
    multiset(multiset const &) = default;
    multiset(multiset &&) noexcept = default;
    ~multiset() = default;

    multiset & operator=(multiset const &) = default;
    multiset & operator=(multiset &&) noexcept = default;
    multiset & operator=(std::initializer_list<K> elements) { return *this = multiset(elements, this->key_comp()); }
};

} // namespace qv

#endif
