// qv::list<T>: the doubly linked list of the library's interfaces.

#ifndef qvList_h
#define qvList_h

#include <algorithm>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>

#include "Base/Containers/qvContainerSupport.h"
#include "Base/Containers/qvListImpl.h"

namespace qv {

namespace detail {

template <typename T>
inline constexpr std::size_t listElementOffset = offsetBehind(sizeof(ListImpl::Node), alignof(T));

template <typename T>
T * listElement(ListImpl::Node * node) {
    return reinterpret_cast<T *>(reinterpret_cast<unsigned char *>(node) + listElementOffset<T>);
}
template <typename T>
T const * listElement(ListImpl::Node const * node) {
    return reinterpret_cast<T const *>(reinterpret_cast<unsigned char const *>(node) + listElementOffset<T>);
}

} // namespace detail

template <typename T>
class list;

// A position in a qv::list<T>; it stays valid until its element is erased, also when the element moves to another list.
template <typename T, bool isConst>
class ListIterator {
    using Node = std::conditional_t<isConst, ListImpl::Node const, ListImpl::Node>;

public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = T;
    using difference_type = std::ptrdiff_t;
    using reference = std::conditional_t<isConst, T const &, T &>;
    using pointer = std::conditional_t<isConst, T const *, T *>;

    ListIterator() = default;
    template <bool otherConst>
    requires(isConst && !otherConst) ListIterator(ListIterator<T, otherConst> const & other) : node_(other.node_) {}

    reference operator*() const { return *detail::listElement<T>(node_); }
    pointer operator->() const { return detail::listElement<T>(node_); }

    ListIterator & operator++() {
        node_ = node_->next;
        return *this;
    }
    ListIterator operator++(int) { return ListIterator(std::exchange(node_, node_->next)); }
    ListIterator & operator--() {
        node_ = node_->prev;
        return *this;
    }
    ListIterator operator--(int) { return ListIterator(std::exchange(node_, node_->prev)); }

    friend bool operator==(ListIterator const & a, ListIterator const & b) { return a.node_ == b.node_; }

private:
    friend class list<T>;
    friend class ListIterator<T, !isConst>;

    explicit ListIterator(Node * node) : node_(node) {}

    Node * node_ = nullptr;
};

/*
 * A doubly linked list. It may cross the boundary of a module. Counts are of type int.
 *
 * Elements stay where they are as long as they live, and iterators stay valid with them, also across splice, merge,
 * sort and swap; only end() belongs to the list object. T need not be copyable as long as nothing copies it, nor
 * movable.
 *
 * unique keeps the last element of each run of equal ones, where the standard list keeps the first. Failures:
 * std::bad_alloc; std::length_error for more than 2^31 - 1 elements. An insertion that fails leaves the list as it was.
 */
template <typename T>
class list : private ListImpl {
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
    using iterator = ListIterator<T, false>;
    using const_iterator = ListIterator<T, true>;
    using reverse_iterator = std::reverse_iterator<iterator>;
    using const_reverse_iterator = std::reverse_iterator<const_iterator>;

    list() noexcept : ListImpl(table()) {}
    explicit list(int n) : list() {
        for (checkCount(n); n > 0; --n)
            emplace_back();
    }
    list(int n, T const & value) : list() { insert(end(), n, value); }
    list(std::initializer_list<T> values) : list(values.begin(), values.end()) {}
    template <detail::InputIterator I>
    list(I first, I last) : list() {
        for (; first != last; ++first)
            emplace_back(*first);
    }
    list(list const & other) : ListImpl(copyTable()) { append(other); }
    list(list && other) noexcept : ListImpl(table()) { swap(other); }
    ~list() = default;

    list & operator=(list const & other) {
        copying().copy(other);
        return *this;
    }
    list & operator=(list && other) noexcept {
        list(std::move(other)).swap(*this);
        return *this;
    }
    list & operator=(std::initializer_list<T> values) {
        assign(values.begin(), values.end());
        return *this;
    }

    // The nodes that are there stay in use, each with a new element, unless T can neither be copied nor moved.
    void assign(std::initializer_list<T> values) { assign(values.begin(), values.end()); }
    void assign(int n, T const & value) {
        list copies(n, value);
        replaceBy(copies);
    }
    template <detail::InputIterator I>
    void assign(I first, I last) {
        if constexpr (std::same_as<I, iterator> || std::same_as<I, const_iterator>) {
            Node const * const firstNode = first.node_;
            Node const * const lastNode = last.node_;
            copying().assign(firstNode, lastNode);
        } else {
            // They gather first: the iterators may lead through this list.
            list copies(first, last);
            replaceBy(copies);
        }
    }

