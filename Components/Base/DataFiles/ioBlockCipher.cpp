#include "Base/DataFiles/ioBlockCipher.h"

#include "Base/DataFiles/Internal/ioCipherBlocks.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

namespace {

constexpr int numRounds = 20;
constexpr int keyWords = 8;

// The first word and the step of the table before the key is mixed in. They differ from the published ones: only builds
// with the same values read each other's streams.
constexpr std::uint32_t firstWord = 0x5B8D0C93;
constexpr std::uint32_t wordStep = 0xC6A4F1B7;

std::uint32_t rotateLeft(std::uint32_t word, std::uint32_t by) { return std::rotl(word, static_cast<int>(by & 31)); }
std::uint32_t rotateRight(std::uint32_t word, std::uint32_t by) { return std::rotr(word, static_cast<int>(by & 31)); }

// Words beyond lastIndex do not take part.
void expand(std::uint32_t (&key)[keyWords], int lastIndex, unsigned * table) {
    table[0] = firstWord;
    for (int i = 1; i < ioCipher::tableWords; ++i) {
        table[i] = table[i - 1] + wordStep;
    }
    constexpr int mixingSteps = 3 * ioCipher::tableWords;
    std::uint32_t a = 0;
    std::uint32_t b = 0;
    int i = 0;
    int j = 0;
    for (int step = 0; step < mixingSteps; ++step) {
        a = table[i] = rotateLeft(table[i] + a + b, 5);
        std::uint32_t const t = b - a;
        b = key[j] = rotateLeft(key[j] + t, t);
        i = i == ioCipher::tableWords - 1 ? 0 : i + 1;
        j = j == lastIndex ? 0 : j + 1;
    }
}

// A number of blocks that are worked on together: the same step of each stands next to that of the others, so that none
// waits for its own last step.
template <std::size_t count>
struct Blocks {
    std::uint32_t a[count];
    std::uint32_t b[count];
    std::uint32_t c[count];
    std::uint32_t d[count];

    void load(char const * from) {
        for (std::size_t n = 0; n < count; ++n) {
            std::uint32_t words[4];
            std::memcpy(words, from + n * ioCipher::blockBytes, sizeof words);
            a[n] = words[0];
            b[n] = words[1];
            c[n] = words[2];
            d[n] = words[3];
        }
    }

    void store(char * to) const {
        for (std::size_t n = 0; n < count; ++n) {
            std::uint32_t const words[4] = {a[n], b[n], c[n], d[n]};
            std::memcpy(to + n * ioCipher::blockBytes, words, sizeof words);
        }
    }

    void encipher(unsigned const * table) {
        for (std::size_t n = 0; n < count; ++n) {
            b[n] += table[0];
            d[n] += table[1];
        }
        // Four rounds bring each word back to its name.
        for (int round = 1; round <= numRounds; round += 4) {
            mix(a, b, c, d, table + 2 * round);
            mix(b, c, d, a, table + 2 * round + 2);
            mix(c, d, a, b, table + 2 * round + 4);
            mix(d, a, b, c, table + 2 * round + 6);
        }
        for (std::size_t n = 0; n < count; ++n) {
            a[n] += table[2 * numRounds + 2];
            c[n] += table[2 * numRounds + 3];
        }
    }

    void decipher(unsigned const * table) {
        for (std::size_t n = 0; n < count; ++n) {
            c[n] -= table[2 * numRounds + 3];
            a[n] -= table[2 * numRounds + 2];
        }
        for (int round = numRounds; round >= 1; round -= 4) {
            unmix(d, a, b, c, table + 2 * round);
            unmix(c, d, a, b, table + 2 * round - 2);
            unmix(b, c, d, a, table + 2 * round - 4);
            unmix(a, b, c, d, table + 2 * round - 6);
        }
        for (std::size_t n = 0; n < count; ++n) {
            d[n] -= table[1];
            b[n] -= table[0];
        }
    }

private:
    using Words = std::uint32_t[count];

    static std::uint32_t spread(std::uint32_t word) { return rotateLeft(word * (2 * word + 1), 5); }

    static void mix(Words & a, Words const & b, Words & c, Words const & d, unsigned const * keys) {
        for (std::size_t n = 0; n < count; ++n) {
            std::uint32_t const t = spread(b[n]);
            std::uint32_t const u = spread(d[n]);
            a[n] = rotateLeft(a[n] ^ t, u) + keys[0];
            c[n] = rotateLeft(c[n] ^ u, t) + keys[1];
        }
    }

    static void unmix(Words & a, Words const & b, Words & c, Words const & d, unsigned const * keys) {
        for (std::size_t n = 0; n < count; ++n) {
            std::uint32_t const t = spread(b[n]);
            std::uint32_t const u = spread(d[n]);
            c[n] = rotateRight(c[n] - keys[1], t) ^ u;
            a[n] = rotateRight(a[n] - keys[0], u) ^ t;
        }
    }
};

template <std::size_t count>
void encipherBlocks(char const * from, char * to, unsigned const * table) {
    Blocks<count> blocks;
    blocks.load(from);
    blocks.encipher(table);
    blocks.store(to);
}

template <std::size_t count>
void decipherBlocks(char const * from, char * to, unsigned const * table) {
    Blocks<count> blocks;
    blocks.load(from);
    blocks.decipher(table);
    blocks.store(to);
}

// As many as the registers of common processors hold, and some more, measured.
constexpr std::size_t inFlight = 5;

using BlocksFunction = void (*)(char const * from, char * to, unsigned const * table);

template <BlocksFunction several, BlocksFunction one>
void forAll(char * bytes, std::size_t numBlocks, unsigned const * table) {
    for (; numBlocks >= inFlight; numBlocks -= inFlight) {
        several(bytes, bytes, table);
        bytes += inFlight * ioCipher::blockBytes;
    }
    for (; numBlocks > 0; --numBlocks) {
        one(bytes, bytes, table);
        bytes += ioCipher::blockBytes;
    }
}

} // namespace

void ioCipher::encipher(char * bytes, std::size_t numBlocks, unsigned const * table) {
    forAll<encipherBlocks<inFlight>, encipherBlocks<1>>(bytes, numBlocks, table);
}

void ioCipher::decipher(char * bytes, std::size_t numBlocks, unsigned const * table) {
    forAll<decipherBlocks<inFlight>, decipherBlocks<1>>(bytes, numBlocks, table);
}

void ioCipher::expandKey(void const * key, int length, unsigned * table) {
    std::uint32_t words[keyWords];
    std::memcpy(words, key, sizeof words);
    expand(words, std::clamp(length, 8, 56) / 8, table);
}

unsigned const * fdblarccos2_(void const * key, int length) {
    static unsigned table[ioCipher::tableWords];
    ioCipher::expandKey(key, length, table);
    return table;
}

unsigned const * fdblarctan2_(void const * key, int lengthInBits) {
    static unsigned table[ioCipher::tableWords];
    int const bits = std::clamp(lengthInBits, 32, 256);
    std::uint32_t words[keyWords] = {};
    std::memcpy(words, key, static_cast<std::size_t>(bits / 8));
    expand(words, bits / 32 - 1, table);
    return table;
}

void fdblhypsin2_(void const * in, void * out, unsigned const * table) {
    encipherBlocks<1>(static_cast<char const *>(in), static_cast<char *>(out), table);
}

void fdblhypcos2_(void const * in, void * out, unsigned const * table) {
    decipherBlocks<1>(static_cast<char const *>(in), static_cast<char *>(out), table);
}
