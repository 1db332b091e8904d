#include "Base/Strings/Internal/CatalogLines.h"

#include "Base/Strings/qvStringIString.h"

#include <algorithm>
#include <cstring>

namespace qvStringTable {

CatalogLines::~CatalogLines() {
    if (descriptor_ != qvPlatform::noDescriptor)
        qvPlatform::closeDescriptor(descriptor_);
}

qvPlatform::FileResult CatalogLines::open(qvString::IString const & name) {
    buffer_ = std::make_unique_for_overwrite<char[]>(bufferSize);
    return qvPlatform::openForReading(name, descriptor_);
}

// Until there is enough for the longest line, whose line feed may have a carriage return in front that does not count.
bool CatalogLines::fill() {
    constexpr std::size_t enough = longestLine + 1;
    while (end_ - at_ < enough && !isAtEnd_) {
        std::memmove(buffer_.get(), buffer_.get() + at_, end_ - at_);
        end_ -= at_;
        at_ = 0;
        qvPlatform::MutablePiece const room{buffer_.get() + end_, bufferSize - end_};
        qvPlatform::TransferResult const read = qvPlatform::readSome(descriptor_, {&room, 1});
        failure_ = read.result;
        end_ += read.count;
        isAtEnd_ = read.count == 0; // also of what can be read at all
    }
    return failure_.good();
}

// Of a line that is too long. A character that would be cut goes to the next piece.
std::size_t CatalogLines::lengthOfPiece() const {
    std::size_t const available = std::min(end_ - at_, longestLine);
    if (end_ - at_ <= longestLine)
        return available;
    auto const byteAt = [this](std::size_t i) { return static_cast<unsigned char>(buffer_[at_ + i]); };
    for (std::size_t back = 1; back <= 3; ++back) {
        unsigned const byte = byteAt(available - back);
        if (byte >= 0x80 && byte < 0xC0)
            continue;
        std::size_t const length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC0 ? 2 : 1;
        return length > back ? available - back : available;
    }
    return available;
}

CatalogLines::Outcome CatalogLines::next(Line & line) {
    char const * feed = nullptr;
    auto const findFeed = [&] {
        std::size_t const visible = std::min(end_ - at_, longestLine + 1);
        feed = static_cast<char const *>(std::memchr(buffer_.get() + at_, '\n', visible));
    };
    findFeed();
    if (feed == nullptr && end_ - at_ <= longestLine) {
        bool const isGood = fill();
        findFeed();
        // What was read in front of the failure may hold lines.
        if (!isGood && feed == nullptr)
            return Outcome::failed;
    }
    char const * const start = buffer_.get() + at_;
    if (feed != nullptr) {
        std::size_t const length = static_cast<std::size_t>(feed - start);
        bool const hasReturn = length > 0 && feed[-1] == '\r';
        if (length - hasReturn < longestLine) {
            line = {{start, length - hasReturn}, true};
            at_ += length + 1;
            return Outcome::line;
        }
    }
    if (at_ == end_)
        return Outcome::end;
    std::size_t const length = lengthOfPiece();
    line = {{start, length}, false};
    at_ += length;
    return Outcome::line;
}

} // namespace qvStringTable
