// The core that all qv::list types share: links, nodes and sorting of elements whose type it does not know.

#ifndef qvListImpl_h
#define qvListImpl_h

#include <cstddef>

#include "Base/qvBaseConfig.h"

namespace qv {

/*
 * A doubly linked list of nodes, each with one element, described by a table of functions. Typed code uses qv::list<T>.
 *
 * The list object is the sentinel of its own chain and what end() gives, so it must not be moved bitwise. Nodes come
 * one by one from the heap and never move. Sources of copies may lie in the list itself.
 *
 * Allocation failure raises std::bad_alloc, a count past the 32-bit range std::length_error. When that happens, or when
 * a function of the table throws, the list is as it was, except in copy and assign, which leave a valid list.
 */
class QV_EXPORT ListImpl {
public:
    struct Node {
        Node * next;
        Node * prev;
    };

    struct TypeUtil {
        int nodeSize;                                        // in bytes
        int elementOffset;                                   // of the element in the node, in bytes
        void (*copyConstruct)(void * dst, void const * src); // null when elements cannot be copied
        void (*destruct)(void * p);                          // null when there is nothing to do
        int alignment = 0;                                   // of nodes, needed only beyond what malloc gives
        // For elements that were copied already and are on their way into nodes that stay in use; null when they are
        // copied once more.
        void (*moveConstruct)(void * dst, void * src) = nullptr;
    };

    explicit ListImpl(TypeUtil const * typeUtil) { initialize_inline(typeUtil); }
    ListImpl(ListImpl const & other) { initialize(other); }
    ListImpl & operator=(ListImpl const &) = delete;
    ~ListImpl() {
        if (!empty())
            clear();
    }

    int size() const { return size_; }
    bool empty() const { return head_.next == &head_; }
    // For code that moves nodes with sTransferNodes and has to keep the sizes right.
    int & getReferenceToSize() { return size_; }

    Node * begin() { return head_.next; }
    Node * end() { return &head_; }
    Node const * begin() const { return head_.next; }
    Node const * end() const { return &head_; }

    // One element more at the end or the front. The forms with a function construct with it; a null function leaves the
    // element raw, as the forms that return it do: the caller must construct it. The pointer forms store p itself.
    void append(void const * value);
    void append(void const * value, void (*copyOne)(void *, void const *));
    void append(void (*construct)(void *));
    void appendAndAssignPtr(void const * p);
    void * appendAndReturnPtr();
    void prepend(void const * value);
    void prepend(void const * value, void (*copyOne)(void *, void const *));
    void prepend(void (*construct)(void *));
    void prependAndAssignPtr(void const * p);
    void * prependAndReturnPtr();

    // One element more in front of pos, in the same forms. Give the new node.
    Node * insert(Node * pos, void const * value);
    Node * insert(Node * pos, void const * value, void (*copyOne)(void *, void const *));
    Node * insert(Node * pos, void (*construct)(void *));
    Node * insertAndAssignPtr(Node * pos, void const * p);
    Node * insertAndReturnNode(Node * pos);

    // Copies in front of pos: of a node range, or of elements in plain memory, stride bytes apart.
    void insert(Node * pos, Node const * first, Node const * last);
    void insert(Node * pos, void const * first, void const * last, int stride, void (*copyOne)(void *, void const *));
    void append(ListImpl const & other);
    void prepend(ListImpl const & other);

    // Replace all elements by copies. Nodes that are there stay in use, each with a new element; only where the table
    // has no function to copy or move an element into them they are replaced too.
    void assign(Node const * first, Node const * last);
    void assign(void const * first, void const * last, int stride, void (*copyOne)(void *, void const *));
    void copy(ListImpl const & other);

    // Takes the node out of the chain, with its element alive. Gives its successor.
    Node * unlink(Node * node) noexcept;

    // Destroy and free; give the successor of what is gone.
    Node * erase(Node * node) noexcept;
    Node * erase(Node * first, Node * last) noexcept;
    // Erases every match: next gives the first one from start on, or the end. The key may lie in the list: what matches
    // is destroyed after the last call of next.
    void erase(void const * key, Node * (*next)(Node const * start, ListImpl const & list, void const * key));
    // The list must not be empty.
    void eraseFront() noexcept;
    void eraseBack() noexcept;
    void clear() noexcept;

