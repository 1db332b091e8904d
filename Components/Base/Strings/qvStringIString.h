// The international string: the type of every file name, message and text for users.

#ifndef qvStringIString_h
#define qvStringIString_h

#include "Base/Strings/qvStringCString.h"
#include "Base/Strings/qvStringEncoding.h"

#include <climits>
#include <compare>
#include <cstdarg>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string_view>

namespace qvString {

/// A string of UTF-16 units that hands out narrow forms on demand and keeps the last one, so that calling a narrow
/// interface again and again with the same string converts once. Narrow text is in the multibyte encoding of the C
/// runtime's current locale, or in UTF-8 where a call says so; what cannot be converted is replaced and reported
/// through `ok`, which may be null (see qvStringEncoding.h). Conversions in either direction end at the first zero, and
/// a byte order mark at the start of UTF-8 is left out.
///
/// Every IString owns its text; a copy is a deep one, without the narrow form. The object is a pointer beside the table
/// of virtual functions, and all memory is taken and released inside the library. Copying an IString and substr() stop
/// at the first zero character; assign() and operator= copy all. The operations that CString has too mean the same
/// here, with positions and lengths in units, and the same exceptions.
///
/// The narrow forms are kept inside the string although they are asked for as constants: two threads may not even read
/// one IString at once. asWChar() alone is safe for that.
///
///     qvString::IString name("r\xC3\xA9sum\xC3\xA9.txt", qvString::UTF8);
///     name.replace(L".txt", L".bak");
///     std::puts(name.asUTF8());
class QV_EXPORT IString : public String {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = IString;

    static unsigned const npos = 0xFFFFFFFFU;

    IString();
    /// A null pointer gives an empty string, here and in all operations that take a terminated text.
    IString(wchar_t const * text);
    /// `len` units; a negative `len` counts as 0.
    IString(wchar_t const * text, int len);
    IString(wchar_t c);
    IString(unsigned n, wchar_t c);
    /// Copies the text up to its first zero character.
    IString(IString const & other);
    /// Takes the whole text over; `other` is empty then.
    IString(IString && other) : IString() { exchange(other); }
    /// The views of this constructor and the next throw std::length_error when they are longer than INT_MAX.
    IString(std::u16string_view text)
        : IString(reinterpret_cast<wchar_t const *>(text.data()), asLength(text.size())) {}
    ~IString() override;

    /// Convert narrow text up to its first zero byte. Text that has no wide form at all gives an empty string.
    IString(char const * text, Encoding encoding = Multibyte, bool * ok = nullptr);
    IString(CString const & text, Encoding encoding = Multibyte, bool * ok = nullptr);
    IString(char c, Encoding encoding = Multibyte, bool * ok = nullptr);
    IString(unsigned n, char c, Encoding encoding = Multibyte, bool * ok = nullptr);
    IString(std::string_view text, Encoding encoding = Multibyte, bool * ok = nullptr)
        : IString(CString(text), encoding, ok) {}

    unsigned length() const override;
    unsigned capacity() const override;
    unsigned reserve(unsigned n) override;
    /// 0x7FFFFFFE.
    unsigned maxSize() const override;

    virtual IString & append(IString const & text);
    IString & append(wchar_t const * text);
    IString & append(wchar_t c);

    /// The terminated wide text, valid until the next change of the string. The two are the same.
    wchar_t const * asWChar() const;
    wchar_t const * asUnicode() const;
    operator std::u16string_view() const { return {reinterpret_cast<char16_t const *>(asWChar()), length()}; }
    /// The size of the terminated wide text in bytes: 2 * length() + 2.
    unsigned asWCharStoreSize() const;
    unsigned asUnicodeStoreSize() const;
    /// A copy with its terminator, which the caller releases with free(). Throws std::bad_alloc.
    wchar_t * copyAsWChar() const;

