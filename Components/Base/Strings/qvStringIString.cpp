#include "Base/Strings/qvStringIString.h"

#include "Base/Containers/qvHashFunction.h"
#include "Base/Platform/PlatformText.h"
#include "Base/Strings/Internal/TextOperations.h"
#include "Base/Strings/Internal/WideText.h"
#include "Base/Strings/qvStringCharacters.h"

#include <memory>
#include <string>
#include <utility>

namespace qvString {

namespace {

constexpr unsigned largestSize = 0x7FFFFFFE;
constexpr unsigned firstFormatSize = 256;
constexpr unsigned terminated = static_cast<unsigned>(-1);

// Texts of up to this many elements are converted in a buffer on the stack.
constexpr std::size_t localSize = 1024;

WideView viewOf(wchar_t const * text) { return text::viewOf<WideText>(text); }

WideView checked(WideView view) {
    text::checkRoom(0, view.size(), largestSize);
    return view;
}

unsigned narrow(wchar_t const * text, char * buffer, unsigned room, Encoding encoding, bool * ok) {
    return encoding == UTF8 ? WCStoUTF8(text, terminated, buffer, room, ok)
                            : WCStoMBS(text, terminated, buffer, room, ok);
}

unsigned widen(char const * text, wchar_t * buffer, unsigned room, Encoding encoding, bool * ok) {
    return encoding == UTF8 ? UTF8toWCS(text, terminated, buffer, room, false, ok)
                            : MBStoWCS(text, terminated, buffer, room, ok);
}

} // namespace

enum class CacheState {
    Unknown = 0, // the conversion was made without asking whether it lost text
    Clean = 1,
    Lossy = 2
};

struct IString::Body {
    explicit Body(WideText && wide = WideText()) : text(std::move(wide)) {}

    void invalidate() {
        cacheDirty = 1;
        cacheState = CacheState::Unknown;
    }
    void setCache(Encoding encoding, CacheState state) {
        cacheEncoding = encoding;
        cacheState = state;
        cacheDirty = 0;
    }

