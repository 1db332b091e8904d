#include "Base/DataFiles/Internal/ioLzwEncoder.h"

#include "Base/DataFiles/Internal/ioLittleEndian.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

namespace {

// Where the list of a string begins. With the home, either of the two gives the other. The last bit is there to make
// the lists shorter.
unsigned homeOf(unsigned parent, unsigned byte) { return (byte << 8 ^ parent) << 1 | (byte & 1); }

unsigned byteOf(unsigned home, unsigned parent) { return (home >> 1 ^ parent) >> 8; }

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

bool ioLzwEncoder::Slots::store(unsigned key) {
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
        return false;
    }
    used_[slot / 64] |= std::uint64_t{1} << (slot % 64);
    bool const takesZero = slot == zeroSlot_;
    if (takesZero) {
        zeroSlot_ = -1;
    }
    return takesZero;
}

// --- strings

std::unique_ptr<ioLzwEncoder> ioLzwEncoder::make() {
    return std::unique_ptr<ioLzwEncoder>(new (std::nothrow) ioLzwEncoder);
}

// The strings are left as they are: one is written before it can be reached.
ioLzwEncoder::ioLzwEncoder() : outputEnd_(output_) {
    std::memset(homes_, 0, sizeof homes_);
    std::copy(std::begin(ioLzw::header), std::end(ioLzw::header), outputEnd_);
    outputEnd_ += ioLzw::headerSize;
}

void ioLzwEncoder::clearStrings() {
    std::memset(homes_, 0, sizeof homes_);
    nextFree_ = ioLzw::firstFreeCode;
    slotsFollowed_ = false;
}

void ioLzwEncoder::add(unsigned home, unsigned parent) {
    if (parent == 0 && home == 0 && !slotsFollowed_) {
        followSlots();
    }
    unsigned const byte = byteOf(home, parent);
    if (slotsFollowed_ && slots_.store(keyOf(parent, byte))) {
        forgetTwoZeros();
    }
    lastBytes_[nextFree_] = static_cast<unsigned char>(byte);
    strings_[nextFree_] = {static_cast<std::uint16_t>(parent), homes_[home]};
    homes_[home] = static_cast<std::uint16_t>(nextFree_);
    ++nextFree_;
}

// Stores what is known so far in the order in which it came.
void ioLzwEncoder::followSlots() {
    slotsFollowed_ = true;
    slots_.clear();
    for (int code = ioLzw::firstFreeCode; code < nextFree_; ++code) {
        slots_.store(keyOf(strings_[code].parent, lastBytes_[code]));
    }
}

void ioLzwEncoder::forgetTwoZeros() {
    std::uint16_t * link = &homes_[homeOf(0, 0)];
    while (strings_[*link].parent != 0) {
        link = &strings_[*link].next;
    }
    *link = strings_[*link].next;
}

void ioLzwEncoder::encode(char const * bytes, int count) {
    auto const * at = reinterpret_cast<unsigned char const *>(bytes);
    auto const * const end = at + count;
    std::int64_t const inputAtEnd = input_ + count;
    if (current_ == noCode && at != end) {
        current_ = *at++;
    }
    auto current = static_cast<unsigned>(current_);
    while (at != end) {
        unsigned const byte = *at++;
        unsigned const home = homeOf(current, byte);
        unsigned code = homes_[home];
        while (code != 0 && strings_[code].parent != current) {
            code = strings_[code].next;
        }
        if (code != 0) {
            current = code;
            continue;
        }
        put(static_cast<int>(current));
        if (nextFree_ < ioLzw::codeLimit) {
            add(home, current);
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
