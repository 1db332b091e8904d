// What qv::map, qv::set and their multi forms share: the typed shell over qv::RBTreeImpl. Clients include the
// containers themselves.

#ifndef qvTreeContainer_h
#define qvTreeContainer_h

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iterator>

#include "Base/Containers/qvContainerSupport.h"
#include "Base/Containers/qvLess.h"
#include "Base/Containers/qvPair.h"
#include "Base/Containers/qvRBTreeImpl.h"
#include "Base/Containers/qvRBTreePlace.h"
#include "Base/Containers/qvVector.h"

namespace qv {

namespace detail {

template <typename Element>
inline constexpr std::size_t treeElementOffset = offsetBehind(RBTreeImpl::Node::usedSize, alignof(Element));

template <typename Element>
Element * treeElement(RBTreeImpl::Node const * node) {
    auto * const bytes = reinterpret_cast<unsigned char *>(const_cast<RBTreeImpl::Node *>(node));
    return reinterpret_cast<Element *>(bytes + treeElementOffset<Element>);
}

template <typename C>
concept Transparent = requires {
    typename C::is_transparent;
};

template <typename K, typename Element, typename C, Keys keys>
class TreeContainer;

} // namespace detail

// A position in a tree container; it stays valid until its element is erased.
template <typename Element, bool isConst>
class TreeIterator {
    using Node = RBTreeImpl::Node;

public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<isConst, Element const &, Element &>;
    using pointer = std::conditional_t<isConst, Element const *, Element *>;

    TreeIterator() = default;
    template <bool otherConst>
    requires(isConst && !otherConst) TreeIterator(TreeIterator<Element, otherConst> const & other)
        : node_(other.node_) {}

    reference operator*() const { return *detail::treeElement<Element>(node_); }
    pointer operator->() const { return detail::treeElement<Element>(node_); }

    TreeIterator & operator++() {
        node_ = node_->next();
        return *this;
    }
    TreeIterator operator++(int) { return TreeIterator(std::exchange(node_, node_->next())); }
    TreeIterator & operator--() {
        node_ = node_->prev();
        return *this;
    }
    TreeIterator operator--(int) { return TreeIterator(std::exchange(node_, node_->prev())); }

    friend bool operator==(TreeIterator const & a, TreeIterator const & b) { return a.node_ == b.node_; }

private:
    template <typename, typename, typename, detail::Keys>
    friend class detail::TreeContainer;
    friend class TreeIterator<Element, !isConst>;

    explicit TreeIterator(Node const * node) : node_(const_cast<Node *>(node)) {}

    Node * node_ = nullptr;
};

namespace detail {

// The element is the key itself, for sets, or a pair with the key as first.
template <typename K, typename Element, typename C, Keys keys>
class TreeContainer : private RBTreeImpl {
    static constexpr bool isSet = std::is_same_v<K, Element>;
    static constexpr bool isUnique = keys == Keys::areUnique;

public:
    using key_type = K;
    using value_type = Element;
    using key_compare = C;
    using size_type = int;
    using difference_type = std::ptrdiff_t;
    using reference = Element &;
    using const_reference = Element const &;
    using pointer = Element *;
    using const_pointer = Element const *;
    using iterator = TreeIterator<Element, isSet>;
    using const_iterator = TreeIterator<Element, true>;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;
    // What an insertion gives: the position, and where keys are unique, whether the element is new.
    using insert_result = std::conditional_t<isUnique, pair<iterator, bool>, iterator>;

    iterator begin() { return iterator(header_.left); }
    iterator end() { return iterator(&header_); }
    const_iterator begin() const { return const_iterator(header_.left); }
    const_iterator end() const { return const_iterator(&header_); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }

    bool empty() const { return size_ == 0; }
    using RBTreeImpl::size;
    static constexpr int max_size() { return std::numeric_limits<int>::max(); }
    C key_comp() const { return compare_; }

    // Search. With an ordering that is transparent, keys of other types serve too.

