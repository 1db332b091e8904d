// What holds for every container that finds elements by their keys: a typed suite beside the standard library's ordered
// multimap. A test source includes it, names its container types, and instantiates it.

#ifndef qvTestAssociativeSuite_h
#define qvTestAssociativeSuite_h

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "Base/Containers/qvPair.h"
#include "Support/CountedElement.h"
#include "Support/SeededRandom.h"

namespace qvTest {

struct alignas(64) WideKey {
    int value = 0;
    auto operator<=>(WideKey const &) const = default;
};

// Keys made from numbers, in the same order.
template <typename K>
K keyOf(int number) {
    if constexpr (std::is_same_v<K, std::string>)
        return std::string(std::size_t(number / 26), 'z') + char('a' + number % 26);
    else if constexpr (std::is_pointer_v<K>)
        return reinterpret_cast<K>(std::uintptr_t(16 * (number + 1)));
    else if constexpr (std::is_same_v<K, WideKey>)
        return WideKey{number};
    else
        return K(number);
}
template <typename K>
int numberOf(K const & key) {
    if constexpr (std::is_same_v<K, std::string>)
        return 26 * int(key.size() - 1) + (key.back() - 'a');
    else if constexpr (std::is_pointer_v<K>)
        return int(reinterpret_cast<std::uintptr_t>(key) / 16) - 1;
    else if constexpr (std::is_same_v<K, RootedElement>)
        return key.value();
    else if constexpr (std::is_same_v<K, WideKey>)
        return key.value;
    else
        return int(key);
}

template <typename C>
constexpr bool isSet = std::is_same_v<typename C::key_type, typename C::value_type>;
template <typename C>
constexpr bool isUnique = !std::is_same_v<typename C::insert_result, typename C::iterator>;
template <typename C>
constexpr bool isOrdered = requires {
    typename C::key_compare;
};

template <typename C>
typename C::value_type elementOf(int key, int value) {
    if constexpr (isSet<C>)
        return keyOf<typename C::key_type>(key);
    else
        return {keyOf<typename C::key_type>(key), typename C::mapped_type(value)};
}

using Contents = std::vector<std::pair<int, int>>;

// A set's elements count as keys with the value 0.
template <typename C, typename I>
Contents contentsOf(I first, I last) {
    Contents contents;
    for (; first != last; ++first) {
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(&*first) % alignof(typename C::value_type), 0U);
        if constexpr (isSet<C>)
            contents.emplace_back(numberOf(*first), 0);
        else
            contents.emplace_back(numberOf(first->first), numberOf(first->second));
    }
    return contents;
}
template <typename C>
Contents contentsOf(C const & container) {
    Contents contents = contentsOf<C>(container.begin(), container.end());
    // Equal keys stay in the order in which the container has them.
    if (!isOrdered<C>)
        std::stable_sort(contents.begin(), contents.end(), [](auto & a, auto & b) { return a.first < b.first; });
    return contents;
}

// One of our containers and a standard multimap, which is told what ours should have done.
template <typename C>
class Model {
    using K = typename C::key_type;

public:
    explicit Model(SeededRandom & random, int keys) : random_(random), keys_(keys) {}

