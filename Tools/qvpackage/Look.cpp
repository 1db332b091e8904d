#include "Commands.h"
#include "Support/Names.h"
#include "Support/ProgressBar.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFile.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string>

namespace {

constexpr char const * noDate = "-";

std::string dateOf(std::int64_t seconds) {
    std::time_t const time = static_cast<std::time_t>(seconds);
    std::tm parts;
    char text[64];
    if (seconds < 0 || ::localtime_r(&time, &parts) == nullptr ||
        std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &parts) == 0)
        return noDate;
    return text;
}

Status finishOutput(Status status) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    complain("the output cannot be written");
    return unusable;
}

// Reads an entry to its end, through its filters.
bool isWhole(ioPackageFileEntry const & entry, qvUtil::Progress & progress) {
    ioBufferedStreamInput stream;
    stream.openPackageFileEntry(&entry);
    if (entry.getCompressed()) {
        stream.compress(true);
        stream.checksum(true);
    }
    static char block[1 << 16];
    double const guess = static_cast<double>(entry.getSize()) * (entry.getCompressed() ? 2 : 1) + 1;
    std::int64_t bytes = 0;
    for (int count = 0; (count = stream.readData(block, sizeof block)) > 0;) {
        bytes += count;
        progress.set(std::min(static_cast<double>(bytes) / guess, 1.0));
    }
    ioStreamStatus const status = stream.getStatus();
    stream.close();
    bool const isAtEnd = status == ioStreamEOF || status == ioStreamCompressEnd;
    return isAtEnd && (entry.getCompressed() || bytes == entry.getSize());
}

// The bytes of all entries and of their names, and how many are compressed.
struct Totals {
    explicit Totals(ioPackageFile const & file) {
        for (auto const & [name, index] : file.getDirectory()) {
            ioPackageFileEntry const & entry = *file.getEntry(index);
            stored += entry.getSize();
            compressed += entry.getCompressed();
            names += static_cast<std::int64_t>(std::strlen(name.asUTF8()));
        }
    }

    std::int64_t stored = 0;
    std::int64_t names = 0;
    int compressed = 0;
};

} // namespace

Status list(bool isLong, std::string const & package) {
    ioPackageFile file;
    if (!openExisting(file, package))
        return unusable;
    for (auto const & [name, index] : file.getDirectory()) {
        ioPackageFileEntry const & entry = *file.getEntry(index);
        if (isLong)
            std::printf("%14" PRId64 "  %-19s  %c  ", entry.getSize(), dateOf(entry.getTimeStamp()).c_str(),
                        entry.getCompressed() ? 'c' : '-');
        std::printf("%s\n", shown(name).c_str());
    }
    return finishOutput(allWell);
}

Status check(std::string const & package) {
    ioPackageFile file;
    qvUtil::Error damage;
    if (!openExisting(file, package, &damage)) {
        if (char const * const fault = file.getDirectoryFault(); damage && fault != nullptr)
            complain(shown(package) + ": " + fault);
        return damage ? withFaults : unusable;
    }
    Status result = allWell;
    double const whole = static_cast<double>(Totals(file).stored) + 1;
    qvUtil::Progress progress;
    ProgressBar bar(ProgressBar::Use::whereATerminalIs, progress);
    for (auto const & [name, index] : file.getDirectory()) {
        ioPackageFileEntry const & entry = *file.getEntry(index);
        progress.setCaption(shown(name).c_str());
        qvUtil::Progress reading;
        progress.subPhase(static_cast<double>(entry.getSize()) / whole, reading);
        if (qvUtil::Error const error = ioPackageFile::verifyExtractName(name)) {
            bar.clear();
            complain(error);
            result = withFaults;
        }
        if (!isWhole(entry, reading)) {
            bar.clear();
            complain("Error reading package file entry: " + shown(name));
            result = withFaults;
        }
    }
    return result;
}

Status info(std::string const & package) {
    ioPackageFile file;
    if (!openExisting(file, package))
        return unusable;
    qvOS::FileStatus status;
    static_cast<void>(qvOS::File::query(nameOf(package), status));
    // What a copy would have: the header, a packet for each record, with its fields, and the directory beside them.
    constexpr std::int64_t headerBytes = 85;
    constexpr std::int64_t recordBytes = 12 + 1 + 3 * 8 + 1;
    constexpr std::int64_t directoryBytes = 91 + 12;
    Totals const totals(file);
    std::int64_t const compactSize =
        headerBytes + totals.stored + directoryBytes + totals.names + file.size() * recordBytes + recordBytes + 1;
    int holes = 0;
    int index = 0;
    ioPackageFileEntry const * entry = file.getEntry(index);
    for (; entry == nullptr || entry->getName() != L"."; entry = file.getEntry(++index))
        holes += entry == nullptr;
    std::int64_t const size = status.getSize();
    std::int64_t const end = entry->getOffset();
    std::printf("size        %14" PRId64 "\n", size);
    std::printf("entries     %14d\n", file.size());
    std::printf("compressed  %14d\n", totals.compressed);
    std::printf("stored      %14" PRId64 "\n", totals.stored);
    std::printf("holes       %14d\n", holes);
    std::printf("free        %14" PRId64 "\n", end - file.getDataOffset() - totals.stored);
    std::printf("directory   %14" PRId64 "\n", size - end);
    std::printf("to save     %14" PRId64 "\n", size - compactSize);
    return finishOutput(allWell);
}
