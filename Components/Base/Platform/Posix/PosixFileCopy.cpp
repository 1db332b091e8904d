// One open file copied to another, by the system itself where it can.

#include "Base/Platform/PlatformFileSystem.h"

#include "Base/Platform/Posix/PosixCall.h"

#include <algorithm>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace qvPlatform {

using posix::outcomeOf;
using posix::outcomeOfCall;
using posix::repeated;

namespace {

// Bytes copied, together with what ended the copying: a failure, or the end of the source when they are too few.
struct CopyResult {
    FileResult result;
    std::int64_t count = 0;
};

// Whether the system's own copy cannot serve these two, so that they are copied by hand.
bool isNoMatterOfTheSystem(int number) {
    return number == EXDEV || number == EINVAL || number == ENOSYS || number == EOPNOTSUPP || number == EBADF ||
           number == EPERM || number == ETXTBSY;
}

void copyByHand(Descriptor from, Descriptor to, std::int64_t count, CopyResult & copied) {
    constexpr std::size_t most = 256 * 1024;
    std::unique_ptr<char[]> const block(new char[most]);
    while (copied.count < count) {
        MutablePiece const room{block.get(),
                                static_cast<std::size_t>(std::min<std::int64_t>(count - copied.count, most))};
        TransferResult const got = readSome(from, {&room, 1});
        copied.result = got.result;
        if (!got.result.good() || got.count == 0) {
            return;
        }
        ConstantPiece const piece{block.get(), got.count};
        TransferResult const put = writeAll(to, {&piece, 1});
        copied.result = put.result;
        if (!put.result.good()) {
            return;
        }
        copied.count += static_cast<std::int64_t>(got.count);
    }
}

// So many bytes, or up to the end.
CopyResult copyRange(Descriptor from, Descriptor to, std::int64_t count) {
    constexpr std::int64_t mostAtOnce = 1 << 30;
    CopyResult copied;
    while (copied.count < count) {
        int number = 0;
        auto const wanted = static_cast<std::size_t>(std::min(count - copied.count, mostAtOnce));
        auto const some = repeated([&] { return ::copy_file_range(from, nullptr, to, nullptr, wanted, 0); }, number);
        // A few files say that they have nothing although they can be read.
        if (some == 0 || isNoMatterOfTheSystem(number)) {
            copyByHand(from, to, count, copied);
            return copied;
        }
        if (some < 0) {
            copied.result = outcomeOf(number);
            return copied;
        }
        copied.count += some;
    }
    return copied;
}

struct Data {
    FileResult result; // `invalid` on a file system that knows no holes
    std::int64_t begin = 0;
    std::int64_t end = 0;
};

// The next data at or behind a position; at the end of the file when there are none.
Data findData(Descriptor from, std::int64_t at) {
    Data data;
    int number = 0;
    data.begin = repeated([&] { return ::lseek(from, at, SEEK_DATA); }, number);
    if (data.begin < 0 && number == ENXIO) {
        data.begin = data.end = repeated([&] { return ::lseek(from, 0, SEEK_END); }, number);
    } else if (data.begin >= 0) {
        data.end = repeated([&] { return ::lseek(from, data.begin, SEEK_HOLE); }, number);
    }
    data.result = outcomeOf(number);
    return data;
}

FileResult copyWithHoles(Descriptor from, Descriptor to, std::int64_t size) {
    for (std::int64_t at = 0; at < size;) {
        Data data = findData(from, at);
        if (data.result.outcome == FileOutcome::invalid) {
            data = {{}, at, size};
        }
        FileResult result = data.result;
        if (result.good()) {
            result = seekTo(from, data.begin);
        }
        if (result.good()) {
            result = seekTo(to, data.begin);
        }
        if (!result.good()) {
            return result;
        }
        CopyResult const copied = copyRange(from, to, data.end - data.begin);
        if (!copied.result.good()) {
            return copied.result;
        }
        at = data.begin + copied.count;
        if (at < data.end || data.begin == data.end) {
            size = std::min(size, at);
        }
    }
    return outcomeOfCall([&] { return ::ftruncate(to, size); });
}

} // namespace

FileResult copyDescriptor(Descriptor from, Descriptor to) {
    constexpr std::int64_t toTheEnd = std::int64_t{1} << 62;
    struct stat source;
    struct stat target;
    FileResult result = outcomeOfCall([&] { return ::fstat(from, &source); });
    if (result.good()) {
        result = outcomeOfCall([&] { return ::fstat(to, &target); });
    }
    if (!result.good()) {
        return result;
    }
    constexpr std::int64_t bytesPerBlock = 512;
    bool const hasHoles =
        S_ISREG(source.st_mode) && S_ISREG(target.st_mode) && source.st_blocks * bytesPerBlock < source.st_size;
    return hasHoles ? copyWithHoles(from, to, source.st_size) : copyRange(from, to, toTheEnd).result;
}

} // namespace qvPlatform
