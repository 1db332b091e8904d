// A set of bits of a fixed size that knows how many are set.

#ifndef qvUtilBitField_h
#define qvUtilBitField_h

#include "Base/Containers/qvVector.h"
#include "Base/Utility/qvUtilBitReference.h"
#include "Base/qvBaseConfig.h"

#include <utility>

namespace qvUtil {

/// Bits 0 to size - 1, for as many things as are known beforehand. How many bits are set is counted along, so that
/// asking for it costs nothing. Where the size is not known use BitFieldAuto.
///
///     qvUtil::BitField seen(mesh.numFaces());
///     seen[face] = true;
///     if (seen.allSet()) ...
///
/// A bit outside the size reads as clear, and setting it changes nothing. One thread at a time may use a field that
/// somebody changes. Failures: std::bad_alloc, which leaves the field as it was.
class QV_EXPORT BitField {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = BitField;

    /// Of size 0.
    BitField() = default;
    /// All clear. A negative size counts as 0.
    explicit BitField(int size) { resizeAndReset(size); }
    BitField(BitField const & other) = default;
    /// Leaves `other` with size 0.
    BitField(BitField && other) noexcept
        : words_(std::move(other.words_)), numBits_(std::exchange(other.numBits_, 0)),
          numSet_(std::exchange(other.numSet_, 0)) {}
    ~BitField() = default;

    BitField & operator=(BitField const & other);
    BitField & operator=(BitField && other) noexcept {
        words_ = std::move(other.words_);
        numBits_ = std::exchange(other.numBits_, 0);
        numSet_ = std::exchange(other.numSet_, 0);
        return *this;
    }

    /// Takes a new size, all bits clear. Memory is never given back. A negative size changes nothing.
    void resizeAndReset(int size);

    /// The size.
    int maxAvailableBits() const { return numBits_; }
    int numBitsSet() const { return numSet_; }
    bool anySet() const { return numSet_ > 0; }
    /// True for size 0 too.
    bool allSet() const { return numSet_ == numBits_; }

    bool testBit(int i) const { return has(i) && (words_[i / wordSize] & maskOf(i)) != 0; }
    bool operator[](int i) const { return testBit(i); }
    BitRef operator[](int i) { return BitRef(*this, i); }
    BitField & setBit(int i, bool value) {
        if (testBit(i) != value && has(i)) {
            words_[i / wordSize] ^= maskOf(i);
            numSet_ += value ? 1 : -1;
        }
        return *this;
    }
    void resetAll();
    void setAll();

    /// The same size and the same bits.
    friend bool operator==(BitField const & a, BitField const & b) { return a.isEqual(b); }

    /// Bit by bit; the size stays, and the other field counts as clear beyond its own.
    BitField & operator^=(BitField const & other);
    BitField & operator&=(BitField const & other);
    BitField & operator|=(BitField const & other);
    friend BitField operator^(BitField a, BitField const & b) { return std::move(a ^= b); }
    friend BitField operator&(BitField a, BitField const & b) { return std::move(a &= b); }
    friend BitField operator|(BitField a, BitField const & b) { return std::move(a |= b); }
    /// The complement within the size.
    BitField operator~() const;

private:
    using Word = unsigned;
    static constexpr int wordSize = 32;

    static Word maskOf(int i) { return Word(1) << (i % wordSize); }
    bool has(int i) const { return static_cast<unsigned>(i) < static_cast<unsigned>(numBits_); }
    // The words with bits of the field in them, without the spare one that a multiple of 32 has.
    int numUsedWords() const { return numBits_ / wordSize + (numBits_ % wordSize != 0); }
    QV_NO_EXPORT void clearSpareBits();
    template <class Operation>
    QV_NO_EXPORT BitField & combine(BitField const & other, Operation operation);
    bool isEqual(BitField const & other) const;

    // At least numBits_ / 32 + 1 words once a size was given. Bits at or above the size are always clear, so that no
    // operation has to look away from them.
    qv::vector<Word> words_;
    int numBits_ = 0;
    int numSet_ = 0;
};

} // namespace qvUtil

#endif
