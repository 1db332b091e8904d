#include "Base/Containers/qvList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <list>
#include <memory>
#include <numeric>
#include <ranges>
#include <string>
#include <utility>
#include <vector>

#include "Containers/SequenceSupport.h"

using qvTest::ElementBalance;
using qvTest::ElementCounts;
using qvTest::make;
using qvTest::RootedElement;
using qvTest::SeededRandom;
using qvTest::valueOf;
using qvTest::valuesOf;
using qvTest::WideElement;

namespace {

// Two lists that exchange elements, and two standard ones that do the same.
template <typename T>
class Model {
public:
    explicit Model(SeededRandom & random) : random_(random) {}

    void step() {
        int const one = random_.below(2);
        auto & ours = ours_[one];
        auto & theirs = theirs_[one];
        int const n = int(theirs.size());
        int const at = random_.below(n + 1);
        int const value = random_.below(50);
        auto const ourPos = std::next(ours.begin(), at);
        auto const theirPos = std::next(theirs.begin(), at);
        // Does the same to ours and theirs, with the other of each at hand.
        auto const both = [&](auto change) {
            change(ours, ours_[1 - one]);
            change(theirs, theirs_[1 - one]);
        };
        switch (random_.below(n > 200 ? 22 : 18)) {
        case 0:
            ours.append(make<T>(value));
            theirs.push_back(value);
            break;
        case 1:
            ours.prepend(make<T>(value));
            theirs.push_front(value);
            break;
        case 2:
            EXPECT_EQ(valueOf(*ours.insert(ourPos, make<T>(value))), value);
            theirs.insert(theirPos, value);
            break;
        case 3: {
            T const element = make<T>(value);
            ours.insert(ourPos, at % 7, element);
            theirs.insert(theirPos, std::size_t(at % 7), value);
            break;
        }
        case 4: {
            // A range of the list itself, with the position at its edge or inside it.
            auto const middle = std::next(ours.begin(), at / 2);
            std::list<int> const source(theirs.begin(), theirPos);
            EXPECT_EQ(ours.insert(middle, ours.begin(), ourPos) == middle, at == 0);
            theirs.insert(std::next(theirs.begin(), at / 2), source.begin(), source.end());
            break;
        }
        case 5:
            if (n < 100) {
                std::list<int> const source = theirs;
                ours.append(ours);
                theirs.insert(theirs.end(), source.begin(), source.end());
            }
            break;
        case 6: {
            auto const source = theirs_[1 - one];
            if (n + int(source.size()) < 300) {
                ours.prepend(ours_[1 - one]);
                theirs.insert(theirs.begin(), source.begin(), source.end());
            }
            break;
        }
        case 7: {
            if (random_.oneIn(3)) {
                ours.assign(ours.rbegin(), ours.rend());
                theirs.reverse();
                break;
            }
            std::vector<int> values(std::size_t(random_.below(2 * n + 3)));
            std::generate(values.begin(), values.end(), [this] { return random_.below(50); });
            std::vector<T> elements;
            for (int v : values)
                elements.push_back(make<T>(v));
            ours.assign(elements.begin(), elements.end());
            theirs.assign(values.begin(), values.end());
            break;
        }
        case 8:
            both([](auto & l, auto & other) { l = other; });
            break;
        case 9:
            both([&](auto & l, auto & other) { l.splice(std::next(l.begin(), at), other); });
            break;
        case 10: {
            int const count = int(theirs_[1 - one].size());
            int const from = random_.below(count + 1);
            int const to = from + random_.below(count - from + 1);
            both([&](auto & l, auto & other) {
                l.splice(std::next(l.begin(), at), other, std::next(other.begin(), from), std::next(other.begin(), to));
            });
            break;
        }
        case 11:
            if (int const to = random_.below(n + 1); at < n)
                both([&](auto & l, auto &) { l.splice(std::next(l.begin(), to), l, std::next(l.begin(), at)); });
            break;
        case 12: {
            // Rotation: a range of the list itself to another place in it. At its own place nothing happens, which the
            // standard list leaves open.
            ours.splice(ours.begin(), ours, ourPos, ours.end());
            if (at)
                theirs.splice(theirs.begin(), theirs, theirPos, theirs.end());
            break;
        }
        case 13:
            ours.sort();
            theirs.sort(isLess);
            break;
        case 14:
            for (int i : {0, 1}) {
                ours_[i].sort();
                theirs_[i].sort(isLess);
            }
            ours.merge(ours_[1 - one]);
            theirs.merge(theirs_[1 - one], isLess);
            break;
        case 15:
            both([](auto & l, auto &) { l.reverse(); });
            break;
        case 16:
            both([](auto & l, auto & other) { l.swap(other); });
            if (random_.oneIn(2)) {
                qv::list<T> moved(std::move(ours));
                EXPECT_TRUE(ours.empty() && ours.validate() && moved.validate());
                ours = std::move(moved);
            }
            break;
        case 17:
            if (at < n) { // the value lies in the list that loses it
                EXPECT_EQ(ours.remove(*ourPos), int(theirs.remove(int(*theirPos))));
            }
            break;
        case 18:
            EXPECT_EQ(ours.unique(), int(theirs.unique()));
            break;
        case 19:
            if (at < n)
                both([&](auto & l, auto &) { l.erase(std::next(l.begin(), at)); });
            break;
        case 20:
            both([&](auto & l, auto &) { l.erase(std::next(l.begin(), at), l.end()); });
            break;
        default:
            ours.resize(n / 2);
            theirs.resize(std::size_t(n / 2));
        }
    }

