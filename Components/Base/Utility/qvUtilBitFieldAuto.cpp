#include "Base/Utility/qvUtilBitFieldAuto.h"

#include <algorithm>
#include <climits>

namespace qvUtil {

namespace {

template <class Iterator>
bool areClear(Iterator first, Iterator last) {
    return std::all_of(first, last, [](unsigned word) { return word == 0; });
}

} // namespace

void BitFieldAuto::growTo(int numWords) {
    if (words_.size() < numWords)
        words_.setSize(numWords);
}

void BitFieldAuto::reserveSize(int bits) {
    if (bits >= 0)
        growTo(bits / wordSize + 1);
}

int BitFieldAuto::maxAvailableBits() const {
    return words_.size() > INT_MAX / wordSize ? INT_MAX : words_.size() * wordSize;
}

int BitFieldAuto::numCommonWords(BitFieldAuto const & other) const {
    return std::min(words_.size(), other.words_.size());
}

void BitFieldAuto::resetAll() { std::fill(words_.begin(), words_.end(), 0U); }

bool BitFieldAuto::anySet() const { return !areClear(words_.begin(), words_.end()); }

bool BitFieldAuto::testBits(BitFieldAuto const & other) const {
    if (words_.size() < other.words_.size())
        return false;
    for (int i = 0; i < other.words_.size(); ++i)
        if ((other.words_[i] & ~words_[i]) != 0)
            return false;
    return true;
}

bool BitFieldAuto::isEqual(BitFieldAuto const & other) const {
    int const common = numCommonWords(other);
    return std::equal(words_.begin(), words_.begin() + common, other.words_.begin()) &&
           areClear(words_.begin() + common, words_.end()) &&
           areClear(other.words_.begin() + common, other.words_.end());
}

BitFieldAuto & BitFieldAuto::operator&=(BitFieldAuto const & other) {
    int const common = numCommonWords(other);
    for (int i = 0; i < common; ++i)
        words_[i] &= other.words_[i];
    std::fill(words_.begin() + common, words_.end(), 0U);
    return *this;
}

BitFieldAuto & BitFieldAuto::operator|=(BitFieldAuto const & other) {
    growTo(other.words_.size());
    for (int i = 0; i < other.words_.size(); ++i)
        words_[i] |= other.words_[i];
    return *this;
}

BitFieldAuto & BitFieldAuto::operator^=(BitFieldAuto const & other) {
    growTo(other.words_.size());
    for (int i = 0; i < other.words_.size(); ++i)
        words_[i] ^= other.words_[i];
    return *this;
}

} // namespace qvUtil
