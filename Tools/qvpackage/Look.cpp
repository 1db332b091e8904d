#include "Commands.h"
#include "Names.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSFile.h"

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

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

// Opens a package that is to be there.
bool openExisting(ioPackageFile & package, std::string const & name) {
    qvOS::FileStatus status;
    if (!qvOS::File::query(nameOf(name), status) && !status.exists()) {
        complain(shown(name) + ": there is no such package");
        return false;
    }
    if (qvUtil::Error const error = package.open(nameOf(name))) {
        complain(error);
        return false;
    }
    return true;
}

bool isOutputWritten() { return std::fflush(stdout) == 0 && std::ferror(stdout) == 0; }

Status finishOutput(Status status) {
    if (isOutputWritten())
        return status;
    complain("the output cannot be written");
    return unusable;
}

// Reads an entry to its end, through its filters.
bool isWhole(ioPackageFileEntry const & entry) {
    ioBufferedStreamInput stream;
    stream.openPackageFileEntry(&entry);
    if (entry.getCompressed()) {
        stream.compress(true);
        stream.checksum(true);
    }
    static char block[1 << 16];
    std::int64_t bytes = 0;
    for (int count = 0; (count = stream.readData(block, sizeof block)) > 0;)
        bytes += count;
    ioStreamStatus const status = stream.getStatus();
    stream.close();
    bool const isAtEnd = status == ioStreamEOF || status == ioStreamCompressEnd;
    return isAtEnd && (entry.getCompressed() || bytes == entry.getSize());
}

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
    qvOS::FileStatus status;
    if (!qvOS::File::query(nameOf(package), status) && !status.exists()) {
        complain(shown(package) + ": there is no such package");
        return unusable;
    }
    if (qvUtil::Error const error = file.open(nameOf(package))) {
        complain(error);
        return error.num() == 17 ? withFaults : unusable;
    }
    Status result = allWell;
    for (auto const & [name, index] : file.getDirectory()) {
        qvString::IString place;
        if (qvUtil::Error const error = ioPackageFile::placeBelow(qvString::IString(L"/"), name, place)) {
            complain(error);
            result = withFaults;
        }
        if (!isWhole(*file.getEntry(index))) {
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
    // What a packet of a record takes beside its name, and a directory beside its packets.
    constexpr std::int64_t recordBytes = 12 + 1 + 3 * 8 + 1;
    constexpr std::int64_t directoryBytes = 91 + 12;
    constexpr std::int64_t headerBytes = 85;
    std::int64_t stored = 0;
    std::int64_t records = 0;
    int compressed = 0;
    for (auto const & [name, index] : file.getDirectory()) {
        ioPackageFileEntry const & entry = *file.getEntry(index);
        stored += entry.getSize();
        compressed += entry.getCompressed();
        records += recordBytes + static_cast<std::int64_t>(std::strlen(name.asUTF8()));
    }
    int holes = 0;
    int index = 0;
    std::int64_t firstOffset = -1;
    ioPackageFileEntry const * entry = file.getEntry(index);
    for (; entry == nullptr || entry->getName() != L"."; entry = file.getEntry(++index)) {
        holes += entry == nullptr;
        if (entry != nullptr && firstOffset < 0)
            firstOffset = entry->getOffset();
    }
    std::int64_t const end = entry->getOffset();
    std::int64_t const compactSize = headerBytes + stored + directoryBytes + records + recordBytes + 1;
    std::printf("size        %14ld\n", status.getSize());
    std::printf("entries     %14d\n", file.size());
    std::printf("compressed  %14d\n", compressed);
    std::printf("stored      %14" PRId64 "\n", stored);
    std::printf("holes       %14d\n", holes);
    std::printf("free        %14" PRId64 "\n", end - headerBytes - stored);
    std::printf("directory   %14" PRId64 "\n", status.getSize() - end);
    std::printf("to save     %14" PRId64 "\n", status.getSize() - compactSize);
    return finishOutput(allWell);
}