    iterator find(K const & key) { return iterator(nodeOf(key)); }
    const_iterator find(K const & key) const { return const_iterator(nodeOf(key)); }
    bool contains(K const & key) const { return nodeOf(key) != &header_; }
    int count(K const & key) const { return countOf(key); }
    iterator lower_bound(K const & key) { return iterator(lowerBoundOf(key)); }
    const_iterator lower_bound(K const & key) const { return const_iterator(lowerBoundOf(key)); }
    iterator upper_bound(K const & key) { return iterator(upperBoundOf(key)); }
    const_iterator upper_bound(K const & key) const { return const_iterator(upperBoundOf(key)); }
    pair<iterator, iterator> equal_range(K const & key) { return {lower_bound(key), upper_bound(key)}; }
    pair<const_iterator, const_iterator> equal_range(K const & key) const {
        return {lower_bound(key), upper_bound(key)};
    }

    // A key of another type may be equal to several, where keys are unique too.
    template <typename Q>
    requires Transparent<C> iterator find(Q const & key) { return iterator(nodeOf(key)); }
    template <typename Q>
    requires Transparent<C> const_iterator find(Q const & key)
    const { return const_iterator(nodeOf(key)); }
    template <typename Q>
    requires Transparent<C>
    bool contains(Q const & key) const { return nodeOf(key) != &header_; }
    template <typename Q>
    requires Transparent<C>
    int count(Q const & key) const { return countOf(key); }
    template <typename Q>
    requires Transparent<C> iterator lower_bound(Q const & key) { return iterator(lowerBoundOf(key)); }
    template <typename Q>
    requires Transparent<C> const_iterator lower_bound(Q const & key)
    const { return const_iterator(lowerBoundOf(key)); }
    template <typename Q>
    requires Transparent<C> iterator upper_bound(Q const & key) { return iterator(upperBoundOf(key)); }
    template <typename Q>
    requires Transparent<C> const_iterator upper_bound(Q const & key)
    const { return const_iterator(upperBoundOf(key)); }
    template <typename Q>
    requires Transparent<C> pair<iterator, iterator> equal_range(Q const & key) {
        return {lower_bound(key), upper_bound(key)};
    }
    template <typename Q>
    requires Transparent<C> pair<const_iterator, const_iterator> equal_range(Q const & key)
    const { return {lower_bound(key), upper_bound(key)}; }

    // Insertion. Where keys are unique, an element with the key stays as it is; otherwise the new one goes behind it. A
    // hint is a position next to which the element is thought to belong; when that is so there is no search.

    insert_result insert(Element const & element) { return emplaceElement(element); }
    insert_result insert(Element && element) { return emplaceElement(std::move(element)); }
    iterator insert(const_iterator hint, Element const & element) { return emplaceElementAt(hint, element); }
    iterator insert(const_iterator hint, Element && element) { return emplaceElementAt(hint, std::move(element)); }
    void insert(std::initializer_list<Element> elements) { insert(elements.begin(), elements.end()); }
    template <InputIterator I>
    void insert(I first, I last) {
        // Where keys repeat, a walk through this very container would come to what it has inserted.
        if constexpr ((std::is_same_v<I, iterator> || std::is_same_v<I, const_iterator>)&&keys == Keys::mayRepeat) {
            qv::vector<Element const *> elements;
            for (; first != last; ++first)
                elements.append(std::addressof(*first));
            for (Element const * const element : elements)
                emplace_hint(end(), *element);
        } else {
            for (; first != last; ++first)
                emplace_hint(end(), *first);
        }
    }

    template <typename... Args>
    insert_result emplace(Args &&... args) {
        return emplaceElement(std::forward<Args>(args)...);
    }
    template <typename... Args>
    iterator emplace_hint(const_iterator hint, Args &&... args) {
        return emplaceElementAt(hint, std::forward<Args>(args)...);
    }

    // Removal. Gives the element behind the last removed, or how many were removed.

