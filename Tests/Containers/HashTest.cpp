#include "Base/Containers/qvHash.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "Base/Containers/qvHashMap.h"
#include "Base/Containers/qvHashSet.h"
#include "Base/Containers/qvSet.h"
#include "Containers/AssociativeSuite.h"
#include "Support/SeededRandom.h"

namespace {

// A table of int keys and int values, as code without the templates sees it. An int is its own hash value unless a test
// gives another.
class IntTable : public qv::HashTableImpl {
public:
    struct IntNode {
        HashNodeImpl links;
        int key;
        int value;
    };
    static int at(void const * p) { return *static_cast<int const *>(p); }
    static IntNode const * typed(HashNodeImpl const * node) { return reinterpret_cast<IntNode const *>(node); }

    IntTable() : HashTableImpl(&sTable) {}

    HashNodeImpl * add(int key, int value, unsigned hash) {
        rehash(size() + 1);
        return insert_non_unique_noresize(hash, &key, &value);
    }
    HashNodeImpl * add(int key) { return add(key, key, unsigned(key)); }
    int size() const { return count_; }
    using HashTableImpl::count;
    void growAt(int count) {
        int const before = std::exchange(count_, count);
        EXPECT_THROW(growForOne(), std::length_error);
        count_ = before;
    }

    // In the order of the walk.
    std::string text() {
        std::string result;
        for (HashNodeImpl * node = firstNode(); node; node = node->nextItem(this))
            result += std::to_string(typed(node)->key) + '=' + std::to_string(typed(node)->value) + ' ';
        return validate() ? result : "not valid";
    }

private:
    static void copyInt(void * dst, void const * src) { *static_cast<int *>(dst) = at(src); }
    static void constructInt(void * dst) { *static_cast<int *>(dst) = -1; }
    static constexpr TypeUtil sTable = {sizeof(IntNode),
                                        1,
                                        offsetof(IntNode, key),
                                        offsetof(IntNode, key),
                                        offsetof(IntNode, value),
                                        [](void const * a, void const * b) { return at(a) == at(b); },
                                        &copyInt,
                                        &copyInt,
                                        &constructInt,
                                        nullptr,
                                        nullptr};
};

} // namespace

// Values worked out from the definition of the stages by a separate program.
TEST(HashFunction, GivesTheKnownValuesAtEveryEntryIntoTheCycle) {
    unsigned char bytes[40];
    for (int i = 0; i < 40; ++i)
        bytes[i] = static_cast<unsigned char>(7 * i + 200);
    unsigned const ofBytes[] = {0x0,        0xa2048016, 0x1926edea, 0xd3d08280, 0x6be15189, 0xc262c147, 0x1830855,
                                0xea90b7a7, 0xc9e712d9, 0x3d198d21, 0x8b612f80, 0xcf345d53, 0x57123296, 0x1c88dddb,
                                0xa720ce23, 0xf9e34027, 0x4c38866c, 0x1082cd74, 0xb264da25};
    auto const * const chars = reinterpret_cast<char const *>(bytes);
    for (int n = 0; n < int(std::size(ofBytes)); ++n) {
        EXPECT_EQ(qv::hashfunction(bytes, n), ofBytes[n]) << n;
        EXPECT_EQ(qv::hashfunction(chars, chars + n), ofBytes[n]) << n;
    }
    EXPECT_EQ(qv::hashfunction(bytes, 34), 0x2ebb01b0U);
    EXPECT_EQ(qv::hashfunction(bytes, -3), 0U);
    wchar_t wide[8];
    std::memcpy(wide, bytes, sizeof wide);
    EXPECT_EQ(qv::hashfunction(wide, 8), ofBytes[16]);

    std::string const text = "The quick \xe4\xf6";
    unsigned const ofText[] = {0x0,       0x29f9d4d5, 0x16c8d6b0, 0xe2bbf0e8, 0x62e8f1e8,
                               0xb8b3420, 0x40221d71, 0xe893cc99, 0xc7026fd9};
    for (std::size_t n = 0; n < std::size(ofText); ++n)
        EXPECT_EQ(qv::hashfunction(text.substr(0, n).c_str()), ofText[n]) << n;
    EXPECT_NE(qv::hashfunction(text.substr(10).c_str()), qv::hashfunction(text.substr(11).c_str()));

    std::vector<unsigned> words(600);
    for (unsigned i = 0; i < 600; ++i)
        words[i] = i * 0x9e3779b9U;
    std::pair<int, unsigned> const ofWords[] = {
        {0, 0x0},         {1, 0x8defc240},  {2, 0x9cad1392},  {3, 0x97bd30bf},  {4, 0x794deab2},  {5, 0xd2f7f7c6},
        {13, 0xa4cd7e76}, {16, 0xbb60d934}, {17, 0x49073f3b}, {31, 0x2e1c7aea}, {32, 0x27e5589c}, {600, 0xb75d87fd}};
    for (auto [n, value] : ofWords)
        EXPECT_EQ(qv::hashfunction(words.data(), n), value) << n;
}

