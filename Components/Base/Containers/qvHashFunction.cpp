#include "Base/Containers/qvHashFunction.h"

#include <cstddef>
#include <cstdint>

#include "Base/Containers/Internal/HashTables.h"

namespace qv {

namespace {

using detail::hashTables;

// One value at a time, with a different mixture of tables and operations at each stage of a cycle; what is left at the
// end enters the cycle at the stage from which it ends with it. A group of stages gathers in acc before it reaches the
// hash, so that whole cycles have no long chain of dependent operations.

constexpr std::size_t byteStages = 15;

std::uint32_t hashBytes(unsigned char const * p, std::size_t n) {
    auto const & [t0, t1, t2, t3] = hashTables;
    std::uint32_t hash = 0;
    for (; n >= byteStages; n -= byteStages, p += byteStages) {
        hash ^= (t1[p[0]] ^ t2[p[1]]) + t3[p[2]];
        hash ^= (t1[p[3]] - t2[p[4]] + t3[p[5]]) ^ t0[p[6]];
        hash ^= ((t2[p[7]] + t3[p[8]]) ^ t0[p[9]]) - t1[p[10]];
        hash ^= ((t3[p[11]] ^ t0[p[12]]) - t1[p[13]]) + t2[p[14]];
    }
    std::uint32_t acc = 0;
    switch (n) {
    case 14:
        acc ^= t2[*p++];
        [[fallthrough]];
    case 13:
        hash ^= acc + t3[*p++];
        [[fallthrough]];
    case 12:
        acc = t1[*p++];
        [[fallthrough]];
    case 11:
        acc -= t2[*p++];
        [[fallthrough]];
    case 10:
        acc += t3[*p++];
        [[fallthrough]];
    case 9:
        hash ^= acc ^ t0[*p++];
        [[fallthrough]];
    case 8:
        acc = t2[*p++];
        [[fallthrough]];
    case 7:
        acc += t3[*p++];
        [[fallthrough]];
    case 6:
        acc ^= t0[*p++];
        [[fallthrough]];
    case 5:
        hash ^= acc - t1[*p++];
        [[fallthrough]];
    case 4:
        acc = t3[*p++];
        [[fallthrough]];
    case 3:
        acc ^= t0[*p++];
        [[fallthrough]];
    case 2:
        acc -= t1[*p++];
        [[fallthrough]];
    case 1:
        hash ^= acc + t2[*p];
        [[fallthrough]];
    default:
        return hash;
    }
}

std::size_t countOf(int n) { return n < 1 ? 0 : std::size_t(unsigned(n)); }

} // namespace

unsigned hashfunction(unsigned char const * p, int n) { return hashBytes(p, countOf(n)); }

unsigned hashfunction(char const * first, char const * last) {
    return first < last ? hashBytes(reinterpret_cast<unsigned char const *>(first), std::size_t(last - first)) : 0;
}

unsigned hashfunction(wchar_t const * p, int n) {
    return hashBytes(reinterpret_cast<unsigned char const *>(p), countOf(n) * sizeof(wchar_t));
}

unsigned hashfunction(char const * text) {
    auto const & [t0, t1, t2, t3] = hashTables;
    auto const * p = reinterpret_cast<unsigned char const *>(text);
    std::uint32_t hash = 0;
    while (p[0]) {
        std::uint32_t acc = t0[p[0]];
        if (!p[1])
            return hash ^ acc;
        acc += t1[p[1]];
        if (!p[2])
            return hash ^ acc;
        acc -= t2[p[2]];
        if (!p[3])
            return hash ^ acc;
        hash ^= acc ^ t3[p[3]];
        p += 4;
    }
    return hash;
}

unsigned hashfunction(unsigned const * p, int n) {
    constexpr int stages = 16;
    // The term of a word depends on its place: table k's entry for the index, mixed with the word.
    auto const term = [p](int k, int i) { return hashTables[k][i & 255] ^ std::uint32_t(p[i]); };
    std::uint32_t hash = 0;
    int i = 0;
    while (i < n) {
        std::uint32_t acc = 0;
        int const left = n - i;
        switch (left < stages ? left : stages) {
        case 16:
            acc = term(0, i++);
            [[fallthrough]];
        case 15:
            acc -= term(1, i++);
            [[fallthrough]];
        case 14:
            acc ^= term(2, i++);
            [[fallthrough]];
        case 13:
            hash ^= acc + term(3, i++);
            [[fallthrough]];
        case 12:
            acc = term(1, i++);
            [[fallthrough]];
        case 11:
            acc -= term(2, i++);
            [[fallthrough]];
        case 10:
            acc += term(3, i++);
            [[fallthrough]];
        case 9:
            hash ^= acc ^ term(0, i++);
            [[fallthrough]];
        case 8:
            acc = term(2, i++);
            [[fallthrough]];
        case 7:
            acc += term(3, i++);
            [[fallthrough]];
        case 6:
            acc ^= term(0, i++);
            [[fallthrough]];
        case 5:
            hash ^= acc - term(1, i++);
            [[fallthrough]];
        case 4:
            acc = term(3, i++);
            [[fallthrough]];
        case 3:
            acc ^= term(0, i++);
            [[fallthrough]];
        case 2:
            acc -= term(1, i++);
            [[fallthrough]];
        default:
            hash ^= acc + term(2, i++);
        }
    }
    return hash;
}

} // namespace qv
