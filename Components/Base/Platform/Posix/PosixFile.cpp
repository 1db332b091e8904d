#include "Base/Platform/PlatformFile.h"

#include "Base/Platform/Posix/PosixCall.h"
#include "Base/Strings/qvStringIString.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace qvPlatform {

using posix::outcomeOf;
using posix::repeated;

FileResult posix::outcomeOf(int number) {
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
    case ENOTEMPTY:
        return {FileOutcome::notEmpty, number};
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
        return {FileOutcome::diskFull, number};
    case EISDIR:
    case ENXIO:
        return {FileOutcome::notUsable, number};
    case EINVAL:
        return {FileOutcome::invalid, number};
    default:
        return {FileOutcome::failed, number};
    }
}

namespace {

bool wouldBlock(int number) { return number == EAGAIN || number == EWOULDBLOCK; }

// A descriptor that somebody made non-blocking is waited for instead of being asked again and again.
void waitUntilReady(Descriptor descriptor, short events) {
    pollfd entry{descriptor, events, 0};
    int number = 0;
    repeated([&] { return ::poll(&entry, 1, -1); }, number);
}

FileResult openAs(qvString::IString const & name, int flags, Descriptor & descriptor) {
    constexpr mode_t ownerOnly = 0600;
    return posix::SystemName(name).run(
        [&](char const * path) { return descriptor = ::open(path, flags | O_CLOEXEC, ownerOnly); });
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

} // namespace

Descriptor standardInput() { return STDIN_FILENO; }

Descriptor standardOutput() { return STDOUT_FILENO; }

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
    return posix::outcomeOfCall([&] { return ::lseek(descriptor, position, SEEK_SET); });
}

std::int64_t seekToEnd(Descriptor descriptor) {
    int number = 0;
    return repeated([&] { return ::lseek(descriptor, 0, SEEK_END); }, number);
}

std::int64_t currentPosition(Descriptor descriptor) {
    int number = 0;
    return repeated([&] { return ::lseek(descriptor, 0, SEEK_CUR); }, number);
}

std::int64_t sizeOfFile(qvString::IString const & name) {
    struct stat status;
    FileResult const result = posix::SystemName(name).run([&](char const * path) { return ::stat(path, &status); });
    return result.good() ? std::int64_t{status.st_size} : -1;
}

} // namespace qvPlatform
