#include "Base/OS/qvOSFilename.h"

#include "Base/Platform/PlatformFileSystem.h"
#include "Base/Strings/Internal/WideText.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <stdexcept>

namespace qvOS {

using qvString::CString;
using qvString::IString;
using qvString::WideText;
using qvString::WideView;

namespace {

WideView viewOf(IString const & text) { return {text.asWChar(), text.length()}; }

// Keeps zero characters, so that a name which the system cannot take is refused there and not cut short.
IString asString(WideView text) {
    if (text.size() > INT_MAX)
        throw std::length_error("qvOS::Filename");
    return IString(text.data(), static_cast<int>(text.size()));
}

void assignKeepingZeros(IString & to, WideView text) { to = asString(text); }

// Drives and network names are written with these, whatever the separator is.
constexpr wchar_t driveMark = L':';
constexpr wchar_t networkMark = L'\\';

// What duplicates and ".." are looked for with: the other separators are those of one platform only.
wchar_t patternSeparator(wchar_t sep) { return sep == L'\\' ? L'\\' : L'/'; }

bool isDrive(WideView text) { return text.size() == 2 && text[1] == driveMark; }

} // namespace

struct Filename::Parts {
    explicit Parts(WideView path, wchar_t sep);

    IString prefix;
    IString dirname;
    IString basename;
    IString baseTrunk;
    IString baseSuffix;

private:
    // What is left behind the prefix, and whether the prefix is a network name with something behind it.
    struct Rest {
        WideView text;
        bool isBehindNetworkName;
    };