    void step() {
        int const key = random_.below(keys_);
        int const value = isSet<C> ? 0 : ++lastValue_; // tells elements with equal keys apart
        switch (random_.below(16)) {
        case 0:
        case 1:
            insertInModel(key, value, positionOf(ours_.insert(elementOf<C>(key, value))));
            break;
        case 2: {
            auto const element = elementOf<C>(key, value);
            insertInModel(key, value, positionOf(ours_.insert(element)));
            break;
        }
        case 3:
            if constexpr (isSet<C> && std::is_same_v<K, RootedElement>)
                insertInModel(key, value, positionOf(ours_.emplace(key))); // built before it can be looked up
            else if constexpr (isSet<C>)
                insertInModel(key, value, positionOf(ours_.emplace(keyOf<K>(key))));
            else
                insertInModel(key, value, positionOf(ours_.emplace(keyOf<K>(key), value)));
            break;
        case 4: {
            // Any position will do as a hint.
            auto hint = ours_.begin();
            std::advance(hint, random_.below(ours_.size() + 1));
            if (random_.oneIn(2))
                hint = ours_.find(keyOf<K>(key));
            insertInModel(key, value, ours_.insert(hint, elementOf<C>(key, value)));
            break;
        }
        case 5:
            if (auto const it = ours_.find(keyOf<K>(key)); it != ours_.end()) {
                // An element of the container itself.
                int const itsValue = contentsOf<C>(it, std::next(it))[0].second;
                if (isSet<C> || isUnique<C>)
                    insertInModel(key, itsValue, positionOf(ours_.insert(*it)));
            }
            break;
        case 6:
        case 7:
            EXPECT_EQ(ours_.erase(keyOf<K>(key)), int(model_.erase(key)));
            break;
        case 8:
            if (auto const it = ours_.find(keyOf<K>(key)); it != ours_.end()) {
                // The key lies in the element that goes.
                if constexpr (isSet<C>)
                    EXPECT_EQ(ours_.erase(*it), int(model_.erase(key)));
                else
                    EXPECT_EQ(ours_.erase(it->first), int(model_.erase(key)));
            }
            break;
        case 9:
            if (auto const it = ours_.find(keyOf<K>(key)); it != ours_.end()) {
                auto const [itsKey, itsValue] = contentsOf<C>(it, std::next(it))[0];
                eraseInModel(itsKey, itsValue);
                auto const behind = std::next(it);
                EXPECT_TRUE(ours_.erase(it) == behind);
            }
            break;
        case 10:
            eraseSomeRange();
            break;
        case 11: {
            C const copy(ours_);
            EXPECT_TRUE(copy.validate() && copy == ours_);
            C other;
            other.insert(elementOf<C>(key, value));
            other = copy;
            EXPECT_TRUE(other == copy);
            ours_ = other;
            noteBuckets();
            for (int copies = 0; copies < 3; ++copies)
                turnRuns(1);
            break;
        }
        case 12: {
            C moved(std::move(ours_));
            EXPECT_TRUE(ours_.empty() && ours_.validate());
            ours_.insert(elementOf<C>(key, value));
            swap(ours_, moved);
            EXPECT_EQ(moved.size(), 1);
            moved = std::move(ours_);
            ours_ = std::move(moved);
            noteBuckets();
            break;
        }
        case 13:
            if (random_.oneIn(20)) {
                ours_.clear();
                model_.clear();
            } else if (random_.oneIn(3)) {
                changeLoadFactor();
            } else if (random_.oneIn(10)) {
                EXPECT_EQ(qv::erase_if(ours_, [](auto const & e) { return oddKey(e); }),
                          int(std::erase_if(model_, [](auto const & e) { return e.first % 2; })));
            }
            break;
        default:
            if constexpr (!isSet<C> && isUnique<C>)
                assignOrTry(key, value);
            break;
        }
        search(random_.below(keys_));
    }

    void check() const {
        ASSERT_TRUE(ours_.validate());
        Contents const expected(model_.begin(), model_.end());
        ASSERT_EQ(contentsOf(ours_), expected);
        ASSERT_EQ(ours_.size(), int(expected.size()));
    }
    int elementsOfKind() const { return int(model_.size()) * (isSet<C> ? 1 : 2); }

private:
    static auto positionOf(typename C::insert_result const & result) {
        if constexpr (isUnique<C>)
            return result.first;
        else
            return result;
    }
    static bool oddKey(auto const & element) {
        if constexpr (isSet<C>)
            return numberOf(element) % 2;
        else
            return numberOf(element.first) % 2;
    }

