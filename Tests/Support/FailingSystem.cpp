#include "Support/FailingSystem.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

namespace {

using qvTest::FaultLasts;
using qvTest::SystemFault;

struct Plan {
    bool isArmed = false;
    SystemFault fault = SystemFault::diskFull;
    FaultLasts lasts = FaultLasts::once;
    int left = 0;
    bool struck = false;
} plan;

bool isDue() {
    if (!plan.isArmed)
        return false;
    bool const due = plan.left == 0 || (plan.left < 0 && plan.lasts == FaultLasts::fromThenOn);
    --plan.left;
    plan.struck = plan.struck || due;
    if (due && plan.fault == SystemFault::killed)
        ::kill(::getpid(), SIGKILL);
    return due;
}

// Sets errno and says so when the call is to fail.
bool fails() {
    if (!isDue())
        return false;
    switch (plan.fault) {
    case SystemFault::diskFull:
        errno = ENOSPC;
        return true;
    case SystemFault::inputOutput:
        errno = EIO;
        return true;
    case SystemFault::denied:
        errno = EACCES;
        return true;
    case SystemFault::interrupted:
        // Once in a row only: a call that is interrupted for ever is repeated for ever.
        plan.isArmed = plan.lasts == FaultLasts::fromThenOn;
        plan.left = 1;
        errno = EINTR;
        return true;
    default:
        return false;
    }
}

template <typename Transfer>
ssize_t transfer(iovec const * vectors, int count, Transfer real) {
    bool const wasArmed = plan.isArmed;
    bool const isShort = wasArmed && plan.fault == SystemFault::shortTransfer && isDue();
    if (!isShort)
        return fails() ? -1 : real(vectors, count);
    iovec first = vectors[0];
    first.iov_len = std::max<std::size_t>(first.iov_len / 2, std::min<std::size_t>(first.iov_len, 1));
    return real(&first, 1);
}

} // namespace

// The linker's --wrap turns the calls of the linked objects to these names.
#define WRAP(result, name, parameters, arguments)                                                                      \
    result __real_##name parameters;                                                                                   \
    result __wrap_##name parameters;                                                                                   \
    result __wrap_##name parameters { return fails() ? -1 : __real_##name arguments; }

extern "C" {
WRAP(off_t, lseek, (int fd, off_t offset, int whence), (fd, offset, whence))
WRAP(int, ftruncate, (int fd, off_t size), (fd, size))
WRAP(int, fstat, (int fd, struct stat * status), (fd, status))
WRAP(int, stat, (char const * path, struct stat * status), (path, status))
WRAP(int, statx, (int fd, char const * path, int flags, unsigned mask, struct statx * status),
     (fd, path, flags, mask, status))
WRAP(int, faccessat, (int fd, char const * path, int mode, int flags), (fd, path, mode, flags))
WRAP(int, mkdir, (char const * path, mode_t mode), (path, mode))
WRAP(int, rmdir, (char const * path), (path))
WRAP(int, unlink, (char const * path), (path))
WRAP(int, rename, (char const * from, char const * to), (from, to))
WRAP(int, renameat2, (int fromFd, char const * from, int toFd, char const * to, unsigned flags),
     (fromFd, from, toFd, to, flags))
WRAP(int, chmod, (char const * path, mode_t mode), (path, mode))
WRAP(int, utimensat, (int fd, char const * path, timespec const * times, int flags), (fd, path, times, flags))
WRAP(ssize_t, getrandom, (void * bytes, std::size_t size, unsigned flags), (bytes, size, flags))

// Nobody needs what a test leaves on stable storage.
int __wrap_fsync(int fd);
int __wrap_fsync(int) { return fails() ? -1 : 0; }

ssize_t __real_copy_file_range(int from, off64_t * fromAt, int to, off64_t * toAt, std::size_t size, unsigned flags);
ssize_t __wrap_copy_file_range(int from, off64_t * fromAt, int to, off64_t * toAt, std::size_t size, unsigned flags);
ssize_t __wrap_copy_file_range(int from, off64_t * fromAt, int to, off64_t * toAt, std::size_t size, unsigned flags) {
    if (plan.isArmed && plan.fault == SystemFault::shortTransfer && isDue())
        size = std::min<std::size_t>(size, 7);
    else if (fails())
        return -1;
    return __real_copy_file_range(from, fromAt, to, toAt, size, flags);
}

ssize_t __real_readv(int fd, iovec const * vectors, int count);
ssize_t __wrap_readv(int fd, iovec const * vectors, int count);
ssize_t __wrap_readv(int fd, iovec const * vectors, int count) {
    return transfer(vectors, count, [fd](iovec const * v, int n) { return __real_readv(fd, v, n); });
}

ssize_t __real_writev(int fd, iovec const * vectors, int count);
ssize_t __wrap_writev(int fd, iovec const * vectors, int count);
ssize_t __wrap_writev(int fd, iovec const * vectors, int count) {
    return transfer(vectors, count, [fd](iovec const * v, int n) { return __real_writev(fd, v, n); });
}

int __real_open(char const * path, int flags, ...);
int __wrap_open(char const * path, int flags, ...);
int __wrap_open(char const * path, int flags, ...) {
    std::va_list args;
    va_start(args, flags);
    mode_t const mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    return fails() ? -1 : __real_open(path, flags, mode);
}

// Closes in any case.
int __real_close(int fd);
int __wrap_close(int fd);
int __wrap_close(int fd) {
    bool const isLost = fails();
    int const number = errno;
    int const result = __real_close(fd);
    errno = number;
    return isLost ? -1 : result;
}
}

namespace qvTest {

FailingSystem::FailingSystem(SystemFault fault, FaultLasts lasts, int n) { plan = {true, fault, lasts, n, false}; }

FailingSystem::~FailingSystem() { plan.isArmed = false; }

bool FailingSystem::struck() { return plan.struck; }

int numOpenDescriptors() {
    int count = 0;
    DIR * const directory = ::opendir("/proc/self/fd");
    while (directory != nullptr && ::readdir(directory) != nullptr)
        ++count;
    if (directory != nullptr)
        ::closedir(directory);
    return count;
}

} // namespace qvTest
