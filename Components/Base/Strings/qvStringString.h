// The abstract base of the two string classes.

#ifndef qvStringString_h
#define qvStringString_h

#include "Base/qvBaseConfig.h"

namespace qvString {

/// What narrow and wide strings have in common: a length and a capacity, counted in characters of their own width
/// (bytes of a CString, UTF-16 units of an IString). It has no fields, and nothing is made from it but these two.
class QV_EXPORT String {
public:
    /// No position: the largest unsigned value. It is 32 bits wide, so it differs from that of the standard strings.
    static unsigned const npos = 0xFFFFFFFFU;

    virtual ~String() = 0;

    virtual bool isEmpty() const;
    /// The same as isEmpty().
    virtual bool isNull() const;
    virtual unsigned length() const = 0;
    /// The first position: 0.
    virtual unsigned first() const;
    /// The last position; 0 when the string is empty.
    virtual unsigned last() const;
    virtual unsigned capacity() const = 0;
    /// Makes room for at least that many characters and gives the resulting capacity.
    virtual unsigned reserve(unsigned) = 0;
    /// The greatest length. What would make a string longer throws std::length_error.
    virtual unsigned maxSize() const = 0;

protected:
    String() = default;
    String(String const &) = default;
    String & operator=(String const &) = default;

    /// Whether there is a character at `pos`.
    bool doBoundsCheck(unsigned pos) const;
    /// Whether there is a character at `pos` and `n` is npos or at most the length.
    bool doBoundsCheck(unsigned pos, unsigned n) const;
};

} // namespace qvString

#endif
