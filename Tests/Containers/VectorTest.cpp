#include "Base/Containers/qvVector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <iterator>
#include <list>
#include <memory>
#include <ranges>
#include <sstream>
#include <string>
#include <vector>

#include "Containers/SequenceSupport.h"

using qvTest::ElementBalance;
using qvTest::ElementCounts;
using qvTest::MovableElement;
using qvTest::SeededRandom;
using qvTest::valuesOf;
using qvTest::WideElement;

namespace {

struct Owner {
    qv::vector<std::unique_ptr<int>> parts;
    using isBitwiseMovable = Owner;
};

struct Tree {
    qv::vector<Tree> children;
    bool operator==(Tree const &) const = default;
    using isBitwiseMovable = Tree;
};

struct SelfPointing : qv::vector<int> {
    SelfPointing * self = this;
};

// A qv::vector and a std::vector that go through the same random operations.
template <typename T>
class Model {
public:
    explicit Model(SeededRandom & random) : random_(random) {}

    void step() {
        int const n = int(model_.size());
        int const at = random_.below(n + 1);
        int const from = random_.below(n + 1);
        int const to = from + random_.below(n - from + 1);
        int const value = random_.below(1000);
        switch (random_.below(n > 300 ? 17 : 15)) {
        case 0:
        case 1:
            ours_.append(T(value));
            model_.push_back(value);
            break;
        case 2:
            if (from < n) {
                ours_.append(ours_[from]);
                model_.push_back(int(model_[std::size_t(from)]));
            }
            break;
        case 3:
            EXPECT_EQ(ours_.insert(ours_.begin() + at, T(value)) - ours_.begin(), at);
            model_.insert(model_.begin() + at, value);
            break;
        case 4:
            if (from < n) {
                ours_.insert(ours_.begin() + at, ours_[from]);
                model_.insert(model_.begin() + at, int(model_[std::size_t(from)]));
            }
            break;
        case 5: {
            int const count = random_.below(12);
            ours_.insert(ours_.begin() + at, count, n ? ours_[n / 2] : T(value));
            model_.insert(model_.begin() + at, std::size_t(count), n ? int(model_[std::size_t(n / 2)]) : value);
            break;
        }
        case 6: {
            std::vector<int> const source(model_.begin() + from, model_.begin() + to);
            ours_.insert(ours_.cbegin() + at, ours_.begin() + from, ours_.begin() + to);
            model_.insert(model_.begin() + at, source.begin(), source.end());
            break;
        }
        case 7: {
            std::list<int> source(std::size_t(random_.below(9)), value);
            if (n < 100 && random_.oneIn(2)) {
                source.assign(model_.rbegin(), model_.rend());
                ours_.insert(ours_.begin() + at, ours_.rbegin(), ours_.rend());
            } else {
                ours_.insert(ours_.begin() + at, source.begin(), source.end());
            }
            model_.insert(model_.begin() + at, source.begin(), source.end());
            break;
        }
        case 8: {
            std::istringstream ourStream("7 8 9");
            using Words = std::istream_iterator<int>;
            ours_.insert(ours_.begin() + at, Words(ourStream), Words());
            for (int offset : {0, 1, 2})
                model_.insert(model_.begin() + at + offset, 7 + offset);
            break;
        }
        case 9:
        case 10:
            if (from < n) {
                EXPECT_EQ(ours_.erase(ours_.begin() + from) - ours_.begin(), from);
                model_.erase(model_.begin() + from);
            }
            break;
        case 11: {
            int const size = random_.below(n + 20);
            ours_.setSize(size, n ? ours_.back() : T(value));
            model_.resize(std::size_t(size), n ? int(model_.back()) : value);
            break;
        }
        case 12:
            ours_.reserve(n + random_.below(40));
            break;
        case 13: {
            qv::vector<T> const copy(ours_);
            EXPECT_EQ(copy.capacity(), n);
            EXPECT_TRUE(copy == ours_);
            qv::vector<T> moved(std::move(ours_));
            EXPECT_TRUE(ours_.empty() && ours_.validate());
            ours_ = std::move(moved);
            break;
        }
        case 14: {
            if (random_.oneIn(4)) {
                int const capacity = ours_.capacity();
                switch (random_.below(n ? 3 : 2)) {
                case 0:
                    ours_.assign(ours_.begin() + from, ours_.begin() + to);
                    model_ = std::vector<int>(model_.begin() + from, model_.begin() + to);
                    break;
                case 1:
                    ours_.assign(ours_.rbegin(), ours_.rend());
                    std::reverse(model_.begin(), model_.end());
                    break;
                default:
                    ours_.assign(to - from, ours_[at / 2]);
                    model_.assign(std::size_t(to - from), int(model_[std::size_t(at / 2)]));
                }
                EXPECT_EQ(ours_.capacity(), capacity);
            } else if (n < 200) {
                ours_.append(ours_);
                EXPECT_EQ(ours_.capacity(), 2 * n);
                std::vector<int> const source = model_;
                model_.insert(model_.end(), source.begin(), source.end());
            }
            break;
        }
        default:
            ours_.erase(ours_.begin() + from, ours_.begin() + to);
            model_.erase(model_.begin() + from, model_.begin() + to);
            break;
        }
    }

