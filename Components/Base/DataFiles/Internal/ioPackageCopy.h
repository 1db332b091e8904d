// What copying into packages and out of them has in common.

#ifndef ioPackageCopy_h
#define ioPackageCopy_h

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/Utility/qvUtilError.h"
#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <cstdint>
#include <memory>

namespace ioPackageCopy {

// Bytes on their way from one stream to another: as many at once as are worth it for so large a whole.
class Block {
public:
    explicit Block(std::int64_t whole)
        : size_(static_cast<int>(std::clamp<std::int64_t>(whole, smallest, largest - 1) + 1)),
          bytes_(new char[static_cast<std::size_t>(size_)]) {}

    int size() const { return size_; }
    char * get() const { return bytes_.get(); }

private:
    // The largest moves through a chain without filters uncopied.
    static constexpr std::int64_t smallest = 4095;
    static constexpr std::int64_t largest = 256 * 1024;

    int size_;
    std::unique_ptr<char[]> bytes_;
};

// Tells a caller who wants to know it how much of a whole is done. Copying asks nobody whether it is cancelled.
class Report {
public:
    Report(qvUtil::Progress * progress, std::int64_t whole)
        : progress_(progress), whole_(static_cast<double>(std::max<std::int64_t>(whole, 1))) {}

    void operator()(std::int64_t done) const {
        if (progress_ != nullptr)
            progress_->set(std::min(static_cast<double>(done) / whole_, 1.0));
    }
    void end() const {
        if (progress_ != nullptr)
            progress_->set(1);
    }

private:
    qvUtil::Progress * progress_;
    double whole_;
};

inline bool isAtEnd(ioBufferedStreamInput const & stream) {
    return stream.getStatus() == ioStreamEOF || stream.getStatus() == ioStreamCompressEnd;
}

inline bool isSound(ioBufferedStreamInput const & stream) { return stream.good() || stream.getStatus() == ioStreamEOF; }

inline qvUtil::Error notAllowed(qvString::IString const & name) {
    return qvUtil::Error(12, L"File is using a name which is not allowed: %S", name.asWChar());
}

inline qvUtil::Error couldNotRead(qvString::IString const & file) {
    return qvUtil::Error(7, L"Could not read file: %S\n", file.asWChar());
}

inline qvUtil::Error couldNotReadEntry(qvString::IString const & name) {
    return qvUtil::Error(7, L"Could not read package file entry: %S\n", name.asWChar());
}

} // namespace ioPackageCopy

#endif
