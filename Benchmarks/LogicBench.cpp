// Look-ups and joins of the logic engine beside a database in memory, a Prolog, and a walk through a set.

#include "LogicBench.h"

#include "Base/Logic/qvPlgIntegerValue.h"
#include "Base/Logic/qvPlgQuery.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <set>
#include <string>

namespace {

using namespace qvPlg;
using Number = qv::Reference<IntegerValue>;

class QvSide : public LogicSide {
public:
    QvSide(Rows const & first, Rows const & second)
        : key_(new IntegerValue), value_(new IntegerValue), other_(new IntegerValue),
          lookUp_(clause("p", key_, value_)), join_(clause("p", key_, value_) & clause("q", key_, other_)) {
        fill("p", first);
        fill("q", second);
    }
    long lookUp(int key) override {
        key_->assign(IntegerValue(key));
        Query query(lookUp_);
        long result = 0;
        while (query.solve(interpreter_))
            result += value_->get();
        return result;
    }
    long join() override {
        key_->setNull();
        Query query(join_);
        long result = 0;
        while (query.solve(interpreter_))
            result += value_->get() + other_->get();
        return result;
    }

private:
    void fill(char const * predicate, Rows const & rows) {
        for (auto const & [key, value] : rows)
            interpreter_.getDB().addFact(predicate, Number(new IntegerValue(key)), Number(new IntegerValue(value)));
    }

    Interpreter interpreter_;
    Number key_, value_, other_;
    Expression lookUp_, join_;
};

class SetSide : public LogicSide {
public:
    SetSide(Rows const & first, Rows const & second)
        : first_(first.begin(), first.end()), second_(second.begin(), second.end()) {}
    long lookUp(int key) override {
        long result = 0;
        for (auto at = first_.lower_bound({key, INT_MIN}); at != first_.end() && at->first == key; ++at)
            result += at->second;
        return result;
    }
    long join() override {
        long result = 0;
        for (auto const & [key, value] : first_) {
            for (auto at = second_.lower_bound({key, INT_MIN}); at != second_.end() && at->first == key; ++at)
                result += value + at->second;
        }
        return result;
    }

private:
    std::set<std::pair<int, int>> first_, second_;
};

template <class Side>
std::unique_ptr<LogicSide> make(Rows const & first, Rows const & second) {
    return std::make_unique<Side>(first, second);
}

struct Named {
    char const * name;
    MakeLogicSide make;
};

constexpr Named sides[] = {
    {"qv", make<QvSide>},
#ifdef QV_BENCH_SQLITE
    {"sqlite", makeSqliteSide},
#endif
#ifdef QV_BENCH_PROLOG
    {"swi-prolog", makePrologSide},
#endif
    {"std::set", make<SetSide>},
};

Rows rowsOf(int keys, int perKey, bool shuffled) {
    Rows rows;
    for (int key = 0; key < keys; ++key) {
        for (int i = 0; i < perKey; ++i)
            rows.emplace_back(key, 7 * i + key % 5);
    }
    if (shuffled)
        std::shuffle(rows.begin(), rows.end(), std::mt19937(1));
    return rows;
}

constexpr int keyCount = 10000;

void lookUp(benchmark::State & state, MakeLogicSide makeSide, bool shuffled) {
    auto const side = makeSide(rowsOf(keyCount, 10, shuffled), {});
    std::vector<int> keys(keyCount);
    for (int i = 0; i < keyCount; ++i)
        keys[static_cast<std::size_t>(i)] = i;
    std::shuffle(keys.begin(), keys.end(), std::mt19937(2));
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(side->lookUp(keys[at]));
        at = at + 1 == keys.size() ? 0 : at + 1;
    }
}

void join(benchmark::State & state, MakeLogicSide makeSide, bool shuffled, int facts, int times) {
    auto const side = makeSide(rowsOf(facts, 1, shuffled), rowsOf(facts, 1, shuffled));
    for (auto _ : state) {
        for (int i = 0; i < times; ++i)
            benchmark::DoNotOptimize(side->join());
    }
}

void checkSides() {
    Rows const first = rowsOf(50, 10, true), second = rowsOf(100, 3, true);
    auto const ours = sides[0].make(first, second);
    for (Named const & named : sides) {
        auto const side = named.make(first, second);
        bool same = side->join() == ours->join();
        for (int key = -1; key < 60; ++key)
            same = same && side->lookUp(key) == ours->lookUp(key);
        if (!same) {
            std::fprintf(stderr, "%s has other solutions\n", named.name);
            std::abort();
        }
    }
}

} // namespace

int main(int argc, char ** argv) {
    checkSides();
#ifndef QV_BENCH_SQLITE
    std::printf("sqlite was not found: its rows are left out\n");
#endif
#ifndef QV_BENCH_PROLOG
    std::printf("swi-prolog was not found: its rows are left out\n");
#endif
    for (bool const shuffled : {false, true}) {
        std::string const order = shuffled ? "stored shuffled|" : "stored in order|";
        for (Named const & named : sides) {
            auto const name = [&](std::string const & row) { return row + order + named.name; };
            benchmark::RegisterBenchmark(name("look-up, 10 of 100,000|").c_str(), lookUp, named.make, shuffled);
            benchmark::RegisterBenchmark(name("join of 10,000 and 10,000|").c_str(), join, named.make, shuffled, 10000,
                                         1);
        }
        // As n log n sixteen times the facts take 22 times as long, and longer as far as they leave the caches; as n^2
        // they would take 256 times as long.
        auto const ours = sides[0].make;
        benchmark::RegisterBenchmark(("growth of the join|" + order + "qv").c_str(), join, ours, shuffled, 40000, 1);
        benchmark::RegisterBenchmark(("growth of the join|" + order + "22 joins of a 16th").c_str(), join, ours,
                                     shuffled, 2500, 22);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