    void insertInModel(int key, int value, typename C::const_iterator position) {
        auto const old = model_.find(key);
        bool const isNew = !isUnique<C> || old == model_.end();
        if (noteBuckets())
            turnRuns(0);
        if (!isOrdered<C> && isNew && old != model_.end())
            model_.emplace_hint(std::next(model_.find(key)), key, value); // second of its run
        else if (isNew)
            model_.emplace(key, value);
        Contents const expected = {{key, isNew ? value : old->second}};
        EXPECT_EQ(contentsOf<C>(position, std::next(position)), expected);
    }
    // Whether the table grew since the last time. Then the order in each run of equal keys has turned round.
    bool noteBuckets() {
        if constexpr (!isOrdered<C>)
            return std::exchange(buckets_, ours_.bucket_count()) < ours_.bucket_count();
        return false;
    }
    // Each run of equal keys in hash containers, from its element at index first on.
    void turnRuns(int first) {
        for (auto it = model_.begin(); !isOrdered<C> && it != model_.end();) {
            auto const behind = model_.upper_bound(it->first);
            std::vector<int> values;
            for (auto from = std::next(it, first); from != behind; ++from)
                values.insert(values.begin(), from->second);
            std::advance(it, first);
            for (int value : values)
                (it++)->second = value;
        }
    }
    void changeLoadFactor() {
        if constexpr (!isOrdered<C>) {
            static constexpr float factors[] = {0.3F, 0.8F, 1.0F, 4.0F};
            ours_.max_load_factor(factors[random_.below(4)]);
            EXPECT_GE(ours_.bucket_count(), int(double(ours_.size()) / double(ours_.max_load_factor())));
            if (noteBuckets())
                turnRuns(0);
        }
    }
    void eraseInModel(int key, int value) {
        auto it = model_.find(key);
        while (it->second != value)
            ++it;
        model_.erase(it);
    }
    void eraseSomeRange() {
        if (!random_.oneIn(4))
            return;
        auto first = ours_.begin();
        std::advance(first, random_.below(ours_.size() + 1));
        auto last = first;
        for (int n = random_.oneIn(4) ? ours_.size() : random_.below(8); n > 0 && last != ours_.end(); --n)
            ++last;
        for (auto [key, value] : contentsOf<C>(first, last))
            eraseInModel(key, value);
        EXPECT_TRUE(ours_.erase(first, last) == last);
    }
    void assignOrTry(int key, int value) {
        if constexpr (!isSet<C> && isUnique<C>) {
            bool const known = model_.count(key) > 0;
            if (random_.oneIn(3)) {
                if constexpr (isOrdered<C>) {
                    auto const hint = std::next(ours_.begin(), random_.below(ours_.size() + 1));
                    auto const it = ours_.insert_or_assign(hint, keyOf<K>(key), typename C::mapped_type(value));
                    EXPECT_EQ(numberOf(it->first), key);
                } else {
                    EXPECT_EQ(ours_.insert_or_assign(keyOf<K>(key), typename C::mapped_type(value)).second, !known);
                }
                model_.erase(key);
                model_.emplace(key, value);
            } else if (random_.oneIn(2)) {
                insertInModel(key, value, ours_.try_emplace(keyOf<K>(key), value).first);
            } else {
                EXPECT_EQ(numberOf(ours_[keyOf<K>(key)]), known ? model_.find(key)->second : 0);
                if (!known)
                    model_.emplace(key, 0);
                EXPECT_EQ(&ours_.at(keyOf<K>(key)), &ours_[keyOf<K>(key)]);
            }
        }
    }
    void search(int key) {
        K const k = keyOf<K>(key);
        int const n = int(model_.count(key));
        C const & ours = ours_;
        EXPECT_EQ(ours.count(k), n);
        EXPECT_EQ(ours.contains(k), n > 0);
        EXPECT_EQ(ours.find(k) == ours.end(), n == 0);
        auto const range = ours.equal_range(k);
        EXPECT_EQ(contentsOf<C>(range.first, range.second).size(), std::size_t(n));
        if constexpr (isOrdered<C>) {
            auto const lower = ours.lower_bound(k);
            EXPECT_EQ(std::distance(ours.begin(), lower), std::distance(model_.begin(), model_.lower_bound(key)));
            EXPECT_TRUE(range.first == lower && range.second == ours.upper_bound(k));
            EXPECT_EQ(std::distance(lower, ours.upper_bound(k)), n);
        }
    }

    SeededRandom & random_;
    int keys_;
    int lastValue_ = 0;
    int buckets_ = 0;
    C ours_;
    std::multimap<int, int> model_;
};

