// Names of files on their way to the system and back, and names that nobody has yet.

#include "Base/Platform/PlatformFileSystem.h"

#include "Base/Platform/PlatformRandom.h"
#include "Base/Platform/Posix/PosixCall.h"
#include "Base/Strings/Internal/Utf8.h"
#include "Base/Strings/Internal/WideText.h"

#include <cerrno>
#include <climits>
#include <cstring>
#include <fcntl.h>

namespace qvPlatform {

using qvString::IString;

namespace {

// A byte that is no part of well-formed UTF-8 travels as this and the byte.
constexpr unsigned escapedByte = 0xDC00;

bool isEscapedByte(char32_t unit) { return unit >= escapedByte + 0x80 && unit <= escapedByte + 0xFF; }

} // namespace

std::unique_ptr<char[]> systemName(IString const & name) {
    wchar_t const * at = name.asWChar();
    wchar_t const * const end = at + name.length();
    std::unique_ptr<char[]> bytes(new char[std::size_t{3} * name.length() + 1]);
    char * out = bytes.get();
    while (at != end) {
        if (static_cast<unsigned>(*at) < 0x80) {
            *out++ = static_cast<char>(*at++);
            continue;
        }
        qvString::utf8::WideStep const step = qvString::utf8::decodeUnits(at, end);
        if (isEscapedByte(step.value)) {
            *out++ = static_cast<char>(static_cast<unsigned char>(step.value - escapedByte));
        } else {
            out += qvString::utf8::encode(step.value, out);
        }
        at += step.length;
    }
    *out = 0;
    return bytes;
}

IString nameFromSystem(char const * bytes) {
    char const * const end = bytes + std::strlen(bytes);
    qvString::WideText text;
    text.reserve(static_cast<std::size_t>(end - bytes));
    for (char const * at = bytes; at != end;) {
        unsigned char const byte = static_cast<unsigned char>(*at);
        if (byte < 0x80) {
            text += static_cast<wchar_t>(byte);
            ++at;
            continue;
        }
        qvString::utf8::Step const step = qvString::utf8::decode(at, end);
        if (step.isWellFormed) {
            wchar_t units[2];
            text.append(units, qvString::utf8::toUnits(step.value, units));
            at += step.length;
        } else {
            text += static_cast<wchar_t>(escapedByte + byte);
            ++at;
        }
    }
    if (text.size() > INT_MAX) {
        throw std::length_error("nameFromSystem");
    }
    return IString(text.c_str(), static_cast<int>(text.size()));
}

FileResult makeUniqueFile(IString const & directory, IString const & prefix, Access access, IString & name) {
    Descriptor descriptor = noDescriptor;
    FileResult const result = makeUniqueFile(directory, prefix, access, name, descriptor);
    return result.good() ? closeDescriptor(descriptor) : result;
}

FileResult makeUniqueFile(IString const & directory, IString const & prefix, Access access, IString & name,
                          Descriptor & descriptor) {
    constexpr unsigned longestPrefix = 3;
    constexpr int attempts = 100;
    mode_t const mode = access == Access::ownerOnly ? 0600 : 0666;
    IString start;
    start.assign(directory);
    if (!start.isEmpty() && start[start.length() - 1] != nameSeparator()) {
        start.append(nameSeparator());
    }
    for (unsigned i = 0, taken = 0; i < prefix.length() && taken < longestPrefix; ++i) {
        if (prefix[i] != nameSeparator()) {
            start.append(static_cast<wchar_t>(prefix[i]));
            ++taken;
        }
    }
    FileResult result;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        std::uint32_t digits = 0;
        if (!randomBits(digits)) {
            return {FileOutcome::failed, EIO};
        }
        IString candidate;
        candidate.format(L"%08X.tmp", static_cast<unsigned>(digits));
        candidate.prepend(start);
        result = posix::SystemName(candidate).run(
            [&](char const * path) { return descriptor = ::open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, mode); });
        if (result.good()) {
            name = static_cast<IString &&>(candidate);
            return result;
        }
        if (result.outcome != FileOutcome::exists) {
            return result;
        }
    }
    return result;
}

} // namespace qvPlatform