    /// The terminated narrow form, valid until the next change of the string or the next conversion to the other
    /// encoding. It stays what it is when the program changes its locale. *ok tells whether nothing was lost. Asking
    /// for the two encodings in turn converts every time.
    char const * asMultibyte(Encoding encoding = Multibyte, bool * ok = nullptr) const;
    char const * asUTF8(bool * ok = nullptr) const;
    /// The bytes of the terminated narrow form.
    unsigned asMultibyteStoreSize(Encoding encoding = Multibyte) const;
    unsigned asUTF8StoreSize() const;
    /// A copy with its terminator, which the caller releases with free(). Throws std::bad_alloc.
    char * copyAsMultibyte(Encoding encoding = Multibyte, bool * ok = nullptr) const;
    /// The multibyte form.
    CString convertToCString() const;

    /// Positions are not checked; that of the terminator may be read. The two that allow a change count as one: keep no
    /// reference over a call that asks for a narrow form.
    wchar_t & at(unsigned pos);
    wchar_t at(unsigned pos) const;
    wchar_t & operator[](unsigned pos);
    wchar_t operator[](unsigned pos) const;

    /// Whether every unit is below 128.
    bool isAscii() const;

    IString & assign(IString const & text);
    IString & assign(wchar_t const * text);
    IString & assign(wchar_t c);
    IString & assign(char const * text, Encoding encoding = Multibyte, bool * ok = nullptr);
    IString & assign(CString const & text, Encoding encoding = Multibyte, bool * ok = nullptr);
    IString & operator=(IString const & text);
    IString & operator=(IString && text) noexcept {
        exchange(text);
        return *this;
    }
    IString & operator=(wchar_t const * text);
    IString & operator=(wchar_t c);
    IString & operator+=(IString const & text) { return append(text); }
    IString & operator+=(wchar_t const * text) { return append(text); }
    IString & operator+=(wchar_t c) { return append(c); }

    IString & prepend(IString const & text);
    IString & prepend(wchar_t const * text);
    IString & prepend(wchar_t c);
    IString & insert(unsigned pos, IString const & text);
    IString & insert(unsigned pos, wchar_t const * text);
    IString & insert(unsigned pos, wchar_t c);
    /// Replaces `n` units at `pos`, or as many as there are.
    IString & replace(unsigned pos, unsigned n, IString const & text);
    IString & replace(unsigned pos, unsigned n, wchar_t const * text);
    IString & replace(unsigned pos, unsigned n, wchar_t c);
    /// Replaces each occurrence of `what`, from the start on; what was put in is not searched again.
    IString & replace(IString const & what, IString const & with);
    /// Removes `n` units at `pos`, or as many as there are. On an empty string any position is fine.
    void erase(unsigned pos = 0, unsigned n = npos);
    IString & remove(unsigned pos = 0, unsigned n = npos);

    /// Removes all leading, or all trailing, units that are `c`, or for which isSpace() holds.
    IString & strip(wchar_t c);
    IString & rstrip(wchar_t c);
    IString & stripSpaces();
    IString & rstripSpaces();

    /// Unit by unit, as toLower() and toUpper() have it.
    void toLowerCase();
    void toUpperCase();
    void swap(IString & other);

    /// The first position at or after `pos`, or the last at or before it; npos when there is none. An empty text is
    /// never found, and nothing is found in an empty string. The -Any forms look for any character of a set.
    unsigned find(IString const & what, unsigned pos = 0) const;
    unsigned find(wchar_t const * what, unsigned pos = 0) const;
    unsigned find(wchar_t what, unsigned pos = 0) const;
    unsigned find(bool (*predicate)(wchar_t), unsigned pos = 0) const;
    unsigned findAny(IString const & set, unsigned pos = 0) const;
    unsigned rfind(IString const & what, unsigned pos = npos) const;
    unsigned rfind(wchar_t const * what, unsigned pos = npos) const;
    unsigned rfind(wchar_t what, unsigned pos = npos) const;
    unsigned rfind(bool (*predicate)(wchar_t), unsigned pos = npos) const;
    unsigned rfindAny(IString const & set, unsigned pos = npos) const;

    /// `n` units at `pos`, or as many as there are, up to the first zero among them.
    IString substr(unsigned pos = 0, unsigned n = npos) const;
    void substr(IString & out, unsigned pos, unsigned n) const;

