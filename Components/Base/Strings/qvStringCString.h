// The narrow string.

#ifndef qvStringCString_h
#define qvStringCString_h

#include "Base/Strings/qvStringString.h"

#include <climits>
#include <compare>
#include <cstdarg>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string_view>

namespace qvString {

/// A string of bytes in an encoding that it does not know: for configuration keys, names of locales and whatever else
/// is plain ASCII by contract. File names and what a user reads are IString.
///
/// Every CString owns its text; a copy is a deep one. The object is a pointer beside the table of virtual functions,
/// and all memory is taken and released inside the library, so it may cross every module boundary. A text of up to 15
/// bytes costs one allocation, a longer one two. Zero bytes are characters like others, except where a call takes or
/// gives a terminated text. Positions past the end throw std::out_of_range, too little memory std::bad_alloc.
///
/// Any number of threads may read a CString; who changes it must be alone.
///
///     qvString::CString key("render.");
///     key.append("width");
///     if (key.find(".", 0) != qvString::CString::npos) ...
class QV_EXPORT CString : public String {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = CString;

    static unsigned const npos = 0xFFFFFFFFU;

    CString();
    /// A null pointer gives an empty string, here and in all operations that take a terminated text.
    CString(char const * text);
    /// `len` bytes; a negative `len` counts as 0.
    CString(char const * text, int len);
    CString(char c);
    CString(unsigned n, char c);
    CString(CString const & other);
    /// Takes the text over; `other` is empty then.
    CString(CString && other) : CString() { exchange(other); }
    /// Throws std::length_error for a view longer than INT_MAX.
    CString(std::string_view text) : CString(text.data(), asLength(text.size())) {}
    ~CString() override;

    unsigned length() const override;
    unsigned capacity() const override;
    unsigned reserve(unsigned n) override;
    /// 0xFFFFFFFE.
    unsigned maxSize() const override;

    virtual CString & append(CString const & text);
    CString & append(char const * text);
    CString & append(char c);

    /// The terminated text, valid until the next change of the string. The two are the same.
    char const * asChar() const;
    char const * asMultibyte() const;
    operator std::string_view() const { return {asChar(), length()}; }
    /// The bytes of the terminated text: length() + 1.
    unsigned asCharStoreSize() const;
    unsigned asMultibyteStoreSize() const;
    /// A copy with its terminator, which the caller releases with free(). Throws std::bad_alloc.
    char * copyAsChar() const;
    char * copyAsMultibyte() const;

    /// Positions are not checked; that of the terminator may be read.
    char & at(unsigned pos);
    char at(unsigned pos) const;
    char & operator[](unsigned pos);
    char operator[](unsigned pos) const;

    /// Whether every byte is below 128.
    bool isAscii() const;

    CString & assign(CString const & text);
    CString & assign(char const * text);
    CString & assign(char c);
    CString & operator=(CString const & text);
    CString & operator=(CString && text) noexcept {
        exchange(text);
        return *this;
    }
    CString & operator=(char const * text);
    CString & operator=(char c);
    CString & operator+=(CString const & text) { return append(text); }
    CString & operator+=(char const * text) { return append(text); }
    CString & operator+=(char c) { return append(c); }

    CString & prepend(CString const & text);
    CString & prepend(char const * text);
    CString & prepend(char c);
    CString & insert(unsigned pos, CString const & text);
    CString & insert(unsigned pos, char const * text);
    CString & insert(unsigned pos, char c);
    /// Replaces `n` bytes at `pos`, or as many as there are.
    CString & replace(unsigned pos, unsigned n, CString const & text);
    CString & replace(unsigned pos, unsigned n, char const * text);
    CString & replace(unsigned pos, unsigned n, char c);
    /// Removes `n` bytes at `pos`, or as many as there are. On an empty string any position is fine.
    void erase(unsigned pos = 0, unsigned n = npos);
    CString & remove(unsigned pos = 0, unsigned n = npos);

    /// Removes all leading, or all trailing, bytes that are `c`, or for which isSpace() holds.
    CString & strip(char c);
    CString & rstrip(char c);
    CString & stripSpaces();
    CString & rstripSpaces();

    /// Byte by byte, as toLower() and toUpper() have it.
    void toLowerCase();
    void toUpperCase();
    void swap(CString & other);