    void check() const {
        for (int i : {0, 1}) {
            ASSERT_TRUE(ours_[i].validate());
            ASSERT_EQ(valuesOf(ours_[i]), std::vector<int>(theirs_[i].begin(), theirs_[i].end()));
        }
    }
    int size() const { return int(theirs_[0].size() + theirs_[1].size()); }

private:
    static bool isLess(int a, int b) { return make<T>(a) < make<T>(b); }

    SeededRandom & random_;
    qv::list<T> ours_[2];
    std::list<int> theirs_[2];
};

template <typename T>
class ListOf : public ::testing::Test {};

using ElementTypes = ::testing::Types<int, std::string, WideElement, RootedElement>;
TYPED_TEST_SUITE(ListOf, ElementTypes);

} // namespace

TYPED_TEST(ListOf, BehavesLikeTheStandardOne) { qvTest::goBesideModel<Model, TypeParam>(10, 400); }

TEST(List, SortsStablyAtEverySize) {
    using Pair = std::pair<int, int>;
    SeededRandom random;
    auto const byFirst = [](Pair const & a, Pair const & b) { return a.first < b.first; };
    for (int n = 0; n < 300; ++n) {
        qv::list<Pair> ours;
        for (int i = 0; i < n; ++i)
            ours.append(Pair(random.below(n), i));
        std::vector<Pair> theirs(ours.begin(), ours.end());
        ours.sort(byFirst);
        std::stable_sort(theirs.begin(), theirs.end(), byFirst);
        ASSERT_TRUE(ours.validate());
        ASSERT_TRUE(std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end()));
    }
    // A comparison that throws loses no element.
    qv::list<int> l;
    for (int i = 0; i < 100; ++i)
        l.append(random.below(1000));
    int const sum = std::accumulate(l.begin(), l.end(), 0);
    for (int failAt = 1; failAt < 250; failAt += 7) {
        int left = failAt;
        EXPECT_THROW(l.sort([&](int a, int b) { return --left ? a < b : throw failAt; }), int);
        ASSERT_TRUE(l.validate() && l.size() == 100);
        ASSERT_EQ(std::accumulate(l.begin(), l.end(), 0), sum);
        l.splice(l.begin(), l, std::next(l.begin(), random.below(100)), l.end());
    }
}

TEST(List, UniqueKeepsTheLastOfARun) {
    qv::list<std::pair<int, char>> l = {{1, 'a'}, {1, 'b'}, {2, 'c'}, {2, 'd'}, {2, 'e'}, {3, 'f'}};
    auto const sameFirst = [](auto const & a, auto const & b) { return a.first == b.first; };
    EXPECT_EQ(l.unique(sameFirst), 3);
    std::string kept;
    for (auto const & element : l)
        kept += element.second;
    EXPECT_EQ(kept, "bef");
    EXPECT_EQ(l.remove_if([](auto const & element) { return element.first > 1; }), 2);
    EXPECT_EQ(l.unique(sameFirst), 0);
    l.erase(l.begin());
    EXPECT_TRUE(l.begin() == l.end() && l.unique(sameFirst) == 0);
}

