// Where a new key goes in a red-black tree: the searches that qv::RBTreeImpl and the typed containers share, with the
// comparisons inlined for the latter. Clients include the containers themselves.

#ifndef qvRBTreePlace_h
#define qvRBTreePlace_h

#include "Base/Containers/qvRBTreeImpl.h"

namespace qv::detail {

struct RBTreePlace {
    enum Kind { isFree, isTaken, isElsewhere };

    Kind kind;
    RBTreeImpl::Node * node; // the parent of the new node, or the node that has the key already
    bool left;               // whether the new node becomes the left child

    static RBTreePlace free(RBTreeImpl::Node * parent, bool left) { return {isFree, parent, left}; }
    static RBTreePlace taken(RBTreeImpl::Node * node) { return {isTaken, node, false}; }
    static RBTreePlace elsewhere() { return {isElsewhere, nullptr, false}; }

    // Between two nodes that follow each other in order one of the facing links is free.
    static RBTreePlace between(RBTreeImpl::Node * before, RBTreeImpl::Node * behind) {
        return before->right ? free(behind, true) : free(before, false);
    }
};

// The place directly in front of the hint or directly behind it, if it is one of these. keyFirst(node) tells whether
// the key goes in front of the node, nodeFirst(node) whether the node goes in front of the key.
template <typename KeyFirst, typename NodeFirst>
RBTreePlace uniquePlaceAt(RBTreeImpl & tree, RBTreeImpl::Node * hint, KeyFirst keyFirst, NodeFirst nodeFirst) {
    if (hint == tree.end() || keyFirst(hint)) {
        if (hint == tree.begin())
            return RBTreePlace::free(hint, true);
        RBTreeImpl::Node * const before = hint->prev();
        return nodeFirst(before) ? RBTreePlace::between(before, hint) : RBTreePlace::elsewhere();
    }
    if (!nodeFirst(hint))
        return RBTreePlace::taken(hint);
    RBTreeImpl::Node * const behind = hint->next();
    if (behind == tree.end() || keyFirst(behind))
        return RBTreePlace::between(hint, behind);
    return RBTreePlace::elsewhere();
}

// The same for a key that goes behind those that are equal to it.
template <typename KeyFirst>
RBTreePlace multiPlaceAt(RBTreeImpl & tree, RBTreeImpl::Node * hint, KeyFirst keyFirst) {
    if (hint == tree.end() || keyFirst(hint)) {
        if (hint == tree.begin())
            return RBTreePlace::free(hint, true);
        RBTreeImpl::Node * const before = hint->prev();
        return keyFirst(before) ? RBTreePlace::elsewhere() : RBTreePlace::between(before, hint);
    }
    RBTreeImpl::Node * const behind = hint->next();
    if (behind == tree.end() || keyFirst(behind))
        return RBTreePlace::between(hint, behind);
    return RBTreePlace::elsewhere();
}

} // namespace qv::detail

#endif
