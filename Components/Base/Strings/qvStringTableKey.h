// Keys of user-visible texts.

#ifndef qvStringTableKey_h
#define qvStringTableKey_h

#include "Base/Strings/qvStringCString.h"
#include "Base/qvBaseConfig.h"

#include <compare>
#include <string_view>

namespace qvStringTable {

/// The key of a text: the identifier of a set, a `.`, and a name in the set, such as `gui.ok`. Any text can be a key;
/// isValidKeyString() tells whether it is a proper one. Keys are ordered as their texts, byte by byte.
class QV_EXPORT Key {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = Key;

    Key() = default;
    Key(qvString::CString const & text) : text_(text) {}
    /// Null gives an empty key, here and in assign().
    Key(char const * text) : text_(text) {}
    explicit Key(std::string_view text) : text_(text) {}

    void assign(Key const & other) { text_ = other.text_; }
    void assign(qvString::CString const & text) { text_ = text; }
    void assign(char const * text) { text_ = text; }
    Key & operator=(qvString::CString const & text) {
        text_ = text;
        return *this;
    }
    Key & operator=(char const * text) {
        text_ = text;
        return *this;
    }

    qvString::CString const & value() const { return text_; }

    /// Negative, 0 or positive.
    int compare(Key const & other) const { return text_.compare(other.text_); }
    /// The same for the sets, as getSubParts() has them: all keys that are not in two parts have the empty one.
    int compareSetID(Key const & other) const;

    /// Splits at `.` as qvUtil::split() does, so a `.` at the end begins no part. With two parts these are the results.
    /// Otherwise false, with an empty `setID` and the whole key as `name`.
    bool getSubParts(qvString::CString & setID, qvString::CString & name) const;

    /// Whether all characters are alphanumeric by qvString::isAlnum(), `.` or `_`, and the text splits in two parts of
    /// which none is empty. So `a.b.` is valid.
    static bool isValidKeyString(qvString::CString const & text);

    friend bool operator==(Key const & a, Key const & b) { return a.text_ == b.text_; }
    friend std::strong_ordering operator<=>(Key const & a, Key const & b) { return a.text_ <=> b.text_; }

private:
    qvString::CString text_;
};

} // namespace qvStringTable

#endif
