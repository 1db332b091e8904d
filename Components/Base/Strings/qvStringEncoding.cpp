#include "Base/Strings/qvStringEncoding.h"

#include "Base/Strings/Internal/MultibyteText.h"
#include "Base/Strings/Internal/Utf8.h"
#include "Base/Strings/Internal/WideText.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qvString {

namespace {

using qvPlatform::MultibyteKind;

constexpr unsigned terminated = static_cast<unsigned>(-1);
constexpr std::size_t invalid = static_cast<std::size_t>(-1);

// Sizes leave as 32-bit counts, and the all-ones value means something else: a longer result is no result.
constexpr std::size_t largestCount = 0xFFFFFFFE;

unsigned asCount(std::size_t size) { return size <= largestCount ? static_cast<unsigned>(size) : 0; }

bool isPlainAscii(char const * text, std::size_t length) {
    unsigned char bits = 0;
    for (std::size_t i = 0; i < length; ++i)
        bits |= static_cast<unsigned char>(text[i]);
    return bits < 128;
}

bool isPlainAscii(wchar_t const * text, std::size_t length) {
    unsigned bits = 0;
    for (std::size_t i = 0; i < length; ++i)
        bits |= text[i];
    return bits < 128;
}

// ---- multibyte to wide

// What the runtime's own conversion gives: the units of a terminated text, or `invalid`. At most `cap` units are
// stored.
std::size_t convertStrictly(char const * src, wchar_t * dst, std::size_t cap) {
    MultibyteKind const kind = qvPlatform::multibyteKind();
    std::size_t count = 0;
    for (;;) {
        if (dst != nullptr && count == cap)
            return count;
        char32_t value;
        int const taken = decodeMultibyte(kind, src, SIZE_MAX, value);
        if (taken < 0)
            return invalid;
        wchar_t units[2];
        unsigned const size = utf8::toUnits(value, units);
        if (dst != nullptr) {
            if (count + size > cap)
                return count;
            std::copy_n(units, size, dst + count);
        }
        if (taken == 0)
            return count;
        count += size;
        src += taken;
    }
}

// The conversion that replaces each invalid byte, up to `cap` units, which are filled up with zeros.
std::size_t mbsToWcsLossy(char const * src, wchar_t * dst, std::size_t cap) {
    MultibyteKind const kind = qvPlatform::multibyteKind();
    std::size_t count = 0;
    for (;;) {
        char32_t value;
        int const taken = decodeMultibyte(kind, src, SIZE_MAX, value);
        if (taken == 0)
            break;
        wchar_t units[2] = {getDefaultWChar(), 0};
        unsigned const size = taken < 0 ? 1 : utf8::toUnits(value, units);
        if (dst != nullptr) {
            if (count + size >= cap)
                break;
            std::copy_n(units, size, dst + count);
        }
        count += size;
        src += std::max(taken, 1);
    }
    if (dst != nullptr)
        std::fill(dst + count, dst + cap, L'\0');
    return count;
}

// ---- wide to multibyte

// The bytes of a wide text, without a terminator, or `invalid` when one of its characters has none.
std::size_t convertStrictly(wchar_t const * src, std::size_t length, char * dst) {
    MultibyteKind const kind = qvPlatform::multibyteKind();
    wchar_t const * const end = src + length;
    std::size_t count = 0;
    while (src != end) {
        utf8::WideStep const step = utf8::decodeUnits(src, end);
        char bytes[qvPlatform::maxMultibyteSize];
        int const size = encodeMultibyte(kind, step.value, bytes);
        if (size < 0)
            return invalid;
        if (dst != nullptr)
            std::memcpy(dst + count, bytes, static_cast<std::size_t>(size));
        count += static_cast<std::size_t>(size);
        src += step.length;
    }
    return count;
}

// One byte for each unit, the default character where a unit has not exactly one.
void wcsToMbsLossy(wchar_t const * src, std::size_t length, char * dst) {
    MultibyteKind const kind = qvPlatform::multibyteKind();
    for (std::size_t i = 0; i < length; ++i) {
        char bytes[qvPlatform::maxMultibyteSize];
        dst[i] = encodeMultibyte(kind, src[i], bytes) == 1 ? bytes[0] : getDefaultMBChar();
    }
}

// ---- UTF-8

struct Source {
    char const * text;
    std::size_t length;
};

// The bytes to convert, with the terminator when the length said so.
Source utf8Source(char const * src, unsigned srcLen, bool ignoreBOM) {
    std::size_t length = srcLen == terminated ? std::strlen(src) + 1 : srcLen;
    bool const hasMark = !ignoreBOM && length >= 3 && detectUTF8BOM(src, 3) == 3;
    return hasMark ? Source{src + 3, length - 3} : Source{src, length};
}

} // namespace

char getDefaultMBChar() { return '?'; }
wchar_t getDefaultWChar() { return L'?'; }

