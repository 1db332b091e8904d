// What qv::hash_map, qv::hash_set and their multi forms share: the typed shell over qv::HashTableImpl. Clients include
// the containers themselves.

#ifndef qvHashContainer_h
#define qvHashContainer_h

#include <algorithm>
#include <initializer_list>
#include <iterator>

#include "Base/Containers/qvContainerSupport.h"
#include "Base/Containers/qvHash.h"
#include "Base/Containers/qvHashTableImpl.h"
#include "Base/Containers/qvPair.h"
#include "Base/Containers/qvVector.h"

namespace qv {

namespace detail {

template <typename Element>
inline constexpr std::size_t hashElementOffset = offsetBehind(sizeof(HashTableImpl::HashNodeImpl), alignof(Element));

template <typename Element>
Element * hashElement(HashTableImpl::HashNodeImpl const * node) {
    auto * const bytes = reinterpret_cast<unsigned char *>(const_cast<HashTableImpl::HashNodeImpl *>(node));
    return reinterpret_cast<Element *>(bytes + hashElementOffset<Element>);
}

template <typename K, typename Element, typename H, typename E, Keys keys>
class HashContainer;

} // namespace detail

// A position in a hash container; it stays valid until its element is erased or the container is moved or swapped.
template <typename Element, bool isConst>
class HashIterator {
    using Node = HashTableImpl::HashNodeImpl;

public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<isConst, Element const &, Element &>;
    using pointer = std::conditional_t<isConst, Element const *, Element *>;

    HashIterator() = default;
    template <bool otherConst>
    requires(isConst && !otherConst) HashIterator(HashIterator<Element, otherConst> const & other)
        : node_(other.node_), table_(other.table_) {}

    reference operator*() const { return *detail::hashElement<Element>(node_); }
    pointer operator->() const { return detail::hashElement<Element>(node_); }

    HashIterator & operator++() {
        node_ = node_->nextItem(table_);
        return *this;
    }
    HashIterator operator++(int) { return HashIterator(std::exchange(node_, node_->nextItem(table_)), table_); }

    friend bool operator==(HashIterator const & a, HashIterator const & b) { return a.node_ == b.node_; }

private:
    template <typename, typename, typename, typename, detail::Keys>
    friend class detail::HashContainer;
    friend class HashIterator<Element, !isConst>;

    HashIterator(Node const * node, HashTableImpl const * table) : node_(node), table_(table) {}

    Node const * node_ = nullptr;
    HashTableImpl const * table_ = nullptr;
};

namespace detail {

// The element is the key itself, for sets, or a pair with the key as first.
template <typename K, typename Element, typename H, typename E, Keys keys>
class HashContainer : private HashTableImpl {
    using Node = HashNodeImpl;
    static constexpr bool isSet = std::is_same_v<K, Element>;
    static constexpr bool isUnique = keys == Keys::areUnique;
    // Equal hashes are equal keys then, so that a search need not look at the keys.
    static constexpr bool hashIsKey =
        HashesToItself<K> && std::is_same_v<H, qv::hash<K>> && std::is_same_v<E, equal_to<K>>;

public:
    using key_type = K;
    using value_type = Element;
    using hasher = H;
    using key_equal = E;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = Element &;
    using const_reference = Element const &;
    using pointer = Element *;
    using const_pointer = Element const *;
    using iterator = HashIterator<Element, isSet>;
    using const_iterator = HashIterator<Element, true>;
    // What an insertion gives: the position, and where keys are unique, whether the element is new.
    using insert_result = std::conditional_t<isUnique, pair<iterator, bool>, iterator>;

    iterator begin() { return iterator(firstNode(), this); }
    iterator end() { return iterator(nullptr, this); }
    const_iterator begin() const { return const_iterator(firstNode(), this); }
    const_iterator end() const { return const_iterator(nullptr, this); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }

    bool empty() const { return count_ == 0; }
    int size() const { return count_; }
    static constexpr int max_size() { return std::numeric_limits<int>::max(); }
    H hash_function() const { return hash_; }
    E key_eq() const { return equal_; }

    // Search

