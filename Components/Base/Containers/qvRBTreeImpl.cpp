#include "Base/Containers/qvRBTreeImpl.h"

#include <utility>

#include "Base/Containers/Internal/Storage.h"
#include "Base/Containers/qvRBTreePlace.h"

namespace qv {

namespace {

constexpr int elementsInBlock = 10;

} // namespace

// Construction

RBTreeImpl::RBTreeImpl(TypeUtil const * typeUtil)
    : allocator_(unsigned(typeUtil->nodeSize), elementsInBlock, unsigned(typeUtil->alignment)) {
    initialize(typeUtil);
}

RBTreeImpl::RBTreeImpl(RBTreeImpl const & other)
    : allocator_(unsigned(other.typeUtil_->nodeSize), elementsInBlock, unsigned(other.typeUtil_->alignment)) {
    initialize(other);
}

RBTreeImpl::~RBTreeImpl() {
    // The allocator takes back all memory at once; the walk is for what needs to be destroyed.
    if (hasDestructors())
        destructAllNodes();
}

void RBTreeImpl::initialize(TypeUtil const * typeUtil) noexcept {
    initializeTreeState();
    typeUtil_ = typeUtil;
}

void RBTreeImpl::initialize(RBTreeImpl const & other) {
    initialize(other.typeUtil_);
    detail::Rollback destructAgain([this] { destructAllNodes(); });
    copy(other);
    destructAgain.release();
}

void RBTreeImpl::destructAllNodes() noexcept {
    if (size_ > 0)
        typeUtil_->destructSubtree(this, root());
}

void RBTreeImpl::destructNode(Node * node) noexcept {
    if (typeUtil_->destructKey)
        typeUtil_->destructKey(keyPtrOfNode(node));
    if (typeUtil_->destructValue)
        typeUtil_->destructValue(valuePtrOfNode(node));
    freeNode(node);
}

// Search

RBTreeImpl::Node * RBTreeImpl::findNode(void const * key) const {
    Node * const node = lowerBound(key);
    return node == end() || !keyCompare(key, keyPtrOfNode(node)) ? node : const_cast<Node *>(end());
}

int RBTreeImpl::count(void const * key) const { return sDistanceBetween(lowerBound(key), upperBound(key)); }

int RBTreeImpl::sDistanceBetween(Node const * first, Node const * last) {
    int n = 0;
    for (; first != last; first = first->next())
        ++n;
    return n;
}

// Insertion

RBTreeImpl::Node * RBTreeImpl::newNode(void const * key, void const * value) {
    Node * const node = allocateNode();
    detail::Rollback freeAgain([&] { freeNode(node); });
    typeUtil_->copyKey(keyPtrOfNode(node), key);
    detail::Rollback destructAgain([&] {
        if (typeUtil_->destructKey)
            typeUtil_->destructKey(keyPtrOfNode(node));
    });
    if (value) {
        if (typeUtil_->copyValue)
            typeUtil_->copyValue(valuePtrOfNode(node), value);
    } else if (typeUtil_->constructValue) {
        typeUtil_->constructValue(valuePtrOfNode(node));
    }
    destructAgain.release();
    freeAgain.release();
    return node;
}

RBTreeImpl::Node * RBTreeImpl::insertNode(Node * forceLeft, Node * parent, void const * key, void const * value,
                                          Node * forceRight) {
    bool const left = parent == end() || (!forceRight && (forceLeft || keyCompare(key, keyPtrOfNode(parent))));
    Node * const node = newNode(key, value);
    linkNode(parent, left, node);
    return node;
}

void RBTreeImpl::linkNode(Node * parent, bool left, Node * node) noexcept {
    node->left = nullptr;
    node->right = nullptr;
    node->parent = parent;
    if (left) {
        parent->left = node; // of the header: the leftmost node
        if (parent == &header_) {
            header_.parent = node;
            header_.right = node;
        } else if (parent == header_.left) {
            header_.left = node;
        }
    } else {
        parent->right = node;
        if (parent == header_.right)
            header_.right = node;
    }
    ++size_;
    rebalance(node);
}

RBTreeImpl::Node * RBTreeImpl::insertNodeUnique(void const * key, void const * value) {
    Node * parent;
    bool const left = typeUtil_->insertPosition(this, key, &parent);
    Node * candidate = parent; // the node in front of the new one, which alone can have an equal key
    if (left) {
        if (parent == begin())
            return insertAt(detail::RBTreePlace::free(parent, left), key, value);
        candidate = parent->prev();
    }
    if (!keyCompare(keyPtrOfNode(candidate), key))
        return candidate;
    return insertAt(detail::RBTreePlace::free(parent, left), key, value);
}

RBTreeImpl::Node * RBTreeImpl::insertNodeNonUnique(void const * key, void const * value) {
    Node * parent;
    bool const left = typeUtil_->insertPosition(this, key, &parent);
    return insertAt(detail::RBTreePlace::free(parent, left), key, value);
}

RBTreeImpl::Node * RBTreeImpl::insertAt(detail::RBTreePlace const & place, void const * key, void const * value) {
    Node * const parent = place.node;
    return place.left ? insertNode(parent, parent, key, value, nullptr)
                      : insertNode(nullptr, parent, key, value, parent);
}

RBTreeImpl::Node * RBTreeImpl::insertNodeUnique(Node * hint, void const * key, void const * value) {
    auto const place = detail::uniquePlaceAt(
        *this, hint, [&](Node * node) { return keyCompare(key, keyPtrOfNode(node)); },
        [&](Node * node) { return keyCompare(keyPtrOfNode(node), key); });
    if (place.kind == detail::RBTreePlace::isTaken)
        return place.node;
    return place.kind == detail::RBTreePlace::isFree ? insertAt(place, key, value) : insertNodeUnique(key, value);
}

RBTreeImpl::Node * RBTreeImpl::insertNodeNonUnique(Node * hint, void const * key, void const * value) {
    auto const place =
        detail::multiPlaceAt(*this, hint, [&](Node * node) { return keyCompare(key, keyPtrOfNode(node)); });
    return place.kind == detail::RBTreePlace::isFree ? insertAt(place, key, value) : insertNodeNonUnique(key, value);
}

void * RBTreeImpl::getValuePtr(void const * key) {
    Node * node = lowerBound(key);
    if (node == end() || keyCompare(key, keyPtrOfNode(node)))
        node = insertNodeUnique(node, key);
    return valuePtrOfNode(node);
}

// Balance

// The child takes the place of the node below the node's parent.
void RBTreeImpl::replaceChild(Node * node, Node * child) noexcept {
    Node * const parent = node->parent;
    if (node == header_.parent)
        header_.parent = child;
    else if (node == parent->left)
        parent->left = child;
    else
        parent->right = child;
}

void RBTreeImpl::rotateLeft(Node * node) noexcept {
    Node * const up = node->right;
    node->right = up->left;
    if (up->left)
        up->left->parent = node;
    up->parent = node->parent;
    replaceChild(node, up);
    up->left = node;
    node->parent = up;
}

void RBTreeImpl::rotateRight(Node * node) noexcept {
    Node * const up = node->left;
    node->left = up->right;
    if (up->right)
        up->right->parent = node;
    up->parent = node->parent;
    replaceChild(node, up);
    up->right = node;
    node->parent = up;
}

void RBTreeImpl::rebalance(Node * node) noexcept {
    node->color = red;
    while (node != header_.parent && node->parent->color == red) {
        Node * parent = node->parent;
        Node * const grand = parent->parent;
        bool const left = parent == grand->left;
        Node * const uncle = left ? grand->right : grand->left;
        if (uncle && uncle->color == red) {
            parent->color = black;
            uncle->color = black;
            grand->color = red;
            node = grand;
            continue;
        }
        if (node == (left ? parent->right : parent->left)) {
            // The inner child: made an outer one first.
            left ? rotateLeft(parent) : rotateRight(parent);
            parent = node;
        }
        parent->color = black;
        grand->color = red;
        left ? rotateRight(grand) : rotateLeft(grand);
        break;
    }
    header_.parent->color = black;
}

// Removal

void RBTreeImpl::eraseNode(Node * node) noexcept {
    unlinkNode(node);
    destructNode(node);
}

void RBTreeImpl::unlinkNode(Node * node) noexcept {
    if (node == header_.left)
        header_.left = node->next();
    if (node == header_.right)
        header_.right = node->prev();
    detachNode(node);
    --size_;
}

// Takes the node out of the shape of the tree. With two children its successor takes its place, by relinking.
void RBTreeImpl::detachNode(Node * node) noexcept {
    Node * child = node->right; // what moves up where a node goes missing; may be null
    Node * parent;              // of the child then
    int removed = node->color;
    if (!node->left || !node->right) {
        if (node->left)
            child = node->left;
        parent = node->parent;
        if (child)
            child->parent = parent;
        replaceChild(node, child);
    } else {
        Node * const successor = sFindLeftMost(node->right);
        child = successor->right;
        if (successor == node->right) {
            parent = successor;
        } else {
            parent = successor->parent;
            if (child)
                child->parent = parent;
            parent->left = child;
            successor->right = node->right;
            node->right->parent = successor;
        }
        successor->left = node->left;
        node->left->parent = successor;
        successor->parent = node->parent;
        replaceChild(node, successor);
        removed = std::exchange(successor->color, node->color);
    }
    if (removed == black)
        rebalanceAfterErase(child, parent);
}

// Below the parent, the paths through the node (which may be null) have one black node too few.
void RBTreeImpl::rebalanceAfterErase(Node * node, Node * parent) noexcept {
    while (node != header_.parent && (!node || node->color == black)) {
        bool const left = node == parent->left;
        Node * sibling = left ? parent->right : parent->left;
        if (sibling->color == red) {
            sibling->color = black;
            parent->color = red;
            left ? rotateLeft(parent) : rotateRight(parent);
            sibling = left ? parent->right : parent->left;
        }
        Node * const inner = left ? sibling->left : sibling->right;
        Node * outer = left ? sibling->right : sibling->left;
        bool const innerRed = inner && inner->color == red;
        bool const outerRed = outer && outer->color == red;
        if (!innerRed && !outerRed) {
            sibling->color = red;
            node = parent;
            parent = parent->parent;
            continue;
        }
        if (!outerRed) {
            inner->color = black;
            sibling->color = red;
            left ? rotateRight(sibling) : rotateLeft(sibling);
            outer = sibling;
            sibling = inner;
        }
        sibling->color = parent->color;
        parent->color = black;
        outer->color = black;
        left ? rotateLeft(parent) : rotateRight(parent);
        return;
    }
    if (node)
        node->color = black;
}

void RBTreeImpl::eraseNodesRange(Node * first, Node * last) noexcept {
    if (first == begin() && last == end()) {
        clear();
        return;
    }
    while (first != last)
        eraseNode(std::exchange(first, first->next()));
}

int RBTreeImpl::eraseNodesMatching(void const * key) {
    Range const range = equalRange(key);
    int const before = size_;
    eraseNodesRange(range.first, range.second);
    return before - size_;
}

void RBTreeImpl::clear() noexcept {
    if (hasDestructors())
        destructAllNodes();
    else
        allocator_.freeAll();
    initializeTreeState();
}

// The whole tree

void RBTreeImpl::copy(RBTreeImpl const & other) {
    if (this == &other)
        return;
    // Elements without destructors own nothing, so that the other tree cannot lie in one of them: their memory is used
    // again. Other elements go last, and are whole until then.
    if (!hasDestructors())
        clear();
    RBTreeImpl copies(typeUtil_);             // a header for nodes from this tree's allocator
    detail::Rollback const destructRest([&] { // of the copies when one fails, else of the old nodes
        if (copies.size_ > 0)
            typeUtil_->destructSubtree(this, copies.root());
        copies.initializeTreeState();
    });
    // In order, every key belongs behind the last one.
    for (Node const * node = other.begin(); node != other.end(); node = node->next()) {
        Node * const copied =
            newNode(other.keyPtrOfNode(node), typeUtil_->copyValue ? other.valuePtrOfNode(node) : nullptr);
        copies.linkNode(copies.header_.right, copies.size_ == 0, copied);
    }
    swapNodes(copies);
}

void RBTreeImpl::swap(RBTreeImpl & other) noexcept {
    swapNodes(other);
    std::swap(typeUtil_, other.typeUtil_);
    allocator_.swap(other.allocator_);
}

void RBTreeImpl::swapNodes(RBTreeImpl & other) noexcept {
    std::swap(header_, other.header_);
    std::swap(size_, other.size_);
    for (RBTreeImpl * tree : {this, &other}) {
        if (tree->size_ > 0)
            tree->header_.parent->parent = &tree->header_;
        else
            tree->initializeTreeState();
    }
}

namespace {

// Walks a subtree; false for a fault, else the number of its nodes and of black nodes on each way down.
struct SubtreeCheck {
    int nodes = 0;
    int blackHeight = 0;