    WideText text;
    int cacheDirty = 1;
    Encoding cacheEncoding = Multibyte;
    std::string cache;
    CacheState cacheState = CacheState::Unknown;
};

unsigned const IString::npos;

IString::IString() : body_(new Body) {}
IString::IString(wchar_t const * text) : body_(new Body(WideText(checked(viewOf(text))))) {}
IString::IString(wchar_t const * text, int len)
    : body_(new Body(text == nullptr || len < 0 ? WideText() : WideText(text, static_cast<std::size_t>(len)))) {}
IString::IString(wchar_t c) : body_(new Body(WideText(1, c))) {}
IString::IString(unsigned n, wchar_t c) : body_(nullptr) {
    text::checkRoom(0, n, largestSize);
    body_ = new Body(WideText(n, c));
}
IString::IString(IString const & other)
    : String(other), body_(new Body(WideText(text::beforeZero<WideText>(other.body_->text)))) {}
IString::IString(char const * text, Encoding encoding, bool * ok) : IString() { assign(text, encoding, ok); }
IString::IString(CString const & text, Encoding encoding, bool * ok) : IString(text.asChar(), encoding, ok) {}
IString::IString(char c, Encoding encoding, bool * ok) : IString(CString(c), encoding, ok) {}
IString::IString(unsigned n, char c, Encoding encoding, bool * ok) : IString(CString(n, c), encoding, ok) {}
IString::~IString() { delete body_; }

IString::Body & IString::changing() {
    body_->invalidate();
    return *body_;
}

unsigned IString::length() const { return static_cast<unsigned>(body_->text.size()); }
unsigned IString::capacity() const {
    return static_cast<unsigned>(std::min<std::size_t>(body_->text.capacity(), largestSize));
}
unsigned IString::reserve(unsigned n) {
    text::checkRoom(0, n, largestSize);
    body_->text.reserve(n);
    return capacity();
}
unsigned IString::maxSize() const { return largestSize; }

wchar_t const * IString::asWChar() const { return body_->text.c_str(); }
wchar_t const * IString::asUnicode() const { return asWChar(); }
unsigned IString::asWCharStoreSize() const { return 2 * length() + 2; }
unsigned IString::asUnicodeStoreSize() const { return asWCharStoreSize(); }
wchar_t * IString::copyAsWChar() const { return text::mallocCopy(body_->text); }

wchar_t & IString::at(unsigned pos) { return changing().text.data()[pos]; }
wchar_t IString::at(unsigned pos) const { return body_->text.data()[pos]; }
wchar_t & IString::operator[](unsigned pos) { return at(pos); }
wchar_t IString::operator[](unsigned pos) const { return at(pos); }

bool IString::isAscii() const {
    return std::all_of(body_->text.begin(), body_->text.end(), [](wchar_t c) { return qvString::isAscii(c); });
}

// ---- narrow forms

// Gives whether the text has a wide form; else the string stays. The text may lie in the string's own narrow form.
bool IString::convertFromMultibyte(char const * text, Encoding encoding, bool * ok) {
    if (ok != nullptr)
        *ok = text[0] == '\0';
    if (text[0] == '\0') {
        changing().text.clear();
        return true;
    }
    // There are never more units than bytes.
    std::size_t const room = std::strlen(text) + 1;
    if (room > largestSize)
        return false;
    wchar_t local[localSize];
    std::unique_ptr<wchar_t[]> large;
    wchar_t * buffer = local;
    if (room > localSize)
        buffer = (large = std::make_unique_for_overwrite<wchar_t[]>(room)).get();
    unsigned const count = widen(text, buffer, static_cast<unsigned>(room), encoding, ok);
    // The counts of UTF-8 include the terminator.
    if (count > 0)
        text::assign(changing().text, WideView(buffer, encoding == UTF8 ? count - 1 : count), largestSize);
    return count > 0;
}

void IString::convertToMultibyte(Encoding encoding, bool * ok) const {
    Body & body = *body_;
    bool const isUnknown = ok != nullptr && body.cacheState == CacheState::Unknown;
    if (body.cacheDirty == 0 && !isUnknown && body.cacheEncoding == encoding) {
        if (ok != nullptr)
            *ok = body.cacheState == CacheState::Clean;
        return;
    }
    body.invalidate();
    if (ok != nullptr)
        *ok = body.text.empty();
    body.cache.clear();
    if (body.text.empty()) {
        body.setCache(encoding, CacheState::Clean);
        return;
    }
    char local[localSize];
    std::unique_ptr<char[]> large;
    char * buffer = local;
    unsigned size = localSize;
    if (encoding != UTF8 || body.text.size() >= localSize / 3) {
        size = narrow(body.text.c_str(), nullptr, 0, encoding, nullptr);
        if (++size > localSize)
            buffer = (large = std::make_unique_for_overwrite<char[]>(size)).get();
    }
    unsigned const count = narrow(body.text.c_str(), buffer, size, encoding, ok);
    if (count == 0) {
        if (ok != nullptr)
            *ok = false;
        body.setCache(encoding, CacheState::Lossy);
        return;
    }
    body.cache.assign(buffer, encoding == UTF8 ? count - 1 : count);
    body.setCache(encoding, ok == nullptr ? CacheState::Unknown : *ok ? CacheState::Clean : CacheState::Lossy);
}

char const * IString::asMultibyte(Encoding encoding, bool * ok) const {
    convertToMultibyte(encoding, ok);
    return body_->cache.c_str();
}
char const * IString::asUTF8(bool * ok) const { return asMultibyte(UTF8, ok); }
unsigned IString::asMultibyteStoreSize(Encoding encoding) const {
    convertToMultibyte(encoding, nullptr);
    return static_cast<unsigned>(body_->cache.size() + 1);
}
unsigned IString::asUTF8StoreSize() const { return asMultibyteStoreSize(UTF8); }
char * IString::copyAsMultibyte(Encoding encoding, bool * ok) const {
    convertToMultibyte(encoding, ok);
    return text::mallocCopy(body_->cache);
}
CString IString::convertToCString() const { return CString(asMultibyte(Multibyte, nullptr)); }

// ---- change

IString & IString::assign(IString const & text) {
    changing().text = text.body_->text;
    return *this;
}
IString & IString::assign(wchar_t const * text) {
    text::assign(changing().text, viewOf(text), largestSize);
    return *this;
}
IString & IString::assign(wchar_t c) {
    changing().text.assign(1, c);
    return *this;
}
IString & IString::assign(char const * text, Encoding encoding, bool * ok) {
    if (text == nullptr && ok != nullptr)
        *ok = true;
    if (text == nullptr || !convertFromMultibyte(text, encoding, ok))
        changing().text.clear();
    return *this;
}
IString & IString::assign(CString const & text, Encoding encoding, bool * ok) {
    return assign(text.asChar(), encoding, ok);
}
IString & IString::operator=(IString const & text) { return assign(text); }
IString & IString::operator=(wchar_t const * text) { return assign(text); }
IString & IString::operator=(wchar_t c) { return assign(c); }

IString & IString::append(IString const & text) {
    text::append(changing().text, WideView(text.body_->text), largestSize);
    return *this;
}
IString & IString::append(wchar_t const * text) { return append(IString(text)); }
IString & IString::append(wchar_t c) { return append(IString(c)); }

IString & IString::prepend(IString const & text) { return insert(0, text); }
IString & IString::prepend(wchar_t const * text) { return insert(0, text); }
IString & IString::prepend(wchar_t c) { return insert(0, c); }

IString & IString::insert(unsigned pos, IString const & text) {
    text::insert(changing().text, pos, WideView(text.body_->text), largestSize);
    return *this;
}
IString & IString::insert(unsigned pos, wchar_t const * text) {
    text::insert(changing().text, pos, viewOf(text), largestSize);
    return *this;
}
IString & IString::insert(unsigned pos, wchar_t c) {
    text::insert(changing().text, pos, c, largestSize);
    return *this;
}

IString & IString::replace(unsigned pos, unsigned n, IString const & text) {
    text::replace(changing().text, pos, n, WideView(text.body_->text), largestSize);
    return *this;
}
IString & IString::replace(unsigned pos, unsigned n, wchar_t const * text) {
    text::replace(changing().text, pos, n, viewOf(text), largestSize);
    return *this;
}
IString & IString::replace(unsigned pos, unsigned n, wchar_t c) {
    text::replace(changing().text, pos, n, c, largestSize);
    return *this;
}

IString & IString::replace(IString const & what, IString const & with) {
    unsigned found = find(what, 0);
    if (found == npos)
        return *this;
    // Built apart, so that each character moves once and the two texts may be this one.
    WideView const old = body_->text;
    WideText text;
    std::size_t done = 0;
    for (; found != npos; found = find(what, static_cast<unsigned>(done))) {
        text::append(text, old.substr(done, found - done), largestSize);
        text::append(text, WideView(with.body_->text), largestSize);
        done = found + what.length();
    }
    text::append(text, old.substr(done), largestSize);
    changing().text.swap(text);
    return *this;
}

void IString::erase(unsigned pos, unsigned n) { text::erase(changing().text, pos, n); }
IString & IString::remove(unsigned pos, unsigned n) {
    erase(pos, n);
    return *this;
}

IString & IString::strip(wchar_t c) {
    text::stripIf(changing().text, [c](wchar_t d) { return c == d; });
    return *this;
}
IString & IString::rstrip(wchar_t c) {
    text::rstripIf(changing().text, [c](wchar_t d) { return c == d; });
    return *this;
}
IString & IString::stripSpaces() {
    text::stripIf(changing().text, [](wchar_t c) { return isSpace(c); });
    return *this;
}
IString & IString::rstripSpaces() {
    text::rstripIf(changing().text, [](wchar_t c) { return isSpace(c); });
    return *this;
}

void IString::toLowerCase() {
    for (wchar_t & c : changing().text)
        c = toLower(c);
}
void IString::toUpperCase() {
    for (wchar_t & c : changing().text)
        c = toUpper(c);
}

void IString::swap(IString & other) {
    exchange(other);
    body_->invalidate();
    other.body_->invalidate();
}

// ---- search

unsigned IString::find(IString const & what, unsigned pos) const {
    return text::find(body_->text, WideView(what.body_->text), pos);
}
unsigned IString::find(wchar_t const * what, unsigned pos) const { return text::find(body_->text, viewOf(what), pos); }
unsigned IString::find(wchar_t what, unsigned pos) const { return text::find(body_->text, WideView(&what, 1), pos); }
unsigned IString::find(bool (*predicate)(wchar_t), unsigned pos) const {
    return text::findIf(body_->text, predicate, pos);
}
unsigned IString::findAny(IString const & set, unsigned pos) const {
    return text::asPosition(body_->text.find_first_of(set.body_->text, pos));
}
unsigned IString::rfind(IString const & what, unsigned pos) const {
    return text::rfind(body_->text, WideView(what.body_->text), pos);
}
unsigned IString::rfind(wchar_t const * what, unsigned pos) const {
    return text::rfind(body_->text, viewOf(what), pos);
}
unsigned IString::rfind(wchar_t what, unsigned pos) const { return text::rfind(body_->text, WideView(&what, 1), pos); }
unsigned IString::rfind(bool (*predicate)(wchar_t), unsigned pos) const {
    return text::rfindIf(body_->text, predicate, pos);
}
unsigned IString::rfindAny(IString const & set, unsigned pos) const {
    return text::asPosition(body_->text.find_last_of(set.body_->text, pos));
}

IString IString::substr(unsigned pos, unsigned n) const {
    IString part;
    part.body_->text = text::beforeZero<WideText>(WideView(body_->text).substr(pos, n));
    return part;
}
void IString::substr(IString & out, unsigned pos, unsigned n) const { out = substr(pos, n); }

// ---- comparison

int IString::compare(IString const & other) const { return body_->text.compare(other.body_->text); }
int IString::compare(wchar_t const * other) const { return body_->text.compare(viewOf(other)); }

int IString::collate(IString const & other) const {
    WideView const left = text::beforeZero<WideText>(body_->text);
    WideView const right = text::beforeZero<WideText>(other.body_->text);
    int const byCode = left.compare(right);
    if (byCode == 0 || qvPlatform::collatesByCode())
        return byCode;
    bool isLeftWhole;
    bool isRightWhole;
    char const * const narrowLeft = asMultibyte(Multibyte, &isLeftWhole);
    int const order = qvPlatform::collate(narrowLeft, other.asMultibyte(Multibyte, &isRightWhole));
    // What the locale's encoding does not have cannot be ordered by it either.
    return order == 0 && !(isLeftWhole && isRightWhole) ? byCode : order;
}

int IString::compareNoCase(IString const & other) const {
    IString left(*this);
    IString right(other);
    left.toLowerCase();
    right.toLowerCase();
    return left.compare(right);
}
int IString::collateNoCase(IString const & other) const {
    IString left(*this);
    IString right(other);
    left.toLowerCase();
    right.toLowerCase();
    return left.collate(right);
}

// ---- formatting

unsigned IString::formatFrom(unsigned initialSize, wchar_t const * fmt, std::va_list args) {
    unsigned const length = text::replaceByFormatted(body_->text, initialSize, fmt, args);
    if (length != npos)
        body_->invalidate();
    return length;
}
unsigned IString::formatFrom(unsigned initialSize, char const * fmt, std::va_list args) {
    wchar_t local[localSize];
    if (MBStoWCS(fmt, terminated, local, localSize, nullptr) != 0)
        return formatFrom(initialSize, local, args);
    return formatFrom(initialSize, IString(fmt).asWChar(), args);
}

unsigned IString::format(wchar_t const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(firstFormatSize, fmt, args);
    va_end(args);
    return length;
}
unsigned IString::format(unsigned initialSize, wchar_t const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(initialSize, fmt, args);
    va_end(args);
    return length;
}
unsigned IString::format(IString const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(firstFormatSize, fmt == nullptr ? nullptr : fmt->asWChar(), args);
    va_end(args);
    return length;
}
unsigned IString::format(unsigned initialSize, IString const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(initialSize, fmt == nullptr ? nullptr : fmt->asWChar(), args);
    va_end(args);
    return length;
}
unsigned IString::format(char const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(firstFormatSize, fmt, args);
    va_end(args);
    return length;
}
unsigned IString::format(unsigned initialSize, char const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(initialSize, fmt, args);
    va_end(args);
    return length;
}
unsigned IString::vformat(wchar_t const * fmt, std::va_list args) { return formatFrom(firstFormatSize, fmt, args); }
unsigned IString::vformat(char const * fmt, std::va_list args) { return formatFrom(firstFormatSize, fmt, args); }

// ---- free functions

IString plus(IString const & a, IString const & b) { return a + b; }
IString & plusEqual(IString & a, IString const & b) { return a.append(b); }
bool equal(IString const & a, IString const & b) { return a.compare(b) == 0; }
bool notEqual(IString const & a, IString const & b) { return a.compare(b) != 0; }
bool less(IString const & a, IString const & b) { return a.compare(b) < 0; }
bool greater(IString const & a, IString const & b) { return a.compare(b) > 0; }
bool lessEqual(IString const & a, IString const & b) { return a.compare(b) <= 0; }
bool greaterEqual(IString const & a, IString const & b) { return a.compare(b) >= 0; }
void swap(IString & a, IString & b) { a.swap(b); }

unsigned hashfunction(IString const & text) {
    // The count of bytes is an int too.
    return qv::hashfunction(text.asWChar(), static_cast<int>(std::min<unsigned>(text.length(), INT_MAX / 2)));
}

char * IStringToTCHARCopy(IString const & text) {
    unsigned const size = text.asMultibyteStoreSize(Multibyte);
    char * const copy = new char[size];
    std::memcpy(copy, text.asMultibyte(Multibyte), size);
    return copy;
}

} // namespace qvString