    /// The first position at or after `pos`, or the last at or before it; npos when there is none. An empty text is
    /// never found, and nothing is found in an empty string.
    unsigned find(CString const & what, unsigned pos = 0) const;
    unsigned find(char const * what, unsigned pos = 0) const;
    unsigned find(char what, unsigned pos = 0) const;
    unsigned find(bool (*predicate)(char), unsigned pos = 0) const;
    unsigned rfind(CString const & what, unsigned pos = npos) const;
    unsigned rfind(char const * what, unsigned pos = npos) const;
    unsigned rfind(char what, unsigned pos = npos) const;
    unsigned rfind(bool (*predicate)(char), unsigned pos = npos) const;

    /// `n` bytes at `pos`, or as many as there are.
    CString substr(unsigned pos = 0, unsigned n = npos) const;

    /// Negative, 0 or positive: by the values of the bytes, then by length.
    int compare(CString const & other) const;
    int compare(char const * other) const;
    /// As the current locale orders the two texts, each up to its first zero byte.
    int collate(CString const & other) const;
    /// The same two for lower-case copies.
    int compareNoCase(CString const & other) const;
    int collateNoCase(CString const & other) const;

    /// Replace the text by a formatted one, as told in qvStringFormat.h, and give its length. When the result is empty
    /// or the format is refused, the string stays as it was, and the result is npos. The text may be longer than
    /// `initialSize`, which says for how many characters room is made at first (never less than 1024). The arguments
    /// may point into the string.
    unsigned format(char const * fmt, ...);
    unsigned format(unsigned initialSize, char const * fmt, ...);
    unsigned format(CString const * fmt, ...);
    unsigned format(unsigned initialSize, CString const * fmt, ...);
    unsigned vformat(char const * fmt, std::va_list args);

    friend CString operator+(CString const & a, CString const & b) {
        CString sum(a);
        sum.append(b);
        return sum;
    }
    friend bool operator==(CString const & a, CString const & b) { return a.compare(b) == 0; }
    friend bool operator==(CString const & a, char const * b) { return a.compare(b) == 0; }
    friend bool operator==(CString const & a, std::string_view b) { return std::string_view(a) == b; }
    friend std::strong_ordering operator<=>(CString const & a, CString const & b) { return a.compare(b) <=> 0; }
    friend std::strong_ordering operator<=>(CString const & a, char const * b) { return a.compare(b) <=> 0; }
    friend std::strong_ordering operator<=>(CString const & a, std::string_view b) { return std::string_view(a) <=> b; }

private:
    struct Body;

    static int asLength(std::size_t size) {
        if (size > INT_MAX)
            throw std::length_error("qvString::CString");
        return static_cast<int>(size);
    }
    void exchange(CString & other) noexcept {
        Body * const body = body_;
        body_ = other.body_;
        other.body_ = body;
    }
    QV_NO_EXPORT unsigned formatFrom(unsigned initialSize, char const * fmt, std::va_list args);

    Body * body_; // never null
};

QV_EXPORT CString plus(CString const & a, CString const & b);
/// Appends `b` to `a`, through the virtual append().
QV_EXPORT CString & plusEqual(CString & a, CString const & b);
QV_EXPORT bool equal(CString const & a, CString const & b);
QV_EXPORT bool equal(CString const & a, char const * b);
QV_EXPORT bool notEqual(CString const & a, CString const & b);
QV_EXPORT bool less(CString const & a, CString const & b);
QV_EXPORT bool greater(CString const & a, CString const & b);
QV_EXPORT bool lessEqual(CString const & a, CString const & b);
QV_EXPORT bool greaterEqual(CString const & a, CString const & b);
QV_EXPORT void swap(CString & a, CString & b);
/// The hash of all bytes of the text, as qv::hashfunction() has it.
QV_EXPORT unsigned hashfunction(CString const & text);

} // namespace qvString

extern "C" {

/// For callers in C: a new string, to be deleted with CString_delete(), which takes a null pointer too.
QV_EXPORT qvString::CString * CString_create(char const * text);
QV_EXPORT void CString_delete(qvString::CString * string);
}

template <>
struct std::hash<qvString::CString> {
    std::size_t operator()(qvString::CString const & text) const { return qvString::hashfunction(text); }
};

#endif