unsigned getMultiByteStringSize(wchar_t * dst, char const * src, unsigned len) {
    if (src == nullptr)
        return 0;
    std::size_t const count = convertStrictly(src, dst, len);
    return count == invalid ? static_cast<unsigned>(-1) : asCount(count);
}

unsigned MBStoWCS(char const * src, unsigned srcLen, wchar_t * dst, unsigned dstCap, bool * ok) {
    bool unused;
    bool & isClean = ok != nullptr ? *ok : unused;
    isClean = true;
    if (src == nullptr)
        return 0;
    std::size_t const length = std::strlen(src);
    if (srcLen != terminated && srcLen < length)
        return 0;
    MultibyteKind const kind = qvPlatform::multibyteKind();
    bool const isPlain = kind != MultibyteKind::Other && isPlainAscii(src, length);
    std::size_t size = isPlain ? length : convertStrictly(src, nullptr, 0);
    if (size == invalid) {
        isClean = false;
        size = mbsToWcsLossy(src, nullptr, 0);
    }
    if (dst == nullptr)
        return asCount(size);
    if (size >= dstCap)
        return 0;
    if (isPlain)
        std::transform(src, src + length + 1, dst, [](char c) { return static_cast<wchar_t>(c); });
    else if (isClean)
        convertStrictly(src, dst, dstCap);
    else
        mbsToWcsLossy(src, dst, size + 1);
    return asCount(size);
}

unsigned WCStoMBS(wchar_t const * src, unsigned srcLen, char * dst, unsigned dstCap, bool * ok) {
    bool unused;
    bool & isClean = ok != nullptr ? *ok : unused;
    isClean = true;
    if (src == nullptr)
        return 0;
    std::size_t const length = WideTraits::length(src);
    if (srcLen != terminated && srcLen < length)
        return 0;
    bool const isPlain = qvPlatform::multibyteKind() != MultibyteKind::Other && isPlainAscii(src, length);
    std::size_t size = isPlain ? length : convertStrictly(src, length, nullptr);
    if (size == invalid) {
        isClean = false;
        size = length;
    }
    if (dst == nullptr)
        return asCount(size);
    if (size >= dstCap)
        return 0;
    if (isPlain)
        std::transform(src, src + length, dst, [](wchar_t c) { return static_cast<char>(c); });
    else if (isClean)
        convertStrictly(src, length, dst);
    else
        wcsToMbsLossy(src, length, dst);
    dst[size] = '\0';
    return asCount(size);
}

int detectUTF8BOM(char const * text, int len) {
    if (text == nullptr || (len < 3 && len != -1))
        return 0;
    // In a terminated text the terminator is met as a byte that differs.
    return text[0] == '\xEF' && text[1] == '\xBB' && text[2] == '\xBF' ? 3 : 0;
}

unsigned UTF8toWCS(char const * src, unsigned srcLen, wchar_t * dst, unsigned dstCap, bool ignoreBOM, bool * ok) {
    bool unused;
    bool & isClean = ok != nullptr ? *ok : unused;
    isClean = false;
    if (src == nullptr)
        return 0;
    if (srcLen == 0 || (srcLen == terminated && *src == '\0')) {
        isClean = true;
        return 0;
    }
    Source const source = utf8Source(src, srcLen, ignoreBOM);
    if (source.length == 0)
        return 0;
    // There are never more units than bytes, so what fits anyhow need not be counted first.
    bool const fitsAnyhow = dst != nullptr && source.length <= std::min<std::size_t>(dstCap, largestCount);
    if (!fitsAnyhow) {
        utf8::Converted const sized = utf8::utf16Length(source.text, source.length);
        isClean = sized.isWellFormed;
        if (dst == nullptr || sized.count > dstCap || asCount(sized.count) == 0)
            return dst == nullptr ? asCount(sized.count) : 0;
    }
    utf8::Converted const converted = utf8::toUtf16(source.text, source.length, dst);
    isClean = converted.isWellFormed;
    return static_cast<unsigned>(converted.count);
}

unsigned WCStoUTF8(wchar_t const * src, unsigned srcLen, char * dst, unsigned dstCap, bool * ok) {
    bool unused;
    bool & isClean = ok != nullptr ? *ok : unused;
    isClean = false;
    if (src == nullptr)
        return 0;
    if (srcLen == 0 || (srcLen == terminated && *src == L'\0')) {
        isClean = true;
        return 0;
    }
    std::size_t const length = srcLen == terminated ? WideTraits::length(src) + 1 : srcLen;
    bool const fitsAnyhow = dst != nullptr && length <= std::min<std::size_t>(dstCap, largestCount) / 3;
    if (!fitsAnyhow) {
        unsigned const size = asCount(utf8::utf8Length(src, length));
        isClean = size != 0;
        if (dst == nullptr || size > dstCap || size == 0)
            return dst == nullptr ? size : 0;
    }
    isClean = true;
    return static_cast<unsigned>(utf8::toUtf8(src, length, dst));
}

} // namespace qvString
