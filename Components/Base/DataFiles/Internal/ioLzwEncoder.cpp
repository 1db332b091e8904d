#include "Base/DataFiles/Internal/ioLzwEncoder.h"

#include "Base/DataFiles/Internal/ioLittleEndian.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace {

// Where the list of a string begins, among homes of which the mask is the last; no code is above that. The home and the
// parent together belong to one byte only, for the factor is odd. It spreads the bytes of text, which are all of one
// kind, and is measured.
unsigned homeOf(unsigned parent, unsigned byte, unsigned mask) { return parent ^ (byte * 0x9D01 & mask); }

// What the slots of the defining table hold, and the slot that is tried first.
unsigned keyOf(unsigned parent, unsigned byte) { return byte << 16 | parent; }

int slotOf(unsigned key) { return static_cast<int>((key >> 16) << 8 ^ (key & 0xFFFF)); }

// Eight codes of one width in as many bytes as the width has bits, and what is left of 16 bytes behind them.
void packGroup(std::uint16_t const (&codes)[ioLzw::codesInGroup], int bits, char * to) {
    std::uint64_t halves[2] = {};
    for (int i = 0; i < 4; ++i) {
        halves[0] |= std::uint64_t{codes[i]} << (i * bits);
        halves[1] |= std::uint64_t{codes[i + 4]} << (i * bits);
    }
    int const split = 4 * bits;
    std::uint64_t low = halves[0];
    std::uint64_t high = halves[1];
    if (split < 64) {
        low |= halves[1] << split;
        high = halves[1] >> (64 - split);
    }
    ioLittleEndian::store(low, to);
    ioLittleEndian::store(high, to + 8);
}

} // namespace

// --- the slots of the defining table

void ioLzwEncoder::Slots::clear() {
    std::fill(std::begin(used_), std::end(used_), 0);
    zeroSlot_ = -1;
}

void ioLzwEncoder::Slots::store(unsigned key) {
    int slot = slotOf(key);
    if (isAboveZero(slot) || slot == zeroSlot_) {
        int const step = slot == 0 ? 1 : numSlots - slot;
        do {
            slot -= step;
            if (slot < 0) {
                slot += numSlots;
            }
        } while (isAboveZero(slot));
    }
    if (key == 0) {
        zeroSlot_ = slot;
        return;
    }
    used_[slot / 64] |= std::uint64_t{1} << (slot % 64);
    if (slot == zeroSlot_) {
        zeroSlot_ = -1;
    }
}

// --- strings

std::unique_ptr<ioLzwEncoder> ioLzwEncoder::make() {
    return std::unique_ptr<ioLzwEncoder>(new (std::nothrow) ioLzwEncoder);
}

// The strings are left as they are: one is written before it can be reached.
ioLzwEncoder::ioLzwEncoder() : outputEnd_(output_) {
    clearStrings();
    std::copy(std::begin(ioLzw::header), std::end(ioLzw::header), outputEnd_);
    outputEnd_ += ioLzw::headerSize;
}

void ioLzwEncoder::clearStrings() {
    std::fill_n(homes_, homeMask_ + 1, emptyHome);
    nextFree_ = ioLzw::firstFreeCode;
    twoZeros_ = noCode;
    followed_ = ioLzw::firstFreeCode;
}

bool ioLzwEncoder::knowsTwoZeros() {
    if (twoZeros_ == noCode) {
        return false;
    }
    if (followed_ == ioLzw::firstFreeCode) {
        slots_.clear();
    }
    for (; followed_ < nextFree_; ++followed_) {
        slots_.store(keyOf(strings_[followed_].parent, lastBytes_[followed_]));
    }
    return slots_.hasTwoZeros();
}

// More homes for the strings that there are, whose lists stay in the order of their codes.
void ioLzwEncoder::addHomes() {
    homeMask_ = homeMask_ << 2 | 3;
    std::fill_n(homes_, homeMask_ + 1, emptyHome);
    for (int code = nextFree_ - 1; code >= ioLzw::firstFreeCode; --code) {
        if (keyOf(strings_[code].parent, lastBytes_[code]) == 0) {
            continue; // also one that is forgotten
        }
        Home & home = homes_[homeOf(strings_[code].parent, lastBytes_[code], homeMask_)];
        strings_[code].next = home.code;
        home = {strings_[code].parent, static_cast<std::uint16_t>(code)};
    }
}

