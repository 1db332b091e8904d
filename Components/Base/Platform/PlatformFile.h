// Descriptors of files, in the few operations that the portable code makes of them.

#ifndef PlatformFile_h
#define PlatformFile_h

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace qvString {
class IString;
}

namespace qvPlatform {

// What became of an operation, as far as callers tell outcomes apart. Interrupted calls are repeated below the seam
// and never seen.
enum class FileOutcome {
    good,
    notFound,  // the name, or a folder on the way to it
    denied,    // by permission or a read-only file system
    exists,    // where an exclusive creation was asked for
    notEmpty,  // a directory that is to be removed
    diskFull,  // no room, a quota, or a limit on the size of files
    notUsable, // a directory opened as a file, and the like
    invalid,   // what makes no sense, such as a directory moved into itself
    failed     // anything else
};

// An outcome with the system's own number for it, 0 when good.
struct FileResult {
    FileOutcome outcome = FileOutcome::good;
    int systemNumber = 0;

    bool good() const { return outcome == FileOutcome::good; }
};

// Bytes moved, together with what ended the move.
struct TransferResult {
    FileResult result;
    std::size_t count = 0;
};

using Descriptor = int;
inline constexpr Descriptor noDescriptor = -1;

enum class Truncation { keep, truncate };

Descriptor standardInput();
Descriptor standardOutput();

// The text in the form in which names go to the system: UTF-8, with the units 0xDC80 to 0xDCFF standing for the
// single bytes that a name on disk had and UTF-8 has not. Ends with a zero.
std::unique_ptr<char[]> systemName(qvString::IString const & name);

FileResult openForReading(qvString::IString const & name, Descriptor & descriptor);

// Creates the file when it is not there, with reading and writing for its owner only.
FileResult openForWriting(qvString::IString const & name, Truncation truncation, Descriptor & descriptor);

// The same, but every write goes to the end of what the file holds then, whoever else writes to it.
FileResult openForAppending(qvString::IString const & name, Descriptor & descriptor);

// The descriptor is closed in any case.
FileResult closeDescriptor(Descriptor descriptor);

// One piece of memory in a transfer that scatters or gathers.
struct MutablePiece {
    char * data;
    std::size_t size;
};
struct ConstantPiece {
    char const * data;
    std::size_t size;
};

// Reads into the pieces one behind the other, as much as one call of the system gives. A count of 0 with a good
// result is the end of the data.
TransferResult readSome(Descriptor descriptor, std::span<MutablePiece const> pieces);

// Writes all of the pieces, unless a failure ends it; then the count tells how much went out before.
TransferResult writeAll(Descriptor descriptor, std::span<ConstantPiece const> pieces);

FileResult seekTo(Descriptor descriptor, std::int64_t position);

// The position; -1 where the descriptor has none.
std::int64_t seekToEnd(Descriptor descriptor);
std::int64_t currentPosition(Descriptor descriptor);

// In bytes; -1 when the name leads to nothing.
std::int64_t sizeOfFile(qvString::IString const & name);

} // namespace qvPlatform

#endif
