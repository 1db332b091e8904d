#include "Base/Containers/qvListImpl.h"

#include <utility>

#include "Base/Containers/Internal/Storage.h"

namespace qv {

namespace {

// What several elements are copied from.

class NodeSource {
public:
    NodeSource(ListImpl::Node const * first, ListImpl::Node const * last, ListImpl::TypeUtil const * typeUtil)
        : node_(first), last_(last), typeUtil_(typeUtil) {}

    bool more() const { return node_ != last_; }
    void advance() { node_ = node_->next; }
    void const * element() const { return reinterpret_cast<unsigned char const *>(node_) + typeUtil_->elementOffset; }
    void copyTo(void * dst) const { typeUtil_->copyConstruct(dst, element()); }

private:
    ListImpl::Node const * node_;
    ListImpl::Node const * last_;
    ListImpl::TypeUtil const * typeUtil_;
};

class MemorySource {
public:
    MemorySource(void const * first, void const * last, int stride, void (*copyOne)(void *, void const *))
        : p_(static_cast<unsigned char const *>(first)), last_(static_cast<unsigned char const *>(last)),
          stride_(stride), copyOne_(copyOne) {}

    bool more() const { return p_ != last_; }
    void advance() { p_ += stride_; }
    void copyTo(void * dst) const { copyOne_(dst, p_); }

private:
    unsigned char const * p_;
    unsigned char const * last_;
    int stride_;
    void (*copyOne_)(void *, void const *);
};

} // namespace

// Nodes

ListImpl::Node * ListImpl::allocateNode() const {
    detail::addCounts(size_, 1);
    return static_cast<Node *>(detail::allocateStorage(std::size_t(unsigned(typeUtil_->nodeSize)),
                                                       std::size_t(unsigned(typeUtil_->alignment))));
}

void ListImpl::freeNode(Node * node) noexcept { std::free(node); }

void ListImpl::destructNode(Node * node) const noexcept {
    if (typeUtil_->destruct)
        typeUtil_->destruct(elementPtrOfNode(node));
    std::free(node);
}

// Construction

void ListImpl::initialize(TypeUtil const * typeUtil) noexcept { initialize_inline(typeUtil); }

void ListImpl::initialize(ListImpl const & other) {
    initialize_inline(other.typeUtil_);
    append(other);
}

// One element

template <typename Construct>
ListImpl::Node * ListImpl::insertOne(Node * pos, Construct construct) {
    Node * const node = allocateNode();
    detail::Rollback freeAgain([node] { freeNode(node); });
    construct(elementPtrOfNode(node));
    freeAgain.release();
    return insert(pos, node);
}

void ListImpl::append(void const * value) { insert(end(), value, typeUtil_->copyConstruct); }
void ListImpl::append(void const * value, void (*copyOne)(void *, void const *)) { insert(end(), value, copyOne); }
void ListImpl::append(void (*construct)(void *)) { insert(end(), construct); }
void ListImpl::appendAndAssignPtr(void const * p) { insertAndAssignPtr(end(), p); }
void * ListImpl::appendAndReturnPtr() { return elementPtrOfNode(append()); }

void ListImpl::prepend(void const * value) { insert(begin(), value, typeUtil_->copyConstruct); }
void ListImpl::prepend(void const * value, void (*copyOne)(void *, void const *)) { insert(begin(), value, copyOne); }
void ListImpl::prepend(void (*construct)(void *)) { insert(begin(), construct); }
void ListImpl::prependAndAssignPtr(void const * p) { insertAndAssignPtr(begin(), p); }
void * ListImpl::prependAndReturnPtr() { return elementPtrOfNode(prepend()); }

ListImpl::Node * ListImpl::insert(Node * pos, void const * value) {
    return insert(pos, value, typeUtil_->copyConstruct);
}

ListImpl::Node * ListImpl::insert(Node * pos, void const * value, void (*copyOne)(void *, void const *)) {
    return insertOne(pos, [=](void * element) { copyOne(element, value); });
}

ListImpl::Node * ListImpl::insert(Node * pos, void (*construct)(void *)) {
    return insertOne(pos, [=](void * element) {
        if (construct)
            construct(element);
    });
}

ListImpl::Node * ListImpl::insertAndAssignPtr(Node * pos, void const * p) {
    Node * const node = insert(pos);
    *static_cast<void const **>(elementPtrOfNode(node)) = p;
    return node;
}

ListImpl::Node * ListImpl::insertAndReturnNode(Node * pos) { return insert(pos); }

// Several elements

template <typename Source>
void ListImpl::appendAll(Source source) {
    for (; source.more(); source.advance())
        insertOne(end(), [&source](void * element) { source.copyTo(element); });
}

// The copies gather in a list of their own first: pos may lie inside the source, and a copy that throws leaves nothing
// behind.
template <typename Source>
void ListImpl::insertAll(Node * pos, Source source) {
    ListImpl copies(typeUtil_);
    copies.appendAll(source);
    splice(pos, copies);
}

void ListImpl::insert(Node * pos, Node const * first, Node const * last) {
    insertAll(pos, NodeSource(first, last, typeUtil_));
}

void ListImpl::insert(Node * pos, void const * first, void const * last, int stride,
                      void (*copyOne)(void *, void const *)) {
    insertAll(pos, MemorySource(first, last, stride, copyOne));
}

void ListImpl::append(ListImpl const & other) { insert(end(), other.begin(), other.end()); }
void ListImpl::prepend(ListImpl const & other) { insert(begin(), other.begin(), other.end()); }

void ListImpl::assign(Node const * first, Node const * last) {
    NodeSource source(first, last, typeUtil_);
    if (typeUtil_->destruct) {
        // All copies come first: the source may lie in an element, or in memory that one owns.
        ListImpl copies(typeUtil_);
        copies.appendAll(source);
        replaceBy(copies);
        return;
    }
    // Elements without a destructor own nothing, and a source within this list is never overwritten before it was read:
    // it runs ahead of the nodes that are filled, or they are the same.
    Node * node = begin();
    for (; node != end() && source.more(); source.advance()) {
        Node * const filled = std::exchange(node, node->next);
        void * const element = elementPtrOfNode(filled);
        if (element == source.element())
            continue;
        detail::Rollback dropNode([&] { erase_inline(filled); });
        source.copyTo(element);
        dropNode.release();
    }
    erase(node, end());
    insertAll(end(), source);
}

void ListImpl::assign(void const * first, void const * last, int stride, void (*copyOne)(void *, void const *)) {
    ListImpl copies(typeUtil_);
    copies.appendAll(MemorySource(first, last, stride, copyOne));
    replaceBy(copies);
}

void ListImpl::replaceBy(ListImpl & other) {
    if (!typeUtil_->moveConstruct && !typeUtil_->copyConstruct) {
        swap(other);
        other.clear();
        return;
    }
    Node * node = begin();
    while (node != end() && !other.empty()) {
        Node * const filled = std::exchange(node, node->next);
        void * const element = elementPtrOfNode(filled);
        void * const arrival = elementPtrOfNode(other.begin());
        if (typeUtil_->destruct)
            typeUtil_->destruct(element);
        detail::Rollback dropNode([&] {
            unlink_inline(filled);
            freeNode(filled);
        });
        if (typeUtil_->moveConstruct)
            typeUtil_->moveConstruct(element, arrival);
        else
            typeUtil_->copyConstruct(element, arrival);
        dropNode.release();
        other.eraseFront();
    }
    erase(node, end());
    splice(end(), other);
}

void ListImpl::copy(ListImpl const & other) {
    if (this != &other)
        assign(other.begin(), other.end());
}

// Removal

ListImpl::Node * ListImpl::unlink(Node * node) noexcept { return unlink_inline(node); }

ListImpl::Node * ListImpl::erase(Node * node) noexcept { return erase_inline(node); }

ListImpl::Node * ListImpl::erase(Node * first, Node * last) noexcept {
    if (first == begin() && last == end()) {
        clear();
        return end();
    }
    while (first != last)
        first = erase_inline(first);
    return last;
}

void ListImpl::erase(void const * key, Node * (*next)(Node const * start, ListImpl const & list, void const * key)) {
    ListImpl matches(typeUtil_);
    Node * match = next(begin(), *this, key);
    while (match && match != end()) {
        Node * const behind = unlink_inline(match);
        matches.append(match);
        match = next(behind, *this, key);
    }
}

void ListImpl::eraseFront() noexcept { erase_inline(begin()); }
void ListImpl::eraseBack() noexcept { erase_inline(head_.prev); }

void ListImpl::clear() noexcept {
    for (Node * node = begin(); node != end();)
        destructNode(std::exchange(node, node->next));
    initializeListState();
}

// The whole list

void ListImpl::unique(bool (*equal)(void const * a, void const * b)) {
    if (size_ < 2)
        return;
    Node * node = begin();
    for (Node * behind = node->next; behind != end(); node = behind, behind = behind->next) {
        if (equal(elementPtrOfNode(node), elementPtrOfNode(behind)))
            erase_inline(node);
    }
}

void ListImpl::reverse() noexcept {
    Node * node = &head_;
    do {
        std::swap(node->next, node->prev);
        node = node->prev; // the former next
    } while (node != &head_);
}

void ListImpl::swap(ListImpl & other) noexcept {
    if (this == &other)
        return;
    Node * const first = head_.next;
    // With this chain out of the way the two moves of a whole chain handle empty lists too.
    Node mine = {&mine, &mine};
    sTransferNodes(&mine, first, &head_);
    sTransferNodes(&head_, other.begin(), other.end());
    sTransferNodes(&other.head_, mine.next, &mine);
    std::swap(size_, other.size_);
}

void ListImpl::splice(Node * pos, ListImpl & other) {
    if (this == &other)
        return;
    size_ = detail::addCounts(size_, other.size_);
    sTransferNodes(pos, other.begin(), other.end());
    other.size_ = 0;
}

void ListImpl::splice(Node * pos, ListImpl & other, Node * node) {
    if (this != &other) {
        size_ = detail::addCounts(size_, 1);
        --other.size_;
    }
    sTransferNode(pos, node);
}

void ListImpl::splice(Node * pos, ListImpl & other, Node * first, Node * last) {
    if (this != &other) {
        int n = 0;
        for (Node const * node = first; node != last; node = node->next)
            ++n;
        size_ = detail::addCounts(size_, n);
        other.size_ -= n;
    }
    if (pos != first && pos != last)
        sTransferNodes(pos, first, last);
}

void ListImpl::sTransferNode(Node * pos, Node * node) noexcept {
    if (pos != node && pos != node->next)
        sTransferNodes(pos, node, node->next);
}

void ListImpl::sort(void const * context, void (*mergeFn)(ListImpl &, ListImpl &, void const *)) {
    if (size_ < 2)
        return;
    // Bin k is empty or holds a sorted run of 2^k nodes, with later elements in lower bins. More than 32 bins would
    // take more nodes than a list can count.
    constexpr int binCount = 32;
    ListImpl carry;
    ListImpl bins[binCount];
    int used = 0;
    detail::Rollback gatherAgain([&] {
        splice(end(), carry);
        for (ListImpl & bin : bins)
            splice(end(), bin);
    });
    while (!empty()) {
        carry.splice(carry.begin(), *this, begin());
        int k = 0;
        for (; k < used && !bins[k].empty(); ++k) {
            mergeFn(bins[k], carry, context);
            carry.swap(bins[k]);
        }
        carry.swap(bins[k]);
        if (k == used)
            ++used;
    }
    for (int k = 1; k < used; ++k)
        mergeFn(bins[k], bins[k - 1], context);
    swap(bins[used - 1]);
    gatherAgain.release();
}

bool ListImpl::validate() const {
    int n = 0;
    for (Node const * node = &head_;; ++n) {
        if (n > size_ || !node->next || node->next->prev != node)
            return false;
        node = node->next;
        if (node == &head_)
            break;
    }
    return n == size_;
}

} // namespace qv