TEST(Pair, ConvertsFromOtherPairsAsTheirPartsDo) {
    struct Wrapped {
        explicit Wrapped(int);
    };
    using Ints = std::pair<int, int>;
    static_assert(std::is_convertible_v<Ints, qv::pair<long, int>> &&
                  std::is_convertible_v<Ints &, qv::pair<int, long>>);
    static_assert(std::is_constructible_v<qv::pair<Wrapped, int>, Ints>);
    static_assert(!std::is_convertible_v<Ints, qv::pair<Wrapped, int>>);
    static_assert(!std::is_convertible_v<Ints &, qv::pair<int, Wrapped>>);
    static_assert(!std::is_constructible_v<qv::pair<std::string, int>, Ints>);
    static_assert(!std::is_constructible_v<qv::pair<std::string, int>, Ints &>);
}

TEST(Hash, DefaultsFollowEquality) {
    enum class Colour : short { red = 3 };
    EXPECT_EQ(qv::hash<int>()(-5), unsigned(-5));
    EXPECT_EQ(qv::hash<std::int64_t>()(7), 7U);
    EXPECT_NE(qv::hash<std::int64_t>()(std::int64_t(1) << 40), 0U);
    EXPECT_EQ(qv::hash<Colour>()(Colour::red), 3U);
    EXPECT_EQ(qv::hash<double>()(0.0), qv::hash<double>()(-0.0));
    std::string const text = "text";
    EXPECT_EQ(qv::hash<std::string>()(text), qv::hash<std::string_view>()(text));
    EXPECT_EQ(qv::hash<std::string>()(text), qv::hashfunction(text.data(), text.data() + 4));
    char const other[] = "text";
    EXPECT_NE(qv::hash<char const *>()(text.c_str()), qv::hash<char const *>()(other)); // pointers are compared as such
    qv::hash_set<char const *, qv::text_hash, qv::text_equal> const texts = {"text", "Text"};
    EXPECT_TRUE(texts.contains(other));
    qv::hash_map<qv::pair<int, std::string>, int> pairs;
    pairs[{1, "a"}] = 2;
    EXPECT_EQ(pairs.at({1, "a"}), 2);
    EXPECT_THROW(pairs.at({2, "a"}), std::out_of_range);
}