    Rest takePrefix(WideView path);
    void takeBase(WideView base);
};

Filename::Parts::Parts(WideView path, wchar_t sep) {
    Rest const rest = takePrefix(path);
    WideView directory;
    std::size_t const last = rest.text.rfind(sep);
    if (rest.text.size() == 1 && last == 0)
        directory = rest.text;
    else if (last == WideView::npos)
        takeBase(rest.text);
    else {
        directory = rest.text.substr(0, std::max<std::size_t>(last, 1));
        takeBase(rest.text.substr(last + 1));
    }
    dirname.assign(prefix);
    if (rest.isBehindNetworkName && !directory.empty())
        dirname.append(networkMark);
    dirname.append(asString(directory));
}

Filename::Parts::Rest Filename::Parts::takePrefix(WideView path) {
    if (path.size() >= 2 && path[1] == driveMark) {
        assignKeepingZeros(prefix, path.substr(0, 2));
        return {path.substr(2), false};
    }
    if (path.size() < 2 || path[0] != networkMark || path[1] != networkMark)
        return {path, false};
    std::size_t const behindServer = path.find(networkMark, 2);
    bool const hasShare = behindServer != WideView::npos && behindServer + 1 < path.size();
    std::size_t const behindShare = hasShare ? path.find(networkMark, behindServer + 1) : WideView::npos;
    if (behindShare == WideView::npos) {
        assignKeepingZeros(prefix, path);
        return {WideView(), false};
    }
    assignKeepingZeros(prefix, path.substr(0, behindShare));
    WideView const rest = path.substr(behindShare + 1);
    return {rest, !rest.empty()};
}

void Filename::Parts::takeBase(WideView base) {
    assignKeepingZeros(basename, base);
    if (base.empty() || (base.size() == 1 && base[0] == L'.'))
        return;
    std::size_t const dot = base.rfind(L'.');
    assignKeepingZeros(baseTrunk, base.substr(0, dot));
    if (dot != WideView::npos)
        assignKeepingZeros(baseSuffix, base.substr(dot + 1));
}

wchar_t Filename::separator() { return qvPlatform::nameSeparator(); }
char Filename::pathSeparator() { return qvPlatform::searchPathSeparator(); }
int Filename::maxLength() { return qvPlatform::maxNameLength(); }

Filename::Filename() : separator_(separator()) {}

Filename::Filename(IString const & name) : Filename(name, separator()) {}

Filename::Filename(IString const & name, wchar_t sep) : separator_(sep) { assign(name); }

Filename::Filename(CString const & name, char sep) : separator_(static_cast<unsigned char>(sep)) {
    assign(IString(name));
}

Filename::Filename(char const * name, char sep) : separator_(static_cast<unsigned char>(sep)) { assign(IString(name)); }

Filename::Filename(IString const & a, IString const & b) : separator_(separator()) { assign(a, b); }

Filename::Filename(Filename const & a, Filename const & b) : Filename(a.name(), b.name()) {}

Filename::Filename(Filename const & other) : separator_(separator()) { path_.assign(other.path_); }

Filename::~Filename() { delete parts_; }

Filename & Filename::operator=(Filename const & other) {
    if (this != &other) {
        path_.assign(other.path_);
        separator_ = other.separator_;
        deleteImpl();
    }
    return *this;
}

Filename & Filename::operator=(IString const & name) {
    assign(name);
    return *this;
}

// ---- Normal form

void Filename::assign(IString const & name) {
    IString normal;
    canonicalize(name, separator_, normal);
    path_.swap(normal);
    deleteImpl();
}

void Filename::assign(IString const & a, IString const & b) {
    IString joined;
    joined.assign(a);
    if (!a.isEmpty() && !b.isEmpty() && !isDrive(viewOf(a)))
        joined.append(separator());
    joined.append(b);
    if (!joined.isEmpty()) {
        removeDuplicateSeparators(joined, separator());
        removeTrailingSeparators(joined, separator());
        removeSlashDotDotSlash(joined, separator());
    }
    path_.swap(joined);
    deleteImpl();
}

void Filename::canonicalize(IString const & in, wchar_t sep, IString & out) const {
    WideText text(viewOf(in));
    std::replace(text.begin(), text.end(), sep == L'/' ? L'\\' : L'/', sep);
    IString normal = asString(text);
    removeDuplicateSeparators(normal, sep);
    removeTrailingSeparators(normal, sep);
    removeSlashDotDotSlash(normal, sep);
    out.swap(normal);
}

// A run shrinks to one separator, but a doubled one at the very start, which begins a network name, stays.
void Filename::removeDuplicateSeparators(IString & s, wchar_t sep) const {
    wchar_t const doubled = patternSeparator(sep);
    wchar_t const pair[] = {doubled, doubled};
    WideView const text = viewOf(s);
    if (text.find(WideView(pair, 2), 1) == WideView::npos)
        return; // as a rule
    WideText result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i)
        if (i < 2 || text[i] != doubled || text[i - 1] != doubled)
            result += text[i];
    if (result.size() != text.size())
        assignKeepingZeros(s, result);
}

// The root of a drive and a network name that ends behind its server keep their separator, and so does a lone one.
void Filename::removeTrailingSeparators(IString & s, wchar_t sep) const {
    WideView const text = viewOf(s);
    bool const isDriveRoot = text.size() == 3 && text[1] == driveMark && text[2] == sep;
    bool const isNetworkName = text.size() > 2 && text[0] == sep && text[1] == sep &&
                               text.find(sep, 2) != WideView::npos && text.find(sep, 2) == text.rfind(sep);
    std::size_t length = text.size();
    if (!isDriveRoot && !isNetworkName)
        while (length > 1 && text[length - 1] == sep)
            --length;
    if (length != text.size())
        s.erase(static_cast<unsigned>(length));
}

