#include "Base/Utility/qvUtilBitField.h"

#include <algorithm>

namespace qvUtil {

namespace {

// The set bits of each byte, as a byte. In steps that the compiler turns into vector instructions of any processor: it
// has no others to count on, and a call for each word takes five times as long.
inline unsigned bitsOfBytes(unsigned word) {
    word -= (word >> 1) & 0x55555555;
    word = (word & 0x33333333) + ((word >> 2) & 0x33333333);
    return (word + (word >> 4)) & 0x0F0F0F0F;
}

inline int sumOfBytes(unsigned word) {
    word = (word & 0x00FF00FF) + ((word >> 8) & 0x00FF00FF);
    return static_cast<int>((word & 0xFFFF) + (word >> 16));
}

// Stores f of each word and its counterpart, and gives the number of bits that are set then.
template <class F>
int applyAndCount(unsigned * words, unsigned const * others, int n, F f) {
    int count = 0;
    for (int i = 0; i < n; ++i) {
        words[i] = f(words[i], others[i]);
        count += sumOfBytes(bitsOfBytes(words[i]));
    }
    return count;
}

} // namespace

// The words stay where they are when they suffice.
BitField & BitField::operator=(BitField const & other) {
    if (this == &other)
        return *this;
    resizeAndReset(other.numBits_);
    std::copy_n(other.words_.begin(), other.numUsedWords(), words_.begin());
    numSet_ = other.numSet_;
    return *this;
}

void BitField::resizeAndReset(int size) {
    if (size < 0)
        return;
    int const numWords = size / wordSize + 1;
    if (words_.size() < numWords)
        words_.setSize(numWords);
    numBits_ = size;
    resetAll();
}

void BitField::resetAll() {
    std::fill(words_.begin(), words_.end(), 0U);
    numSet_ = 0;
}

void BitField::setAll() {
    std::fill_n(words_.begin(), numUsedWords(), ~0U);
    clearSpareBits();
    numSet_ = numBits_;
}

bool BitField::isEqual(BitField const & other) const {
    return numBits_ == other.numBits_ && numSet_ == other.numSet_ &&
           std::equal(words_.begin(), words_.begin() + numUsedWords(), other.words_.begin());
}

template <class Operation>
BitField & BitField::combine(BitField const & other, Operation operation) {
    int const used = numUsedWords();
    int const common = std::min(used, other.numUsedWords());
    numSet_ = applyAndCount(words_.data(), other.words_.data(), common, operation);
    for (int i = common; i < used; ++i)
        numSet_ += sumOfBytes(bitsOfBytes(words_[i] = operation(words_[i], 0U)));
    if (other.numBits_ > numBits_ && used == common && used > 0) {
        numSet_ -= sumOfBytes(bitsOfBytes(words_[used - 1]));
        clearSpareBits();
        numSet_ += sumOfBytes(bitsOfBytes(words_[used - 1]));
    }
    return *this;
}

BitField & BitField::operator^=(BitField const & other) {
    return combine(other, [](Word a, Word b) { return a ^ b; });
}
BitField & BitField::operator&=(BitField const & other) {
    return combine(other, [](Word a, Word b) { return a & b; });
}
BitField & BitField::operator|=(BitField const & other) {
    return combine(other, [](Word a, Word b) { return a | b; });
}

BitField BitField::operator~() const {
    BitField result(*this);
    for (int i = 0; i < numUsedWords(); ++i)
        result.words_[i] = ~words_[i];
    result.clearSpareBits();
    result.numSet_ = numBits_ - numSet_;
    return result;
}

// The bits at or above the size in the last word that is used.
void BitField::clearSpareBits() {
    if (numBits_ % wordSize != 0)
        words_[numBits_ / wordSize] &= maskOf(numBits_) - 1;
}

} // namespace qvUtil
