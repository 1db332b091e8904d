#include "Base/Utility/Internal/PackTree.h"

#include <algorithm>

namespace qvUtil {

namespace {

constexpr int nowhere = -1;

} // namespace

PackTree::PackTree(int width, int height) { nodes_.push_back({0, 0, width, height, width, height, nowhere, 0}); }

// The node that comes behind a whole subtree in the order of the search.
int PackTree::nextBehind(int node) const {
    for (;;) {
        int const parent = nodes_[static_cast<std::size_t>(node)].parent;
        if (parent == nowhere)
            return nowhere;
        if (node == nodes_[static_cast<std::size_t>(parent)].child)
            return node + 1;
        node = parent;
    }
}

int PackTree::findLeaf(int width, int height) const {
    int node = 0;
    while (node != nowhere) {
        Node const & here = nodes_[static_cast<std::size_t>(node)];
        if (!canHold(here, width, height))
            node = nextBehind(node);
        else if (here.child == 0)
            return node;
        else
            node = here.child;
    }
    return nowhere;
}

// Cuts along the axis with more slack; gives the part of the leaf that has the rectangle's size on the axis that is
// cut.
int PackTree::cut(int leaf, int width, int height) {
    Node const old = nodes_[static_cast<std::size_t>(leaf)];
    bool const isAcross = old.width - width <= old.height - height;
    int const child = static_cast<int>(nodes_.size());
    Node first = old;
    Node second = old;
    first.parent = second.parent = leaf;
    if (isAcross) {
        first.height = height;
        second.y += height;
        second.height -= height;
    } else {
        first.width = width;
        second.x += width;
        second.width -= width;
    }
    for (Node * part : {&first, &second}) {
        part->freeWidth = part->width;
        part->freeHeight = part->height;
        nodes_.push_back(*part);
    }
    nodes_[static_cast<std::size_t>(leaf)].child = child;
    return child;
}

// The leaf is free no more, and what the nodes above it can hold becomes less.
void PackTree::take(int leaf) {
    Node & taken = nodes_[static_cast<std::size_t>(leaf)];
    taken.freeWidth = taken.freeHeight = nowhere;
    for (int node = taken.parent; node != nowhere;) {
        Node & here = nodes_[static_cast<std::size_t>(node)];
        Node const & first = nodes_[static_cast<std::size_t>(here.child)];
        Node const & second = nodes_[static_cast<std::size_t>(here.child) + 1];
        int const width = std::max(first.freeWidth, second.freeWidth);
        int const height = std::max(first.freeHeight, second.freeHeight);
        if (width == here.freeWidth && height == here.freeHeight)
            return;
        here.freeWidth = width;
        here.freeHeight = height;
        node = here.parent;
    }
}

bool PackTree::insert(int width, int height, Place & place) {
    int leaf = findLeaf(width, height);
    if (leaf == nowhere)
        return false;
    auto const isLarger = [&] {
        Node const & node = nodes_[static_cast<std::size_t>(leaf)];
        return node.width != width || node.height != height;
    };
    while (isLarger())
        leaf = cut(leaf, width, height);
    place = {nodes_[static_cast<std::size_t>(leaf)].x, nodes_[static_cast<std::size_t>(leaf)].y};
    take(leaf);
    return true;
}

} // namespace qvUtil
