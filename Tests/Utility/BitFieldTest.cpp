#include "Base/Utility/qvUtilBitField.h"
#include "Base/Utility/qvUtilBitFieldAuto.h"
#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <utility>
#include <vector>

namespace {

using qvTest::SeededRandom;
using qvUtil::BitField;
using qvUtil::BitFieldAuto;
using Bits = std::vector<bool>;

int numSet(Bits const & bits) { return int(std::count(bits.begin(), bits.end(), true)); }

// Bit by bit, with every bit beyond the shorter one clear. '|', '&', '^'.
bool combined(bool a, bool b, char operation) { return operation == '|' ? a || b : operation == '&' ? a && b : a != b; }
bool at(Bits const & bits, std::size_t i) { return i < bits.size() && bits[i]; }

template <class Field>
void apply(Field & field, Field const & other, char operation, bool inPlace) {
    if (inPlace)
        operation == '|' ? field |= other : operation == '&' ? field &= other : field ^= other;
    else
        field = operation == '|' ? field | other : operation == '&' ? field & other : field ^ other;
}

void expectSame(BitField const & field, Bits const & model) {
    ASSERT_EQ(field.maxAvailableBits(), int(model.size()));
    ASSERT_EQ(field.numBitsSet(), numSet(model));
    ASSERT_EQ(field.anySet(), numSet(model) != 0);
    ASSERT_EQ(field.allSet(), numSet(model) == int(model.size()));
    for (int i = -2; i < int(model.size()) + 70; ++i)
        ASSERT_EQ(field[i], i >= 0 && at(model, std::size_t(i))) << i;
    BitField oneByOne(int(model.size()));
    for (std::size_t i = 0; i < model.size(); ++i)
        oneByOne[int(i)] = model[i];
    ASSERT_EQ(field, oneByOne);
}

// A slot is a field with its model. Every operation is done to both.
struct Slot {
    BitField field;
    Bits model;
};

void changeOne(SeededRandom & random, Slot & slot, Slot const & other) {
    int const size = int(slot.model.size());
    switch (random.below(9)) {
    case 0: {
        int const newSize = random.below(200) - 10;
        slot.field.resizeAndReset(newSize);
        if (newSize >= 0)
            slot.model.assign(std::size_t(newSize), false);
        break;
    }
    case 1:
        slot.field.setAll();
        slot.model.assign(slot.model.size(), true);
        break;
    case 2:
        slot.field = ~slot.field;
        slot.model.flip();
        break;
    case 3:
        slot = Slot(other);
        break;
    case 4: {
        char const operation = "|&^"[random.below(3)];
        apply(slot.field, other.field, operation, random.oneIn(2));
        for (std::size_t i = 0; i < slot.model.size(); ++i)
            slot.model[i] = combined(slot.model[i], at(other.model, i), operation);
        break;
    }
    default:
        for (int n = random.below(40); n > 0; --n) {
            int const i = random.below(size + 80) - 5;
            bool const value = random.oneIn(2);
            slot.field.setBit(i, value);
            if (i >= 0 && i < size)
                slot.model[std::size_t(i)] = value;
        }
    }
}

TEST(BitField, IsLikeAVectorOfBool) {
    SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        Slot slots[3];
        for (int step = 0; step < 40; ++step) {
            Slot & slot = slots[random.below(3)];
            changeOne(random, slot, slots[random.below(3)]);
            ASSERT_NO_FATAL_FAILURE(expectSame(slot.field, slot.model));
            for (Slot const & other : slots)
                ASSERT_EQ(slot.field == other.field, slot.model == other.model);
        }
    }
}

TEST(BitField, TheSpareWordOfAMultipleOf32CountsForNothing) {
    BitField field(32);
    field.setAll();
    EXPECT_EQ(field.maxAvailableBits(), 32);
    EXPECT_TRUE(field.allSet());
    EXPECT_FALSE(field.testBit(32));
    EXPECT_EQ((~BitField(40).setBit(0, true).setBit(3, true).setBit(39, true)).numBitsSet(), 37);
    EXPECT_EQ(BitField(), BitField(0));
    EXPECT_EQ(BitField(-7).maxAvailableBits(), 0);
}

TEST(BitField, WhatWasMovedFromIsEmptyAndCanBeUsed) {
    BitField from(100);
    from.setAll();
    BitField const to(std::move(from));
    EXPECT_EQ(to.numBitsSet(), 100);
    EXPECT_EQ(from, BitField()); // NOLINT: that is what is tested
    EXPECT_FALSE(from.testBit(5));
    from = to;
    from[7] = from[6] = false;
    EXPECT_EQ(from.numBitsSet(), 98);
}

void expectSame(BitFieldAuto const & field, Bits const & model, int words) {
    ASSERT_EQ(field.maxAvailableBits(), 32 * words);
    ASSERT_EQ(field.anySet(), numSet(model) != 0);
    for (int i = -2; i < int(model.size()); ++i)
        ASSERT_EQ(field[i], i >= 0 && model[std::size_t(i)]) << i;
}

TEST(BitFieldAuto, IsLikeAVectorOfBoolWithoutEnd) {
    constexpr int range = 400;
    struct AutoSlot {
        BitFieldAuto field;
        Bits model = Bits(range);
        int words = 1;
    };
    SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        AutoSlot slots[2];
        for (int step = 0; step < 40; ++step) {
            AutoSlot & slot = slots[random.below(2)];
            AutoSlot const & other = slots[random.below(2)];
            int const i = random.below(range >> random.below(4)) - 3;
            switch (random.below(8)) {
            case 0:
                slot.field.reserveSize(i);
                slot.words = i < 0 ? slot.words : std::max(slot.words, i / 32 + 1);
                break;
            case 1:
                slot.field.resetAll();
                slot.model.assign(range, false);
                break;
            case 2: {
                char const operation = "|&^"[random.below(3)];
                apply(slot.field, other.field, operation, random.oneIn(2));
                for (std::size_t k = 0; k < range; ++k)
                    slot.model[k] = combined(slot.model[k], other.model[k], operation);
                slot.words = operation == '&' ? slot.words : std::max(slot.words, other.words);
                break;
            }
            default: {
                bool const value = !random.oneIn(3);
                slot.field[i] = value;
                if (i >= 0)
                    slot.model[std::size_t(i)] = value;
                if (i >= 0 && value)
                    slot.words = std::max(slot.words, i / 32 + 1);
            }
            }
            ASSERT_NO_FATAL_FAILURE(expectSame(slot.field, slot.model, slot.words));
            ASSERT_EQ(slots[0].field == slots[1].field, slots[0].model == slots[1].model);
            Bits missing(range);
            for (std::size_t k = 0; k < range; ++k)
                missing[k] = slots[1].model[k] && !slots[0].model[k];
            ASSERT_EQ(slots[0].field.testBits(slots[1].field),
                      slots[0].words >= slots[1].words && numSet(missing) == 0);
        }
    }
}

TEST(BitFieldAuto, HoldsTheHighestIndex) {
    BitFieldAuto field(-1);
    EXPECT_EQ(field.maxAvailableBits(), 0);
    field.setBit(INT_MIN, true).setBit(INT_MAX, false);
    EXPECT_EQ(field.maxAvailableBits(), 0);
    field.setBit(INT_MAX, true);
    EXPECT_TRUE(field.testBit(INT_MAX));
    EXPECT_EQ(field.maxAvailableBits(), INT_MAX);
}

} // namespace
