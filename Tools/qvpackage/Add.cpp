#include "Change.h"
#include "Commands.h"
#include "Names.h"
#include "ProgressBar.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace fs = std::filesystem;

namespace {

struct Source {
    std::string file;  // as the system has it
    std::string entry; // the name in the package
    std::int64_t size;
};

// Goes through what is to be added and finds the names that it gets.
class Collector {
public:
    explicit Collector(std::string const & package) : package_(package) {}

    void collect(std::string const & argument) {
        fs::path const path(argument);
        fs::path last = path.filename();
        if (last.empty() && path.has_parent_path())
            last = path.parent_path().filename(); // behind a separator at the end
        bool const isNamed = !last.empty() && last != "." && last != "..";
        visit(path, isNamed ? last.string() : std::string(), Links::followed);
    }
    std::vector<Source> const & sources() const { return sources_; }
    std::int64_t bytes() const { return bytes_; }
    bool hasLeftOut() const { return hasLeftOut_; }

private:
    enum class Links { followed, left };

    void leaveOut(fs::path const & path, std::string const & why) {
        complain(shown(path.string()) + ": " + why);
        hasLeftOut_ = true;
    }

    void visit(fs::path const & path, std::string const & entry, Links links) {
        std::error_code failure;
        fs::file_status const own = fs::symlink_status(path, failure);
        fs::file_status const status = fs::status(path, failure);
        if (!fs::exists(own))
            leaveOut(path, "there is no such file");
        else if (!fs::exists(status))
            leaveOut(path, "a link that leads to nothing");
        else if (fs::is_directory(status) && fs::is_symlink(own) && links == Links::left)
            leaveOut(path, "a link to a directory is not followed");
        else if (fs::is_directory(status))
            visitDirectory(path, entry);
        else if (!fs::is_regular_file(status))
            leaveOut(path, "a package holds no special files");
        else if (fs::equivalent(path, package_, failure))
            leaveOut(path, "the package itself");
        else
            take(path, entry);
    }

    void visitDirectory(fs::path const & path, std::string const & entry) {
        std::error_code failure;
        std::vector<std::string> names;
        for (fs::directory_iterator at(path, failure), end; !failure && at != end; at.increment(failure))
            names.push_back(at->path().filename().string());
        if (failure)
            return leaveOut(path, failure.message());
        if (names.empty())
            return leaveOut(path, "a package holds no empty directories");
        std::sort(names.begin(), names.end());
        for (std::string const & name : names)
            visit(path / name, entry.empty() ? name : entry + "/" + name, Links::left);
    }

    void take(fs::path const & path, std::string const & entry) {
        qvString::IString const name = nameOf(entry);
        if (hasStrangeBytes(name))
            return leaveOut(path, "its name is not UTF-8");
        if (naming_.cleanupName(name) != name)
            return leaveOut(path, "its name would be stored as another one");
        if (!names_.insert(entry).second)
            return leaveOut(path, "another file has the same name in the package");
        std::error_code failure;
        auto const size = fs::file_size(path, failure);
        sources_.push_back({path.string(), entry, failure ? 0 : static_cast<std::int64_t>(size)});
        bytes_ += sources_.back().size;
    }

    fs::path package_;
    ioPackageFile naming_;
    std::set<std::string> names_;
    std::vector<Source> sources_;
    std::int64_t bytes_ = 0;
    bool hasLeftOut_ = false;
};

// Numbers of failures after which the package cannot be gone on with.
bool isFatal(qvUtil::Error const & error) {
    constexpr int fatal[] = {1, 2, 3, 4, 10, 15};
    return std::find(std::begin(fatal), std::end(fatal), error.num()) != std::end(fatal);
}

} // namespace

Status add(AddOptions const & options, std::string const & package, std::vector<std::string> const & files) {
    Collector collector(package);
    for (std::string const & file : files)
        collector.collect(file);
    Status status = collector.hasLeftOut() ? withFaults : allWell;
    Change change(package, options.how);
    if (!change.begin(Presence::madeWhenAbsent))
        return unusable;
    using Use = ProgressBar::Use;
    ProgressBar bar(options.quiet ? Use::never : Use::whereATerminalIs, collector.bytes());
    for (Source const & source : collector.sources()) {
        bar.advance(0, shown(source.entry));
        qvUtil::Error const error =
            change.package().addEntry(nameOf(source.file), nameOf(source.entry), options.compress);
        bar.advance(source.size, shown(source.entry));
        if (!error)
            continue;
        bar.clear();
        complain(error);
        status = withFaults;
        if (!isFatal(error))
            continue;
        // On a copy the old package stays; in place the directory must still be written, for what was appended lies
        // over the old one.
        if (options.how == How::onACopy)
            change.giveUp();
        else
            static_cast<void>(change.finish());
        return unusable;
    }
    bar.clear();
    return change.finish() ? status : unusable;
}