    iterator find(K const & key) { return iterator(nodeOf(key), this); }
    const_iterator find(K const & key) const { return const_iterator(nodeOf(key), this); }
    bool contains(K const & key) const { return nodeOf(key) != nullptr; }
    int count(K const & key) const {
        int n = 0;
        unsigned const hash = hashOf(key);
        for (Node const * node = nodeOf(hash, key); node && matches(node, hash, key); node = node->next)
            ++n;
        return n;
    }
    pair<iterator, iterator> equal_range(K const & key) {
        Node const * const first = nodeOf(key);
        return {iterator(first, this), iterator(behindRun(first, key), this)};
    }
    pair<const_iterator, const_iterator> equal_range(K const & key) const {
        Node const * const first = nodeOf(key);
        return {const_iterator(first, this), const_iterator(behindRun(first, key), this)};
    }

    // Insertion. Where keys are unique, an element with the key stays as it is; otherwise the new one stands behind the
    // first of them. There is room for one element more behind it in any case. A hint is taken for the sake of the
    // standard inserters.

    insert_result insert(Element const & element) { return emplaceElement(element); }
    insert_result insert(Element && element) { return emplaceElement(std::move(element)); }
    iterator insert(const_iterator, Element const & element) { return positionOf(emplaceElement(element)); }
    iterator insert(const_iterator, Element && element) { return positionOf(emplaceElement(std::move(element))); }
    void insert(std::initializer_list<Element> elements) { insert(elements.begin(), elements.end()); }
    template <InputIterator I>
    void insert(I first, I last) {
        // Where keys repeat, a walk through this very container would come to what it has inserted.
        if constexpr ((std::is_same_v<I, iterator> || std::is_same_v<I, const_iterator>)&&keys == Keys::mayRepeat) {
            qv::vector<Element const *> elements;
            for (; first != last; ++first)
                elements.append(std::addressof(*first));
            for (Element const * const element : elements)
                emplaceElement(*element);
        } else {
            for (; first != last; ++first)
                emplaceElement(*first);
        }
    }

    template <typename... Args>
    insert_result emplace(Args &&... args) {
        return emplaceElement(std::forward<Args>(args)...);
    }
    template <typename... Args>
    iterator emplace_hint(const_iterator, Args &&... args) {
        return positionOf(emplaceElement(std::forward<Args>(args)...));
    }

    // Removal. Gives the element behind the last removed, or how many were removed.

    iterator erase(const_iterator pos) noexcept {
        Node * const node = const_cast<Node *>(pos.node_);
        Node * const behind = node->nextItem(this);
        unlinkNode(node);
        destroyNode(node);
        return iterator(behind, this);
    }
    iterator erase(iterator pos) noexcept requires(!isSet) { return erase(const_iterator(pos)); }
    iterator erase(const_iterator first, const_iterator last) noexcept {
        while (first != last)
            first = erase(first);
        return iterator(last.node_, this);
    }
    int erase(K const & key) {
        if (buckets_.size() == 0)
            return 0;
        unsigned const hash = hashOf(key);
        Node ** link = bucketArray() + remainder(hash);
        while (*link && !matches(*link, hash, key))
            link = &(*link)->next;
        if (!*link)
            return 0;
        // Equal keys stand together. The key may be in one of the nodes, so they are destroyed when all are found.
        Node * doomed = *link;
        Node * behind = doomed->next;
        int n = 1;
        if constexpr (!isUnique) {
            for (; behind && matches(behind, hash, key); behind = behind->next)
                ++n;
        }
        *link = behind;
        count_ -= n;
        while (doomed != behind)
            destroyNode(std::exchange(doomed, doomed->next));
        return n;
    }
    using HashTableImpl::clear;

    void swap(HashContainer & other) noexcept {
        HashTableImpl::swap(other);
        std::swap(hash_, other.hash_);
        std::swap(equal_, other.equal_);
    }
    friend void swap(HashContainer & a, HashContainer & b) noexcept { a.swap(b); }

    // Buckets

    using HashTableImpl::bucket_count;
    using HashTableImpl::bucket_size;
    using HashTableImpl::load_factor;
    using HashTableImpl::max_bucket_count;
    using HashTableImpl::max_bucket_size;
    using HashTableImpl::max_load_factor;
    using HashTableImpl::rehash;
    // The table must have a bucket.
    int bucket(K const & key) const { return bucketNum(hashOf(key)); }
    void reserve(int n) { rehash(n); }

    // How many nodes are taken from the heap at a time; only before the first insertion. The default is 10.
    using HashTableImpl::setNumElementsInBlock;
    using HashTableImpl::validate;

protected:
    HashContainer(H const & hash, E const & equal) : HashTableImpl(&sTable), hash_(hash), equal_(equal) {}
    HashContainer(HashContainer const & other) : HashContainer(other.hash_, other.equal_) { copyFrom(other); }
    HashContainer(HashContainer && other) noexcept : HashContainer(other.hash_, other.equal_) {
        HashTableImpl::swap(other);
    }
    ~HashContainer() = default;