    iterator erase(const_iterator pos) noexcept {
        Node * const behind = pos.node_->next();
        eraseTyped(pos.node_);
        return iterator(behind);
    }
    iterator erase(iterator pos) noexcept requires(!isSet) { return erase(const_iterator(pos)); }
    iterator erase(const_iterator first, const_iterator last) noexcept {
        eraseNodesRange(first.node_, last.node_);
        return iterator(last.node_);
    }
    int erase(K const & key) {
        if constexpr (isUnique) {
            Node * const node = nodeOf(key);
            if (node == &header_)
                return 0;
            eraseTyped(node);
            return 1;
        } else {
            return eraseRangeOf(key);
        }
    }
    template <typename Q>
    requires(Transparent<C> && !std::is_convertible_v<Q const &, const_iterator>) int erase(Q const & key) {
        return eraseRangeOf(key);
    }
    using RBTreeImpl::clear;

    void swap(TreeContainer & other) noexcept {
        RBTreeImpl::swap(other);
        std::swap(compare_, other.compare_);
    }
    friend void swap(TreeContainer & a, TreeContainer & b) noexcept { a.swap(b); }

    // How many nodes are taken from the heap at a time; only before the first insertion. The default is 10.
    using RBTreeImpl::setNumElementsInBlock;
    using RBTreeImpl::validate;

protected:
    explicit TreeContainer(C const & compare) : RBTreeImpl(table()), compare_(compare) {}
    TreeContainer(TreeContainer const & other) : RBTreeImpl(copyTable()), compare_(other.compare_) {
        RBTreeImpl::copy(other);
    }
    TreeContainer(TreeContainer && other) noexcept : RBTreeImpl(table()), compare_(other.compare_) {
        RBTreeImpl::swap(other);
    }
    ~TreeContainer() = default;

    TreeContainer & operator=(TreeContainer const & other) {
        // The other may be gone with the old elements, and the old ordering is for these.
        C compare = other.compare_;
        typeUtil_ = copyTable();
        RBTreeImpl::copy(other);
        compare_ = std::move(compare);
        return *this;
    }
    TreeContainer & operator=(TreeContainer && other) noexcept {
        TreeContainer(std::move(other)).swap(*this);
        return *this;
    }

    // An element with the key and a value made of the rest, unless there is one with this key already.
    template <typename K2, typename... Args>
    pair<iterator, bool> tryEmplace(K2 && key, Args &&... args) {
        RBTreePlace const place = uniquePlace(key);
        if (place.kind == RBTreePlace::isTaken)
            return {iterator(place.node), false};
        return {link(place, buildPair(std::forward<K2>(key), std::forward<Args>(args)...)), true};
    }
    template <typename K2, typename... Args>
    iterator tryEmplaceAt(const_iterator hint, K2 && key, Args &&... args) {
        RBTreePlace const place = uniquePlaceFrom(hint.node_, key);
        if (place.kind == RBTreePlace::isTaken)
            return iterator(place.node);
        return link(place, buildPair(std::forward<K2>(key), std::forward<Args>(args)...));
    }

    Element & elementOf(K const & key) const {
        Node * const node = nodeOf(key);
        if (node == &header_)
            throwOutOfRange();
        return *treeElement<Element>(node);
    }

private:
    // Keys whose order tells at once whether they are equal, so that a search ends where it meets its own; see isQuick.
    static constexpr bool isThreeWay = isUnique && !std::is_scalar_v<K> && std::is_same_v<C, less<K>> &&
                                       std::three_way_comparable<K, std::weak_ordering>;

    Node * nodeOf(K const & key) const requires isThreeWay {
        Node * node = header_.parent;
        while (node) {
            auto const order = key <=> keyOf(node);
            if (order == 0)
                return node;
            node = order < 0 ? node->left : node->right;
        }
        return const_cast<Node *>(&header_);
    }
    template <typename Q>
    Node * nodeOf(Q const & key) const {
        Node * const node = lowerBoundOf(key);
        return node == &header_ || compare_(key, keyOf(node)) ? const_cast<Node *>(&header_) : node;
    }

    static K const & keyOf(Node const * node) {
        if constexpr (isSet)
            return *treeElement<Element>(node);
        else
            return treeElement<Element>(node)->first;
    }

    // Search