    bool walk(RBTreeImpl::Node const * node, RBTreeImpl::Node const * parent) {
        if (!node)
            return true;
        bool const isRed = node->color == 1;
        if (node->parent != parent || (node->color != 0 && !isRed))
            return false;
        for (RBTreeImpl::Node const * child : {node->left, node->right}) {
            if (isRed && child && child->color == 1)
                return false;
        }
        SubtreeCheck left;
        SubtreeCheck right;
        if (!left.walk(node->left, node) || !right.walk(node->right, node) || left.blackHeight != right.blackHeight)
            return false;
        nodes = left.nodes + right.nodes + 1;
        blackHeight = left.blackHeight + (isRed ? 0 : 1);
        return true;
    }
};

} // namespace

bool RBTreeImpl::validate() const {
    if (header_.color != red || !allocator_.validate() || allocator_.numAllocated() != size_)
        return false;
    if (!root())
        return size_ == 0 && header_.left == &header_ && header_.right == &header_;
    SubtreeCheck check;
    if (root()->color != black || !check.walk(root(), &header_) || check.nodes != size_)
        return false;
    if (header_.left != sFindLeftMost(root()) || header_.right != sFindRightMost(root()))
        return false;
    for (Node const * node = header_.left; typeUtil_->less && node != header_.right; node = node->next()) {
        if (keyCompare(keyPtrOfNode(node->next()), keyPtrOfNode(node)))
            return false;
    }
    return true;
}

} // namespace qv
