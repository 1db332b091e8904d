// A set of bits that grows.

#ifndef qvUtilBitFieldAuto_h
#define qvUtilBitFieldAuto_h

#include "Base/Containers/qvVector.h"
#include "Base/Utility/qvUtilBitReference.h"
#include "Base/qvBaseConfig.h"

#include <utility>

namespace qvUtil {

/// Bits 0 to 2147483647, of which memory is taken for those up to the highest that was ever set; all others are clear.
/// It grows by itself. Where the size is known and fixed use BitField, which counts.
///
/// One thread at a time may use a field that somebody changes. Failures: std::bad_alloc; a field that could not grow is
/// as it was.
class QV_EXPORT BitFieldAuto {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = BitFieldAuto;

    /// All clear, with room for 32 bits.
    BitFieldAuto() { reserveSize(0); }
    /// All clear, with room as reserveSize() makes it, and with none for a negative count.
    explicit BitFieldAuto(int bits) { reserveSize(bits); }

    /// Makes room for bits / 32 + 1 words where there is less. A negative count changes nothing.
    void reserveSize(int bits);

    /// The bits there is room for, a multiple of 32, or 2147483647 where that would be more.
    int maxAvailableBits() const;

    /// A negative index reads as clear, and setting it changes nothing.
    bool testBit(int i) const { return has(i) && (words_[i / wordSize] & maskOf(i)) != 0; }
    bool operator[](int i) const { return testBit(i); }
    BitRefAuto operator[](int i) { return BitRefAuto(*this, i); }
    /// Only setting a bit that there is no room for takes memory, clearing one does not.
    BitFieldAuto & setBit(int i, bool value) {
        if (value && i >= 0) {
            if (!has(i))
                reserveSize(i);
            words_[i / wordSize] |= maskOf(i);
        } else if (has(i)) {
            words_[i / wordSize] &= ~maskOf(i);
        }
        return *this;
    }
    /// The room stays.
    void resetAll();
    bool anySet() const;
    /// Whether every bit that is set in `other` is set here. False where this field has room for less than `other`,
    /// even when nothing is set beyond.
    bool testBits(BitFieldAuto const & other) const;

    /// The same bits, whatever the room.
    friend bool operator==(BitFieldAuto const & a, BitFieldAuto const & b) { return a.isEqual(b); }

    /// Bit by bit. The room stays with `&=` and becomes the larger one with the other two.
    BitFieldAuto & operator&=(BitFieldAuto const & other);
    BitFieldAuto & operator|=(BitFieldAuto const & other);
    BitFieldAuto & operator^=(BitFieldAuto const & other);
    friend BitFieldAuto operator&(BitFieldAuto a, BitFieldAuto const & b) { return std::move(a &= b); }
    friend BitFieldAuto operator|(BitFieldAuto a, BitFieldAuto const & b) { return std::move(a |= b); }
    friend BitFieldAuto operator^(BitFieldAuto a, BitFieldAuto const & b) { return std::move(a ^= b); }

private:
    using Word = unsigned;
    static constexpr int wordSize = 32;

    static Word maskOf(int i) { return Word(1) << (i % wordSize); }
    bool has(int i) const { return i >= 0 && i / wordSize < words_.size(); }
    QV_NO_EXPORT void growTo(int numWords);
    QV_NO_EXPORT int numCommonWords(BitFieldAuto const & other) const;
    bool isEqual(BitFieldAuto const & other) const;

    qv::vector<Word> words_;
};

} // namespace qvUtil

#endif