// Takes the leftmost "/../" until there is none, in one walk: what was walked over never holds one, so the next can
// only end behind it.
void Filename::removeSlashDotDotSlash(IString & s, wchar_t sep) const {
    wchar_t const slash = patternSeparator(sep);
    wchar_t const pattern[] = {slash, L'.', L'.', slash};
    constexpr std::size_t patternLength = 4;
    WideView const text = viewOf(s);
    if (text.find(WideView(pattern, patternLength)) == WideView::npos)
        return; // as a rule
    WideText walked;
    walked.reserve(text.size());
    for (std::size_t at = 0; at < text.size();) {
        walked += text[at++];
        if (!WideView(walked).ends_with(WideView(pattern, patternLength)))
            continue;
        std::size_t const headLength = walked.size() - patternLength;
        WideView const head = WideView(walked).substr(0, headLength);
        std::size_t const last = head.rfind(sep);
        if (last != WideView::npos)
            walked.resize(last + 1);
        else if (head.size() == 2 && head[0] == L'.' && head[1] == L'.') {
            walked.append(text.substr(at)); // a ".." that leads a relative path ends the search
            break;
        } else if (head.size() == 1 && head[0] == L'.')
            walked.assign({L'.', L'.', sep});
        else
            walked.clear();
    }
    if (walked.size() != text.size())
        assignKeepingZeros(s, walked);
}

// ---- Parts

Filename::Parts const & Filename::split() const {
    if (parts_ == nullptr)
        parts_ = new Parts(viewOf(path_), separator_);
    return *parts_;
}

void Filename::deleteImpl() {
    delete parts_;
    parts_ = nullptr;
}

IString const & Filename::prefix() const { return split().prefix; }
IString const & Filename::dirname() const { return split().dirname; }
IString const & Filename::basename() const { return split().basename; }
IString const & Filename::baseTrunk() const { return split().baseTrunk; }
IString const & Filename::baseSuffix() const { return split().baseSuffix; }

qv::vector<IString> Filename::components() const {
    Parts const & parts = split();
    return {parts.prefix, parts.dirname, parts.basename, parts.baseTrunk, parts.baseSuffix};
}

bool Filename::isAbsolute() const {
    WideView const path = viewOf(path_);
    if (path.size() >= 2 && path[0] == networkMark && path[1] == networkMark)
        return true;
    if (path.size() >= 3 && path[1] == driveMark && path[2] == networkMark)
        return true;
    return separator_ == L'/' && !path.empty() && path[0] == L'/';
}

// ---- Joining

IString Filename::join(IString const & a, IString const & b) {
    IString joined;
    joined.assign(Filename(a, b).name());
    return joined;
}

IString Filename::join(IString const & a, IString const & b, IString const & c) { return join(join(a, b), c); }

IString Filename::join(IString const & a, IString const & b, IString const & c, IString const & d) {
    return join(join(a, b), join(c, d));
}

// ---- The system

bool Filename::setCwd() { return qvPlatform::setCurrentDirectory(path_).good(); }

void Filename::getCwd() { *this = Filename(qvPlatform::currentDirectory()); }

bool Filename::makeDir() const { return qvPlatform::makeDirectory(path_).good(); }

} // namespace qvOS

namespace {

void copyOut(qvString::IString const & part, char * out) {
    char const * const text = part.asMultibyte();
    std::memcpy(out, text, std::strlen(text) + 1);
}

qvOS::Filename fileOf(char const * path) { return qvOS::Filename(qvString::IString(path)); }

} // namespace

void qvOS_FilenamePrefix(char const * path, char * out) { copyOut(fileOf(path).prefix(), out); }
void qvOS_FilenameDirname(char const * path, char * out) { copyOut(fileOf(path).dirname(), out); }
void qvOS_FilenameBasename(char const * path, char * out) { copyOut(fileOf(path).basename(), out); }
void qvOS_FilenameBaseTrunk(char const * path, char * out) { copyOut(fileOf(path).baseTrunk(), out); }
void qvOS_FilenameBaseSuffix(char const * path, char * out) { copyOut(fileOf(path).baseSuffix(), out); }

void qvOS_FilenameJoin(char const * a, char const * b, char * out) {
    copyOut(qvOS::Filename::join(qvString::IString(a), qvString::IString(b)), out);
}

bool qvOS_FilenameMakeDir(char const * path) { return fileOf(path).makeDir(); }
