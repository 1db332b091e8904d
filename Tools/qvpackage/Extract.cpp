#include "Commands.h"
#include "Support/Names.h"
#include "Support/ProgressBar.h"

#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFile.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <fcntl.h>
#include <mutex>
#include <sys/stat.h>
#include <thread>
#include <vector>

namespace {

std::mutex makingDirectories;

// Puts entries below a directory, as long as there is room by the limit.
class Extractor {
public:
    Extractor(ioPackageFile const & package, ExtractOptions const & options)
        : package_(package), directory_(nameOf(options.directory)), left_(options.limit) {}

    qvUtil::Error extract(ioPackageFileEntry const & entry, qvUtil::Progress & progress) {
        qvString::IString file;
        if (qvUtil::Error const error = place(entry.getName(), file))
            return error;
        if (qvUtil::Error const error = package_.extractEntry(&entry, file, left_, &progress))
            return error;
        struct ::stat status;
        std::string const name = bytesOf(file);
        if (left_ >= 0 && ::stat(name.c_str(), &status) == 0)
            left_ -= status.st_size;
        if (entry.getTimeStamp() < 0)
            return qvUtil::Error();
        timespec const times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(entry.getTimeStamp()), 0}};
        if (::utimensat(AT_FDCWD, name.c_str(), times, 0) == 0)
            return qvUtil::Error();
        return qvUtil::Error(10, L"Error setting the date of file: %S", file.asWChar());
    }

private:
    // Where an entry goes. Those of one directory follow one another, and what was looked at for the first is not
    // looked at again. Only names in normal form lie in the directory that stands in them.
    qvUtil::Error place(qvString::IString const & name, qvString::IString & file) {
        unsigned const last = name.rfind(L'/') + 1; // 0 without any
        bool const isNormal = last < name.length() && qvOS::Filename(name).name() == name;
        qvString::IString const folder = isNormal ? name.substr(0, last) : qvString::IString();
        bool const fits = place_.length() + name.length() - last < static_cast<unsigned>(qvOS::Filename::maxLength());
        if (!folder.isEmpty() && folder == folder_ && fits) {
            file = place_;
            file.append(name.substr(last));
            return ioPackageFile::verifyExtractName(name);
        }
        folder_ = qvString::IString();
        if (qvUtil::Error const error = ioPackageFile::placeBelow(directory_, name, file))
            return error;
        if (makeDirectory(qvOS::Filename(file).dirname())) {
            folder_ = folder;
            place_ = file.substr(0, file.rfind(L'/') + 1);
        }
        return qvUtil::Error();
    }

    // Two that make the same directory at once would take each other's for a failure. One of its own is told by the
    // entry that goes there.
    static bool makeDirectory(qvString::IString const & name) {
        if (name.isEmpty())
            return false;
        std::lock_guard const lock(makingDirectories);
        return !qvOS::File(name).makeDirectoryAll();
    }

    ioPackageFile const & package_;
    qvString::IString directory_;
    qvString::IString folder_; // of the last name, with the separator behind it; empty when there is none
    qvString::IString place_;  // of that folder's entries, with the separator too
    std::int64_t left_;
};

// Extracts entries on several threads, each of which has the package open for itself.
class Extraction {
public:
    Extraction(std::string const & package, ioPackageFile const & file, ExtractOptions const & options,
               std::vector<ioPackageFileEntry const *> const & entries)
        : package_(package), options_(options), entries_(entries), errors_(entries.size()) {
        for (ioPackageFileEntry const * entry : entries)
            whole_ += entry->getSize();
        run(file);
    }

    // What became of each entry.
    std::vector<qvUtil::Error> const & errors() const { return errors_; }

private:
    void run(ioPackageFile const & file) {
        // It takes some entries to make up for one more open package. A limit counts the entries in their order.
        constexpr std::size_t enoughForEach = 64;
        constexpr std::size_t mostThreads = 16;
        std::size_t const processors = std::clamp<std::size_t>(std::thread::hardware_concurrency(), 1, mostThreads);
        std::size_t const count = options_.limit >= 0 ? 1 : std::min(processors, entries_.size() / enoughForEach + 1);
        qvUtil::Progress progress;
        ProgressBar const bar(ProgressBar::Use::whereATerminalIs, progress);
        std::vector<std::jthread> helpers; // joined at the end, whatever ends it
        helpers.reserve(count);
        try {
            while (helpers.size() + 1 < count) {
                helpers.emplace_back([this] { help(); });
                ++numHelping_;
            }
        } catch (std::exception const &) {
            // Fewer do it too.
        }
        work(file, &progress);
        std::unique_lock lock(mutex_);
        while (!ended_.wait_for(lock, std::chrono::milliseconds(100), [this] { return numHelping_ == numEnded_; })) {
            lock.unlock();
            show(progress);
            lock.lock();
        }
        if (thrown_)
            std::rethrow_exception(thrown_);
    }

