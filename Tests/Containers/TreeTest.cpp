#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <ranges>
#include <string>
#include <string_view>
#include <vector>

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvSet.h"
#include "Containers/AssociativeSuite.h"
#include "Support/SeededRandom.h"

namespace {

// A tree of int keys and int values, as code without the templates sees it.
class IntTree : public qv::RBTreeImpl {
public:
    struct IntNode {
        Node links;
        int key;
        int value;
    };
    static int at(void const * p) { return *static_cast<int const *>(p); }
    static IntNode const * typed(Node const * node) { return reinterpret_cast<IntNode const *>(node); }

    IntTree() : RBTreeImpl(&sTable) {}
    IntTree(IntTree const &) = default;
    using RBTreeImpl::count;
    using RBTreeImpl::sDistanceBetween;

    std::string text() const {
        std::string result;
        for (Node const * node = begin(); node != end(); node = node->next())
            result += std::to_string(typed(node)->key) + '=' + std::to_string(typed(node)->value) + ' ';
        return validate() ? result : "not valid";
    }

private:
    static void copyInt(void * dst, void const * src) { *static_cast<int *>(dst) = at(src); }
    static void constructInt(void * dst) { *static_cast<int *>(dst) = -1; }
    static void destructSubtree(RBTreeImpl * tree, Node * root) {
        if (!root)
            return;
        destructSubtree(tree, root->left);
        destructSubtree(tree, root->right);
        tree->freeNode(root);
    }
    static Node * bound(RBTreeImpl const * tree, int key) {
        auto * node = const_cast<Node *>(tree->begin());
        while (node != tree->end() && typed(node)->key < key)
            node = node->next();
        return node;
    }
    static Node * lower(RBTreeImpl const * tree, void const * key) { return bound(tree, at(key)); }
    static Node * upper(RBTreeImpl const * tree, void const * key) { return bound(tree, at(key) + 1); }
    static bool position(RBTreeImpl const * tree, void const * key, Node ** parent) {
        *parent = const_cast<Node *>(tree->end());
        bool left = true;
        for (Node * node = tree->root(); node; node = left ? node->left : node->right) {
            *parent = node;
            left = at(key) < typed(node)->key;
        }
        return left;
    }
    static constexpr TypeUtil sTable = {sizeof(IntNode),
                                        offsetof(IntNode, key),
                                        offsetof(IntNode, value),
                                        [](void const * a, void const * b) { return at(a) < at(b); },
                                        &copyInt,
                                        &copyInt,
                                        &constructInt,
                                        nullptr,
                                        nullptr,
                                        &destructSubtree,
                                        &lower,
                                        &upper,
                                        &position};
};

} // namespace

TEST(RBTreeImpl, InsertsFindsAndErasesUntyped) {
    IntTree tree;
    auto const insert = [&](int key, int value) { return tree.insertNodeUnique(&key, &value); };
    for (int key : {5, 1, 9, 3, 7})
        insert(key, key);
    qv::RBTreeImpl::Node * const five = insert(5, 50);
    EXPECT_EQ(IntTree::typed(five)->value, 5);
    EXPECT_EQ(tree.text(), "1=1 3=3 5=5 7=7 9=9 ");
    int key = 7;
    EXPECT_EQ(IntTree::typed(tree.findNode(&key))->value, 7);
    key = 4;
    EXPECT_EQ(tree.findNode(&key), tree.end());
    void * const value = tree.getValuePtr(&key);
    EXPECT_EQ(IntTree::at(value), -1);
    EXPECT_EQ(tree.getValuePtr(&key), value);
    EXPECT_EQ(tree.size(), 6);

    // Hints, right and wrong: at the end, at the front, at an equal key, far away.
    for (int wanted : {0, 2, 4, 6, 10}) {
        for (qv::RBTreeImpl::Node * hint : {tree.begin(), five, five->prev(), tree.end()}) {
            IntTree copy(tree);
            qv::RBTreeImpl::Node * same = copy.begin();
            for (auto * node = tree.begin(); node != hint; node = node->next())
                same = same->next();
            qv::RBTreeImpl::Node * const inserted = copy.insertNodeUnique(same, &wanted, &wanted);
            EXPECT_EQ(IntTree::typed(inserted)->value, wanted == 4 ? -1 : wanted);
            EXPECT_EQ(copy.size(), wanted == 4 ? 6 : 7);
            EXPECT_TRUE(copy.validate());
        }
    }

    int const number = 5;
    for (int i : {10, 11, 12})
        tree.insertNodeNonUnique(&number, &i);
    int const last = 13;
    tree.insertNodeNonUnique(five, &number, &last);
    EXPECT_EQ(tree.text(), "1=1 3=3 4=-1 5=5 5=10 5=11 5=12 5=13 7=7 9=9 ");
    auto const range = tree.equalRange(&number);
    EXPECT_EQ(IntTree::sDistanceBetween(range.first, range.second), 5);
    EXPECT_EQ(tree.count(&number), 5);
    EXPECT_EQ(tree.eraseNodesMatching(&IntTree::typed(range.first)->key), 5);
    EXPECT_EQ(tree.text(), "1=1 3=3 4=-1 7=7 9=9 ");

    IntTree other;
    other.swap(tree);
    EXPECT_EQ(tree.text(), "");
    EXPECT_EQ(tree.begin(), tree.end());
    tree.copy(other);
    tree.copy(tree);
    EXPECT_EQ(tree.text(), other.text());
    tree.eraseNodesRange(tree.begin(), tree.begin()->next());
    EXPECT_EQ(tree.text(), "3=3 4=-1 7=7 9=9 ");
    tree.eraseNodesRange(tree.begin(), tree.end());
    EXPECT_TRUE(tree.begin() == tree.end() && tree.end()->prev() == tree.end() && tree.validate());
    tree.insertNodeUnique(&number);
    EXPECT_EQ(tree.text(), "5=-1 ");
}

