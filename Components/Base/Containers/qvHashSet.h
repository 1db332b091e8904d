// qv::hash_set<K> and qv::hash_multiset<K>: sets of keys in no order.

#ifndef qvHashSet_h
#define qvHashSet_h

#include "Base/Containers/qvHashContainer.h"

namespace qv {

/*
 * A set of keys that are found by their hash values. It may cross the boundary of a module. Counts are of type int;
 * search, insertion and removal take constant time on average. Elements stay where they are as long as they live. K
 * need not be copyable as long as nothing copies it. H gives an unsigned hash value of a key, of which 32 bits are
 * used, and E tells whether two keys are equal; their copies must not throw.
 *
 * Iterators stay valid until their element is erased, also when the table grows (but what a walk has still to visit is
 * then another), and until the container is moved or swapped. rehash(n) and reserve(n) make room for n elements,
 * whatever the load factor.
 *
 * Failures: std::bad_alloc; std::length_error for more than 2^31 - 1 elements. Inserting one element leaves the set as
 * it was when it fails.
 */
template <typename K, typename H = hash<K>, typename E = equal_to<K>>
class hash_set : public detail::HashContainer<K, K, H, E, detail::Keys::areUnique> {
    using Base = detail::HashContainer<K, K, H, E, detail::Keys::areUnique>;

public:
    hash_set() : Base(H(), E()) {}
    // Makes room for n elements.
    explicit hash_set(int n, H const & hash = H(), E const & equal = E()) : Base(hash, equal) { this->rehash(n); }
    hash_set(std::initializer_list<K> elements, H const & hash = H(), E const & equal = E())
        : hash_set(int(elements.size()), hash, equal) {
        this->insert(elements);
    }
    template <detail::InputIterator I>
    hash_set(I first, I last, H const & hash = H(), E const & equal = E()) : Base(hash, equal) {
        this->insert(first, last);
    }
    hash_set(hash_set const &) = default;
    hash_set(hash_set &&) noexcept = default;
    ~hash_set() = default;

    hash_set & operator=(hash_set const &) = default;
    hash_set & operator=(hash_set &&) noexcept = default;
    hash_set & operator=(std::initializer_list<K> elements) {
        return *this = hash_set(elements, this->hash_function(), this->key_eq());
    }
};

// A set in which equal keys may stand more than once, next to each other.
template <typename K, typename H = hash<K>, typename E = equal_to<K>>
class hash_multiset : public detail::HashContainer<K, K, H, E, detail::Keys::mayRepeat> {
    using Base = detail::HashContainer<K, K, H, E, detail::Keys::mayRepeat>;

public:
    hash_multiset() : Base(H(), E()) {}
    // Makes room for n elements.
    explicit hash_multiset(int n, H const & hash = H(), E const & equal = E()) : Base(hash, equal) { this->rehash(n); }
    hash_multiset(std::initializer_list<K> elements, H const & hash = H(), E const & equal = E())
        : hash_multiset(int(elements.size()), hash, equal) {
        this->insert(elements);
    }
    template <detail::InputIterator I>
    hash_multiset(I first, I last, H const & hash = H(), E const & equal = E()) : Base(hash, equal) {
        this->insert(first, last);
    }
    hash_multiset(hash_multiset const &) = default;
    hash_multiset(hash_multiset &&) noexcept = default;
    ~hash_multiset() = default;

    hash_multiset & operator=(hash_multiset const &) = default;
    hash_multiset & operator=(hash_multiset &&) noexcept = default;
    hash_multiset & operator=(std::initializer_list<K> elements) {
        return *this = hash_multiset(elements, this->hash_function(), this->key_eq());
    }
};

} // namespace qv

#endif
