#include "Base/Strings/qvStringCString.h"

#include "Base/Containers/qvHashFunction.h"
#include "Base/Platform/PlatformText.h"
#include "Base/Strings/Internal/TextOperations.h"
#include "Base/Strings/qvStringCharacters.h"

#include <string>
#include <utility>

namespace qvString {

namespace {

using Text = std::string;

constexpr unsigned largestSize = 0xFFFFFFFE;
constexpr unsigned firstFormatSize = 256;

std::string_view viewOf(char const * text) { return text::viewOf<Text>(text); }

std::string_view checked(std::string_view view) {
    text::checkRoom(0, view.size(), largestSize);
    return view;
}

} // namespace

struct CString::Body {
    Text text;
};

unsigned const CString::npos;

CString::CString() : body_(new Body) {}
CString::CString(char const * text) : body_(new Body{Text(checked(qvString::viewOf(text)))}) {}
CString::CString(char const * text, int len)
    : body_(new Body{text == nullptr || len < 0 ? Text() : Text(text, static_cast<std::size_t>(len))}) {}
CString::CString(char c) : body_(new Body{Text(1, c)}) {}
CString::CString(unsigned n, char c) : body_(nullptr) {
    text::checkRoom(0, n, largestSize);
    body_ = new Body{Text(n, c)};
}
CString::CString(CString const & other) : String(other), body_(new Body(*other.body_)) {}
CString::~CString() { delete body_; }

unsigned CString::length() const { return static_cast<unsigned>(body_->text.size()); }
unsigned CString::capacity() const {
    return static_cast<unsigned>(std::min<std::size_t>(body_->text.capacity(), largestSize));
}
unsigned CString::reserve(unsigned n) {
    text::checkRoom(0, n, largestSize);
    body_->text.reserve(n);
    return capacity();
}
unsigned CString::maxSize() const { return largestSize; }

char const * CString::asChar() const { return body_->text.c_str(); }
char const * CString::asMultibyte() const { return asChar(); }
unsigned CString::asCharStoreSize() const { return length() + 1; }
unsigned CString::asMultibyteStoreSize() const { return asCharStoreSize(); }
char * CString::copyAsChar() const { return text::mallocCopy(body_->text); }
char * CString::copyAsMultibyte() const { return copyAsChar(); }

char & CString::at(unsigned pos) { return body_->text.data()[pos]; }
char CString::at(unsigned pos) const { return body_->text.data()[pos]; }
char & CString::operator[](unsigned pos) { return at(pos); }
char CString::operator[](unsigned pos) const { return at(pos); }

bool CString::isAscii() const {
    return std::all_of(body_->text.begin(), body_->text.end(), [](char c) { return qvString::isAscii(c); });
}

// ---- change

CString & CString::assign(CString const & text) {
    body_->text = text.body_->text;
    return *this;
}
CString & CString::assign(char const * text) {
    text::assign(body_->text, qvString::viewOf(text), largestSize);
    return *this;
}
CString & CString::assign(char c) {
    body_->text.assign(1, c);
    return *this;
}
CString & CString::operator=(CString const & text) { return assign(text); }
CString & CString::operator=(char const * text) { return assign(text); }
CString & CString::operator=(char c) { return assign(c); }

CString & CString::append(CString const & text) {
    text::append(body_->text, std::string_view(text.body_->text), largestSize);
    return *this;
}
CString & CString::append(char const * text) { return append(CString(text)); }
CString & CString::append(char c) { return append(CString(c)); }

CString & CString::prepend(CString const & text) { return insert(0, text); }
CString & CString::prepend(char const * text) { return insert(0, text); }
CString & CString::prepend(char c) { return insert(0, c); }

CString & CString::insert(unsigned pos, CString const & text) {
    text::insert(body_->text, pos, std::string_view(text.body_->text), largestSize);
    return *this;
}
CString & CString::insert(unsigned pos, char const * text) {
    text::insert(body_->text, pos, qvString::viewOf(text), largestSize);
    return *this;
}
CString & CString::insert(unsigned pos, char c) {
    text::insert(body_->text, pos, c, largestSize);
    return *this;
}

CString & CString::replace(unsigned pos, unsigned n, CString const & text) {
    text::replace(body_->text, pos, n, std::string_view(text.body_->text), largestSize);
    return *this;
}
CString & CString::replace(unsigned pos, unsigned n, char const * text) {
    text::replace(body_->text, pos, n, qvString::viewOf(text), largestSize);
    return *this;
}
CString & CString::replace(unsigned pos, unsigned n, char c) {
    text::replace(body_->text, pos, n, c, largestSize);
    return *this;
}

void CString::erase(unsigned pos, unsigned n) { text::erase(body_->text, pos, n); }
CString & CString::remove(unsigned pos, unsigned n) {
    erase(pos, n);
    return *this;
}

CString & CString::strip(char c) {
    text::stripIf(body_->text, [c](char d) { return c == d; });
    return *this;
}
CString & CString::rstrip(char c) {
    text::rstripIf(body_->text, [c](char d) { return c == d; });
    return *this;
}
CString & CString::stripSpaces() {
    text::stripIf(body_->text, [](char c) { return isSpace(c); });
    return *this;
}
CString & CString::rstripSpaces() {
    text::rstripIf(body_->text, [](char c) { return isSpace(c); });
    return *this;
}

void CString::toLowerCase() {
    for (char & c : body_->text)
        c = toLower(c);
}
void CString::toUpperCase() {
    for (char & c : body_->text)
        c = toUpper(c);
}
void CString::swap(CString & other) { exchange(other); }

// ---- search

unsigned CString::find(CString const & what, unsigned pos) const {
    return text::find(body_->text, std::string_view(what.body_->text), pos);
}
unsigned CString::find(char const * what, unsigned pos) const {
    return text::find(body_->text, qvString::viewOf(what), pos);
}
unsigned CString::find(char what, unsigned pos) const {
    return text::find(body_->text, std::string_view(&what, 1), pos);
}
unsigned CString::find(bool (*predicate)(char), unsigned pos) const {
    return text::findIf(body_->text, predicate, pos);
}
unsigned CString::rfind(CString const & what, unsigned pos) const {
    return text::rfind(body_->text, std::string_view(what.body_->text), pos);
}
unsigned CString::rfind(char const * what, unsigned pos) const {
    return text::rfind(body_->text, qvString::viewOf(what), pos);
}
unsigned CString::rfind(char what, unsigned pos) const {
    return text::rfind(body_->text, std::string_view(&what, 1), pos);
}
unsigned CString::rfind(bool (*predicate)(char), unsigned pos) const {
    return text::rfindIf(body_->text, predicate, pos);
}

CString CString::substr(unsigned pos, unsigned n) const {
    CString part;
    part.body_->text.assign(body_->text, pos, n);
    return part;
}

// ---- comparison

int CString::compare(CString const & other) const { return body_->text.compare(other.body_->text); }
int CString::compare(char const * other) const { return body_->text.compare(qvString::viewOf(other)); }
int CString::collate(CString const & other) const { return qvPlatform::collate(asChar(), other.asChar()); }

int CString::compareNoCase(CString const & other) const {
    CString left(*this);
    CString right(other);
    left.toLowerCase();
    right.toLowerCase();
    return left.compare(right);
}
int CString::collateNoCase(CString const & other) const {
    CString left(*this);
    CString right(other);
    left.toLowerCase();
    right.toLowerCase();
    return left.collate(right);
}

// ---- formatting

unsigned CString::formatFrom(unsigned initialSize, char const * fmt, std::va_list args) {
    return text::replaceByFormatted(body_->text, initialSize, fmt, args);
}

unsigned CString::format(char const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(firstFormatSize, fmt, args);
    va_end(args);
    return length;
}
unsigned CString::format(unsigned initialSize, char const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(initialSize, fmt, args);
    va_end(args);
    return length;
}
unsigned CString::format(CString const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(firstFormatSize, fmt == nullptr ? nullptr : fmt->asChar(), args);
    va_end(args);
    return length;
}
unsigned CString::format(unsigned initialSize, CString const * fmt, ...) {
    std::va_list args;
    va_start(args, fmt);
    unsigned const length = formatFrom(initialSize, fmt == nullptr ? nullptr : fmt->asChar(), args);
    va_end(args);
    return length;
}
unsigned CString::vformat(char const * fmt, std::va_list args) { return formatFrom(firstFormatSize, fmt, args); }

// ---- free functions

CString plus(CString const & a, CString const & b) { return a + b; }
CString & plusEqual(CString & a, CString const & b) { return a.append(b); }
bool equal(CString const & a, CString const & b) { return a.compare(b) == 0; }
bool equal(CString const & a, char const * b) { return a.compare(b) == 0; }
bool notEqual(CString const & a, CString const & b) { return a.compare(b) != 0; }
bool less(CString const & a, CString const & b) { return a.compare(b) < 0; }
bool greater(CString const & a, CString const & b) { return a.compare(b) > 0; }
bool lessEqual(CString const & a, CString const & b) { return a.compare(b) <= 0; }
bool greaterEqual(CString const & a, CString const & b) { return a.compare(b) >= 0; }
void swap(CString & a, CString & b) { a.swap(b); }

unsigned hashfunction(CString const & text) {
    auto const bytes = reinterpret_cast<unsigned char const *>(text.asChar());
    return qv::hashfunction(bytes, static_cast<int>(std::min<unsigned>(text.length(), INT_MAX)));
}

} // namespace qvString

qvString::CString * CString_create(char const * text) { return new qvString::CString(text); }
void CString_delete(qvString::CString * string) { delete string; }