    void check() const {
        ASSERT_TRUE(ours_.validate());
        ASSERT_EQ(valuesOf(ours_), model_);
    }
    int size() const { return int(model_.size()); }

private:
    SeededRandom & random_;
    qv::vector<T> ours_;
    std::vector<int> model_;
};

template <typename T>
class VectorOf : public ::testing::Test {};

using ElementTypes = ::testing::Types<short, int, std::int64_t, WideElement, MovableElement>;
TYPED_TEST_SUITE(VectorOf, ElementTypes);

} // namespace

TYPED_TEST(VectorOf, BehavesLikeTheStandardOne) { qvTest::goBesideModel<Model, TypeParam>(20, 300); }

TEST(Vector, GrowsByTheRuleAndOtherwiseExactly) {
    qv::vector<int> v;
    std::vector<int> sizesAtGrowth;
    for (int i = 0; i < 33; ++i) {
        int const before = v.capacity();
        v.append(i);
        if (v.capacity() != before)
            sizesAtGrowth.push_back(i);
    }
    EXPECT_EQ(sizesAtGrowth, (std::vector<int>{0, 8, 16, 24, 32}));
    EXPECT_EQ(v.capacity(), 64);

    qv::vector<int> reserved;
    reserved.reserve(3);
    EXPECT_EQ(reserved.capacity(), 3);
    reserved.reserve(2);
    for (int i : {1, 2, 3})
        reserved.append(i);
    EXPECT_EQ(reserved.capacity(), 3);
    reserved.insert(reserved.begin(), 0);
    EXPECT_EQ(reserved.capacity(), 11);
    reserved.append(qv::vector<int>{4, 5});
    EXPECT_EQ(reserved.capacity(), 6);
    reserved.insert(reserved.begin() + 1, 3, 9);
    EXPECT_EQ(reserved.capacity(), 9);
    reserved.setSize(20);
    EXPECT_EQ(reserved.capacity(), 20);
    EXPECT_EQ(reserved.back(), 0);
    reserved.erase(reserved.begin(), reserved.end());
    EXPECT_EQ(reserved.capacity(), 20);
    reserved = qv::vector<int>{1, 2, 3};
    EXPECT_EQ(reserved.capacity(), 3);
    reserved.clear();
    EXPECT_EQ(reserved.capacity(), 3);
    qv::vector<int> const empty;
    reserved = empty;
    EXPECT_EQ(reserved.capacity(), 0);
    EXPECT_EQ(reserved.data(), nullptr);
    EXPECT_EQ(qv::vector<int>(0, 5).capacity(), 0);
}