// Nodes of a tree whose children lie in a map of the kind at hand.
template <template <typename...> typename Map>
void takesFromMapsInItsOwnElements() {
    struct Tree {
        Map<int, Tree> children;
        bool operator==(Tree const & other) const { return children == other.children; }
    };
    Tree tree;
    for (int i : {1, 2, 3})
        tree.children.emplace(i, Tree()).first->second.children.emplace(10 * i, Tree());
    Tree const before = tree;
    Tree & inner = tree.children.find(2)->second;
    inner.children = tree.children;
    EXPECT_TRUE(inner.children.validate() && inner.children == before.children);
    tree.children = inner.children;
    EXPECT_TRUE(tree.children.validate() && tree == before);
}

template <typename C>
class Associative : public ::testing::Test {};

template <typename C>
constexpr bool countsElements = std::is_same_v<typename C::value_type, RootedElement> ||
                                std::is_same_v<typename C::value_type, qv::pair<RootedElement const, RootedElement>>;

TYPED_TEST_SUITE_P(Associative);

TYPED_TEST_P(Associative, BehavesLikeTheStandardOne) {
    ElementBalance balance;
    SeededRandom random;
    for (int keys : {3, 20, 100, 100, 500}) {
        Model<TypeParam> model(random, keys);
        for (int i = 0; i < 600; ++i) {
            model.step();
            model.check();
            if (this->HasFailure())
                return;
        }
        if (countsElements<TypeParam>) {
            ASSERT_EQ(balance.alive(), model.elementsOfKind());
        }
    }
}

TYPED_TEST_P(Associative, ACopyThatThrowsLosesNothing) {
    using C = TypeParam;
    if constexpr (countsElements<C>) {
        ElementBalance balance;
        C const source = {elementOf<C>(1, 1), elementOf<C>(2, 2), elementOf<C>(3, 3), elementOf<C>(4, 4)};
        auto const newElement = elementOf<C>(9, 9);
        for (int failAt = 1; failAt <= (isSet<C> ? 1 : 2); ++failAt) {
            C c = source;
            ElementCounts::copiesUntilFailure = failAt;
            EXPECT_THROW(c.insert(newElement), qvTest::CopyFailure);
            ElementCounts::copiesUntilFailure = failAt;
            EXPECT_THROW(c.insert(c.begin(), newElement), qvTest::CopyFailure);
            EXPECT_TRUE(c.validate() && c == source);
        }
        for (int failAt : {1, 4}) {
            C c = {elementOf<C>(7, 7)};
            ElementCounts::copiesUntilFailure = failAt;
            EXPECT_THROW(C{source}, qvTest::CopyFailure);
            ElementCounts::copiesUntilFailure = failAt;
            EXPECT_THROW(c = source, qvTest::CopyFailure);
            EXPECT_TRUE(c.validate());
        }
        ElementCounts::reset();
        C c;
        if constexpr (isSet<C>)
            c.emplace(5);
        else
            c.try_emplace(RootedElement(5), 5);
        C moved(std::move(c));
        c = std::move(moved);
        EXPECT_EQ(ElementCounts::copies, 0);
        EXPECT_EQ(ElementCounts::moves, isSet<C> ? 0 : 1);
    }
}

TYPED_TEST_P(Associative, ComparesByElements) {
    using C = TypeParam;
    C const a = {elementOf<C>(1, 1), elementOf<C>(2, 2)};
    C b;
    b.setNumElementsInBlock(3);
    b = {elementOf<C>(2, 2), elementOf<C>(1, 1)};
    EXPECT_TRUE(a == b);
    b.insert(elementOf<C>(3, 3));
    EXPECT_FALSE(a == b);
    if constexpr (isOrdered<C>) {
        EXPECT_TRUE(a < b && b >= a);
        EXPECT_TRUE(std::is_sorted(a.begin(), a.end()));
        EXPECT_EQ(contentsOf<C>(b.rbegin(), b.rend()).front().first, 3);
    }
}

REGISTER_TYPED_TEST_SUITE_P(Associative, BehavesLikeTheStandardOne, ACopyThatThrowsLosesNothing, ComparesByElements);

} // namespace qvTest

#endif