    // Elements

    iterator begin() { return iterator(ListImpl::begin()); }
    iterator end() { return iterator(ListImpl::end()); }
    const_iterator begin() const { return const_iterator(ListImpl::begin()); }
    const_iterator end() const { return const_iterator(ListImpl::end()); }
    const_iterator cbegin() const { return begin(); }
    const_iterator cend() const { return end(); }
    reverse_iterator rbegin() { return reverse_iterator(end()); }
    reverse_iterator rend() { return reverse_iterator(begin()); }
    const_reverse_iterator rbegin() const { return const_reverse_iterator(end()); }
    const_reverse_iterator rend() const { return const_reverse_iterator(begin()); }
    const_reverse_iterator crbegin() const { return rbegin(); }
    const_reverse_iterator crend() const { return rend(); }

    // The list must not be empty.
    T & front() { return *detail::listElement<T>(head_.next); }
    T const & front() const { return *detail::listElement<T>(head_.next); }
    T & back() { return *detail::listElement<T>(head_.prev); }
    T const & back() const { return *detail::listElement<T>(head_.prev); }

    using ListImpl::empty;
    using ListImpl::size;
    static constexpr int max_size() { return std::numeric_limits<int>::max(); }

    // The first element that equals the value, or the end.
    iterator find(T const & value) { return iterator(ListImpl::find(std::addressof(value), &findElement)); }
    const_iterator find(T const & value) const {
        return const_iterator(ListImpl::find(std::addressof(value), &findElement));
    }
    bool contains(T const & value) const { return find(value) != end(); }

    // Insertion. In front of pos, where there is one; the first new element, or pos when there is none.

    void append(T const & value) { emplace_back(value); }
    void append(T && value) { emplace_back(std::move(value)); }
    void push_back(T const & value) { emplace_back(value); }
    void push_back(T && value) { emplace_back(std::move(value)); }
    void prepend(T const & value) { emplace_front(value); }
    void prepend(T && value) { emplace_front(std::move(value)); }
    void push_front(T const & value) { emplace_front(value); }
    void push_front(T && value) { emplace_front(std::move(value)); }

    template <typename... Args>
    T & emplace_back(Args &&... args) {
        return *emplace(end(), std::forward<Args>(args)...);
    }
    template <typename... Args>
    T & emplace_front(Args &&... args) {
        return *emplace(begin(), std::forward<Args>(args)...);
    }
    template <typename... Args>
    iterator emplace(const_iterator pos, Args &&... args) {
        Node * const node = allocateNode();
        detail::OnFailure freeAgain([node] { freeNode(node); });
        std::construct_at(detail::listElement<T>(node), std::forward<Args>(args)...);
        freeAgain.release();
        return iterator(ListImpl::insert(mutableNode(pos), node));
    }

    iterator insert(const_iterator pos, T const & value) { return emplace(pos, value); }
    iterator insert(const_iterator pos, T && value) { return emplace(pos, std::move(value)); }
    iterator insert(const_iterator pos, int n, T const & value) {
        list copies;
        for (checkCount(n); n > 0; --n)
            copies.emplace_back(value);
        return spliceAll(pos, copies);
    }
    iterator insert(const_iterator pos, std::initializer_list<T> values) {
        return insert(pos, values.begin(), values.end());
    }
    template <detail::InputIterator I>
    iterator insert(const_iterator pos, I first, I last) {
        list copies(first, last);
        return spliceAll(pos, copies);
    }

    // Copies of all elements of another list, or of this one.
    void append(list const & other) { copying().append(static_cast<ListImpl const &>(other)); }
    void prepend(list const & other) { copying().prepend(static_cast<ListImpl const &>(other)); }

    void resize(int n) {
        checkCount(n);
        cutTo(n);
        while (size_ < n)
            emplace_back();
    }
    void resize(int n, T const & value) {
        checkCount(n);
        if (n > size_)
            insert(end(), n - size_, value);
        cutTo(n);
    }

    // Removal. Gives the element behind the last removed.

    iterator erase(const_iterator pos) noexcept {
        Node * const node = mutableNode(pos);
        Node * const behind = unlink_inline(node);
        std::destroy_at(detail::listElement<T>(node));
        freeNode(node);
        return iterator(behind);
    }
    iterator erase(const_iterator first, const_iterator last) noexcept {
        return iterator(ListImpl::erase(mutableNode(first), mutableNode(last)));
    }
    // The list must not be empty.
    void pop_front() noexcept { erase(begin()); }
    void pop_back() noexcept { erase(--end()); }
    void eraseFront() noexcept { pop_front(); }
    void eraseBack() noexcept { pop_back(); }
    using ListImpl::clear;