    // Where the way down goes from a node is as good as random, so that a branch is mispredicted every second time, and
    // the compiler chooses branches where it is given a choice. Keys that are compared in an instruction do better with
    // the child by its place and the bound by a mask (a search takes two thirds of the time); with others the processor
    // had better guess and go ahead during the comparison.
    static constexpr bool isQuick = std::is_scalar_v<K>;

    static Node * childOf(Node const * node, bool right) {
        static_assert(offsetof(Node, right) == offsetof(Node, left) + sizeof(Node *));
        if constexpr (!isQuick)
            return right ? node->right : node->left;
        auto const * const left = reinterpret_cast<unsigned char const *>(&node->left);
        return *reinterpret_cast<Node * const *>(left + (right ? sizeof(Node *) : 0));
    }
    static Node * firstIf(bool condition, Node * first, Node * second) {
        if constexpr (!isQuick)
            return condition ? first : second;
        std::uintptr_t const mask = std::uintptr_t(0) - std::uintptr_t(condition);
        std::uintptr_t const other = reinterpret_cast<std::uintptr_t>(second);
        return reinterpret_cast<Node *>(other ^ ((reinterpret_cast<std::uintptr_t>(first) ^ other) & mask));
    }

    template <typename Q>
    Node * lowerBoundOf(Q const & key) const {
        Node * bound = const_cast<Node *>(&header_);
        for (Node * node = header_.parent; node;) {
            bool const before = compare_(keyOf(node), key);
            bound = firstIf(before, bound, node);
            node = childOf(node, before);
        }
        return bound;
    }

    template <typename Q>
    Node * upperBoundOf(Q const & key) const {
        Node * bound = const_cast<Node *>(&header_);
        for (Node * node = header_.parent; node;) {
            bool const behind = compare_(key, keyOf(node));
            bound = firstIf(behind, node, bound);
            node = childOf(node, !behind);
        }
        return bound;
    }

    template <typename Q>
    int countOf(Q const & key) const {
        return sDistanceBetween(lowerBoundOf(key), upperBoundOf(key));
    }

    RBTreePlace uniquePlace(K const & key) requires isThreeWay {
        Node * parent = &header_;
        bool left = true;
        for (Node * node = header_.parent; node; node = left ? node->left : node->right) {
            auto const order = key <=> keyOf(node);
            if (order == 0)
                return RBTreePlace::taken(node);
            parent = node;
            left = order < 0;
        }
        return RBTreePlace::free(parent, left);
    }
    template <typename Q>
    RBTreePlace uniquePlace(Q const & key) {
        Node * parent = &header_;
        Node * bound = &header_; // the first node on the way that is not before the key
        bool before = false;
        for (Node * node = header_.parent; node;) {
            parent = node;
            before = compare_(keyOf(node), key);
            bound = firstIf(before, bound, node);
            node = childOf(node, before);
        }
        if (bound != &header_ && !compare_(key, keyOf(bound)))
            return RBTreePlace::taken(bound);
        return RBTreePlace::free(parent, !before);
    }

    template <typename Q>
    RBTreePlace multiPlace(Q const & key) const {
        Node * parent = const_cast<Node *>(&header_);
        bool left = true;
        for (Node * node = header_.parent; node;) {
            parent = node;
            left = compare_(key, keyOf(node));
            node = childOf(node, !left);
        }
        return RBTreePlace::free(parent, left);
    }

    template <typename Q>
    RBTreePlace uniquePlaceFrom(Node * hint, Q const & key) {
        RBTreePlace const place = uniquePlaceAt(
            *this, hint, [&](Node * node) { return compare_(key, keyOf(node)); },
            [&](Node * node) { return compare_(keyOf(node), key); });
        return place.kind == RBTreePlace::isElsewhere ? uniquePlace(key) : place;
    }

    template <typename Q>
    RBTreePlace placeFor(Q const & key) {
        if constexpr (isUnique)
            return uniquePlace(key);
        else
            return multiPlace(key);
    }