TEST(Vector, MovesAndConstructsInPlaceWithoutCopies) {
    ElementBalance balance;
    qv::vector<MovableElement> v;
    for (int i = 0; i < 100; ++i) {
        v.emplace_back(i);
        v.append(MovableElement(i));
        v.insert(v.begin() + i, MovableElement(i));
        v.emplace(v.begin(), i);
    }
    qv::vector<MovableElement> other(std::move(v));
    v = std::move(other);
    v.erase(v.begin(), v.begin() + 100);
    EXPECT_EQ(ElementCounts::copies, 0);
    EXPECT_EQ(ElementCounts::moves, 200); // the temporaries of append and insert; growing and shifting moves nothing
    EXPECT_EQ(other.size() + other.capacity(), 0);

    qv::vector<std::unique_ptr<int>> owners;
    for (int i = 0; i < 50; ++i)
        owners.insert(owners.begin(), std::make_unique<int>(i));
    owners.append(std::move(owners.front()));
    std::sort(owners.begin(), owners.end());
    EXPECT_EQ(owners.front(), nullptr);
    EXPECT_EQ(owners.size(), 51);
    qv::vector<Owner> outer;
    outer.emplace_back().parts.append(std::make_unique<int>(1));
    outer.append(std::move(outer[0]));
    EXPECT_EQ(*outer.back().parts[0], 1);
}

TEST(Vector, ACopyThatThrowsLeavesTheElementsAsTheyWere) {
    ElementBalance balance;
    qv::vector<MovableElement> const source = {1, 2, 3, 4, 5, 6, 7, 8};
    std::list<MovableElement> const listed(source.begin(), source.end());
    auto const attempt = [&](auto operation, int failAt, bool full) {
        qv::vector<MovableElement> v = source;
        if (!full)
            v.reserve(30);
        MovableElement const value(99);
        ElementCounts::copiesUntilFailure = failAt;
        EXPECT_THROW(operation(v, value), qvTest::CopyFailure);
        ElementCounts::copiesUntilFailure = 0;
        EXPECT_TRUE(v.validate());
        EXPECT_TRUE(v == source);
    };
    for (bool full : {false, true}) {
        attempt([](auto & v, auto & value) { v.append(value); }, 1, full);
        attempt([](auto & v, auto & value) { v.insert(v.begin() + 3, value); }, 1, full);
        for (int failAt : {1, 2, 4}) {
            attempt([](auto & v, auto & value) { v.insert(v.begin() + 3, 4, value); }, failAt, full);
            attempt([](auto & v, auto & value) { v.setSize(12, value); }, failAt, full);
            attempt([&](auto & v, auto &) { v.insert(v.begin() + 3, listed.begin(), listed.end()); }, failAt, full);
            attempt([](auto & v, auto &) { v.insert(v.begin() + 3, v.begin() + 1, v.end()); }, failAt, full);
            attempt([](auto & v, auto &) { v.append(v); }, failAt, full);
            attempt([&](auto &, auto &) { qv::vector<MovableElement> copy(source); }, failAt, full);
        }
    }
    qv::vector<MovableElement> target = {1, 2, 3};
    ElementCounts::copiesUntilFailure = 3;
    EXPECT_THROW(target = source, qvTest::CopyFailure);
    EXPECT_TRUE(target.validate());
}

TEST(Vector, RefusesNegativeCountsAndIndicesBeyondTheEnd) {
    EXPECT_THROW(qv::vector<int>(-1), std::length_error);
    EXPECT_THROW(qv::vector<int>().setSize(-1), std::length_error);
    EXPECT_THROW(qv::vector<int>().resize(-1, 7), std::length_error);
    qv::vector<int> const three = {1, 2, 3};
    EXPECT_EQ(three.at(2U), 3);
    EXPECT_THROW(three.at(3), std::out_of_range);
    EXPECT_THROW(three.at(-1), std::out_of_range);
    EXPECT_THROW(three.at(std::size_t(1) << 32), std::out_of_range);
}