TEST(List, AssignKeepsNodesAndConstructsAnew) {
    ElementBalance balance;
    qv::list<RootedElement> l = {1, 2, 3};
    std::vector<RootedElement const *> before;
    for (RootedElement const & element : l)
        before.push_back(&element);
    qv::list<RootedElement> const longer = {4, 5, 6, 7};
    auto const copiesBefore = ElementCounts::copies;
    l = longer;
    EXPECT_EQ(ElementCounts::copies - copiesBefore, 4);
    EXPECT_TRUE(std::equal(before.begin(), before.end(), l.begin(), [](auto * p, auto & e) { return p == &e; }));
    EXPECT_EQ(valuesOf(l), (std::vector<int>{4, 5, 6, 7}));
    l.assign(std::next(l.begin()), std::prev(l.end())); // out of itself
    EXPECT_EQ(valuesOf(l), (std::vector<int>{5, 6}));
    EXPECT_EQ(&l.front(), before[0]);
    l = std::as_const(l);
    EXPECT_EQ(l.size(), 2);
    l.assign(3, RootedElement(8));
    EXPECT_EQ(valuesOf(l), (std::vector<int>{8, 8, 8}));
    EXPECT_EQ(&l.front(), before[0]);
    for (int failAt = 1; failAt <= 4; ++failAt) {
        ElementCounts::copiesUntilFailure = failAt;
        EXPECT_THROW(l = longer, qvTest::CopyFailure);
        EXPECT_TRUE(l.validate());
        ElementCounts::copiesUntilFailure = failAt;
        EXPECT_THROW(l.assign(4, RootedElement(1)), qvTest::CopyFailure);
        EXPECT_TRUE(l.validate());
    }
}

TEST(List, ACopyThatThrowsLeavesTheListAsItWas) {
    ElementBalance balance;
    qv::list<RootedElement> l = {1, 2, 3, 4};
    qv::list<RootedElement> const same = l;
    RootedElement const value(9);
    auto const attempt = [&](int failAt, auto operation) {
        ElementCounts::copiesUntilFailure = failAt;
        EXPECT_THROW(operation(), qvTest::CopyFailure);
        ElementCounts::copiesUntilFailure = 0;
        EXPECT_TRUE(l.validate());
        EXPECT_TRUE(l == same);
    };
    attempt(1, [&] { l.append(value); });
    attempt(1, [&] { l.prepend(value); });
    for (int failAt : {1, 3}) {
        attempt(failAt, [&] { l.insert(l.begin(), 3, value); });
        attempt(failAt, [&] { l.insert(l.begin(), l.begin(), l.end()); });
        attempt(failAt, [&] { l.append(l); });
        attempt(failAt, [&] { qv::list<RootedElement> copy(l); });
        attempt(failAt, [&] { qv::list<RootedElement> copy(l.begin(), l.end()); });
    }
}

TEST(List, MovesAndConstructsInPlaceWithoutCopies) {
    ElementBalance balance;
    qv::list<RootedElement> l;
    for (int i = 0; i < 20; ++i) {
        l.emplace_back(i);
        l.append(RootedElement(i));
        l.insert(l.begin(), RootedElement(i));
    }
    l.sort();
    l.reverse();
    qv::list<RootedElement> other(std::move(l));
    swap(l, other);
    EXPECT_EQ(ElementCounts::copies, 0);
    EXPECT_EQ(ElementCounts::moves, 40);

    qv::list<std::unique_ptr<int>> owners;
    owners.append(std::make_unique<int>(2));
    owners.prepend(std::make_unique<int>(1));
    EXPECT_EQ(*owners.front() + 10 * *owners.back(), 21);
    struct Fixed {
        int value;
        explicit Fixed(int v) : value(v) {}
        Fixed(Fixed const &) = delete;
    };
    qv::list<Fixed> fixed;
    fixed.emplace_back(1);
    fixed.emplace_front(2);
    EXPECT_EQ(fixed.front().value, 2);
}

TEST(List, WorksWithTheStandardLibrary) {
    static_assert(std::ranges::bidirectional_range<qv::list<int>>);
    static_assert(std::ranges::sized_range<qv::list<int> const>);
    static_assert(std::is_convertible_v<qv::list<int>::iterator, qv::list<int>::const_iterator>);
    static_assert(!std::is_convertible_v<qv::list<int>::const_iterator, qv::list<int>::iterator>);
    qv::list<int> const l = {3, 1, 2};
    EXPECT_TRUE(l.contains(1) && l.find(7) == l.end() && *l.find(2) == 2);
    EXPECT_EQ(std::vector<int>(l.rbegin(), l.rend()), (std::vector<int>{2, 1, 3}));
    EXPECT_TRUE((l < qv::list{3, 2}) && (l > qv::list{3, 1}));
    EXPECT_EQ(*std::ranges::max_element(l), 3);
    EXPECT_THROW(qv::list<int>(-1), std::length_error);
}

TEST(List, TakesFromListsInItsOwnElements) {
    struct Tree {
        qv::list<Tree> children;
        bool operator==(Tree const &) const = default;
    };
    Tree tree;
    tree.children.resize(3);
    tree.children.back().children.resize(2);
    tree.children.front() = tree.children.back();
    Tree const before = tree;
    tree.children.front().children = tree.children;
    EXPECT_TRUE(tree.children.front().children == before.children);
    tree.children = tree.children.front().children;
    EXPECT_TRUE(tree == before);
}