    template <typename Q>
    RBTreePlace placeFrom(Node * hint, Q const & key) {
        if constexpr (isUnique) {
            return uniquePlaceFrom(hint, key);
        } else {
            RBTreePlace const place =
                multiPlaceAt(*this, hint, [&](Node * node) { return compare_(key, keyOf(node)); });
            return place.kind == RBTreePlace::isElsewhere ? multiPlace(key) : place;
        }
    }

    // Insertion

    template <typename... Args>
    insert_result emplaceElement(Args &&... args) {
        if constexpr (argumentsTellKey<K, isSet, Args...>()) {
            RBTreePlace const place = placeFor(toldKey<isSet>(args...));
            if (place.kind == RBTreePlace::isTaken)
                return result(iterator(place.node), false);
            return result(link(place, build(std::forward<Args>(args)...)), true);
        } else {
            Node * const node = build(std::forward<Args>(args)...);
            return linkOrDrop(node, [&] { return placeFor(keyOf(node)); });
        }
    }

    template <typename... Args>
    iterator emplaceElementAt(const_iterator hint, Args &&... args) {
        if constexpr (argumentsTellKey<K, isSet, Args...>()) {
            RBTreePlace const place = placeFrom(hint.node_, toldKey<isSet>(args...));
            if (place.kind == RBTreePlace::isTaken)
                return iterator(place.node);
            return link(place, build(std::forward<Args>(args)...));
        } else {
            Node * const node = build(std::forward<Args>(args)...);
            return positionOf(linkOrDrop(node, [&] { return placeFrom(hint.node_, keyOf(node)); }));
        }
    }

    static insert_result result(iterator position, bool isNew) {
        if constexpr (isUnique)
            return {position, isNew};
        else
            return position;
    }
    static iterator positionOf(insert_result const & inserted) {
        if constexpr (isUnique)
            return inserted.first;
        else
            return inserted;
    }

    template <typename FindPlace>
    insert_result linkOrDrop(Node * node, FindPlace findPlace) {
        OnFailure drop([&] { destroyNode(node); });
        RBTreePlace const place = findPlace();
        if (place.kind == RBTreePlace::isTaken)
            return result(iterator(place.node), false);
        drop.release();
        return result(link(place, node), true);
    }

    iterator link(RBTreePlace const & place, Node * node) {
        linkNode(place.node, place.left, node);
        return iterator(node);
    }

    template <typename... Args>
    Node * build(Args &&... args) {
        Node * const node = allocateNode();
        OnFailure freeAgain([&] { freeNode(node); });
        std::construct_at(treeElement<Element>(node), std::forward<Args>(args)...);
        freeAgain.release();
        return node;
    }

    // Key and value each from arguments of their own, so that neither has to be moved.
    template <typename K2, typename... Args>
    Node * buildPair(K2 && key, Args &&... args) {
        using V = typename Element::second_type;
        Node * const node = allocateNode();
        OnFailure freeAgain([&] { freeNode(node); });
        K * const first = static_cast<K *>(keyPtrOfNode(node));
        std::construct_at(first, std::forward<K2>(key));
        OnFailure destroyAgain([&] { std::destroy_at(first); });
        std::construct_at(static_cast<V *>(valuePtrOfNode(node)), std::forward<Args>(args)...);
        destroyAgain.release();
        freeAgain.release();
        return node;
    }

    // Removal

    void destroyNode(Node * node) noexcept {
        std::destroy_at(treeElement<Element>(node));
        freeNode(node);
    }
    template <typename Q>
    int eraseRangeOf(Q const & key) {
        int const before = size_;
        eraseNodesRange(lowerBoundOf(key), upperBoundOf(key));
        return before - size_;
    }
    void eraseTyped(Node * node) noexcept {
        unlinkNode(node);
        destroyNode(node);
    }

    // The tables

