// qv::map<K, V> and qv::multimap<K, V>: ordered maps from keys to values.

#ifndef qvMap_h
#define qvMap_h

#include "Base/Containers/qvTreeContainer.h"

namespace qv {

/*
 * An ordered map. It may cross the boundary of a module. Elements are pairs of key and value. Counts are of type int;
 * search, insertion and removal take logarithmic time. Elements stay where they are as long as they live, and iterators
 * stay valid with them. Neither K nor V need be copyable as long as nothing copies them. C is the ordering of the keys,
 * a strict weak order, whose copies must not throw.
 *
 * Failures: std::bad_alloc; std::length_error for more than 2^31 - 1 elements. Inserting one element leaves the map as
 * it was when it fails.
 *
 *     qv::map<int, Widget> widgets;
 *     widgets.try_emplace(7, "seven");
 *     for (auto & [number, widget] : widgets) ...
 */
template <typename K, typename V, typename C = less<K>>
class map : public detail::TreeContainer<K, pair<K const, V>, C, detail::Keys::areUnique> {
    using Base = detail::TreeContainer<K, pair<K const, V>, C, detail::Keys::areUnique>;

public:
    using mapped_type = V;
    using typename Base::const_iterator;
    using typename Base::iterator;

    map() : Base(C()) {}
    explicit map(C const & compare) : Base(compare) {}
    map(std::initializer_list<pair<K const, V>> elements, C const & compare = C()) : Base(compare) {
        this->insert(elements);
    }
    template <detail::InputIterator I>
    map(I first, I last, C const & compare = C()) : Base(compare) {
        this->insert(first, last);
    }
    map(map const &) = default;
    map(map &&) noexcept = default;
    ~map() = default;

    map & operator=(map const &) = default;
    map & operator=(map &&) noexcept = default;
    map & operator=(std::initializer_list<pair<K const, V>> elements) {
        return *this = map(elements, this->key_comp());
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
    template <typename... Args>
    iterator try_emplace(const_iterator hint, K const & key, Args &&... args) {
        return this->tryEmplaceAt(hint, key, std::forward<Args>(args)...);
    }
    template <typename... Args>
    iterator try_emplace(const_iterator hint, K && key, Args &&... args) {
        return this->tryEmplaceAt(hint, std::move(key), std::forward<Args>(args)...);
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
    template <typename V2>
    iterator insert_or_assign(const_iterator hint, K const & key, V2 && value) {
        return assignAt(hint, key, std::forward<V2>(value));
    }
    template <typename V2>
    iterator insert_or_assign(const_iterator hint, K && key, V2 && value) {
        return assignAt(hint, std::move(key), std::forward<V2>(value));
    }

private:
    template <typename K2, typename V2>
    iterator assignAt(const_iterator hint, K2 && key, V2 && value) {
        int const before = this->size();
        iterator const position = this->tryEmplaceAt(hint, std::forward<K2>(key), std::forward<V2>(value));
        if (this->size() == before)
            position->second = std::forward<V2>(value);
        return position;
    }
};

// A map in which a key may stand more than once, with its values in the order of their insertion.
template <typename K, typename V, typename C = less<K>>
class multimap : public detail::TreeContainer<K, pair<K const, V>, C, detail::Keys::mayRepeat> {
    using Base = detail::TreeContainer<K, pair<K const, V>, C, detail::Keys::mayRepeat>;

public:
    using mapped_type = V;

    multimap() : Base(C()) {}
    explicit multimap(C const & compare) : Base(compare) {}
    multimap(std::initializer_list<pair<K const, V>> elements, C const & compare = C()) : Base(compare) {
        this->insert(elements);
    }
    template <detail::InputIterator I>
    multimap(I first, I last, C const & compare = C()) : Base(compare) {
        this->insert(first, last);
    }
    multimap(multimap const &) = default;
    multimap(multimap &&) noexcept = default;
    ~multimap() = default;

    multimap & operator=(multimap const &) = default;
    multimap & operator=(multimap &&) noexcept = default;
    multimap & operator=(std::initializer_list<pair<K const, V>> elements) {
        return *this = multimap(elements, this->key_comp());
    }
};

} // namespace qv

#endif