TEST(HashTableImpl, GrowsByPrimesAndNeverShrinks) {
    IntTable table;
    int const one = 1;
    EXPECT_EQ(table.bucket_count(), 0);
    EXPECT_EQ(table.findNode(1, &one), nullptr);
    EXPECT_EQ(table.count(1, &one), 0);
    EXPECT_EQ(table.firstNode(), nullptr);
    EXPECT_EQ(table.eraseKey(1, &one), 0);
    EXPECT_EQ(table.load_factor(), 0.0F);
    table.clear();
    table.eraseNode(nullptr);
    EXPECT_EQ(IntTable::typed(table.get(1, &one))->value, -1);
    EXPECT_EQ(table.bucket_count(), 7);
    for (int key = 2; key <= 7; ++key)
        table.add(key);
    EXPECT_EQ(table.bucket_count(), 7);
    EXPECT_EQ(table.load_factor(), 1.0F);
    table.max_load_factor(2.0F);
    EXPECT_EQ(table.bucket_count(), 7);
    table.max_load_factor(0.5F);
    EXPECT_EQ(table.bucket_count(), 29);
    table.max_load_factor(0.0F);
    table.max_load_factor(-1.0F);
    EXPECT_EQ(table.max_load_factor(), 0.5F);
    table.growAt(std::numeric_limits<int>::max());
    table.clear();
    EXPECT_EQ(table.bucket_count(), 29);
    EXPECT_EQ(table.load_factor(), 0.0F);
    EXPECT_EQ(table.max_bucket_count(), 1610612741);

    // Each step of growth, with the buckets told by the remainder itself.
    IntTable growing;
    int const steps[] = {7, 13, 29, 53, 97, 193, 389, 769, 1543, 3079, 6151, 12289};
    int at = -1;
    qvTest::SeededRandom random;
    for (int n = 1; n <= 12289; ++n) {
        growing.add(n, n, random.bits());
        while (at < 0 || n > steps[at])
            ++at;
        ASSERT_EQ(growing.bucket_count(), steps[at]) << n;
    }
    EXPECT_TRUE(growing.validate());
    for (int i = 0; i < 1000; ++i) {
        unsigned const hash = random.bits();
        ASSERT_EQ(growing.bucketNum(hash), int(hash % 12289U));
        ASSERT_EQ(growing.bucketNum(hash, 7), int(hash % 7U));
    }
    EXPECT_EQ(growing.bucketNum(0xffffffffU), int(0xffffffffU % 12289U));
    int sum = 0;
    int longest = 0;
    for (int i = 0; i < growing.bucket_count(); ++i) {
        sum += growing.bucket_size(i);
        longest = std::max(longest, growing.bucket_size(i));
    }
    EXPECT_EQ(sum, 12289);
    EXPECT_EQ(growing.max_bucket_size(), longest);
}

TEST(HashTableImpl, OrderInTheBuckets) {
    IntTable table;
    for (int key : {1, 8, 15, 2})
        table.add(key); // 1, 8 and 15 share a bucket of 7, newest first
    EXPECT_EQ(table.text(), "15=15 8=8 1=1 2=2 ");
    table.add(8, 80, 8);
    table.add(8, 81, 8); // directly behind the first with its key
    EXPECT_EQ(table.text(), "15=15 8=8 8=81 8=80 1=1 2=2 ");
    int const eight = 8;
    int const value = 800;
    auto * const first = table.insert_unique_noresize(8, &eight, &value);
    EXPECT_EQ(IntTable::typed(first)->value, 8);
    // An equal key is found in the bucket whatever its stored hash; a search asks for the hash too.
    EXPECT_EQ(table.insert_unique_noresize(1, &eight, &value), first);
    EXPECT_EQ(table.findNode(1, &eight), nullptr);
    EXPECT_EQ(table.count(8, &eight), 3);

    IntTable copy;
    copy.add(100);
    copy.copy(&table); // into more buckets than before, and in the order of the walk
    copy.copy(&copy);
    EXPECT_EQ(copy.text(), "1=1 8=8 8=80 8=81 15=15 2=2 ");
    EXPECT_EQ(table.eraseKey(8, &IntTable::typed(first)->key), 3);
    EXPECT_EQ(table.text(), "15=15 1=1 2=2 ");
    auto * const last = table.findNode(2, std::initializer_list<int>{2}.begin());
    IntTable other;
    other.add(2);
    other.eraseNode(last); // not one of its own
    EXPECT_EQ(other.text(), "2=2 ");
    table.eraseNode(last);
    table.max_load_factor(0.1F); // two elements ask for 20 buckets
    EXPECT_EQ(table.bucket_count(), 29);
    EXPECT_EQ(table.text(), "1=1 15=15 ");
    table.swap(other);
    EXPECT_EQ(table.text() + other.text(), "2=2 1=1 15=15 ");
    EXPECT_EQ(other.max_load_factor(), 0.1F);
    other.rehash(10);
    EXPECT_EQ(other.bucket_count(), 193);
}