    // Erase all elements that equal the value, or for which the predicate holds; give their number.
    int remove(T const & value) {
        int const before = size_;
        ListImpl::erase(std::addressof(value), &findElementFrom);
        return before - size_;
    }
    template <typename Predicate>
    int remove_if(Predicate predicate) {
        int const before = size_;
        ListImpl::erase(std::addressof(predicate), &findMatchFrom<Predicate>);
        return before - size_;
    }

    // Of each run of elements that equal their neighbours only the last stays. Give the number of elements erased.
    int unique() { return unique(std::equal_to<>()); }
    template <typename Equal>
    int unique(Equal equal) {
        int const before = size_;
        for (iterator it = begin(), behind = it; it != end() && ++behind != end(); it = behind) {
            if (equal(std::as_const(*it), std::as_const(*behind)))
                erase(it);
        }
        return before - size_;
    }

    // Moving nodes

    using ListImpl::reverse;
    // Each keeps its own table of functions: the other's may lie in a module that goes first.
    void swap(list & other) noexcept { ListImpl::swap(other); }
    friend void swap(list & a, list & b) noexcept { a.swap(b); }

    // Take elements out of another list, which may be this one, and put them in front of pos, which must not lie in the
    // range.
    void splice(const_iterator pos, list & other) { ListImpl::splice(mutableNode(pos), other); }
    void splice(const_iterator pos, list && other) { splice(pos, other); }
    void splice(const_iterator pos, list & other, const_iterator element) {
        ListImpl::splice(mutableNode(pos), other, mutableNode(element));
    }
    void splice(const_iterator pos, list && other, const_iterator element) { splice(pos, other, element); }
    void splice(const_iterator pos, list & other, const_iterator first, const_iterator last) {
        ListImpl::splice(mutableNode(pos), other, mutableNode(first), mutableNode(last));
    }
    void splice(const_iterator pos, list && other, const_iterator first, const_iterator last) {
        splice(pos, other, first, last);
    }

    // Takes all elements of a sorted list into this sorted one. Of equal elements those of this one come first.
    template <typename Less = std::less<>>
    void merge(list & other, Less less = {}) {
        if (this != &other)
            ListImpl::merge(other, std::addressof(less), &mergeSorted<Less>);
    }
    template <typename Less = std::less<>>
    void merge(list && other, Less less = {}) {
        merge(other, less);
    }

    // Equal elements keep their order. Takes some memory meanwhile when there is any. When less throws, the list has
    // all its elements, in whatever order.
    template <typename Less = std::less<>>
    void sort(Less less = {}) {
        if (size_ < leastForArray || !sortThroughArray(less))
            ListImpl::sort(std::addressof(less), &mergeSorted<Less>);
    }

    using ListImpl::validate;

private:
    // Numbers and pointers travel with their nodes, so that nothing but the array is looked at.
    static constexpr bool sortsCopies = std::is_scalar_v<T>;
    struct PlacedElement {
        T element;
        Node * node;
    };
    using SortItem = std::conditional_t<sortsCopies, PlacedElement, Node *>;
    static constexpr int leastForArray = 16;

    // Sorts an array of the nodes and links them anew: memory is read in the order in which it lies, and elements can
    // be fetched ahead, where a walk along the links waits for each. False, with nothing done, when there is no room.
    template <typename Less>
    bool sortThroughArray(Less & less) {
        std::unique_ptr<SortItem[]> const items(new (std::nothrow) SortItem[std::size_t(size_)]);
        if (items == nullptr)
            return false;
        SortItem * end = items.get();
        for (Node * node = head_.next; node != &head_; node = node->next, ++end) {
            if constexpr (sortsCopies)
                *end = {*detail::listElement<T>(node), node};
            else
                *end = node;
        }
        std::stable_sort(items.get(), end, [&less](SortItem const & a, SortItem const & b) {
            if constexpr (sortsCopies)
                return bool(less(std::as_const(a.element), std::as_const(b.element)));
            else
                return bool(less(*detail::listElement<T>(a), *detail::listElement<T>(b)));
        });
        Node * last = &head_;
        for (SortItem const * item = items.get(); item != end; ++item) {
            Node * node;
            if constexpr (sortsCopies)
                node = item->node;
            else
                node = *item;
            last->next = node;
            node->prev = last;
            last = node;
        }
        last->next = &head_;
        head_.prev = last;
        return true;
    }