    /// Negative, 0 or positive: by the values of the units, then by length.
    int compare(IString const & other) const;
    int compare(wchar_t const * other) const;
    /// As the current locale orders the two texts, each up to its first zero.
    int collate(IString const & other) const;
    /// The same two for lower-case copies.
    int compareNoCase(IString const & other) const;
    int collateNoCase(IString const & other) const;

    /// Replace the text by a formatted one, as told in qvStringFormat.h, and give its length. When the result is empty
    /// or the format is refused, the string stays as it was, and the result is npos. The text may be longer than
    /// `initialSize`, which says for how many characters room is made at first (never less than 1024). The arguments
    /// may point into the string. A narrow format is converted to a wide one and is then one: what the letters mean is
    /// told for wide formats.
    unsigned format(wchar_t const * fmt, ...);
    unsigned format(unsigned initialSize, wchar_t const * fmt, ...);
    unsigned format(IString const * fmt, ...);
    unsigned format(unsigned initialSize, IString const * fmt, ...);
    unsigned format(char const * fmt, ...);
    unsigned format(unsigned initialSize, char const * fmt, ...);
    unsigned vformat(wchar_t const * fmt, std::va_list args);
    unsigned vformat(char const * fmt, std::va_list args);

    friend IString operator+(IString const & a, IString const & b) {
        IString sum;
        sum.assign(a);
        sum.append(b);
        return sum;
    }
    friend bool operator==(IString const & a, IString const & b) { return a.compare(b) == 0; }
    friend bool operator==(IString const & a, wchar_t const * b) { return a.compare(b) == 0; }
    friend bool operator==(IString const & a, std::u16string_view b) { return std::u16string_view(a) == b; }
    friend std::strong_ordering operator<=>(IString const & a, IString const & b) { return a.compare(b) <=> 0; }
    friend std::strong_ordering operator<=>(IString const & a, wchar_t const * b) { return a.compare(b) <=> 0; }
    friend std::strong_ordering operator<=>(IString const & a, std::u16string_view b) {
        return std::u16string_view(a) <=> b;
    }

private:
    struct Body;

    static int asLength(std::size_t size) {
        if (size > INT_MAX)
            throw std::length_error("qvString::IString");
        return static_cast<int>(size);
    }
    void exchange(IString & other) noexcept {
        Body * const body = body_;
        body_ = other.body_;
        other.body_ = body;
    }
    QV_NO_EXPORT Body & changing();
    QV_NO_EXPORT bool convertFromMultibyte(char const * text, Encoding encoding, bool * ok);
    QV_NO_EXPORT void convertToMultibyte(Encoding encoding, bool * ok) const;
    QV_NO_EXPORT unsigned formatFrom(unsigned initialSize, wchar_t const * fmt, std::va_list args);
    QV_NO_EXPORT unsigned formatFrom(unsigned initialSize, char const * fmt, std::va_list args);

    Body * body_; // never null
};

QV_EXPORT IString plus(IString const & a, IString const & b);
/// Appends `b` to `a`, through the virtual append().
QV_EXPORT IString & plusEqual(IString & a, IString const & b);
QV_EXPORT bool equal(IString const & a, IString const & b);
QV_EXPORT bool notEqual(IString const & a, IString const & b);
QV_EXPORT bool less(IString const & a, IString const & b);
QV_EXPORT bool greater(IString const & a, IString const & b);
QV_EXPORT bool lessEqual(IString const & a, IString const & b);
QV_EXPORT bool greaterEqual(IString const & a, IString const & b);
QV_EXPORT void swap(IString & a, IString & b);
/// The hash of all units of the text, as qv::hashfunction() has it.
QV_EXPORT unsigned hashfunction(IString const & text);

/// A copy of the multibyte form, to be released with delete[].
QV_EXPORT char * IStringToTCHARCopy(IString const & text);

} // namespace qvString

template <>
struct std::hash<qvString::IString> {
    std::size_t operator()(qvString::IString const & text) const { return qvString::hashfunction(text); }
};

#endif
