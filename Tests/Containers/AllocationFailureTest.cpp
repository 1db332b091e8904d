// Every operation of every container, with the first, second, third ... allocation refused until it succeeds.

#include <gtest/gtest.h>

#include <new>
#include <utility>

#include "Base/Containers/qvBlockAllocator.h"
#include "Base/Containers/qvHashMap.h"
#include "Base/Containers/qvHashSet.h"
#include "Base/Containers/qvList.h"
#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvSet.h"
#include "Base/Containers/qvVector.h"
#include "Support/CountedElement.h"
#include "Support/FailingAllocation.h"

using qvTest::FailingAllocation;
using qvTest::MovableElement;
using qvTest::RootedElement;

namespace {

enum class Guarantee { asItWas, valid };

// Runs the operation on copies of the container. How many allocations it took in the end.
template <typename C, typename Operation>
int refuseAllocations(C const & original, Guarantee guarantee, Operation operation) {
    for (int allowed = 0;; ++allowed) {
        qvTest::ElementBalance balance;
        C c = original;
        int const alive = balance.alive();
        bool failed = false;
        {
            FailingAllocation failing(allowed);
            try {
                operation(c);
            } catch (std::bad_alloc const &) {
                failed = true;
            }
            EXPECT_EQ(failed, failing.struck());
        }
        EXPECT_TRUE(c.validate());
        if (!failed)
            return allowed;
        if (guarantee == Guarantee::asItWas) {
            EXPECT_TRUE(c == original);
            EXPECT_EQ(balance.alive(), alive);
        }
    }
}

// Insertions must not take from an argument that they have no room for. In a vector the slot is behind the last
// element.
template <typename T>
constexpr auto appendMoved = [](auto & c) {
    T moved(77);
    try {
        c.insert(c.end(), std::move(moved));
    } catch (std::bad_alloc const &) {
        EXPECT_TRUE(moved == T(77));
        throw;
    }
};

struct alignas(128) WideElement {
    int value = 0;
    WideElement(int v = 0) : value(v) {}
    auto operator<=>(WideElement const &) const = default;
};

} // namespace

TEST(AllocationFailure, Vectors) {
    auto const forType = []<typename T>(qv::vector<T> original) {
        auto const one = Guarantee::asItWas;
        original.reserve(original.size());
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.append(v[0]); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.insert(v.begin(), v[2]); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.emplace(v.begin(), 7); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, appendMoved<T>), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.append(std::move(v[0])); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.reserve(100); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.setSize(100, v[1]); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.append(v); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { v.insert(v.begin(), v.begin(), v.end()); }), 2);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & v) { qv::vector<T> copy(v); }), 1);
        EXPECT_EQ(refuseAllocations(original, one,
                                    [&](auto & v) {
                                        qv::vector<T> const longer(50, T(1));
                                        v = longer;
                                    }),
                  2);
    };
    forType(qv::vector<MovableElement>{1, 2, 3});
    forType(qv::vector<WideElement>{1, 2, 3});
}

TEST(AllocationFailure, Lists) {
    auto const forType = []<typename T>(qv::list<T> const & original) {
        auto const one = Guarantee::asItWas;
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { l.append(l.front()); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { l.emplace_front(7); }), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { l.insert(l.begin(), 4, l.front()); }), 4);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { l.append(l); }), 3);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { qv::list<T> copy(l); }), 3);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { l.assign({4, 5, 6, 7, 8}); }), 5);
        EXPECT_EQ(refuseAllocations(original, one, appendMoved<T>), 1);
        EXPECT_EQ(refuseAllocations(original, one, [](auto & l) { l.sort(std::greater<>()); }), 0);
    };
    forType(qv::list<RootedElement>{1, 2, 3});
    forType(qv::list<WideElement>{1, 2, 3});
}

TEST(AllocationFailure, TreesAndHashTables) {
    auto const forType = []<typename C>(C original) {
        // Ten nodes fill a block, and seven or fourteen elements the buckets.
        auto const insertNext = [](auto & c) {
            if constexpr (std::is_same_v<typename C::key_type, typename C::value_type>)
                c.insert(c.size());
            else
                c.emplace(c.size(), 1);
        };
        while (original.size() < 29) {
            int const allocations = refuseAllocations(original, Guarantee::asItWas, insertNext);
            EXPECT_LE(allocations, 3);
            if constexpr (std::is_same_v<typename C::key_type, typename C::value_type>)
                refuseAllocations(original, Guarantee::asItWas, appendMoved<typename C::key_type>);
            insertNext(original);
        }
        EXPECT_GE(refuseAllocations(original, Guarantee::asItWas, [](auto & c) { C copy(c); }), 3);
        EXPECT_GE(refuseAllocations(original, Guarantee::valid,
                                    [&](auto & c) {
                                        c = C();
                                        c = original;
                                    }),
                  3);
    };
    forType(qv::set<RootedElement>());
    forType(qv::map<RootedElement, RootedElement>());
    forType(qv::set<WideElement>());
    forType(qv::multiset<int>());
    forType(qv::hash_set<RootedElement>());
    forType(qv::hash_multiset<RootedElement>());
    forType(qv::hash_map<RootedElement, RootedElement>());
}

TEST(AllocationFailure, BlockAllocatorsTakeABlockForEachRoundOfElements) {
    qv::BlockAllocator allocator(8, 10);
    FailingAllocation failing(2);
    for (int round = 0; round < 2; ++round) {
        void * taken[20];
        for (void *& p : taken)
            p = allocator.alloc();
        EXPECT_THROW(allocator.alloc(), std::bad_alloc);
        EXPECT_EQ(allocator.numAllocated(), 20);
        for (void * p : taken)
            allocator.free(p);
    }
    EXPECT_TRUE(allocator.validate());
}