// A new string goes to the end of its list: the older, the shorter and the more often met. `last` is where the search
// has ended.
void ioLzwEncoder::add(unsigned home, unsigned parent, unsigned byte, unsigned last) {
    auto const code = static_cast<std::uint16_t>(nextFree_);
    strings_[code] = {static_cast<std::uint16_t>(parent), endOfList};
    lastBytes_[code] = static_cast<unsigned char>(byte);
    ++nextFree_;
    if (keyOf(parent, byte) == 0) {
        twoZeros_ = code;
    } else if (last == endOfList) {
        homes_[home] = {static_cast<std::uint16_t>(parent), code};
    } else {
        strings_[last].next = code;
    }
}

void ioLzwEncoder::encode(char const * bytes, int count) {
    auto const * at = reinterpret_cast<unsigned char const *>(bytes);
    auto const * const end = at + count;
    std::int64_t const inputAtEnd = input_ + count;
    if (current_ == noCode && at != end) {
        current_ = *at++;
    }
    auto current = static_cast<unsigned>(current_);
    unsigned mask = homeMask_;
    while (at != end) {
        unsigned const byte = *at++;
        unsigned const home = homeOf(current, byte, mask);
        Home const first = homes_[home];
        if (first.parent == current) {
            current = first.code;
            continue;
        }
        unsigned last = endOfList;
        unsigned code = first.code;
        while (code != endOfList && strings_[code].parent != current) {
            last = code;
            code = strings_[code].next;
        }
        if (code != endOfList) {
            current = code;
            continue;
        }
        if (keyOf(current, byte) == 0 && knowsTwoZeros()) {
            current = static_cast<unsigned>(twoZeros_);
            continue;
        }
        put(static_cast<int>(current));
        if (nextFree_ < ioLzw::codeLimit) {
            add(home, current, byte, last);
            if (nextFree_ > static_cast<int>(mask) && mask < mostHomes - 1) {
                addHomes();
                mask = homeMask_;
            }
        } else if (inputAtEnd - (end - at) >= checkpoint_) {
            testRatio(inputAtEnd - (end - at));
        }
        current = byte;
    }
    current_ = static_cast<int>(current);
    input_ = inputAtEnd;
}

// Strings that have ceased to fit the data are given up: when the ratio so far is no better than it was at the last
// test.
void ioLzwEncoder::testRatio(std::int64_t input) {
    constexpr std::int64_t largeInput = 0x800000;
    checkpoint_ = input + checkInterval;
    std::int64_t ratio = 0;
    if (input < largeInput) {
        ratio = input * 256 / outputBytes_;
    } else {
        std::int64_t const divisor = outputBytes_ / 256;
        ratio = divisor == 0 ? std::numeric_limits<std::int32_t>::max() : input / divisor;
    }
    if (ratio > ratio_) {
        ratio_ = ratio;
        return;
    }
    ratio_ = 0;
    clearStrings();
    clearing_ = true;
    put(ioLzw::clearCode);
}

// --- codes

void ioLzwEncoder::put(int code) {
    group_[inGroup_++] = static_cast<std::uint16_t>(code);
    if (inGroup_ == ioLzw::codesInGroup) {
        writeGroup();
        outputBytes_ += width_.bits;
    }
    if (nextFree_ > width_.largestCode || clearing_) {
        if (inGroup_ > 0) {
            writeGroup();
        }
        if (clearing_) {
            width_ = ioLzw::Width();
            clearing_ = false;
        } else {
            width_.grow();
        }
    }
}

void ioLzwEncoder::writeGroup() {
    std::fill(group_ + inGroup_, std::end(group_), std::uint16_t{0});
    packGroup(group_, width_.bits, outputEnd_);
    outputEnd_ += width_.bits;
    inGroup_ = 0;
}

void ioLzwEncoder::end() {
    if (current_ != noCode) {
        put(current_);
    }
    put(ioLzw::endCode);
    if (inGroup_ > 0) {
        writeGroup();
    }
}
