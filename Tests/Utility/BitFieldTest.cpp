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

// A field with its model, to both of which everything is done.
template <class Field>
struct Slot {
    Field field;
    Bits model;
    int words = 1; // of a field that grows
};

int numSet(Bits const & bits) { return int(std::count(bits.begin(), bits.end(), true)); }

// In both forms; the model keeps its size, and bits that the other one has not are clear.
template <class Field>
void combine(SeededRandom & random, Slot<Field> & slot, Slot<Field> const & other) {
    static constexpr void (*forms[])(Field &, Field const &) = {
        [](Field & a, Field const & b) { a |= b; }, [](Field & a, Field const & b) { a = a | b; },
        [](Field & a, Field const & b) { a ^= b; }, [](Field & a, Field const & b) { a = a ^ b; },
        [](Field & a, Field const & b) { a &= b; }, [](Field & a, Field const & b) { a = a & b; }};
    int const operation = random.below(6);
    forms[operation](slot.field, other.field);
    for (std::size_t i = 0; i < slot.model.size(); ++i) {
        bool const a = slot.model[i];
        bool const b = i < other.model.size() && other.model[i];
        slot.model[i] = operation < 2 ? a || b : operation < 4 ? a != b : a && b;
    }
    slot.words = operation < 4 ? std::max(slot.words, other.words) : slot.words;
}

template <class Field>
void setBit(SeededRandom & random, Slot<Field> & slot, int i) {
    bool const value = !random.oneIn(3);
    random.oneIn(2) ? static_cast<void>(slot.field[i] = value) : static_cast<void>(slot.field.setBit(i, value));
    if (i >= 0 && i < int(slot.model.size()))
        slot.model[std::size_t(i)] = value;
    if (i >= 0 && value)
        slot.words = std::max(slot.words, i / 32 + 1);
}

template <class Field>
void expectBits(Slot<Field> const & slot) {
    ASSERT_EQ(slot.field.anySet(), numSet(slot.model) != 0);
    for (int i = -2; i < int(slot.model.size()) + 70; ++i)
        ASSERT_EQ(slot.field[i], i >= 0 && i < int(slot.model.size()) && slot.model[std::size_t(i)]) << i;
}

TEST(BitField, IsLikeAVectorOfBool) {
    SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        Slot<BitField> slots[3];
        for (int step = 0; step < 40; ++step) {
            Slot<BitField> & slot = slots[random.below(3)];
            int const size = random.below(200) - 10;
            switch (random.below(9)) {
            case 0:
                slot.field.resizeAndReset(size);
                slot.model = size < 0 ? slot.model : Bits(std::size_t(size));
                break;
            case 1:
                slot.field.setAll();
                slot.model.assign(slot.model.size(), true);
                break;
            case 2:
                slot.field = ~slot.field;
                slot.model.flip();
                break;
            case 3:
                slot = Slot<BitField>(slots[random.below(3)]);
                break;
            case 4:
                combine(random, slot, slots[random.below(3)]);
                break;
            default:
                for (int n = random.below(40); n > 0; --n)
                    setBit(random, slot, random.below(int(slot.model.size()) + 80) - 5);
            }
            ASSERT_NO_FATAL_FAILURE(expectBits(slot));
            ASSERT_EQ(slot.field.maxAvailableBits(), int(slot.model.size()));
            ASSERT_EQ(slot.field.numBitsSet(), numSet(slot.model));
            ASSERT_EQ(slot.field.allSet(), numSet(slot.model) == int(slot.model.size()));
            for (auto const & other : slots)
                ASSERT_EQ(slot.field == other.field, slot.model == other.model);
        }
    }
    BitField from(100);
    from.setAll();
    BitField const to(std::move(from));
    EXPECT_EQ(to.numBitsSet(), 100);
    EXPECT_EQ(from, BitField()); // NOLINT: what was moved from is empty and can be used
    from = to;
    EXPECT_EQ(from.setBit(7, false).numBitsSet(), 99);
}

TEST(BitFieldAuto, IsLikeAVectorOfBoolWithoutEnd) {
    SeededRandom random;
    for (int round = 0; round < 300; ++round) {
        Slot<BitFieldAuto> slots[2] = {{{}, Bits(400)}, {{}, Bits(400)}};
        for (int step = 0; step < 40; ++step) {
            auto & slot = slots[random.below(2)];
            int const i = random.below(400 >> random.below(4)) - 3;
            switch (random.below(8)) {
            case 0:
                slot.field.reserveSize(i);
                slot.words = i < 0 ? slot.words : std::max(slot.words, i / 32 + 1);
                break;
            case 1:
                slot.field.resetAll();
                slot.model.assign(400, false);
                break;
            case 2:
                combine(random, slot, slots[random.below(2)]);
                break;
            default:
                setBit(random, slot, i);
            }
            ASSERT_NO_FATAL_FAILURE(expectBits(slot));
            ASSERT_EQ(slot.field.maxAvailableBits(), 32 * slot.words);
            ASSERT_EQ(slots[0].field == slots[1].field, slots[0].model == slots[1].model);
            Bits both = slots[0].model;
            for (std::size_t k = 0; k < both.size(); ++k)
                both[k] = both[k] && slots[1].model[k];
            ASSERT_EQ(slots[0].field.testBits(slots[1].field),
                      slots[0].words >= slots[1].words && both == slots[1].model);
        }
    }
    BitFieldAuto field(-1);
    field.setBit(INT_MIN, true).setBit(INT_MAX, false);
    EXPECT_EQ(field.maxAvailableBits(), 0);
    field.setBit(INT_MAX, true);
    EXPECT_TRUE(field.testBit(INT_MAX));
    EXPECT_EQ(field.maxAvailableBits(), INT_MAX);
}

} // namespace
