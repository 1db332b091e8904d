// qv::hash_map<K, V> and qv::hash_multimap<K, V>: maps from keys to values in no order.

#ifndef qvHashMap_h
#define qvHashMap_h

#include "Base/Containers/qvHashContainer.h"

namespace qv {

/*
 * A map whose keys are found by their hash values. It may cross the boundary of a module. Elements are pairs of key and
 * value. Counts are of type int; search, insertion and removal take constant time on average. Elements stay where they
 * are as long as they live. Neither K nor V need be copyable as long as nothing copies them. H gives an unsigned hash
 * value of a key, of which 32 bits are used, and E tells whether two keys are equal; their copies must not throw.
 *
 * Iterators stay valid until their element is erased, also when the table grows (but what a walk has still to visit is
 * then another), and until the container is moved or swapped. rehash(n) and reserve(n) make room for n elements,
 * whatever the load factor.
 *
 * Failures: std::bad_alloc; std::length_error for more than 2^31 - 1 elements. Inserting one element leaves the map as
 * it was when it fails.
 */
template <typename K, typename V, typename H = hash<K>, typename E = equal_to<K>>
class hash_map : public detail::HashContainer<K, pair<K const, V>, H, E, detail::Keys::areUnique> {
    using Base = detail::HashContainer<K, pair<K const, V>, H, E, detail::Keys::areUnique>;

public:
    using mapped_type = V;
    using typename Base::iterator;

    hash_map() : Base(H(), E()) {}
    // Makes room for n elements.
    explicit hash_map(int n, H const & hash = H(), E const & equal = E()) : Base(hash, equal) { this->rehash(n); }
    hash_map(std::initializer_list<pair<K const, V>> elements, H const & hash = H(), E const & equal = E())
        : hash_map(int(elements.size()), hash, equal) {
        this->insert(elements);
    }
    template <detail::InputIterator I>
    hash_map(I first, I last, H const & hash = H(), E const & equal = E()) : Base(hash, equal) {
        this->insert(first, last);
    }
    hash_map(hash_map const &) = default;
    hash_map(hash_map &&) noexcept = default;
    ~hash_map() = default;

    hash_map & operator=(hash_map const &) = default;
    hash_map & operator=(hash_map &&) noexcept = default;
    hash_map & operator=(std::initializer_list<pair<K const, V>> elements) {
        return *this = hash_map(elements, this->hash_function(), this->key_eq());
    }

    // The value with this key, inserted when it is not there.
    V & operator[](K const & key) { return this->tryEmplace(key).first->second; }
    V & operator[](K && key) { return this->tryEmplace(std::move(key)).first->second; }
    // Throws std::out_of_range when there is none.
    V & at(K const & key) { return this->elementOf(key).second; }
    V const & at(K const & key) const { return this->elementOf(key).second; }

    // Insert a value made of args, unless there is one with this key; then key and args stay untouched.
    template <typename... Args>
    pair<iterator, bool> try_emplace(K const & key, Args &&... args) {
        return this->tryEmplace(key, std::forward<Args>(args)...);
    }
    template <typename... Args>
    pair<iterator, bool> try_emplace(K && key, Args &&... args) {
        return this->tryEmplace(std::move(key), std::forward<Args>(args)...);
    }
    // Insert the value, or assign it to the one that is there.
    template <typename V2>
    pair<iterator, bool> insert_or_assign(K const & key, V2 && value) {
        auto const result = this->tryEmplace(key, std::forward<V2>(value));
        if (!result.second)
            result.first->second = std::forward<V2>(value);
        return result;
    }
    template <typename V2>
    pair<iterator, bool> insert_or_assign(K && key, V2 && value) {
        auto const result = this->tryEmplace(std::move(key), std::forward<V2>(value));
        if (!result.second)
            result.first->second = std::forward<V2>(value);
        return result;
    }
};

// A map in which a key may stand more than once, next to each other.
template <typename K, typename V, typename H = hash<K>, typename E = equal_to<K>>
class hash_multimap : public detail::HashContainer<K, pair<K const, V>, H, E, detail::Keys::mayRepeat> {
    using Base = detail::HashContainer<K, pair<K const, V>, H, E, detail::Keys::mayRepeat>;

public:
    using mapped_type = V;

    hash_multimap() : Base(H(), E()) {}
    // Makes room for n elements.
    explicit hash_multimap(int n, H const & hash = H(), E const & equal = E()) : Base(hash, equal) { this->rehash(n); }
    hash_multimap(std::initializer_list<pair<K const, V>> elements, H const & hash = H(), E const & equal = E())
        : hash_multimap(int(elements.size()), hash, equal) {
        this->insert(elements);
    }
    template <detail::InputIterator I>
    hash_multimap(I first, I last, H const & hash = H(), E const & equal = E()) : Base(hash, equal) {
        this->insert(first, last);
    }
    hash_multimap(hash_multimap const &) = default;
    hash_multimap(hash_multimap &&) noexcept = default;
    ~hash_multimap() = default;

    hash_multimap & operator=(hash_multimap const &) = default;
    hash_multimap & operator=(hash_multimap &&) noexcept = default;
    hash_multimap & operator=(std::initializer_list<pair<K const, V>> elements) {
        return *this = hash_multimap(elements, this->hash_function(), this->key_eq());
    }
};

} // namespace qv

#endif