TEST(VectorImpl, GrowthStopsAtTheLargestCount) {
    auto const raw = [](void *, int) {};
    struct Access : qv::VectorImpl {
        using VectorImpl::growByOne;
        using VectorImpl::VectorImpl;
    };
    static constexpr qv::VectorImpl::TypeUtil bytes = {nullptr, nullptr, nullptr, nullptr, nullptr, 1};
    Access core(&bytes);
    core.setSize(INT_MAX, raw);
    char const c = 'x';
    EXPECT_THROW(core.appendAndReturnPtr(), std::length_error);
    EXPECT_THROW(core.append(core), std::length_error);
    EXPECT_THROW(core.insert(core.data(), 1, &c), std::length_error);
    EXPECT_EQ(core.size(), INT_MAX);
    core.setSize(0x40000001, raw);
    Access grown(&bytes);
    grown.reserve(0x40000001);
    grown.growByOne();
    EXPECT_EQ(grown.capacity(), INT_MAX);
    EXPECT_THROW(grown.growByOne(), std::length_error);
}

TEST(Vector, WorksWithTheStandardLibrary) {
    static_assert(std::ranges::contiguous_range<qv::vector<int>>);
    static_assert(std::ranges::contiguous_range<qv::vector<int> const>);
    static_assert(std::is_same_v<decltype(qv::vector{1, 2}), qv::vector<int>>);
    Tree tree;
    tree.children.append(Tree());
    tree.children.append(tree);
    EXPECT_TRUE(Tree(tree) == tree);

    qv::vector<int> v = {3, 1, 2};
    std::ranges::sort(v);
    EXPECT_TRUE(v == (qv::vector{1, 2, 3}));
    EXPECT_TRUE((v < qv::vector{1, 2, 4}) && (v > qv::vector{1, 2}));
    EXPECT_EQ(std::vector<int>(v.rbegin(), v.rend()), (std::vector<int>{3, 2, 1}));
    EXPECT_TRUE(v.contains(2));
    v.resize(10, 2);
    EXPECT_EQ(erase(v, 2), 8);
    EXPECT_EQ(erase_if(v, [](int i) { return i == 1; }), 1);
    EXPECT_TRUE(v == qv::vector{3});
    EXPECT_FALSE(qv::isBitwiseMovable<std::string>::value);
    EXPECT_FALSE(qv::isBitwiseMovable<SelfPointing>::value); // does not inherit the promise
}

