// The containers beside the standard library's and others that a user may take, with the same keys in the same order.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "Base/Containers/qvBlockAllocator.h"
#include "Base/Containers/qvHashFunction.h"
#include "Base/Containers/qvHashMap.h"
#include "Base/Containers/qvHashSet.h"
#include "Base/Containers/qvList.h"
#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvSet.h"
#include "Base/Containers/qvVector.h"

#ifdef QV_BENCH_ABSL
#include <absl/container/btree_map.h>
#include <absl/container/btree_set.h>
#include <absl/container/node_hash_map.h>
#include <absl/container/node_hash_set.h>
#endif
#ifdef QV_BENCH_BOOST
#include <boost/pool/pool.hpp>
#endif

namespace {

[[noreturn]] void fail(std::string const & what) {
    std::fprintf(stderr, "both sides should give the same: %s\n", what.c_str());
    std::abort();
}

template <typename F>
void add(std::string const & name, F function) {
    benchmark::RegisterBenchmark(name.c_str(), function);
}

std::string sizeText(int n) {
    int exponent = 0;
    for (; n % 10 == 0; n /= 10)
        ++exponent;
    return std::to_string(n) + 'e' + std::to_string(exponent);
}

// Vector

struct Record {
    std::uint64_t fields[8];
};

template <typename T>
T element(std::uint32_t i) {
    if constexpr (std::is_same_v<T, Record>)
        return Record{{i, 1, 2, 3, 4, 5, 6, 7}};
    else if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<T>(std::uintptr_t(i) * 8);
    else
        return T(i);
}
template <typename T>
std::uint64_t weight(T const & value) {
    if constexpr (std::is_same_v<T, Record>)
        return value.fields[0];
    else if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<std::uintptr_t>(value);
    else
        return std::uint64_t(value);
}
// A function of its own, so that the loop is the same wherever it is measured.
template <typename C>
[[gnu::noinline]] std::uint64_t weightOf(C const & container) {
    std::uint64_t sum = 0;
    for (auto const & value : container)
        sum += weight(value);
    return sum;
}

// Inline, so that it does not depend on the compiler's mood whether the vector is a local variable or behind a pointer.
template <typename V>
[[gnu::always_inline]] inline V filledVector(int n) {
    V v;
    for (int i = 0; i < n; ++i)
        v.push_back(element<typename V::value_type>(std::uint32_t(i)));
    return v;
}

template <typename V>
void appendToVector(benchmark::State & state, int n) {
    for (auto _ : state) {
        V v = filledVector<V>(n);
        benchmark::DoNotOptimize(v.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename V>
void iterateVector(benchmark::State & state, int n) {
    V const v = filledVector<V>(n);
    for (auto _ : state)
        benchmark::DoNotOptimize(weightOf(v));
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename V>
void insertInFront(benchmark::State & state, int n) {
    for (auto _ : state) {
        V v;
        for (int i = 0; i < n; ++i)
            v.insert(v.begin(), element<typename V::value_type>(std::uint32_t(i)));
        benchmark::DoNotOptimize(v.data());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename T>
void addVector(std::string const & type) {
    using Qv = qv::vector<T>;
    using Std = std::vector<T>;
    for (int n : {1000, 1000000}) {
        if (weightOf(filledVector<Qv>(n)) != weightOf(filledVector<Std>(n)))
            fail("vector");
        std::string const what = '|' + type + ' ' + sizeText(n) + '|';
        add("vector append" + what + "qv", [n](auto & state) { appendToVector<Qv>(state, n); });
        add("vector append" + what + "std::vector", [n](auto & state) { appendToVector<Std>(state, n); });
        add("vector iterate" + what + "qv", [n](auto & state) { iterateVector<Qv>(state, n); });
        add("vector iterate" + what + "std::vector", [n](auto & state) { iterateVector<Std>(state, n); });
    }
    std::string const what = '|' + type + " 1e3|";
    add("vector insert in front" + what + "qv", [](auto & state) { insertInFront<Qv>(state, 1000); });
    add("vector insert in front" + what + "std::vector", [](auto & state) { insertInFront<Std>(state, 1000); });
}

// List

std::vector<int> shuffledNumbers(int n) {
    std::vector<int> numbers(static_cast<std::size_t>(n));
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    return numbers;
}

template <typename L>
L filledList(std::vector<int> const & numbers) {
    L l;
    for (int i : numbers)
        l.push_back(i);
    return l;
}

template <typename L>
void appendToList(benchmark::State & state, int n) {
    std::vector<int> const numbers = shuffledNumbers(n);
    for (auto _ : state) {
        L l = filledList<L>(numbers);
        benchmark::DoNotOptimize(l.back());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename L>
void eraseFromList(benchmark::State & state, int n) {
    std::vector<int> const numbers = shuffledNumbers(n);
    for (auto _ : state) {
        state.PauseTiming();
        L l = filledList<L>(numbers);
        state.ResumeTiming();
        // Every second element, then what is left from the front.
        for (auto it = l.begin(); it != l.end(); ++it)
            it = l.erase(it);
        while (!l.empty())
            l.erase(l.begin());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename L>
void sortList(benchmark::State & state, int n) {
    std::vector<int> const numbers = shuffledNumbers(n);
    for (auto _ : state) {
        state.PauseTiming();
        {
            L l = filledList<L>(numbers);
            state.ResumeTiming();
            l.sort();
            benchmark::DoNotOptimize(l.front());
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * n);
}

void addList() {
    using Qv = qv::list<int>;
    using Std = std::list<int>;
    auto ours = filledList<Qv>(shuffledNumbers(1000));
    auto theirs = filledList<Std>(shuffledNumbers(1000));
    ours.sort();
    theirs.sort();
    if (!std::equal(ours.begin(), ours.end(), theirs.begin(), theirs.end()))
        fail("list");
    for (int n : {1000, 100000}) {
        std::string const what = "|int " + sizeText(n) + '|';
        add("list append" + what + "qv", [n](auto & state) { appendToList<Qv>(state, n); });
        add("list append" + what + "std::list", [n](auto & state) { appendToList<Std>(state, n); });
        add("list erase" + what + "qv", [n](auto & state) { eraseFromList<Qv>(state, n); });
        add("list erase" + what + "std::list", [n](auto & state) { eraseFromList<Std>(state, n); });
    }
    for (int n : {1000, 1000000}) {
        std::string const what = "|int " + sizeText(n) + '|';
        add("list sort" + what + "qv", [n](auto & state) { sortList<Qv>(state, n); });
        add("list sort" + what + "std::list", [n](auto & state) { sortList<Std>(state, n); });
    }
}

// Sets and maps

// Distinct keys in random order; those from n on are not in the containers.
template <typename K>
std::vector<K> makeKeys(int n) {
    std::mt19937 random(7);
    std::vector<K> keys;
    keys.reserve(static_cast<std::size_t>(n));
    for (int i : shuffledNumbers(n)) {
        if constexpr (std::is_same_v<K, std::string>) {
            // 8 to 23 letters, of which the first are often the same.
            std::string key = "item";
            key += std::to_string(i);
            while (key.size() < 8 || random() % 12)
                key += char('a' + random() % 26);
            keys.push_back(key.substr(0, 23));
        } else if constexpr (std::is_pointer_v<K>) {
            keys.push_back(reinterpret_cast<K>(std::uintptr_t(0x10000000) + std::uintptr_t(i) * 48));
        } else {
            keys.push_back(static_cast<K>(std::uint32_t(i) * 2654435761U));
        }
    }
    return keys;
}

// In a large container this many keys come and go in one round; a small one is filled and emptied as a whole, each time
// with other keys, so that no branch predictor learns the way to them.
int roundOf(int n) { return n > 1000 ? 10000 : n; }
constexpr int smallRounds = 50;

template <typename K>
std::vector<K> const & keysFor(int n) {
    static std::map<int, std::vector<K>> made;
    auto & keys = made[n];
    if (keys.empty())
        keys = makeKeys<K>(n > 1000 ? n + roundOf(n) : smallRounds * n);
    return keys;
}

constexpr int lookups = 100000;

// Which keys are looked up: long enough that no branch predictor learns it.
std::vector<int> const & lookupOrder(int n) {
    static std::map<int, std::vector<int>> made;
    auto & order = made[n];
    std::mt19937 random(3);
    while (order.size() < lookups)
        order.push_back(int(random() % unsigned(n)));
    return order;
}

// The same keys as those of each small round, in another order.
std::vector<int> const & eraseOrder(int n) {
    static std::map<int, std::vector<int>> made;
    auto & order = made[n];
    if (order.empty()) {
        order.resize(std::size_t(smallRounds * n));
        std::iota(order.begin(), order.end(), 0);
        for (auto first = order.begin(); first != order.end(); first += n)
            std::shuffle(first, first + n, std::mt19937(9));
    }
    return order;
}

template <typename C>
constexpr bool isSet = std::is_same_v<typename C::key_type, typename C::value_type>;

template <typename C>
void insertKey(C & container, typename C::key_type const & key, int value) {
    if constexpr (isSet<C>)
        container.insert(key);
    else
        container.emplace(key, value);
}
template <typename Element>
std::uint64_t elementWeight(Element const & element) {
    if constexpr (requires { element.second; })
        return std::uint64_t(element.second);
    else if constexpr (requires { element.size(); })
        return element.size();
    else
        return weight(element);
}

// One container of each type and size, filled once and left as it was by every measurement.
template <typename C>
C & filledContainer(int n) {
    static std::map<int, C> made;
    C & container = made[n];
    if (container.empty()) {
        auto const & keys = keysFor<typename C::key_type>(n);
        for (int i = 0; i < n; ++i)
            insertKey(container, keys[std::size_t(i)], i);
    }
    return container;
}

template <typename C>
std::uint64_t sumOfFinds(C & container, int n) {
    auto const & keys = keysFor<typename C::key_type>(n);
    std::uint64_t sum = 0;
    for (int i : lookupOrder(n)) {
        auto const it = container.find(keys[std::size_t(i)]);
        if (it != container.end())
            sum += elementWeight(*it);
    }
    return sum;
}
template <typename C>
std::uint64_t sumOfAll(C & container) {
    std::uint64_t sum = 0;
    for (auto const & element : container)
        sum += elementWeight(element);
    return sum;
}

template <typename C>
void buildContainer(benchmark::State & state, int n) {
    auto const & keys = keysFor<typename C::key_type>(n);
    int first = 0;
    for (auto _ : state) {
        C container;
        for (int i = first; i < first + n; ++i)
            insertKey(container, keys[std::size_t(i)], i);
        benchmark::DoNotOptimize(container.size());
        first = n > 1000 ? 0 : (first + n) % (smallRounds * n);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename C>
void insertRound(benchmark::State & state, int n) {
    C & container = filledContainer<C>(n);
    auto const & keys = keysFor<typename C::key_type>(n);
    for (auto _ : state) {
        for (int i = n; i < n + roundOf(n); ++i)
            insertKey(container, keys[std::size_t(i)], i);
        state.PauseTiming();
        for (int i = n; i < n + roundOf(n); ++i)
            container.erase(keys[std::size_t(i)]);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * roundOf(n));
}

template <typename C>
void eraseRound(benchmark::State & state, int n) {
    C & container = filledContainer<C>(n);
    auto const & keys = keysFor<typename C::key_type>(n);
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = n; i < n + roundOf(n); ++i)
            insertKey(container, keys[std::size_t(i)], i);
        state.ResumeTiming();
        for (int i = n; i < n + roundOf(n); ++i)
            container.erase(keys[std::size_t(i)]);
    }
    state.SetItemsProcessed(state.iterations() * roundOf(n));
}

template <typename C>
void emptyContainer(benchmark::State & state, int n) {
    auto const & keys = keysFor<typename C::key_type>(n);
    auto const & order = eraseOrder(n);
    C container;
    int first = 0;
    for (auto _ : state) {
        state.PauseTiming();
        for (int i = first; i < first + n; ++i)
            insertKey(container, keys[std::size_t(i)], i);
        state.ResumeTiming();
        for (int i = first; i < first + n; ++i)
            container.erase(keys[std::size_t(order[std::size_t(i)])]);
        first = (first + n) % (smallRounds * n);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename C>
void findKeys(benchmark::State & state, int n) {
    C & container = filledContainer<C>(n);
    for (auto _ : state)
        benchmark::DoNotOptimize(sumOfFinds(container, n));
    state.SetItemsProcessed(state.iterations() * lookups);
}

template <typename C>
void iterateContainer(benchmark::State & state, int n) {
    C & container = filledContainer<C>(n);
    for (auto _ : state)
        benchmark::DoNotOptimize(sumOfAll(container));
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename C>
void addContainer(std::string const & row, std::string const & type, std::string const & who, int n) {
    std::string const what = '|' + type + ' ' + sizeText(n) + '|' + who;
    if (n <= 1000 || type == "int")
        add(row + " build" + what, [n](auto & state) { buildContainer<C>(state, n); });
    if (n > 1000) {
        add(row + " insert" + what, [n](auto & state) { insertRound<C>(state, n); });
        add(row + " erase" + what, [n](auto & state) { eraseRound<C>(state, n); });
    } else {
        add(row + " erase" + what, [n](auto & state) { emptyContainer<C>(state, n); });
    }
    add(row + " find" + what, [n](auto & state) { findKeys<C>(state, n); });
    add(row + " iterate" + what, [n](auto & state) { iterateContainer<C>(state, n); });
}

template <typename Qv, typename... Others>
void addContainers(std::string const & row, std::string const & type, std::vector<std::string> const & who,
                   std::vector<int> const & sizes) {
    auto const agree = [&]<typename Other>() {
        return sumOfFinds(filledContainer<Qv>(1000), 1000) == sumOfFinds(filledContainer<Other>(1000), 1000) &&
               sumOfAll(filledContainer<Qv>(1000)) == sumOfAll(filledContainer<Other>(1000));
    };
    if (!(agree.template operator()<Others>() && ...))
        fail(row + ' ' + type);
    for (int n : sizes) {
        auto name = who.begin();
        addContainer<Qv>(row, type, "qv", n);
        (addContainer<Others>(row, type, *name++, n), ...);
    }
}

template <typename K>
void addKeyType(std::string const & type, std::vector<int> const & sizes) {
#ifdef QV_BENCH_ABSL
    using BtreeMap = absl::btree_map<K, int>;
    using BtreeSet = absl::btree_set<K>;
    using NodeHashMap = absl::node_hash_map<K, int>;
    using NodeHashSet = absl::node_hash_set<K>;
    addContainers<qv::map<K, int>, std::map<K, int>, BtreeMap>("map", type, {"std::map", "absl::btree_map"}, sizes);
    addContainers<qv::set<K>, std::set<K>, BtreeSet>("set", type, {"std::set", "absl::btree_set"}, sizes);
    addContainers<qv::hash_map<K, int>, std::unordered_map<K, int>, NodeHashMap>(
        "hash_map", type, {"std::unordered_map", "absl::node_hash_map"}, sizes);
    addContainers<qv::hash_set<K>, std::unordered_set<K>, NodeHashSet>(
        "hash_set", type, {"std::unordered_set", "absl::node_hash_set"}, sizes);
#else
    addContainers<qv::map<K, int>, std::map<K, int>>("map", type, {"std::map"}, sizes);
    addContainers<qv::set<K>, std::set<K>>("set", type, {"std::set"}, sizes);
    addContainers<qv::hash_map<K, int>, std::unordered_map<K, int>>("hash_map", type, {"std::unordered_map"}, sizes);
    addContainers<qv::hash_set<K>, std::unordered_set<K>>("hash_set", type, {"std::unordered_set"}, sizes);
#endif
}

// Block allocator

constexpr unsigned cellSize = 32;

struct QvPool {
    qv::BlockAllocator pool{cellSize, 10};
    void * take() { return pool.alloc(); }
    void giveBack(void * p) { pool.free(p); }
};

#ifdef QV_BENCH_BOOST
struct BoostPool {
    boost::pool<> pool{cellSize};
    void * take() { return pool.malloc(); }
    void giveBack(void * p) { pool.free(p); }
};
#endif

template <typename Pool>
void hotPair(benchmark::State & state) {
    Pool pool;
    for (auto _ : state) {
        void * const p = pool.take();
        benchmark::DoNotOptimize(p);
        pool.giveBack(p);
    }
}

template <typename Pool>
void churn(benchmark::State & state) {
    Pool pool;
    std::vector<void *> slots(1024);
    std::vector<std::uint16_t> order(100000);
    std::mt19937 random(5);
    std::generate(order.begin(), order.end(), [&] { return std::uint16_t(random() % slots.size()); });
    for (auto _ : state) {
        for (std::uint16_t i : order) {
            if (slots[i])
                pool.giveBack(slots[i]);
            slots[i] = slots[i] ? nullptr : pool.take();
        }
    }
    state.SetItemsProcessed(state.iterations() * std::int64_t(order.size()));
}

template <typename Pool>
void freeInReverse(benchmark::State & state, int n) {
    Pool pool;
    std::vector<void *> taken(static_cast<std::size_t>(n));
    for (auto _ : state) {
        for (void *& p : taken)
            p = pool.take();
        for (auto it = taken.rbegin(); it != taken.rend(); ++it)
            pool.giveBack(*it);
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename Pool>
void takeAndDrop(benchmark::State & state, int n) {
    for (auto _ : state) {
        Pool pool;
        for (int i = 0; i < n; ++i)
            benchmark::DoNotOptimize(pool.take());
    }
    state.SetItemsProcessed(state.iterations() * n);
}

template <typename Pool>
void addPool(std::string const & who) {
    add("block allocator|hot pair|" + who, hotPair<Pool>);
    add("block allocator|churn|" + who, churn<Pool>);
    for (int n : {1000, 100000}) {
        std::string const what = ' ' + sizeText(n) + '|' + who;
        add("block allocator|freed in reverse" + what, [n](auto & state) { freeInReverse<Pool>(state, n); });
        add("block allocator fresh|taken and dropped" + what, [n](auto & state) { takeAndDrop<Pool>(state, n); });
    }
}

// Hash functions

void addHashes() {
    for (std::size_t n : {std::size_t(16), std::size_t(64), std::size_t(256), std::size_t(1024), std::size_t(4096)}) {
        std::string const text(n, 'x');
        std::string const what = "byte hash|" + std::to_string(n) + " B|";
        add(what + "qv", [text](auto & state) {
            for (auto _ : state) {
                benchmark::DoNotOptimize(text.data());
                benchmark::DoNotOptimize(qv::hashfunction(text.data(), text.data() + text.size()));
            }
            state.SetBytesProcessed(state.iterations() * std::int64_t(text.size()));
        });
        add(what + "std::hash", [text](auto & state) {
            for (auto _ : state) {
                benchmark::DoNotOptimize(text.data());
                benchmark::DoNotOptimize(std::hash<std::string_view>()(text));
            }
            state.SetBytesProcessed(state.iterations() * std::int64_t(text.size()));
        });
    }
}

} // namespace

int main(int argc, char ** argv) {
#ifndef QV_BENCH_ABSL
    std::puts("absl not found: its rows are left out");
#endif
#ifndef QV_BENCH_BOOST
    std::puts("boost.pool not found: its rows are left out");
#endif
    addVector<int>("int");
    addVector<void *>("pointer");
    addVector<Record>("record");
    addList();
    addKeyType<int>("int", {1000, 1000000});
    addKeyType<char const *>("pointer", {1000, 100000});
    addKeyType<std::string>("string", {1000, 100000});
    addPool<QvPool>("qv");
#ifdef QV_BENCH_BOOST
    addPool<BoostPool>("boost::pool");
#endif
    addHashes();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
