#include "Base/Utility/qvImplBase.h"
#include "Base/Utility/qvReference.h"
#include "Base/Utility/qvReferenceCount.h"

#include <gtest/gtest.h>

#include <unordered_set>

namespace {

struct Node : qv::ReferenceCount {
    explicit Node(int v = 0) : value(v) { ++living; }
    Node(Node const & other) : qv::ReferenceCount(other), value(other.value), next(other.next) { ++living; }
    Node & operator=(Node const &) = default;
    ~Node() override { --living; }
    int value;
    qv::Reference<Node> next;
    static inline int living = 0;
};
struct Leaf : Node {};

static_assert(sizeof(qv::Reference<Node>) == sizeof(Node *));
static_assert(std::has_virtual_destructor_v<qv::ImplBase>);

TEST(Reference, TheLastHolderDeletes) {
    {
        qv::Reference<Node> first(new Node(5));
        qv::Reference<Node> const second = first;
        qv::Reference<Node const> const third = second;
        auto & self = first;
        first = self;
        EXPECT_EQ(first->refs(), 3);
        qv::Reference<Node> const moved = std::move(first);
        EXPECT_EQ(first, nullptr);
        EXPECT_EQ(moved->refs(), 3);
        EXPECT_EQ(moved, third);
        Node * const raw = qv::Reference<Node>(moved).release();
        EXPECT_EQ(moved->refs(), 4);
        raw->unref();
        // Copying an object copies no count.
        qv::Reference<Node> const copy(new Node(*raw));
        EXPECT_EQ(copy->value, 5);
        EXPECT_EQ(copy->refs(), 1);
        *copy = *raw;
        EXPECT_TRUE(copy->refs() == 1 && raw->refs() == 3);
    }
    EXPECT_EQ(Node::living, 0);
}

// Walking a list by assignment releases the node whose member is the source of the assignment.
TEST(Reference, AssignmentCountsTheNewObjectFirst) {
    qv::Reference<Node> head;
    for (int i = 0; i < 3; ++i) {
        qv::Reference<Node> node(new Node(i));
        node->next = head;
        head = node;
    }
    for (int expected = 2; head; --expected) {
        EXPECT_EQ(head->value, expected);
        head = head->next;
        EXPECT_EQ(Node::living, expected);
    }
}

TEST(Reference, ConvertsAndCompares) {
    qv::Reference<Leaf> const leaf(new Leaf);
    qv::Reference<Node> const node = leaf;
    EXPECT_EQ(qv::dynamicReference<Leaf>(node), leaf);
    EXPECT_EQ(qv::staticReference<Leaf>(node)->refs(), 3);
    qv::Reference<Node> const plain(new Node);
    EXPECT_FALSE(qv::dynamicReference<Leaf>(plain));
    EXPECT_NE(plain, node);
    EXPECT_EQ(plain < node, plain.get() < node.get());
    std::unordered_set<qv::Reference<Node>> const set{node, plain, leaf};
    EXPECT_EQ(set.size(), 2U);
}

} // namespace