TEST(RBTreeImpl, NeighboursAndNodesSurviveErasure) {
    qvTest::SeededRandom random;
    IntTree tree;
    for (int key = 1; key <= 1000; ++key)
        tree.insertNodeUnique(&key, &key);
    std::vector<qv::RBTreeImpl::Node *> nodes;
    for (auto * node = tree.begin(); node != tree.end(); node = node->next())
        nodes.push_back(node);
    while (!nodes.empty()) {
        auto const it = nodes.begin() + random.below(int(nodes.size()));
        tree.eraseNode(*it);
        nodes.erase(it);
        if (nodes.size() % 20)
            continue;
        ASSERT_TRUE(tree.validate());
        auto * node = tree.begin();
        for (auto * expected : nodes) {
            ASSERT_EQ(node, expected);
            node = node->next();
        }
    }
    EXPECT_EQ(tree.root(), nullptr);
}

TEST(Tree, OrderingsWithStateAndOtherKeysThanTheOwn) {
    struct Modulo {
        int n;
        bool operator()(int a, int b) const { return a % n < b % n; }
    };
    qv::set<int, Modulo> s(Modulo{10});
    for (int i : {25, 13, 5, 41})
        s.insert(i);
    EXPECT_EQ(std::vector<int>(s.begin(), s.end()), (std::vector<int>{41, 13, 25}));
    auto const copy = s;
    EXPECT_TRUE(copy.contains(91) && copy == s && copy.validate());

    qv::map<std::string, int, qv::less<>> m = {{"a", 1}, {"b", 2}};
    EXPECT_EQ(m.find(std::string_view("b"))->second, 2);
    EXPECT_TRUE(m.contains("a") && !m.contains("c") && m.lower_bound("aa")->second == 2);
    EXPECT_THROW(m.at("z"), std::out_of_range);
    // To a key of another type several elements may be equal.
    struct ByLetter {
        using is_transparent = void;
        bool operator()(std::string const & a, std::string const & b) const { return a < b; }
        bool operator()(std::string const & a, char b) const { return a[0] < b; }
        bool operator()(char a, std::string const & b) const { return a < b[0]; }
    };
    qv::set<std::string, ByLetter> words = {"ant", "bee", "bug", "cat"};
    EXPECT_EQ(*words.equal_range('b').first, "bee");
    EXPECT_EQ(*std::as_const(words).equal_range('b').second, "cat");
    EXPECT_EQ(words.erase('b'), 2);
    EXPECT_EQ(*words.erase(words.begin()), "cat");
    qvTest::takesFromMapsInItsOwnElements<qv::map>();
    auto [position, isNew] = m.insert(std::pair("a", 7));
    EXPECT_TRUE(!isNew && position->second == 1);

    qv::map<int, std::unique_ptr<int>> owners;
    owners[1] = std::make_unique<int>(1);
    auto kept = std::make_unique<int>(2);
    owners.try_emplace(1, std::move(kept));
    EXPECT_NE(kept, nullptr); // untouched, since the key was there
    owners.insert(qv::make_pair(2, std::move(kept)));
    EXPECT_EQ(*owners.at(2), 2);
    static_assert(std::ranges::bidirectional_range<qv::map<int, int>>);
    static_assert(std::is_same_v<decltype(*std::declval<qv::set<int> &>().begin()), int const &>);
    EXPECT_EQ(std::ranges::count_if(owners, [](auto const & e) { return e.second != nullptr; }), 2);
}

namespace qvTest {

using TreeContainers = ::testing::Types<qv::set<int>, qv::map<char *, int>, qv::multimap<int, short>, qv::set<WideKey>,
                                        qv::multimap<std::string, RootedElement>, qv::multiset<RootedElement>,
                                        qv::map<RootedElement, RootedElement>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Tree, Associative, TreeContainers);

} // namespace qvTest
