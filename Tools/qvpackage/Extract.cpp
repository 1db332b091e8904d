#include "Commands.h"
#include "Support/Names.h"
#include "Support/ProgressBar.h"

#include "Base/DataFiles/ioPackageFile.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

// Puts entries below a directory, as long as there is room by the limit.
class Extractor {
public:
    Extractor(ioPackageFile const & package, ExtractOptions const & options)
        : package_(package), directory_(nameOf(options.directory)), left_(options.limit) {}

    qvUtil::Error extract(ioPackageFileEntry const & entry, qvUtil::Progress & progress) {
        qvString::IString file;
        if (qvUtil::Error const error = ioPackageFile::placeBelow(directory_, entry.getName(), file))
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
        return qvUtil::Error(10, L"Its date cannot be set: %S", file.asWChar());
    }

private:
    ioPackageFile const & package_;
    qvString::IString directory_;
    std::int64_t left_;
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
    double bytes = 1;
    for (ioPackageFileEntry const * entry : entries)
        bytes += static_cast<double>(entry->getSize());
    Extractor extractor(file, options);
    qvUtil::Progress progress;
    ProgressBar bar(ProgressBar::Use::whereATerminalIs, progress);
    for (ioPackageFileEntry const * entry : entries) {
        progress.setCaption(shown(entry->getName()).c_str());
        qvUtil::Progress writing;
        progress.subPhase(static_cast<double>(entry->getSize()) / bytes, writing);
        if (qvUtil::Error const error = extractor.extract(*entry, writing)) {
            bar.clear();
            complain(error);
            status = withFaults;
        }
    }
    return status;
}
