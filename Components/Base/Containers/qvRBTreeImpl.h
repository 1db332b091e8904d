// The core that all qv::map and qv::set types share: a red-black tree of nodes whose keys and values it does not know.

#ifndef qvRBTreeImpl_h
#define qvRBTreeImpl_h

#include <cstddef>
#include <utility>

#include "Base/Containers/qvBlockAllocator.h"
#include "Base/qvBaseConfig.h"

namespace qv {

namespace detail {
struct RBTreePlace;
}

/*
 * A red-black tree. A table of functions describes keys and values; typed code uses qv::map, qv::set and their multi
 * forms. What walks the tree on behalf of a key is generated per type, so that no call is made for each node on the
 * way.
 *
 * The tree object is the header of its nodes: its parent is the root, its left and right are the leftmost and rightmost
 * node, and it is what end() gives. So it must not be moved bitwise. Nodes never move, and a pointer to one stays valid
 * until it is erased. Memory of erased nodes is used again by the same tree, and goes back to the heap with the tree.
 *
 * Allocation failure raises std::bad_alloc, a count past the 32-bit range std::length_error; then, and when a function
 * of the table throws, the tree is as it was, except in copy, which may leave it empty.
 */
class QV_EXPORT RBTreeImpl {
public:
    struct Node {
        Node * left;
        Node * right;
        Node * parent;
        int color; // 1 red, 0 black

        Node() = default;
        Node(Node const &) = default;
        // The four fields and nothing else: a small key may begin directly behind them, in what the compiler takes for
        // padding.
        Node & operator=(Node const & other) noexcept {
            left = other.left;
            right = other.right;
            parent = other.parent;
            color = other.color;
            return *this;
        }

        // The neighbours in order. The header stands behind the last node, and the last node in front of the header; in
        // front of the first node stands nothing.
        Node * next() { return const_cast<Node *>(std::as_const(*this).next()); }
        Node * prev() { return const_cast<Node *>(std::as_const(*this).prev()); }
        Node const * next() const;
        Node const * prev() const;

        // Where a key without need for more alignment than a node's can begin.
        static constexpr std::size_t usedSize = 3 * sizeof(Node *) + sizeof(int);
    };

    struct Range {
        Node * first;
        Node * second;
    };

    struct TypeUtil {
        int nodeSize;    // in bytes
        int keyOffset;   // in the node, in bytes
        int valueOffset; // in the node, in bytes
        // Null for an ordering that cannot be had without the typed container: then the operations here that take a key
        // are not for use.
        bool (*less)(void const * a, void const * b);
        void (*copyKey)(void * dst, void const * src);   // null when keys cannot be copied
        void (*copyValue)(void * dst, void const * src); // null when there are no values, or they cannot be copied
        void (*constructValue)(void * dst);              // may be null
        void (*destructKey)(void * p);                   // null when there is nothing to do
        void (*destructValue)(void * p);                 // null when there is nothing to do
        // Destroys and frees the nodes of a subtree.
        void (*destructSubtree)(RBTreeImpl * tree, Node * root);
        // The first node not before the key, and the first behind it; or the end.
        Node * (*lowerBound)(RBTreeImpl const * tree, void const * key);
        Node * (*upperBound)(RBTreeImpl const * tree, void const * key);
        // Goes down left where the key is less than the node's, else right. Stores the last node of the way, the header
        // for an empty tree, and tells whether the last step went left, which it did in an empty tree.
        bool (*insertPosition)(RBTreeImpl const * tree, void const * key, Node ** parent);
        int alignment = 0; // of nodes, needed only beyond what malloc gives
    };

    RBTreeImpl & operator=(RBTreeImpl const &) = delete;

    int size() const { return size_; }
    Node * root() const { return header_.parent; }
    Node * begin() { return header_.left; }
    Node * end() { return &header_; }
    Node const * begin() const { return header_.left; }
    Node const * end() const { return &header_; }

    // A node with an equal key (the first of them), or the end.
    Node * findNode(void const * key) const;
    int count(void const * key) const;
    Node * lowerBound(void const * key) const { return typeUtil_->lowerBound(this, key); }
    Node * upperBound(void const * key) const { return typeUtil_->upperBound(this, key); }
    Range equalRange(void const * key) const { return {lowerBound(key), upperBound(key)}; }

    // A new node with copies of key and value; without a value, with one from constructValue. The unique forms give an
    // existing node with an equal key, unchanged; the others put the new one behind those with an equal key. A hint is
    // a node, or the end, next to which the key is thought to belong: when that is so there is no search.
    Node * insertNodeUnique(void const * key, void const * value = nullptr);
    Node * insertNodeNonUnique(void const * key, void const * value = nullptr);
    Node * insertNodeUnique(Node * hint, void const * key, void const * value = nullptr);
    Node * insertNodeNonUnique(Node * hint, void const * key, void const * value = nullptr);

    // The address of the value with this key, which is inserted when it is not there.
    void * getValuePtr(void const * key);