    static constexpr TypeUtil const * table() { return &sTable; }
    // The table with the copy function. It comes into play with the first copy only, so that a list of elements that
    // cannot be copied compiles.
    static constexpr TypeUtil const * copyTable() {
        static_assert(std::is_copy_constructible_v<T>, "the elements of this qv::list cannot be copied");
        return &sCopyTable;
    }
    ListImpl & copying() {
        typeUtil_ = copyTable();
        return *this;
    }

    static constexpr TypeUtil makeTable(void (*copyOne)(void *, void const *)) {
        constexpr std::size_t offset = detail::listElementOffset<T>;
        TypeUtil util = {detail::countOf(offset + sizeof(T)), int(offset), copyOne, Functions::destruct,
                         int(detail::alignmentBeyondMalloc<T>)};
        if constexpr (std::is_move_constructible_v<T>)
            util.moveConstruct = &Functions::moveConstruct;
        return util;
    }
    static TypeUtil const sTable;
    static TypeUtil const sCopyTable;

    static Node * mutableNode(const_iterator pos) { return const_cast<Node *>(pos.node_); }

    static void checkCount(int n) {
        if (n < 0)
            detail::throwTooLong();
    }

    iterator spliceAll(const_iterator pos, list & other) {
        Node * const first = other.empty() ? mutableNode(pos) : other.head_.next;
        splice(pos, other);
        return iterator(first);
    }

    void cutTo(int n) {
        while (size_ > n)
            pop_back();
    }

    static Node * findElementFrom(Node const * start, ListImpl const & where, void const * key) {
        T const & value = *static_cast<T const *>(key);
        while (start != where.end() && !(*detail::listElement<T>(start) == value))
            start = start->next;
        return const_cast<Node *>(start);
    }
    static Node * findElement(ListImpl const & where, void const * key) {
        return findElementFrom(where.begin(), where, key);
    }
    template <typename Predicate>
    static Node * findMatchFrom(Node const * start, ListImpl const & where, void const * key) {
        auto & predicate = *static_cast<Predicate *>(const_cast<void *>(key));
        while (start != where.end() && !predicate(*detail::listElement<T>(start)))
            start = start->next;
        return const_cast<Node *>(start);
    }

    // Runs of nodes change over as a whole: only where the order alternates between the lists is anything relinked.
    template <typename Less>
    static void mergeSorted(ListImpl & into, ListImpl & from, void const * context) {
        auto & less = *static_cast<Less *>(const_cast<void *>(context));
        int const total = detail::countOf(std::int64_t(into.size()) + from.size());
        Node * a = into.begin();
        Node * b = from.begin();
        int moved = 0;
        detail::OnFailure fixSizes([&] {
            into.getReferenceToSize() += moved;
            from.getReferenceToSize() -= moved;
        });
        while (a != into.end() && b != from.end()) {
            if (!less(*detail::listElement<T>(b), *detail::listElement<T>(a))) {
                a = a->next;
                continue;
            }
            Node * const first = b;
            int run = 0;
            do {
                b = b->next;
                ++run;
            } while (b != from.end() && less(*detail::listElement<T>(b), *detail::listElement<T>(a)));
            sTransferNodes(a, first, b);
            moved += run;
        }
        fixSizes.release();
        sTransferNodes(into.end(), b, from.end());
        into.getReferenceToSize() = total;
        from.getReferenceToSize() = 0;
    }
};

template <typename T>
constexpr ListImpl::TypeUtil list<T>::sTable = makeTable(nullptr);

template <typename T>
constexpr ListImpl::TypeUtil list<T>::sCopyTable = makeTable(&Functions::copyConstruct);

template <typename I>
list(I, I) -> list<std::iter_value_t<I>>;

template <typename T>
bool operator==(list<T> const & a, list<T> const & b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}
template <detail::Ordered T>
auto operator<=>(list<T> const & a, list<T> const & b) {
    return std::lexicographical_compare_three_way(a.begin(), a.end(), b.begin(), b.end(), detail::ThreeWay());
}

template <typename T, typename Predicate>
int erase_if(list<T> & l, Predicate predicate) {
    return l.remove_if(predicate);
}
template <typename T, typename U>
int erase(list<T> & l, U const & value) {
    return l.remove_if([&value](T const & element) { return element == value; });
}

} // namespace qv

#endif
