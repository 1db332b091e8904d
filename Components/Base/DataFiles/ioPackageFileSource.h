// A file on its way into a package.

#ifndef ioPackageFileSource_h
#define ioPackageFileSource_h

#include "Base/Strings/qvStringIString.h"
#include "Base/Utility/qvUtilError.h"

#include <cstdint>
#include <memory>

namespace qvUtil {
class Progress;
}

// What a package stores of a file, made ready before it goes in. That takes no package, and with compression it is
// where the time goes, so that threads may prepare files while one adds them:
//
//     ioPackageFileSource source;                                          // on any thread
//     qvUtil::Error error = source.prepare(L"/tmp/world.map", true);
//     ...
//     if (!error)
//         error = package.addEntry(source, L"maps/world.map");              // on the package's thread
//
// What is to be stored of a file of up to a MiB waits in memory. Of a larger one the compressed form waits in a
// temporary file, which is deleted with this object, and one that is stored as it is is read when it is added. An
// object belongs to one thread at a time.
class QV_EXPORT ioPackageFileSource {
public:
    ioPackageFileSource();
    ioPackageFileSource(ioPackageFileSource && other) noexcept;
    ioPackageFileSource & operator=(ioPackageFileSource && other) noexcept;
    ~ioPackageFileSource();

    // Reads a file and, asked to, compresses it; it is stored compressed when that makes it smaller. The file must keep
    // its size meanwhile, a large one that is stored as it is until it is added. Of what is stored as it is, that the
    // file cannot be read may come out only when it is added. Progress goes from 0 to 1. Failures, behind which there
    // is nothing to add:
    //
    //      6  "File does not exist: %s\n"
    //      7  "Could not read file: %s\n"
    //      8  "While compressing file it changed size: %s"
    //      9  "Error reading file: %s"
    //     10  "Error compressing file: %s"
    qvUtil::Error prepare(qvString::IString const & file, bool compress, qvUtil::Progress * progress = nullptr);

    // What is ready; an empty name, and 0, when nothing is. The size is that of the bytes to be stored.
    qvString::IString const & getFile() const;
    std::int64_t getSize() const;
    // The last change of the file, in seconds since 1970.
    std::int64_t getTimeStamp() const;
    bool getCompressed() const;

private:
    friend class ioPackageFile;
    class QV_NO_EXPORT Impl;

    std::unique_ptr<Impl> impl_; // null when nothing is ready
};

#endif