// The untyped operations, as code without the template uses them.
TEST(VectorImpl, OperationsWithFunctionsAndPointers) {
    using Functions = qv::detail::ElementFunctions<short>;
    static constexpr qv::VectorImpl::TypeUtil util = {&Functions::copyConstruct,
                                                      &Functions::copyConstructRange,
                                                      nullptr,
                                                      nullptr,
                                                      &Functions::distance,
                                                      sizeof(short)};
    auto const textOf = [](qv::VectorImpl const & v) {
        std::string text;
        for (int i = 0; i < v.size(); ++i)
            text += std::to_string(static_cast<short const *>(v.data())[i]) + ' ';
        return text;
    };
    auto const at = [](qv::VectorImpl & v, int i) { return static_cast<short *>(v.data()) + i; };
    short const seven = 7;
    auto const twice = [](void * dst, void const * src) {
        *static_cast<short *>(dst) = short(2 * *static_cast<short const *>(src));
    };
    auto const nine = [](void * dst) { *static_cast<short *>(dst) = 9; };

    qv::VectorImpl v(
        2, [](void * p, int n) { std::fill_n(static_cast<short *>(p), n, short(5)); }, &util);
    v.append(&seven);
    v.append(&seven, twice);
    v.append(nine);
    v.append(static_cast<void (*)(void *)>(nullptr));
    *at(v, 5) = 1;
    *static_cast<short *>(v.appendAndReturnPtr()) = 2;
    EXPECT_EQ(textOf(v), "5 5 7 14 9 1 2 ");
    EXPECT_EQ(v.insert(at(v, 1), at(v, 4), twice), at(v, 1)); // its source moves while the slot opens
    EXPECT_EQ(v.insert(v.data(), nine), v.data());
    *static_cast<short *>(v.insertAndReturnPtr(at(v, 9))) = 3;
    EXPECT_EQ(textOf(v), "9 5 18 5 7 14 9 1 2 3 ");
    v.insert(at(v, 2), at(v, 1), at(v, 4)); // the gap splits its source
    EXPECT_EQ(textOf(v), "9 5 5 18 5 18 5 7 14 9 1 2 3 ");
    int const wide[] = {70, 71};
    auto const distanceOfInts = [](void const * last, void const * first) {
        return int(static_cast<int const *>(last) - static_cast<int const *>(first));
    };
    auto const copyInts = [](void * dst, void const * src, int n) {
        std::copy_n(static_cast<int const *>(src), n, static_cast<short *>(dst));
    };
    v.insert(at(v, 13), wide, wide + 2, distanceOfInts, copyInts);
    EXPECT_EQ(v.erase(at(v, 0), at(v, 11)), v.data());
    EXPECT_EQ(textOf(v), "2 3 70 71 ");
    // Elements of another kind inside its own: a byte each, with the gap in their middle.
    auto const distanceOfBytes = [](void const * last, void const * first) {
        return int(static_cast<char const *>(last) - static_cast<char const *>(first));
    };
    auto const copyBytes = [](void * dst, void const * src, int n) {
        std::copy_n(static_cast<char const *>(src), n, static_cast<short *>(dst));
    };
    v.insert(at(v, 1), at(v, 0), at(v, 2), distanceOfBytes, copyBytes);
    EXPECT_EQ(textOf(v), "2 2 0 3 0 3 70 71 ");
    v.assign(at(v, 5), at(v, 8), distanceOfBytes, copyBytes);
    EXPECT_EQ(textOf(v), "3 0 70 0 71 0 ");
    v.assign(wide, wide + 2, distanceOfInts, copyInts);
    v.insert(v.data(), at(v, 0), at(v, 2));
    v.assign(at(v, 1), at(v, 3));
    EXPECT_EQ(v.erase(at(v, 0)), v.data());
    v.setSize(3, at(v, 0));
    v.eraseBack();
    EXPECT_EQ(textOf(v), "70 70 ");
    qv::VectorImpl copies(3, &seven, &util);
    copies.swap(v);
    v.copy(copies);
    EXPECT_EQ(textOf(v), "70 70 ");
    EXPECT_EQ(v.capacity(), 2);
    EXPECT_EQ(qv::VectorImpl(0, &seven, &util).data(), nullptr);
    EXPECT_TRUE(v.validate() && copies.validate());

    static constexpr qv::VectorImpl::TypeUtil pointers = {nullptr, nullptr, nullptr, nullptr, nullptr, sizeof(void *)};
    qv::VectorImpl p(&pointers);
    for (int i = 0; i < 20; ++i)
        p.appendAndAssignPtr(wide + i % 2);
    p.insertAndAssignPtr(p.data(), &seven);
    auto const * const stored = static_cast<void const * const *>(p.data());
    EXPECT_TRUE(stored[0] == &seven && stored[1] == wide && stored[20] == wide + 1);
}

// The source is a vector that lies in an element of the one that changes.
TEST(Vector, TakesFromVectorsInItsOwnElements) {
    for (int children = 1; children < 40; ++children) {
        Tree tree;
        for (int i = 0; i < children; ++i)
            tree.children.append(Tree());
        for (int i = 0; i < 3; ++i)
            tree.children[0].children.append(Tree());
        Tree const before = tree;
        tree.children.append(tree.children[0].children);
        ASSERT_EQ(tree.children.size(), children + 3);
        EXPECT_TRUE(tree.children[0] == before.children[0]);
        Tree inner = tree;
        inner.children[0].children = inner.children;
        EXPECT_TRUE(inner.children[0].children == tree.children);
        inner.children.assign(inner.children[0].children.begin(), inner.children[0].children.end());
        EXPECT_TRUE(inner == tree);
        tree.children = tree.children[0].children;
        EXPECT_TRUE(tree.children == before.children[0].children);
    }
}
