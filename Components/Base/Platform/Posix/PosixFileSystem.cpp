#include "Base/Platform/PlatformFileSystem.h"

#include "Base/Platform/Posix/PosixCall.h"

#include <algorithm>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <grp.h>
#include <linux/magic.h>
#include <memory>
#include <pwd.h>
#include <string>
#include <sys/stat.h>
#include <sys/statfs.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <vector>

namespace qvPlatform {

using posix::outcomeOf;
using posix::outcomeOfCall;
using posix::repeated;
using posix::SystemName;
using qvString::IString;

namespace {

// A copy of a name would end at its first zero.
IString const & orCurrentDirectory(IString const & name) {
    static IString const currentDirectory(L".");
    return name.isEmpty() ? currentDirectory : name;
}

FileKind kindOf(unsigned mode) {
    switch (mode & S_IFMT) {
    case S_IFREG:
        return FileKind::file;
    case S_IFDIR:
        return FileKind::directory;
    case S_IFLNK:
        return FileKind::symbolicLink;
    default:
        return FileKind::other;
    }
}

FileResult queryAt(int directory, char const * path, int flags, FileFacts & facts) {
    struct statx status;
    FileResult const result =
        outcomeOfCall([&] { return ::statx(directory, path, flags, STATX_BASIC_STATS | STATX_BTIME, &status); });
    if (!result.good()) {
        return result;
    }
    facts.kind = kindOf(status.stx_mode);
    facts.identity.device = (std::uint64_t{status.stx_dev_major} << 32) | status.stx_dev_minor;
    facts.identity.number = status.stx_ino;
    facts.size = static_cast<std::int64_t>(status.stx_size);
    facts.modificationTime = status.stx_mtime.tv_sec;
    facts.modificationNanoseconds = status.stx_mtime.tv_nsec;
    facts.creationTime = (status.stx_mask & STATX_BTIME) != 0 ? status.stx_btime.tv_sec : status.stx_ctime.tv_sec;
    facts.permissions = status.stx_mode & 07777U;
    facts.owner = status.stx_uid;
    facts.group = status.stx_gid;
    return {};
}

FileResult openAndSync(IString const & name, int flags) {
    int descriptor = noDescriptor;
    FileResult const opened =
        SystemName(name).run([&](char const * path) { return descriptor = ::open(path, flags | O_CLOEXEC); });
    if (!opened.good()) {
        return opened;
    }
    FileResult const synced = syncDescriptor(descriptor);
    FileResult const closed = closeDescriptor(descriptor);
    return synced.good() ? closed : synced;
}

using Text = std::unique_ptr<char, void (*)(void *)>;

// One attempt after another with more room, as the calls for the names of users want it.
template <typename Entry, typename Look>
IString nameOfId(char * Entry::*member, Look look) {
    for (std::vector<char> room(1024); room.size() <= (1U << 20); room.resize(room.size() * 4)) {
        Entry entry;
        Entry * found = nullptr;
        int const number = look(&entry, room.data(), room.size(), &found);
        if (number == 0) {
            return found != nullptr ? nameFromSystem(found->*member) : IString();
        }
        if (number != ERANGE && number != EINTR) {
            break;
        }
    }
    return IString();
}

// The parts of a name without "." and "..", each behind a separator.
std::string withoutDots(std::string const & name) {
    std::string result;
    for (std::size_t at = 0; at < name.size();) {
        std::size_t const end = std::min(name.find('/', at), name.size());
        std::string const part = name.substr(at, end - at);
        if (part == "..") {
            result.erase(std::min(result.rfind('/'), result.size()));
        } else if (!part.empty() && part != ".") {
            result += '/' + part;
        }
        at = end + 1;
    }
    return result;
}

// ---- Kinds of file systems

bool isRemoteKind(unsigned long kind) {
    constexpr unsigned long remoteKinds[] = {NFS_SUPER_MAGIC,  SMB_SUPER_MAGIC, CIFS_SUPER_MAGIC, SMB2_SUPER_MAGIC,
                                             CEPH_SUPER_MAGIC, V9FS_MAGIC,      AFS_SUPER_MAGIC,  CODA_SUPER_MAGIC};
    return std::find(std::begin(remoteKinds), std::end(remoteKinds), kind & 0xFFFFFFFF) != std::end(remoteKinds);
}

} // namespace

wchar_t nameSeparator() { return L'/'; }

char searchPathSeparator() { return ':'; }

int maxNameLength() { return 4096; }

// ---- Opening

FileResult openFile(IString const & name, OpenMode mode, Descriptor & descriptor) {
    int flags = O_RDONLY;
    switch (mode) {
    case OpenMode::read:
        break;
    case OpenMode::write:
        flags = O_WRONLY | O_CREAT | O_TRUNC;
        break;
    case OpenMode::create:
        flags = O_WRONLY | O_CREAT | O_EXCL;
        break;
    case OpenMode::update:
        flags = O_RDWR;
        break;
    case OpenMode::append:
        flags = O_RDWR | O_CREAT | O_APPEND;
        break;
    }
    mode_t const permissions = mode == OpenMode::create ? 0600 : 0666; // the mask takes from them
    return SystemName(name).run(
        [&](char const * path) { return descriptor = ::open(path, flags | O_CLOEXEC, permissions); });
}

FileResult syncDescriptor(Descriptor descriptor) {
    FileResult const result = outcomeOfCall([&] { return ::fsync(descriptor); });
    // What has no storage behind it, such as a pipe, is as safe as it will be.
    bool const hasNoStorage = result.systemNumber == EINVAL || result.systemNumber == EROFS;
    return hasNoStorage ? FileResult{} : result;
}

FileResult syncFile(IString const & name) { return openAndSync(name, O_RDONLY); }

FileResult syncDirectory(IString const & name) { return openAndSync(orCurrentDirectory(name), O_RDONLY | O_DIRECTORY); }

FileResult emptyDescriptor(Descriptor descriptor) {
    return outcomeOfCall([&] { return ::ftruncate(descriptor, 0); });
}

// ---- What a name leads to

FileResult queryFile(IString const & name, Links links, FileFacts & facts) {
    SystemName const path(name);
    int const flags = links == Links::keep ? AT_SYMLINK_NOFOLLOW : 0;
    return path.isWhole() ? queryAt(AT_FDCWD, path.get(), flags, facts) : outcomeOf(ENOENT);
}

FileResult queryDescriptor(Descriptor descriptor, FileFacts & facts) {
    return queryAt(descriptor, "", AT_EMPTY_PATH, facts);
}

bool mayRead(IString const & name) {
    return SystemName(name).run([](char const * path) { return ::faccessat(AT_FDCWD, path, R_OK, AT_EACCESS); }).good();
}

bool mayWrite(IString const & name) {
    return SystemName(name).run([](char const * path) { return ::faccessat(AT_FDCWD, path, W_OK, AT_EACCESS); }).good();
}

FileResult queryOwner(IString const & name, IString & owner, IString & group) {
    struct stat status;
    FileResult const result = SystemName(name).run([&](char const * path) { return ::stat(path, &status); });
    if (result.good()) {
        owner = nameOfId(&passwd::pw_name, [&](passwd * entry, char * room, std::size_t size, passwd ** found) {
            return ::getpwuid_r(status.st_uid, entry, room, size, found);
        });
        group = nameOfId(&::group::gr_name, [&](::group * entry, char * room, std::size_t size, ::group ** found) {
            return ::getgrgid_r(status.st_gid, entry, room, size, found);
        });
    }
    return result;
}

FileResult listDirectory(IString const & name, Links links, qv::vector<IString> & list) {
    int const flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | (links == Links::keep ? O_NOFOLLOW : 0);
    int descriptor = noDescriptor;
    FileResult opened =
        SystemName(orCurrentDirectory(name)).run([&](char const * path) { return descriptor = ::open(path, flags); });
    if (!opened.good()) {
        if (opened.systemNumber == ENOTDIR || (opened.systemNumber == ELOOP && links == Links::keep)) {
            opened.outcome = FileOutcome::notUsable;
        }
        return opened;
    }
    std::unique_ptr<DIR, int (*)(DIR *)> const directory(::fdopendir(descriptor), ::closedir);
    if (directory == nullptr) {
        int const number = errno;
        closeDescriptor(descriptor);
        return outcomeOf(number);
    }
    for (;;) {
        errno = 0;
        dirent const * const entry = ::readdir(directory.get());
        if (entry == nullptr) {
            return outcomeOf(errno);
        }
        list.append(nameFromSystem(entry->d_name));
    }
}

// ---- Changing it

FileResult makeDirectory(IString const & name) {
    return SystemName(name).run([](char const * path) { return ::mkdir(path, 0777); });
}

FileResult removeDirectory(IString const & name) {
    FileResult result = SystemName(name).run([](char const * path) { return ::rmdir(path); });
    // Some file systems say that there is something in it.
    if (result.outcome == FileOutcome::exists) {
        result.outcome = FileOutcome::notEmpty;
    }
    return result;
}

FileResult removeFile(IString const & name) {
    return SystemName(name).run([](char const * path) { return ::unlink(path); });
}

FileResult renameFile(IString const & from, IString const & to) {
    SystemName const target(to);
    if (!target.isWhole()) {
        return outcomeOf(ENOENT);
    }
    return SystemName(from).run([&](char const * path) {
        int const result = ::renameat2(AT_FDCWD, path, AT_FDCWD, target.get(), RENAME_NOREPLACE);
        if (result == 0 || (errno != EINVAL && errno != ENOSYS)) {
            return result;
        }
        // A file system that cannot refuse by itself, or a directory that would go into itself.
        struct stat status;
        if (::lstat(target.get(), &status) == 0) {
            errno = EEXIST;
            return -1;
        }
        return ::rename(path, target.get());
    });
}

FileResult replaceFile(IString const & from, IString const & to) {
    SystemName const target(to);
    if (!target.isWhole()) {
        return outcomeOf(ENOENT);
    }
    return SystemName(from).run([&](char const * path) { return ::rename(path, target.get()); });
}

FileResult setModificationTime(Descriptor descriptor, FileFacts const & model) {
    timespec const times[2] = {{0, UTIME_OMIT}, {model.modificationTime, long{model.modificationNanoseconds}}};
    return outcomeOfCall([&] { return ::futimens(descriptor, times); });
}

FileResult setPermissions(Descriptor descriptor, FileFacts const & model) {
    constexpr unsigned runAsAnother = S_ISUID | S_ISGID;
    unsigned permissions = model.permissions;
    FileFacts own;
    if ((permissions & runAsAnother) != 0 &&
        (!queryDescriptor(descriptor, own).good() || own.owner != model.owner || own.group != model.group)) {
        permissions &= ~runAsAnother;
    }
    return outcomeOfCall([&] { return ::fchmod(descriptor, permissions); });
}

FileResult narrowPermissions(Descriptor descriptor, FileFacts const & own, FileFacts const & model) {
    constexpr unsigned others = S_IRWXG | S_IRWXO;
    if ((own.permissions & ~model.permissions & others) == 0) {
        return {};
    }
    unsigned const permissions = own.permissions & (model.permissions | ~others);
    return outcomeOfCall([&] { return ::fchmod(descriptor, permissions); });
}

// ---- Places

IString currentDirectory() {
    Text const text(::getcwd(nullptr, 0), std::free);
    return text != nullptr ? nameFromSystem(text.get()) : IString();
}

FileResult setCurrentDirectory(IString const & name) {
    return SystemName(name).run([](char const * path) { return ::chdir(path); });
}

FileResult absoluteName(IString const & name, IString & absolute) {
    SystemName const path(name);
    if (name.isEmpty() || !path.isWhole()) {
        return outcomeOf(EINVAL);
    }
    std::string whole = path.get();
    if (whole.front() != '/') {
        Text const directory(::getcwd(nullptr, 0), std::free);
        if (directory == nullptr) {
            return outcomeOf(errno);
        }
        whole = directory.get() + ('/' + whole);
    }
    std::string normal = withoutDots(whole);
    if (normal.empty() || whole.back() == '/') {
        normal += '/';
    }
    absolute = nameFromSystem(normal.c_str());
    return {};
}

FileResult resolvedName(IString const & name, IString & resolved) {
    return SystemName(name).run([&](char const * path) {
        Text const text(::realpath(path, nullptr), std::free);
        if (text != nullptr) {
            resolved = nameFromSystem(text.get());
        }
        return text != nullptr ? 0 : -1;
    });
}

IString temporaryDirectory() {
    char const * const wanted = std::getenv("TMPDIR");
    struct stat status;
    if (wanted != nullptr && ::stat(wanted, &status) == 0 && S_ISDIR(status.st_mode)) {
        return nameFromSystem(wanted);
    }
    return IString(L"/tmp");
}

FileResult queryFileSystem(IString const & name, FileSystemFacts & facts) {
    struct statfs kind;
    struct statvfs figures;
    SystemName const path(name);
    FileResult result = path.run([&](char const * bytes) { return ::statvfs(bytes, &figures); });
    if (result.good()) {
        result = path.run([&](char const * bytes) { return ::statfs(bytes, &kind); });
    }
    if (result.good()) {
        facts.size = std::uint64_t{figures.f_frsize} * figures.f_blocks;
        facts.avail = std::uint64_t{figures.f_frsize} * figures.f_bavail;
        facts.isRemote = isRemoteKind(static_cast<unsigned long>(kind.f_type));
    }
    return result;
}

int processId() { return ::getpid(); }

} // namespace qvPlatform
