// A random generator for model tests. Every run takes another seed, which a failing test prints; QV_TEST_SEED=<n>
// repeats that run.

#ifndef qvTestSeededRandom_h
#define qvTestSeededRandom_h

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>

namespace qvTest {

class SeededRandom {
public:
    SeededRandom() : seed_(chooseSeed()), engine_(seed_) {}
    SeededRandom(SeededRandom const &) = delete;
    SeededRandom & operator=(SeededRandom const &) = delete;
    ~SeededRandom() {
        if (::testing::Test::HasFailure())
            std::cout << "to repeat: QV_TEST_SEED=" << seed_ << '\n';
    }

    // A number from 0 to n - 1; n must be above 0.
    int below(int n) { return int(engine_() % unsigned(n)); }
    bool oneIn(int n) { return below(n) == 0; }
    std::uint32_t bits() { return std::uint32_t(engine_()); }

    // Up to maxLength bytes from a small alphabet, so that equal texts and common prefixes occur.
    std::string text(int maxLength) {
        std::string result(std::size_t(below(maxLength + 1)), 'a');
        for (char & c : result)
            c = char('a' + below(3));
        return result;
    }

private:
    static std::uint32_t chooseSeed() {
        if (char const * const given = std::getenv("QV_TEST_SEED"))
            return std::uint32_t(std::strtoul(given, nullptr, 10));
        return std::random_device()();
    }

    std::uint32_t seed_;
    std::mt19937 engine_;
};

} // namespace qvTest

#endif
