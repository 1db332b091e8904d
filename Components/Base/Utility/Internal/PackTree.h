// The tree of cuts by which rectangles are packed.

#ifndef PackTree_h
#define PackTree_h

#include <vector>

namespace qvUtil {

// Each inner node is cut in two along one axis; a leaf is free or taken. Rectangles go into the first free leaf in the
// order of the tree that is large enough, which is cut until one part has their size.
//
// A node also knows the largest width and the largest height among its free leaves, not always of the same one, so that
// a search passes over most of what cannot hold a rectangle, and still finds the very leaf that it would find without.
// Nothing recurses, as a tree may be as deep as there are rectangles.
class PackTree {
public:
    struct Place {
        int x;
        int y;
    };

    PackTree(int width, int height);

    // False when there is no room. The sizes are not negative.
    bool insert(int width, int height, Place & place);

private:
    struct Node {
        int x;
        int y;
        int width;
        int height;
        int freeWidth; // of the free leaves below or here; -1 without any
        int freeHeight;
        int parent; // -1 at the root
        int child;  // the first of two that follow each other, 0 for a leaf
    };

    bool canHold(Node const & node, int width, int height) const {
        return node.freeWidth >= width && node.freeHeight >= height;
    }
    int findLeaf(int width, int height) const;
    int nextBehind(int node) const;
    int cut(int leaf, int width, int height);
    void take(int leaf);

    std::vector<Node> nodes_;
};

} // namespace qvUtil

#endif