// Counts that no memory holds, by way of the core.
TEST(List, AMergeBeyondTheLargestCountMovesNothing) {
    qv::list<int> into = {1, 3};
    qv::list<int> from = {2, 4};
    int & size = reinterpret_cast<qv::ListImpl &>(into).getReferenceToSize();
    size = std::numeric_limits<int>::max() - 1;
    EXPECT_THROW(into.merge(from), std::length_error);
    size = 2;
    EXPECT_TRUE(into == (qv::list{1, 3}) && from == (qv::list{2, 4}) && into.validate() && from.validate());
}

// The untyped operations, as code without the template uses them.
TEST(ListImpl, OperationsWithFunctionsAndPointers) {
    struct IntNode : qv::ListImpl::Node {
        int value;
    };
    using Functions = qv::detail::ElementFunctions<int>;
    using Node = qv::ListImpl::Node;
    static constexpr qv::ListImpl::TypeUtil util = {sizeof(Node) + sizeof(int), sizeof(Node), &Functions::copyConstruct,
                                                    nullptr};
    auto const textOf = [](qv::ListImpl const & l) {
        std::string text;
        for (Node const * node = l.begin(); node != l.end(); node = node->next)
            text += std::to_string(static_cast<IntNode const *>(node)->value) + ' ';
        return l.validate() ? text : "not valid";
    };
    auto const twice = [](void * dst, void const * src) {
        *static_cast<int *>(dst) = 2 * *static_cast<int const *>(src);
    };
    auto const nine = [](void * dst) { *static_cast<int *>(dst) = 9; };
    int const memory[] = {1, -1, 2, -2, 3, -3};

    qv::ListImpl l(&util);
    l.append(memory);
    l.append(memory + 2, twice);
    l.append(nine);
    *static_cast<int *>(l.appendAndReturnPtr()) = 5;
    l.prepend(memory + 4);
    l.prepend(memory + 4, twice);
    l.prepend(nine);
    *static_cast<int *>(l.prependAndReturnPtr()) = 8;
    EXPECT_EQ(textOf(l), "8 9 6 3 1 4 9 5 ");
    Node * const inserted = l.insert(l.begin()->next, memory + 2);
    l.insert(inserted, memory + 2, twice);
    l.insert(inserted, nine);
    static_cast<IntNode *>(l.insertAndReturnNode(l.begin()))->value = 0;
    l.insert(l.end(), memory, memory + 6, 2 * sizeof(int), twice);
    EXPECT_EQ(textOf(l), "0 8 4 9 2 9 6 3 1 4 9 5 2 4 6 ");

    int const key = 9;
    auto const nextMatch = [](Node const * start, qv::ListImpl const & list, void const * k) {
        while (start != list.end() && static_cast<IntNode const *>(start)->value != *static_cast<int const *>(k))
            start = start->next;
        return const_cast<Node *>(start);
    };
    l.erase(&key, nextMatch);
    l.eraseFront();
    l.eraseBack();
    EXPECT_EQ(textOf(l), "8 4 2 6 3 1 4 5 2 4 ");
    qv::ListImpl copies(l);
    copies.erase(copies.begin(), copies.end());
    copies.assign(memory, memory + 4, sizeof(int), &Functions::copyConstruct);
    copies.insert(copies.begin(), l.begin(), l.begin()->next->next);
    EXPECT_EQ(textOf(copies), "8 4 1 -1 2 -2 ");
    Node * const taken = copies.begin();
    Node * const behind = copies.unlink(taken);
    EXPECT_EQ(behind, copies.begin());
    EXPECT_EQ(copies.size(), 5);
    std::free(taken);
    copies.unique([](void const * a, void const * b) {
        return std::abs(*static_cast<int const *>(a)) == std::abs(*static_cast<int const *>(b));
    });
    EXPECT_EQ(textOf(copies), "4 -1 -2 ");
    qv::ListImpl::sTransferNode(copies.begin(), copies.end()->prev);
    EXPECT_EQ(textOf(copies), "-2 4 -1 ");

    // The pointer forms, on a list of the other kind of element.
    static constexpr qv::ListImpl::TypeUtil pointers = {sizeof(Node) + sizeof(void *), sizeof(Node), nullptr, nullptr};
    qv::ListImpl p(&pointers);
    p.appendAndAssignPtr(memory);
    p.prependAndAssignPtr(memory + 1);
    p.insertAndAssignPtr(p.end()->prev, memory + 2);
    std::vector<void const *> stored;
    for (Node * node = p.begin(); node != p.end(); node = node->next)
        stored.push_back(*reinterpret_cast<void const **>(node + 1));
    EXPECT_EQ(stored, (std::vector<void const *>{memory + 1, memory + 2, memory}));
}
