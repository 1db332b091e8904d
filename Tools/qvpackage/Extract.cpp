#include "Commands.h"
#include "Names.h"
#include "ProgressBar.h"

#include "Base/DataFiles/ioPackageFile.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace {

class Extractor {
public:
    Extractor(ioPackageFile const & package, ExtractOptions const & options)
        : package_(package), directory_(nameOf(options.directory)), left_(options.limit) {}

    // False, with the reason told, when the entry did not come out.
    bool extract(ioPackageFileEntry const & entry) {
        qvString::IString file;
        if (qvUtil::Error const error = ioPackageFile::placeBelow(directory_, entry.getName(), file))
            return fail(error);
        if (qvUtil::Error const error = package_.extractEntry(&entry, file, left_))
            return fail(error);
        struct ::stat status;
        std::string const name = bytesOf(file);
        if (left_ >= 0 && ::stat(name.c_str(), &status) == 0)
            left_ -= status.st_size;
        if (entry.getTimeStamp() >= 0) {
            timespec const times[2] = {{0, UTIME_OMIT}, {static_cast<time_t>(entry.getTimeStamp()), 0}};
            ::utimensat(AT_FDCWD, name.c_str(), times, 0);
        }
        return true;
    }

private:
    static bool fail(qvUtil::Error const & error) {
        complain(error);
        return false;
    }

    ioPackageFile const & package_;
    qvString::IString directory_;
    std::int64_t left_;
};

} // namespace

Status extract(ExtractOptions const & options, std::string const & package, std::vector<std::string> const & names) {
    ioPackageFile file;
    if (qvUtil::Error const error = file.open(nameOf(package))) {
        complain(error);
        return unusable;
    }
    Status status = allWell;
    std::vector<ioPackageFileEntry> entries;
    std::int64_t bytes = 0;
    for (auto const & [name, index] : file.getDirectory()) {
        if (names.empty())
            entries.push_back(*file.getEntry(index));
    }
    for (std::string const & name : names) {
        if (ioPackageFileEntry const * const entry = file.getEntry(nameOf(name)))
            entries.push_back(*entry);
        else {
            complain(shown(name) + ": there is no such entry");
            status = withFaults;
        }
    }
    for (ioPackageFileEntry const & entry : entries)
        bytes += entry.getSize();
    Extractor extractor(file, options);
    ProgressBar bar(ProgressBar::Use::whereATerminalIs, bytes);
    for (ioPackageFileEntry const & entry : entries) {
        bar.advance(0, shown(entry.getName()));
        if (!extractor.extract(entry)) {
            bar.clear();
            status = withFaults;
        }
        bar.advance(entry.getSize(), shown(entry.getName()));
    }
    return status;
}