    void eraseNode(Node * node) noexcept;
    void eraseNodesRange(Node * first, Node * last) noexcept;
    // Gives how many there were. The key may lie in the tree.
    int eraseNodesMatching(void const * key);
    // Raw nodes that were allocated, but are not in the tree, may be freed with the others.
    void clear() noexcept;

    // Replaces all elements by copies of the other's, which may lie in one of the elements.
    void copy(RBTreeImpl const & other);
    void swap(RBTreeImpl & other) noexcept;

    // Restores the invariants behind the linking of a leaf, which it paints red.
    void rebalance(Node * node) noexcept;

    // How many nodes are taken from the heap at a time; only before the first insertion, see BlockAllocator.
    void setNumElementsInBlock(int n) { allocator_.setNumElementsInBlock(n); }
    // A raw node that is not in the tree; and back, without destroying key and value.
    Node * allocateNode() { return static_cast<Node *>(allocator_.alloc()); }
    void freeNode(Node * node) noexcept { allocator_.free(node); }

    // For tests: whether links, colours, order, extremes and counts are sound.
    bool validate() const;

protected:
    explicit RBTreeImpl(TypeUtil const * typeUtil);
    RBTreeImpl(RBTreeImpl const & other);
    ~RBTreeImpl();

    void initialize(TypeUtil const * typeUtil) noexcept;
    void initialize(RBTreeImpl const & other);
    void initializeTreeState() noexcept {
        header_.left = &header_;
        header_.right = &header_;
        header_.parent = nullptr;
        header_.color = red;
        size_ = 0;
    }
    // Destroys and frees all nodes. The header keeps pointing at them.
    void destructAllNodes() noexcept;

    // The new node goes left of the parent when forceLeft is given, right when forceRight is; else where its key says.
    Node * insertNode(Node * forceLeft, Node * parent, void const * key, void const * value, Node * forceRight);
    // A constructed node becomes the left or right child of a parent without one there, and is counted.
    void linkNode(Node * parent, bool left, Node * node) noexcept;
    // Takes a node out of the tree, with key and value alive. Other nodes keep their places in memory.
    void unlinkNode(Node * node) noexcept;

    void rotateLeft(Node * node) noexcept;
    void rotateRight(Node * node) noexcept;

    bool keyCompare(void const * a, void const * b) const { return typeUtil_->less(a, b); }
    void * keyPtrOfNode(Node * node) const { return reinterpret_cast<unsigned char *>(node) + typeUtil_->keyOffset; }
    void const * keyPtrOfNode(Node const * node) const {
        return reinterpret_cast<unsigned char const *>(node) + typeUtil_->keyOffset;
    }
    void * valuePtrOfNode(Node * node) const {
        return reinterpret_cast<unsigned char *>(node) + typeUtil_->valueOffset;
    }
    void const * valuePtrOfNode(Node const * node) const {
        return reinterpret_cast<unsigned char const *>(node) + typeUtil_->valueOffset;
    }
    static Node * sFindLeftMost(Node * node) {
        while (node->left)
            node = node->left;
        return node;
    }
    static Node * sFindRightMost(Node * node) {
        while (node->right)
            node = node->right;
        return node;
    }
    static int sDistanceBetween(Node const * first, Node const * last);

    static constexpr int red = 1;
    static constexpr int black = 0;

    Node header_;
    int size_;
    TypeUtil const * typeUtil_;
    BlockAllocator allocator_;

private:
    Node * insertAt(detail::RBTreePlace const & place, void const * key, void const * value);
    Node * newNode(void const * key, void const * value);
    bool hasDestructors() const { return typeUtil_->destructKey || typeUtil_->destructValue; }
    void destructNode(Node * node) noexcept;
    void swapNodes(RBTreeImpl & other) noexcept;
    void replaceChild(Node * node, Node * child) noexcept;
    void detachNode(Node * node) noexcept;
    void rebalanceAfterErase(Node * node, Node * parent) noexcept;
};

inline RBTreeImpl::Node const * RBTreeImpl::Node::next() const {
    Node const * node = this;
    if (node->right) {
        node = node->right;
        while (node->left) {
            __builtin_prefetch(node->right); // the walk comes by there behind this node
            node = node->left;
        }
        return node;
    }
    Node const * above = node->parent;
    while (node == above->right) {
        node = above;
        above = above->parent;
    }
    // From the rightmost node the climb passes the root and, when the root has no right child, comes back to it from
    // the header.
    return node->right == above ? node : above;
}

inline RBTreeImpl::Node const * RBTreeImpl::Node::prev() const {
    Node const * node = this;
    // The header is red and its own grandchild, which only the root is otherwise, and that is black.
    if (!node->parent || (node->color == red && node->parent->parent == node))
        return node->right;
    if (node->left) {
        node = node->left;
        while (node->right)
            node = node->right;
        return node;
    }
    Node const * above = node->parent;
    while (node == above->left) {
        node = above;
        above = above->parent;
    }
    return above;
}

} // namespace qv

#endif