    static bool lessKeys(void const * a, void const * b) {
        return C()(*static_cast<K const *>(a), *static_cast<K const *>(b));
    }
    static void destructSubtree(RBTreeImpl * tree, Node * root) {
        while (root) {
            destructSubtree(tree, root->right);
            Node * const left = root->left;
            std::destroy_at(treeElement<Element>(root));
            tree->freeNode(root);
            root = left;
        }
    }
    static TreeContainer const & typed(RBTreeImpl const * tree) { return *static_cast<TreeContainer const *>(tree); }
    static Node * findLowerBound(RBTreeImpl const * tree, void const * key) {
        return typed(tree).lowerBoundOf(*static_cast<K const *>(key));
    }
    static Node * findUpperBound(RBTreeImpl const * tree, void const * key) {
        return typed(tree).upperBoundOf(*static_cast<K const *>(key));
    }
    static bool findInsertPosition(RBTreeImpl const * tree, void const * key, Node ** parent) {
        RBTreePlace const place = typed(tree).multiPlace(*static_cast<K const *>(key));
        *parent = place.node;
        return place.left;
    }

    static constexpr TypeUtil makeTable() {
        TypeUtil util = {};
        constexpr std::size_t keyOffset = treeElementOffset<Element>;
        // A node is at least as aligned as a pointer, and so has to be the one behind it in a block.
        constexpr std::size_t alignment = std::max(alignof(Node), alignof(Element));
        util.nodeSize = detail::countOf(offsetBehind(keyOffset + sizeof(Element), alignment));
        util.alignment = int(alignmentBeyondMalloc<Element>);
        util.keyOffset = int(keyOffset);
        // An ordering with a state cannot be reached without the tree: such trees are only ever searched by typed code.
        if constexpr (std::is_empty_v<C> && std::is_default_constructible_v<C>)
            util.less = &lessKeys;
        util.destructKey = ElementFunctions<K>::destruct;
        if constexpr (!isSet) {
            using V = typename Element::second_type;
            util.valueOffset = int(keyOffset + offsetBehind(sizeof(K), alignof(V)));
            util.destructValue = ElementFunctions<V>::destruct;
        }
        util.destructSubtree = &destructSubtree;
        util.lowerBound = &findLowerBound;
        util.upperBound = &findUpperBound;
        util.insertPosition = &findInsertPosition;
        return util;
    }
    static constexpr TypeUtil makeCopyTable() {
        TypeUtil util = makeTable();
        util.copyKey = &ElementFunctions<K>::copyConstruct;
        if constexpr (!isSet) {
            using V = typename Element::second_type;
            util.copyValue = &ElementFunctions<V>::copyConstruct;
            if constexpr (std::is_default_constructible_v<V>)
                util.constructValue = &ElementFunctions<V>::valueConstruct;
        }
        return util;
    }
    static TypeUtil const sTable;
    static TypeUtil const sCopyTable;

    static constexpr TypeUtil const * table() { return &sTable; }
    // The table with the copy functions. It comes into play with the first copy only, so that a container of elements
    // that cannot be copied compiles.
    static constexpr TypeUtil const * copyTable() { return &sCopyTable; }

    [[no_unique_address]] C compare_;
};

template <typename K, typename Element, typename C, Keys keys>
constexpr RBTreeImpl::TypeUtil TreeContainer<K, Element, C, keys>::sTable = makeTable();

template <typename K, typename Element, typename C, Keys keys>
constexpr RBTreeImpl::TypeUtil TreeContainer<K, Element, C, keys>::sCopyTable = makeCopyTable();

// Equal when the elements are, in their order.
template <typename K, typename Element, typename C, Keys keys>
bool operator==(TreeContainer<K, Element, C, keys> const & a, TreeContainer<K, Element, C, keys> const & b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}
template <typename K, typename Element, typename C, Keys keys>
requires Ordered<Element>
auto operator<=>(TreeContainer<K, Element, C, keys> const & a, TreeContainer<K, Element, C, keys> const & b) {
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(), ThreeWay());
}

} // namespace detail

// Erases the elements for which the predicate holds; gives their number.
template <typename K, typename Element, typename C, detail::Keys keys, typename Predicate>
int erase_if(detail::TreeContainer<K, Element, C, keys> & container, Predicate predicate) {
    int const before = container.size();
    for (auto it = container.begin(); it != container.end();)
        it = predicate(std::as_const(*it)) ? container.erase(it) : std::next(it);
    return before - container.size();
}

} // namespace qv

#endif