    HashContainer & operator=(HashContainer const & other) {
        if (this != &other) {
            // The other may be gone with the old elements, and the old functions are for these.
            H hash = other.hash_;
            E equal = other.equal_;
            copyFrom(other);
            hash_ = std::move(hash);
            equal_ = std::move(equal);
        }
        return *this;
    }
    HashContainer & operator=(HashContainer && other) noexcept {
        HashContainer(std::move(other)).swap(*this);
        return *this;
    }

    // An element with the key and a value made of the rest, unless there is one with this key already.
    template <typename K2, typename... Args>
    pair<iterator, bool> tryEmplace(K2 && key, Args &&... args) {
        unsigned const hash = hashOf(key);
        if (Node const * const node = nodeOf(hash, key))
            return {iterator(node, this), false};
        growForOne();
        Node * const node = buildPair(std::forward<K2>(key), std::forward<Args>(args)...);
        linkAtHead(node, hash);
        return {iterator(node, this), true};
    }

    Element & elementOf(K const & key) const {
        Node const * const node = nodeOf(key);
        if (!node)
            throwOutOfRange();
        return *hashElement<Element>(node);
    }

private:
    static K const & keyOf(Node const * node) {
        if constexpr (isSet)
            return *hashElement<Element>(node);
        else
            return hashElement<Element>(node)->first;
    }

    unsigned hashOf(K const & key) const {
        auto const hash = hash_(key);
        static_assert(std::is_unsigned_v<std::remove_cv_t<decltype(hash)>>, "a hash value is unsigned");
        if constexpr (sizeof hash > sizeof(unsigned))
            return foldHash(hash);
        else
            return hash;
    }

    bool matches(Node const * node, unsigned hash, K const & key) const {
        if constexpr (hashIsKey)
            return node->hash == hash;
        else
            return node->hash == hash && equal_(keyOf(node), key);
    }

    Node * nodeOf(unsigned hash, K const & key) const {
        if (buckets_.size() == 0)
            return nullptr;
        Node * node = bucketArray()[remainder(hash)];
        while (node && !matches(node, hash, key))
            node = node->next;
        return node;
    }
    Node * nodeOf(K const & key) const { return nodeOf(hashOf(key), key); }

    // The element behind those that are equal to the first.
    Node const * behindRun(Node const * first, K const & key) const {
        if (!first)
            return nullptr;
        Node const * last = first;
        while (!isUnique && last->next && matches(last->next, first->hash, key))
            last = last->next;
        return last->nextItem(this);
    }

    // Insertion

    template <typename... Args>
    insert_result emplaceElement(Args &&... args) {
        if constexpr (argumentsTellKey<K, isSet, Args...>()) {
            K const & key = toldKey<isSet>(args...);
            unsigned const hash = hashOf(key);
            growForOne(); // before the search: it turns the order of equal keys round
            Node * const equal = nodeOf(hash, key);
            if (isUnique && equal)
                return result(equal, false);
            return result(link(build(std::forward<Args>(args)...), hash, equal), true);
        } else {
            growForOne();
            Node * const node = build(std::forward<Args>(args)...);
            OnFailure drop([&] { destroyNode(node); });
            unsigned const hash = hashOf(keyOf(node));
            Node * const equal = nodeOf(hash, keyOf(node));
            if (isUnique && equal)
                return result(equal, false);
            drop.release();
            return result(link(node, hash, equal), true);
        }
    }

    Node * link(Node * node, unsigned hash, Node * equal) noexcept {
        linkIn(*this, node, hash, isUnique ? nullptr : equal);
        return node;
    }

    insert_result result(Node const * node, bool isNew) {
        if constexpr (isUnique)
            return {iterator(node, this), isNew};
        else
            return iterator(node, this);
    }
    static iterator positionOf(insert_result const & inserted) {
        if constexpr (isUnique)
            return inserted.first;
        else
            return inserted;
    }

    template <typename... Args>
    Node * build(Args &&... args) {
        Node * const node = allocateNode();
        OnFailure freeAgain([&] { freeRawNode(node); });
        std::construct_at(hashElement<Element>(node), std::forward<Args>(args)...);
        freeAgain.release();
        return node;
    }