TEST(HashMap, HashesWithStateAndWideResults) {
    struct Salted {
        std::uint64_t salt;
        std::uint64_t operator()(int i) const { return salt * std::uint64_t(i); }
    };
    struct Modulo {
        int n;
        bool operator()(int a, int b) const { return a % n == b % n; }
    };
    struct ModuloHash {
        int n;
        unsigned operator()(int i) const { return unsigned(i % n); }
    };
    qv::hash_set<int, Salted> salted(0, Salted{0x123456789abcdefULL});
    for (int i = 0; i < 100; ++i)
        salted.insert(i);
    auto const copy = salted;
    EXPECT_TRUE(copy == salted && copy.validate() && copy.contains(99) && !copy.contains(100));

    qv::hash_multimap<int, char, ModuloHash, Modulo> m(0, ModuloHash{10}, Modulo{10});
    for (int i = 0; i < 40; ++i)
        m.emplace(i, char('a' + i % 26));
    EXPECT_EQ(m.count(123), 4);
    auto const same = m;
    EXPECT_TRUE(same == m && same.validate());
    EXPECT_EQ(m.erase(13), 4);
    EXPECT_EQ(m.size(), 36);
    EXPECT_FALSE(same == m);
    m.reserve(1000);
    EXPECT_EQ(m.bucket_count(), 1543);
    EXPECT_EQ(m.bucket(14), 4);
    qvTest::takesFromMapsInItsOwnElements<qv::hash_map>();
}

namespace qvTest {

// Many different keys with the same hash value, and many values in the same bucket.
struct PoorHash {
    template <typename K>
    unsigned operator()(K const & key) const {
        return unsigned(numberOf(key)) % 3 * 7;
    }
};

using HashContainers =
    ::testing::Types<qv::hash_set<int>, qv::hash_map<std::int64_t, int>, qv::hash_map<char *, short>,
                     qv::hash_multimap<std::string, int>, qv::hash_set<WideKey, PoorHash>,
                     qv::hash_multiset<int, PoorHash>, qv::hash_map<RootedElement, RootedElement, PoorHash>,
                     qv::hash_multiset<RootedElement>>;
INSTANTIATE_TYPED_TEST_SUITE_P(Hash, Associative, HashContainers);

} // namespace qvTest

// Keys that repeat: inserting all of a container into itself doubles each.
TEST(MultiContainers, TakeTheirOwnElements) {
    qv::multiset<int> tree = {1, 2, 2, 3};
    tree.insert(tree.begin(), tree.end());
    EXPECT_TRUE(std::ranges::equal(tree, std::array{1, 1, 2, 2, 2, 2, 3, 3}));
    qv::hash_multiset<int> hash = {1, 2, 2, 3};
    hash.insert(hash.begin(), hash.end());
    EXPECT_EQ(hash.size(), 8);
    EXPECT_EQ(hash.count(2), 4);
    EXPECT_TRUE(hash.validate());
}

// A load factor above 1 asks a small table for no bucket at all.
TEST(HashMap, NewTablesTakeElementsAtAnyLoadFactor) {
    for (float const factor : {1.5F, 2.0F, 100.0F, std::numeric_limits<float>::infinity()}) {
        qv::hash_map<int, int> map;
        map.max_load_factor(factor);
        for (int i = 0; i < 20; ++i)
            map[i] = -i;
        qv::hash_map<int, int> const copied = map;
        qv::hash_map<int, int> assigned;
        assigned = map;
        for (int i = 0; i < 20; ++i) {
            EXPECT_TRUE(map.at(i) == -i && copied.at(i) == -i && assigned.at(i) == -i);
        }
        map.reserve(-5);
        map.rehash(0);
        EXPECT_TRUE(map == copied && map.validate());
    }
}
