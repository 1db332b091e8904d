// Splitting beside std::getline, bit fields beside std::bitset, and random numbers beside std::random_device.

#include "Base/Utility/qvUtilBitField.h"
#include "Base/Utility/qvUtilRandom.h"
#include "Base/Utility/qvUtilSplit.h"

#include <benchmark/benchmark.h>

#include <bitset>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using qvString::CString;

void require(bool condition, char const * what) {
    if (!condition) {
        std::fprintf(stderr, "UtilityBench: %s\n", what);
        std::abort();
    }
}

// ---- splitting

// Fields of 11 letters with a comma behind each, and one more without.
std::string const & fields() {
    static std::string const text = [] {
        std::mt19937 random(1);
        std::string letters;
        while (letters.size() < 10000000) {
            for (int i = 0; i < 11; ++i)
                letters += static_cast<char>('a' + random() % 26);
            letters += ',';
        }
        return letters + "the end";
    }();
    return text;
}

// From the text to the pieces: a stream has to be made of it, or a string.
qv::vector<CString> splitQv() { return qvUtil::split(CString(fields()), ',', false, false); }
std::vector<std::string> splitStandard() {
    std::istringstream stream(fields());
    std::vector<std::string> pieces;
    for (std::string piece; std::getline(stream, piece, ',');)
        pieces.push_back(piece);
    return pieces;
}

void checkSplitting() {
    qv::vector<CString> const ours = splitQv();
    std::vector<std::string> const theirs = splitStandard();
    require(ours.size() == static_cast<int>(theirs.size()), "as many pieces");
    for (std::size_t i = 0; i < theirs.size(); ++i)
        require(ours[i] == theirs[i].c_str(), "the same pieces");
}

// ---- bit fields

constexpr int numBits = 1000000;
using Standard = std::bitset<numBits>;

struct Pair {
    Pair() : ours(numBits), theirs(std::make_unique<Standard>()) {}

    qvUtil::BitField ours;
    std::unique_ptr<Standard> theirs;
};

Pair randomBits(unsigned seed) {
    std::mt19937 random(seed);
    Pair bits;
    for (int i = 0; i < numBits; ++i)
        if (random() % 3 == 0) {
            bits.ours.setBit(i, true);
            bits.theirs->set(static_cast<std::size_t>(i));
        }
    return bits;
}

template <class Bits>
void combine(Bits & a, Bits const & b, char operation) {
    operation == '&' ? a &= b : operation == '|' ? a |= b : a ^= b;
}

int count(qvUtil::BitField const & bits) { return bits.numBitsSet(); }
int count(Standard const & bits) { return static_cast<int>(bits.count()); }

void checkBits() {
    for (char const operation : {'&', '|', '^'}) {
        Pair a = randomBits(1);
        Pair const b = randomBits(2);
        combine(a.ours, b.ours, operation);
        combine(*a.theirs, *b.theirs, operation);
        require(count(a.ours) == count(*a.theirs), "as many bits");
        for (int i = 0; i < numBits; ++i)
            require(a.ours.testBit(i) == a.theirs->test(static_cast<std::size_t>(i)), "the same bits");
    }
}

// In place: the work does not depend on what the bits become.
template <class Bits>
void combineAndCount(benchmark::State & state, Bits & a, Bits const & b, char operation) {
    for (auto _ : state) {
        combine(a, b, operation);
        benchmark::DoNotOptimize(count(a));
    }
}

// ---- rows

template <class Function>
void add(std::string const & name, Function function) {
    benchmark::RegisterBenchmark(name.c_str(), function);
}

void registerAll() {
    add("split|10 MB of 12-byte fields|qv", [](benchmark::State & state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(splitQv());
    });
    add("split|10 MB of 12-byte fields|std::getline", [](benchmark::State & state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(splitStandard());
    });
    for (auto const & [name, operation] : {std::pair("and", '&'), std::pair("or", '|'), std::pair("xor", '^')}) {
        std::string const row = std::string("a million bits, counted|") + name;
        add(row + "|qv", [operation = operation](benchmark::State & state) {
            Pair a = randomBits(1);
            combineAndCount(state, a.ours, randomBits(2).ours, operation);
        });
        add(row + "|std::bitset", [operation = operation](benchmark::State & state) {
            Pair const a = randomBits(1);
            combineAndCount(state, *a.theirs, *randomBits(2).theirs, operation);
        });
    }
    add("random number|one|qv", [](benchmark::State & state) {
        for (auto _ : state)
            benchmark::DoNotOptimize(qvUtil::random(1));
    });
    add("random number|one|std::random_device", [](benchmark::State & state) {
        std::random_device device;
        for (auto _ : state)
            benchmark::DoNotOptimize(device() / 4294967295.0);
    });
}

} // namespace

int main(int argc, char ** argv) {
    checkSplitting();
    checkBits();
    registerAll();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