    // Key and value each from arguments of their own, so that neither has to be moved.
    template <typename K2, typename... Args>
    Node * buildPair(K2 && key, Args &&... args) {
        using V = typename Element::second_type;
        Node * const node = allocateNode();
        OnFailure freeAgain([&] { freeRawNode(node); });
        auto * const bytes = reinterpret_cast<unsigned char *>(node);
        K * const first = reinterpret_cast<K *>(bytes + keyOffset);
        std::construct_at(first, std::forward<K2>(key));
        OnFailure destroyAgain([&] { std::destroy_at(first); });
        std::construct_at(reinterpret_cast<V *>(bytes + valueOffset()), std::forward<Args>(args)...);
        destroyAgain.release();
        freeAgain.release();
        return node;
    }

    // Of the other's elements those with equal keys follow each other: front is the first copy of such a run.
    void copyFrom(HashContainer const & other) {
        replaceNodes(other, [&](HashTableImpl & table) {
            Node * front = nullptr;
            Node const * last = nullptr;
            for (Node const * node = other.firstNode(); node; last = node, node = node->nextItem(&other)) {
                if (isUnique || (last && !other.matches(last, node->hash, keyOf(node))))
                    front = nullptr;
                Node * const copied = build(*hashElement<Element>(node));
                linkIn(table, copied, node->hash, front);
                if (!front)
                    front = copied;
            }
        });
    }

    void destroyNode(Node * node) noexcept {
        std::destroy_at(hashElement<Element>(node));
        freeRawNode(node);
    }

    // The table

    static constexpr std::size_t keyOffset = hashElementOffset<Element>;
    static constexpr std::size_t valueOffset() {
        if constexpr (isSet)
            return 0;
        else
            return keyOffset + offsetBehind(sizeof(K), alignof(typename Element::second_type));
    }

    static bool equalKeys(void const * nodeKey, void const * key) {
        return E()(*static_cast<K const *>(nodeKey), *static_cast<K const *>(key));
    }

    // Elements are copied by typed code only.
    static constexpr TypeUtil makeTable() {
        TypeUtil util = {};
        constexpr std::size_t alignment = std::max(alignof(Node), alignof(Element));
        util.nodeSize = countOf(offsetBehind(keyOffset + sizeof(Element), alignment));
        util.alignment = int(alignmentBeyondMalloc<Element>);
        util.hasValue = isSet ? 0 : 1;
        util.dataOffset = int(keyOffset);
        util.keyOffset = int(keyOffset);
        util.valueOffset = int(valueOffset());
        // A comparison with a state cannot be reached without the table.
        if constexpr (std::is_empty_v<E> && std::is_default_constructible_v<E>)
            util.equal = &equalKeys;
        util.destructKey = ElementFunctions<K>::destruct;
        if constexpr (!isSet)
            util.destructValue = ElementFunctions<typename Element::second_type>::destruct;
        return util;
    }
    static TypeUtil const sTable;

    [[no_unique_address]] H hash_;
    [[no_unique_address]] E equal_;
};

template <typename K, typename Element, typename H, typename E, Keys keys>
constexpr HashTableImpl::TypeUtil HashContainer<K, Element, H, E, keys>::sTable = makeTable();

// Equal when they have the same elements, in whatever order.
template <typename K, typename Element, typename H, typename E, Keys keys>
bool operator==(HashContainer<K, Element, H, E, keys> const & a, HashContainer<K, Element, H, E, keys> const & b) {
    if (a.size() != b.size())
        return false;
    auto const keyAt = [](auto const & it) -> K const & {
        if constexpr (std::is_same_v<K, Element>)
            return *it;
        else
            return it->first;
    };
    for (auto it = a.begin(); it != a.end();) {
        auto const ours = a.equal_range(keyAt(it));
        auto const theirs = b.equal_range(keyAt(it));
        if (!std::is_permutation(ours.first, ours.second, theirs.first, theirs.second))
            return false;
        it = ours.second;
    }
    return true;
}

} // namespace detail

// Erases the elements for which the predicate holds; gives their number.
template <typename K, typename Element, typename H, typename E, detail::Keys keys, typename Predicate>
int erase_if(detail::HashContainer<K, Element, H, E, keys> & container, Predicate predicate) {
    int const before = container.size();
    for (auto it = container.begin(); it != container.end();)
        it = predicate(std::as_const(*it)) ? container.erase(it) : std::next(it);
    return before - container.size();
}

} // namespace qv

#endif