    // Where the package cannot be opened once more, the others do it too. Opening one that is gone would make it.
    void help() {
        try {
            ioPackageFile own;
            if (isThere(package_) && !own.open(nameOf(package_)))
                work(own, nullptr);
        } catch (std::exception const &) {
            // Nothing was taken: what is thrown at work is kept there.
        }
        std::lock_guard const lock(mutex_);
        ++numEnded_;
        ended_.notify_one();
    }

    void keepThrown() {
        std::lock_guard const lock(mutex_);
        thrown_ = std::current_exception();
    }

    // Takes the next entries as long as there are some: several, so that threads mostly write to directories of their
    // own. The progress is that of the thread which shows it.
    void work(ioPackageFile const & file, qvUtil::Progress * progress) {
        constexpr std::size_t atOnce = 32;
        Extractor extractor(file, options_);
        try {
            for (std::size_t first = 0; (first = next_.fetch_add(atOnce)) < entries_.size();)
                for (std::size_t i = first; i < std::min(first + atOnce, entries_.size()); ++i)
                    errors_[i] = extract(extractor, file, entries_[i]->getName(), progress);
        } catch (...) {
            keepThrown();
        }
    }

    qvUtil::Error extract(Extractor & extractor, ioPackageFile const & file, qvString::IString const & name,
                          qvUtil::Progress * progress) {
        if (progress != nullptr)
            progress->setCaption(shown(name).c_str());
        ioPackageFileEntry const * const entry = file.getEntry(name);
        if (entry == nullptr) // the file has become another one meanwhile
            return qvUtil::Error(7, L"Could not read package file entry: %S\n", name.asWChar());
        std::int64_t counted = 0;
        auto const count = [&](qvUtil::Progress & at) {
            auto const now = static_cast<std::int64_t>(at.get() * static_cast<double>(entry->getSize()));
            done_ += now - counted;
            counted = now;
            if (progress != nullptr)
                show(*progress);
        };
        qvUtil::Progress writing;
        writing.getSigUpdate().addCallback(count);
        qvUtil::Error const error = extractor.extract(*entry, writing);
        writing.set(1); // also of one that has failed
        return error;
    }

    void show(qvUtil::Progress & progress) const {
        progress.set(static_cast<double>(done_) / (static_cast<double>(whole_) + 1));
    }

    std::string const & package_;
    ExtractOptions const & options_;
    std::vector<ioPackageFileEntry const *> const & entries_;
    std::vector<qvUtil::Error> errors_; // each written by the one that took the entry
    std::int64_t whole_ = 0;
    std::atomic<std::size_t> next_ = 0;
    std::atomic<std::int64_t> done_ = 0; // bytes
    std::size_t numHelping_ = 0;
    std::mutex mutex_; // of those below
    std::condition_variable ended_;
    std::size_t numEnded_ = 0;
    std::exception_ptr thrown_;
};

// The entries that are wanted: all, or those of the names.
std::vector<ioPackageFileEntry const *> chosen(ioPackageFile const & file, std::vector<std::string> const & names,
                                               Status & status) {
    std::vector<ioPackageFileEntry const *> entries;
    if (names.empty())
        for (auto const & [name, index] : file.getDirectory())
            entries.push_back(file.getEntry(index));
    for (std::string const & name : names) {
        if (ioPackageFileEntry const * const entry = file.getEntry(nameOf(name)))
            entries.push_back(entry);
        else {
            complain(shown(name) + ": there is no such entry");
            status = withFaults;
        }
    }
    return entries;
}

} // namespace

Status extract(ExtractOptions const & options, std::string const & package, std::vector<std::string> const & names) {
    ioPackageFile file;
    if (!openExisting(file, package))
        return unusable;
    Status status = allWell;
    std::vector<ioPackageFileEntry const *> const entries = chosen(file, names, status);
    Extraction const extraction(package, file, options, entries);
    for (qvUtil::Error const & error : extraction.errors()) {
        if (error) {
            complain(error);
            status = withFaults;
        }
    }
    return status;
}
