// Numbers as printf writes them, but for the blanks around them.

#ifndef FormatNumber_h
#define FormatNumber_h

#include "Base/Strings/Internal/FormatItem.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace qvString::formatting {

/// The text of one number, in the parts between which padding goes: a sign or a prefix, zeros, digits. What does not
/// depend on the locale is written here, everything else by the runtime.
class NumberText {
public:
    /// An integer of any of the letters d, i, u, o, x, X, b, B and p.
    void setInteger(FormatItem const & item, std::uint64_t magnitude, bool isNegative);

    /// The others give false when there is no memory for the text.
    bool setFloating(FormatItem const & item, double value);
    bool setFloating(FormatItem const & item, long double value);
    /// An integer with its digits grouped by the locale.
    bool setGrouped(FormatItem const & item, std::uint64_t magnitude, bool isNegative);

    char const * sign() const { return sign_; }
    std::size_t signLength() const { return signLength_; }
    std::size_t zeros() const { return zeros_; }
    /// Whether zeros are put in front of the digits until the width is full. How many they are is known where the
    /// digits have got the width of their characters.
    bool isFilledWithZeros() const { return isFilledWithZeros_; }
    char const * body() const { return body_; }
    std::size_t bodyLength() const { return bodyLength_; }
    /// Whether the digits hold nothing but ASCII characters: a locale's decimal point may be another.
    bool isAscii() const;

private:
    template <class Value>
    bool writeByRuntime(FormatItem const & item, char const * sizeAndLetter, Value value);
    bool writePlainly(FormatItem const & item, double value);
    void splitFloating(FormatItem const & item, char const * text, std::size_t length);

    char buffer_[128];
    std::unique_ptr<char[]> large_;
    char const * sign_ = buffer_;
    std::size_t signLength_ = 0;
    std::size_t zeros_ = 0;
    bool isFilledWithZeros_ = false;
    char const * body_ = buffer_;
    std::size_t bodyLength_ = 0;
};

} // namespace qvString::formatting

#endif
