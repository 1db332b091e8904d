#include "Change.h"
#include "Commands.h"
#include "Preparation.h"
#include "Support/Names.h"
#include "Support/ProgressBar.h"

#include <algorithm>
#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <filesystem>
#include <memory>
#include <set>
#include <sys/stat.h>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// Goes through what is to be added and finds the names that it gets.
class Collector {
public:
    explicit Collector(std::string const & package) : isThere_(::stat(package.c_str(), &package_) == 0) {}

    void collect(std::string const & argument) {
        fs::path const path(argument);
        fs::path last = path.filename();
        if (last.empty() && path.has_parent_path())
            last = path.parent_path().filename(); // behind a separator at the end
        bool const isNamed = !last.empty() && last != "." && last != "..";
        Found found{argument};
        found.look(AT_FDCWD);
        visit(argument, isNamed ? last.string() : std::string(), found, Links::followed);
    }
    std::vector<FileToAdd> const & files() const { return files_; }
    std::int64_t bytes() const { return bytes_; }
    bool hasLeftOut() const { return hasLeftOut_; }

private:
    enum class Links { followed, left };

    void leaveOut(std::string const & path, std::string const & why) {
        complain(shown(path) + ": " + why);
        hasLeftOut_ = true;
    }

    // What the system says of a file, a link itself.
    struct Found {
        std::string name;
        struct ::stat status = {};
        int failure = 0;

        void look(int directory) {
            failure = ::fstatat(directory, name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
        }
    };

    void visit(std::string const & path, std::string const & entry, Found found, Links links) {
        if (found.failure != 0) {
            bool const isMissing = found.failure == ENOENT || found.failure == ENOTDIR;
            return leaveOut(path, isMissing ? "there is no such file" : messageOf(found.failure));
        }
        struct ::stat & status = found.status;
        bool const isLink = S_ISLNK(status.st_mode);
        if (isLink && ::stat(path.c_str(), &status) != 0)
            leaveOut(path, "a link that leads to nothing");
        else if (S_ISDIR(status.st_mode) && isLink && links == Links::left)
            leaveOut(path, "a link to a directory is not followed");
        else if (S_ISDIR(status.st_mode))
            visitDirectory(path, entry);
        else if (!S_ISREG(status.st_mode))
            leaveOut(path, "a package holds no special files");
        else if (isThere_ && status.st_dev == package_.st_dev && status.st_ino == package_.st_ino)
            leaveOut(path, "the package itself");
        else
            take(path, entry, status.st_size);
    }

    void visitDirectory(std::string const & path, std::string const & entry) {
        std::vector<Found> found;
        if (int const failure = readDirectory(path, found))
            return leaveOut(path, messageOf(failure));
        if (found.empty())
            return leaveOut(path, "a package holds no empty directories");
        std::sort(found.begin(), found.end(), [](Found const & a, Found const & b) { return a.name < b.name; });
        for (Found const & file : found)
            visit(path.ends_with('/') ? path + file.name : path + "/" + file.name,
                  entry.empty() ? file.name : entry + "/" + file.name, file, Links::left);
    }

    // Asks about all files while the directory is open: so the system need not find the way to each.
    static int readDirectory(std::string const & path, std::vector<Found> & found) {
        std::unique_ptr<DIR, int (*)(DIR *)> const directory(::opendir(path.c_str()), ::closedir);
        if (!directory)
            return errno;
        for (;;) {
            errno = 0;
            dirent const * const read = ::readdir(directory.get());
            if (read == nullptr)
                return errno;
            std::string const name = read->d_name;
            if (name == "." || name == "..")
                continue;
            found.push_back({name});
            found.back().look(::dirfd(directory.get()));
        }
    }

    static std::string messageOf(int failure) { return std::generic_category().message(failure); }

    void take(std::string const & path, std::string const & entry, std::int64_t size) {
        qvString::IString const name = nameOf(entry);
        if (hasStrangeBytes(name))
            return leaveOut(path, "its name is not UTF-8");
        if (naming_.cleanupName(name) != name)
            return leaveOut(path, "its name would be stored as another one");
        if (!names_.insert(entry).second)
            return leaveOut(path, "another file has the same name in the package");
        files_.push_back({path, entry, size});
        bytes_ += size;
    }

    struct ::stat package_;
    bool isThere_;
    ioPackageFile naming_;
    std::set<std::string> names_;
    std::vector<FileToAdd> files_;
    std::int64_t bytes_ = 0;
    bool hasLeftOut_ = false;
};

// Numbers of failures after which the package cannot be gone on with.
bool isFatal(qvUtil::Error const & error) {
    constexpr int fatal[] = {1, 2, 3, 4, 10, 15};
    return std::find(std::begin(fatal), std::end(fatal), error.num()) != std::end(fatal);
}

double shareOf(std::int64_t bytes, std::int64_t whole) {
    return static_cast<double>(bytes) / static_cast<double>(std::max<std::int64_t>(whole, 1));
}

// Puts what was collected into the package. False when it cannot be gone on with.
bool addAll(ioPackageFile & package, Collector const & collected, AddOptions const & options, Status & status) {
    qvUtil::Progress progress;
    ProgressBar bar(options.quiet ? ProgressBar::Use::never : ProgressBar::Use::whereATerminalIs, progress);
    Preparation preparation(collected.files(), options.compress);
    std::int64_t done = 0;
    for (FileToAdd const & file : collected.files()) {
        progress.setCaption(shown(file.entry).c_str());
        Prepared const prepared = preparation.take(
            [&](std::int64_t bytes) { progress.set(std::max(progress.get(), shareOf(bytes, collected.bytes()))); });
        qvUtil::Progress copying;
        if (!options.compress)
            progress.subPhase(shareOf(file.size, collected.bytes()), copying);
        qvUtil::Error const error =
            prepared.error ? prepared.error : package.addEntry(prepared.source, nameOf(file.entry), &copying);
        done += file.size;
        progress.set(std::max(progress.get(), shareOf(done, collected.bytes())));
        if (!error)
            continue;
        bar.clear();
        complain(error);
        status = withFaults;
        if (isFatal(error))
            return false;
    }
    return true;
}

} // namespace

Status add(AddOptions const & options, std::string const & package, std::vector<std::string> const & files) {
    Collector collector(package);
    for (std::string const & file : files)
        collector.collect(file);
    Status status = collector.hasLeftOut() ? withFaults : allWell;
    // A package is not made for nothing.
    if (collector.files().empty())
        return status;
    Change change(package, options.how);
    if (!change.begin(Presence::madeWhenAbsent))
        return unusable;
    // On a copy the old package stays; in place the directory must still be written, for what was appended lies over
    // the old one.
    auto const end = [&] {
        if (options.how == How::onACopy)
            change.giveUp();
        else
            static_cast<void>(change.finish());
    };
    bool isWhole = false;
    try {
        isWhole = addAll(change.package(), collector, options, status);
    } catch (...) {
        end();
        throw;
    }
    if (isWhole)
        return change.finish() ? status : unusable;
    end();
    return unusable;
}
