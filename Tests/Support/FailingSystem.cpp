#include "Support/FailingSystem.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/wait.h>
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
    std::string only;
} plan;

// Whether a call counts, by what it works on.
enum Query { query };
bool counts(Query) { return plan.only.empty(); }
bool counts(char const * path) { return plan.only.empty() || plan.only == path; }
bool counts(int fd) {
    char path[4096];
    auto const size = plan.only.empty() ? 0 : ::readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), path, 4096);
    return plan.only.empty() || plan.only == std::string(path, static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
}

template <typename Subject>
bool isDue(Subject subject) {
    if (!plan.isArmed || !counts(subject))
        return false;
    bool const due = plan.left == 0 || (plan.left < 0 && plan.lasts == FaultLasts::fromThenOn);
    --plan.left;
    plan.struck = plan.struck || due;
    if (due && plan.fault == SystemFault::killed)
        ::kill(::getpid(), SIGKILL);
    return due;
}

// Sets errno and says so when the call is to fail.
template <typename Subject>
bool fails(Subject subject) {
    if (!isDue(subject))
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
    case SystemFault::invalid:
        errno = EINVAL;
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

template <typename Subject, typename Transfer>
ssize_t transfer(Subject subject, iovec const * vectors, int count, Transfer real) {
    bool const isShort = plan.fault == SystemFault::shortTransfer && isDue(subject);
    if (!isShort)
        return fails(subject) ? -1 : real(vectors, count);
    iovec first = vectors[0];
    first.iov_len = std::max<std::size_t>(first.iov_len / 2, std::min<std::size_t>(first.iov_len, 1));
    return real(&first, 1);
}

} // namespace

// The linker's --wrap turns the calls of the linked objects to these names.
#define WRAP(result, name, subject, parameters, arguments)                                                             \
    result __real_##name parameters;                                                                                   \
    result __wrap_##name parameters;                                                                                   \
    result __wrap_##name parameters { return fails(subject) ? -1 : __real_##name arguments; }

extern "C" {
WRAP(off_t, lseek, query, (int fd, off_t offset, int whence), (fd, offset, whence))
WRAP(int, ftruncate, fd, (int fd, off_t size), (fd, size))
WRAP(int, fstat, query, (int fd, struct stat * status), (fd, status))
WRAP(int, stat, query, (char const * path, struct stat * status), (path, status))
WRAP(int, statx, query, (int fd, char const * path, int flags, unsigned mask, struct statx * status),
     (fd, path, flags, mask, status))
WRAP(int, faccessat, query, (int fd, char const * path, int mode, int flags), (fd, path, mode, flags))
WRAP(int, mkdir, path, (char const * path, mode_t mode), (path, mode))
WRAP(int, rmdir, path, (char const * path), (path))
WRAP(int, unlink, path, (char const * path), (path))
WRAP(int, rename, to, (char const * from, char const * to), (from, to))
WRAP(int, renameat2, to, (int fromFd, char const * from, int toFd, char const * to, unsigned flags),
     (fromFd, from, toFd, to, flags))
WRAP(int, fchmod, fd, (int fd, mode_t mode), (fd, mode))
WRAP(int, futimens, fd, (int fd, timespec const times[2]), (fd, times))
WRAP(ssize_t, getrandom, query, (void * bytes, std::size_t size, unsigned flags), (bytes, size, flags))

// Nobody needs what a test leaves on stable storage.
int __wrap_fsync(int fd);
int __wrap_fsync(int fd) { return fails(fd) ? -1 : 0; }

ssize_t __real_copy_file_range(int from, off64_t * fromAt, int to, off64_t * toAt, std::size_t size, unsigned flags);
ssize_t __wrap_copy_file_range(int from, off64_t * fromAt, int to, off64_t * toAt, std::size_t size, unsigned flags);
ssize_t __wrap_copy_file_range(int from, off64_t * fromAt, int to, off64_t * toAt, std::size_t size, unsigned flags) {
    if (plan.isArmed && plan.fault == SystemFault::shortTransfer && isDue(to))
        size = std::min<std::size_t>(size, 7);
    else if (fails(to))
        return -1;
    return __real_copy_file_range(from, fromAt, to, toAt, size, flags);
}

ssize_t __real_readv(int fd, iovec const * vectors, int count);
ssize_t __wrap_readv(int fd, iovec const * vectors, int count);
ssize_t __wrap_readv(int fd, iovec const * vectors, int count) {
    return transfer(query, vectors, count, [fd](iovec const * v, int n) { return __real_readv(fd, v, n); });
}

ssize_t __real_writev(int fd, iovec const * vectors, int count);
ssize_t __wrap_writev(int fd, iovec const * vectors, int count);
ssize_t __wrap_writev(int fd, iovec const * vectors, int count) {
    return transfer(fd, vectors, count, [fd](iovec const * v, int n) { return __real_writev(fd, v, n); });
}

int __real_open(char const * path, int flags, ...);
int __wrap_open(char const * path, int flags, ...);
int __wrap_open(char const * path, int flags, ...) {
    std::va_list args;
    va_start(args, flags);
    mode_t const mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    bool const isLost = (flags & O_ACCMODE) == O_RDONLY ? fails(query) : fails(path);
    return isLost ? -1 : __real_open(path, flags, mode);
}

// Closes in any case.
int __real_close(int fd);
int __wrap_close(int fd);
int __wrap_close(int fd) {
    bool const isLost = fails(fd);
    int const number = errno;
    int const result = __real_close(fd);
    errno = number;
    return isLost ? -1 : result;
}
}

namespace qvTest {

FailingSystem::FailingSystem(SystemFault fault, FaultLasts lasts, int n, std::string const & only) {
    plan = {true, fault, lasts, n, false, only};
}

FailingSystem::~FailingSystem() { plan.isArmed = false; }

bool FailingSystem::struck() { return plan.struck; }

bool endsAt(int n, std::function<bool()> const & function) {
    pid_t const child = ::fork();
    EXPECT_GE(child, 0);
    if (child == 0) {
        FailingSystem const failing(SystemFault::killed, FaultLasts::once, n);
        ::_exit(function() ? 0 : 1);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGKILL);
    return !WIFEXITED(status);
}

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
