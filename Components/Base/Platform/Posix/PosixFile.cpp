#include "Base/Platform/PlatformFile.h"

#include "Base/Strings/qvStringIString.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace qvPlatform {

namespace {

FileResult outcomeOf(int number) {
    switch (number) {
    case 0:
        return {};
    case ENOENT:
    case ENOTDIR:
        return {FileOutcome::notFound, number};
    case EACCES:
    case EPERM:
    case EROFS:
        return {FileOutcome::denied, number};
    case EEXIST:
        return {FileOutcome::exists, number};
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return {FileOutcome::diskFull, number};
    case EISDIR:
    case ENXIO:
        return {FileOutcome::notUsable, number};
    default:
        return {FileOutcome::failed, number};
    }
}

// Repeats a system call while a signal interrupts it. The number of the failure is taken at once.
template <typename Call>
auto repeated(Call call, int & number) {
    for (;;) {
        auto const result = call();
        number = result < 0 ? errno : 0;
        if (number != EINTR) {
            return result;
        }
    }
}

bool wouldBlock(int number) { return number == EAGAIN || number == EWOULDBLOCK; }

// A descriptor that somebody made non-blocking is waited for instead of being asked again and again.
void waitUntilReady(Descriptor descriptor, short events) {
    pollfd entry{descriptor, events, 0};
    int number = 0;
    repeated([&] { return ::poll(&entry, 1, -1); }, number);
}

FileResult openAs(qvString::IString const & name, int flags, Descriptor & descriptor) {
    auto const path = systemName(name);
    if (name.find(L'\0', 0) != qvString::IString::npos) {
        return outcomeOf(ENOENT); // the system would take the part in front of the zero
    }
    int number = 0;
    descriptor = repeated([&] { return ::open(path.get(), flags | O_CLOEXEC, 0600); }, number);
    return outcomeOf(number);
}

constexpr std::size_t maxPieces = 8;

// The pieces without the first `done` bytes of them.
template <typename Pieces>
int remainingVectors(Pieces pieces, std::size_t done, std::array<iovec, maxPieces> & vectors) {
    int used = 0;
    for (auto const & piece : pieces) {
        if (done >= piece.size) {
            done -= piece.size;
            continue;
        }
        auto & vector = vectors[static_cast<std::size_t>(used++)];
        vector.iov_base = const_cast<char *>(piece.data) + done;
        vector.iov_len = piece.size - done;
        done = 0;
        if (used == static_cast<int>(maxPieces)) {
            break;
        }
    }
    return used;
}

void appendUtf8(char *& out, char32_t c) {
    auto put = [&](char32_t unit) { *out++ = static_cast<char>(static_cast<unsigned char>(unit)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit < 0xDC00; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit < 0xE000; }
bool isEscapedByte(char32_t unit) { return unit >= 0xDC80 && unit <= 0xDCFF; }

} // namespace

Descriptor standardInput() { return STDIN_FILENO; }

Descriptor standardOutput() { return STDOUT_FILENO; }

std::unique_ptr<char[]> systemName(qvString::IString const & name) {
    wchar_t const * text = name.asWChar();
    unsigned const length = name.length();
    std::unique_ptr<char[]> bytes(new char[std::size_t{3} * length + 1]);
    char * out = bytes.get();
    for (unsigned i = 0; i < length; ++i) {
        char32_t unit = static_cast<char16_t>(text[i]);
        char32_t const following = i + 1 < length ? static_cast<char16_t>(text[i + 1]) : 0;
        if (isHighSurrogate(unit) && isLowSurrogate(following)) {
            unit = 0x10000 + ((unit - 0xD800) << 10) + (following - 0xDC00);
            ++i;
        } else if (isEscapedByte(unit)) {
            *out++ = static_cast<char>(static_cast<unsigned char>(unit - 0xDC00));
            continue;
        }
        appendUtf8(out, unit);
    }
    *out = 0;
    return bytes;
}

FileResult openForReading(qvString::IString const & name, Descriptor & descriptor) {
    return openAs(name, O_RDONLY, descriptor);
}

FileResult openForWriting(qvString::IString const & name, Truncation truncation, Descriptor & descriptor) {
    return openAs(name, O_WRONLY | O_CREAT | (truncation == Truncation::truncate ? O_TRUNC : 0), descriptor);
}

FileResult openForAppending(qvString::IString const & name, Descriptor & descriptor) {
    return openAs(name, O_WRONLY | O_CREAT | O_APPEND, descriptor);
}

FileResult closeDescriptor(Descriptor descriptor) {
    // Not repeated: the descriptor is gone after an interrupted close here, and its number may be somebody else's.
    int const number = ::close(descriptor) < 0 ? errno : 0;
    return number == EINTR ? FileResult{} : outcomeOf(number);
}

TransferResult readSome(Descriptor descriptor, std::span<MutablePiece const> pieces) {
    std::array<iovec, maxPieces> vectors;
    int const used = remainingVectors(pieces, 0, vectors);
    for (;;) {
        int number = 0;
        auto const count = repeated([&] { return ::readv(descriptor, vectors.data(), used); }, number);
        if (count >= 0) {
            return {{}, static_cast<std::size_t>(count)};
        }
        if (!wouldBlock(number)) {
            return {outcomeOf(number), 0};
        }
        waitUntilReady(descriptor, POLLIN);
    }
}

TransferResult writeAll(Descriptor descriptor, std::span<ConstantPiece const> pieces) {
    TransferResult transfer;
    std::array<iovec, maxPieces> vectors;
    for (;;) {
        int const used = remainingVectors(pieces, transfer.count, vectors);
        if (used == 0) {
            return transfer;
        }
        int number = 0;
        auto const count = repeated([&] { return ::writev(descriptor, vectors.data(), used); }, number);
        if (count > 0) {
            transfer.count += static_cast<std::size_t>(count);
        } else if (wouldBlock(number)) {
            waitUntilReady(descriptor, POLLOUT);
        } else {
            // A write that takes nothing and names no reason would be asked for ever.
            transfer.result = number != 0 ? outcomeOf(number) : FileResult{FileOutcome::failed, EIO};
            return transfer;
        }
    }
}

FileResult seekTo(Descriptor descriptor, std::int64_t position) {
    return ::lseek(descriptor, position, SEEK_SET) < 0 ? outcomeOf(errno) : FileResult{};
}

FileResult seekToEnd(Descriptor descriptor) {
    return ::lseek(descriptor, 0, SEEK_END) < 0 ? outcomeOf(errno) : FileResult{};
}

std::int64_t currentPosition(Descriptor descriptor) { return ::lseek(descriptor, 0, SEEK_CUR); }

std::int64_t sizeOfFile(qvString::IString const & name) {
    struct stat status;
    return ::stat(systemName(name).get(), &status) == 0 ? std::int64_t{status.st_size} : -1;
}

} // namespace qvPlatform