    Node * find(void const * key, Node * (*finder)(ListImpl const & list, void const * key)) const {
        return finder(*this, key);
    }

    // Of each run of equal elements only the last stays.
    void unique(bool (*equal)(void const * a, void const * b));
    void reverse() noexcept;
    // Both lists must have elements of the same type.
    void swap(ListImpl & other) noexcept;

    // Move nodes of the other list, which may be this one, in front of pos. The range form counts the nodes by walking;
    // pos must not lie inside the range.
    void splice(Node * pos, ListImpl & other);
    void splice(Node * pos, ListImpl & other, Node * node);
    void splice(Node * pos, ListImpl & other, Node * first, Node * last);

    // The relinking alone; the sizes stay as they are.
    static void sTransferNode(Node * pos, Node * node) noexcept;
    static void sTransferNodes(Node * pos, Node * first, Node * last) noexcept {
        if (first == last)
            return;
        Node * const tail = last->prev;
        first->prev->next = last;
        last->prev = first->prev;
        Node * const before = pos->prev;
        before->next = first;
        first->prev = before;
        tail->next = pos;
        pos->prev = tail;
    }

    // Merges the sorted other list into this sorted one. mergeFn(a, b, context) moves all nodes of b into a; of equal
    // elements those of a come first. When it throws, every node must be in one of the lists and the sizes must be
    // right.
    void merge(ListImpl & other, void const * context, void (*mergeFn)(ListImpl &, ListImpl &, void const *)) {
        mergeFn(*this, other, context);
    }

    // Sorts by merging; equal elements keep their order, and nothing is allocated. When mergeFn throws the list has all
    // its elements in some order.
    void sort(void const * context, void (*mergeFn)(ListImpl &, ListImpl &, void const *));

    // For tests: whether the chain is sound in both directions and as long as the size says.
    bool validate() const;

protected:
    void initialize(TypeUtil const * typeUtil) noexcept;
    void initialize(ListImpl const & other);
    void initialize_inline(TypeUtil const * typeUtil) noexcept {
        initializeListState();
        typeUtil_ = typeUtil;
    }
    void initializeListState() noexcept {
        head_.next = &head_;
        head_.prev = &head_;
        size_ = 0;
    }

    // A node with a raw element that is in no chain; and back to the heap, without destroying the element.
    Node * allocateNode() const;
    static void freeNode(Node * node) noexcept;
    // Destroys the element and frees the node.
    void destructNode(Node * node) const noexcept;
    void * elementPtrOfNode(Node * node) const {
        return reinterpret_cast<unsigned char *>(node) + typeUtil_->elementOffset;
    }
    void const * elementPtrOfNode(Node const * node) const {
        return reinterpret_cast<unsigned char const *>(node) + typeUtil_->elementOffset;
    }

    // Put a node into the chain, and count it; without a node, a new one with a raw element. Give the node.
    Node * insert(Node * pos, Node * node) noexcept {
        Node * const before = pos->prev;
        node->next = pos;
        node->prev = before;
        before->next = node;
        pos->prev = node;
        ++size_;
        return node;
    }
    Node * insert(Node * pos) { return insert(pos, allocateNode()); }
    Node * append(Node * node) noexcept { return insert(end(), node); }
    Node * append() { return insert(end()); }
    Node * prepend(Node * node) noexcept { return insert(begin(), node); }
    Node * prepend() { return insert(begin()); }

    Node * unlink_inline(Node * node) noexcept {
        Node * const behind = node->next;
        node->prev->next = behind;
        behind->prev = node->prev;
        --size_;
        return behind;
    }
    Node * erase_inline(Node * node) noexcept {
        Node * const behind = unlink_inline(node);
        destructNode(node);
        return behind;
    }

    // Replaces all elements by those of another list of the same type, which becomes empty. Nodes stay in use as in
    // assign.
    void replaceBy(ListImpl & other);

    Node head_; // the sentinel: first node and last node
    int size_;
    TypeUtil const * typeUtil_;

private:
    // The empty chain alone, for the lists that sort keeps for a while.
    ListImpl() : typeUtil_(nullptr) { initializeListState(); }

    template <typename Construct>
    Node * insertOne(Node * pos, Construct construct);
    template <typename Source>
    void insertAll(Node * pos, Source source);
    template <typename Source>
    void appendAll(Source source);
};

} // namespace qv

#endif
