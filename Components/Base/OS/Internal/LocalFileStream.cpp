#include "Base/OS/Internal/LocalFileStream.h"

#include <algorithm>
#include <cstring>

namespace qvOS {

qvPlatform::FileResult LocalFileStream::open(qvString::IString const & name, qvPlatform::OpenMode mode) {
    qvPlatform::Descriptor descriptor = qvPlatform::noDescriptor;
    qvPlatform::FileResult const result = qvPlatform::openFile(name, mode, descriptor);
    if (result.good()) {
        descriptor_ = descriptor;
        isAtEnd_ = false;
        at_ = end_ = 0;
    }
    return result;
}

void LocalFileStream::close() {
    if (isOpen())
        qvPlatform::closeDescriptor(descriptor_);
    descriptor_ = qvPlatform::noDescriptor;
}

// From the block if that holds anything; a large piece goes straight to the caller.
qvPlatform::TransferResult LocalFileStream::readSome(char * bytes, std::size_t size) {
    if (at_ == end_ && size >= blockSize) {
        qvPlatform::MutablePiece const piece{bytes, size};
        return qvPlatform::readSome(descriptor_, {&piece, 1});
    }
    if (at_ == end_) {
        if (block_ == nullptr)
            block_.reset(new char[blockSize]);
        qvPlatform::MutablePiece const piece{block_.get(), blockSize};
        qvPlatform::TransferResult const filled = qvPlatform::readSome(descriptor_, {&piece, 1});
        at_ = 0;
        end_ = filled.count;
        if (!filled.result.good())
            return filled;
    }
    std::size_t const count = std::min(size, end_ - at_);
    std::memcpy(bytes, block_.get() + at_, count);
    at_ += count;
    return {{}, count};
}

qvPlatform::TransferResult LocalFileStream::read(char * bytes, std::size_t size) {
    qvPlatform::TransferResult whole;
    while (whole.count < size && !isAtEnd_) {
        qvPlatform::TransferResult const some = readSome(bytes + whole.count, size - whole.count);
        whole.count += some.count;
        whole.result = some.result;
        if (!some.result.good())
            break;
        isAtEnd_ = some.count == 0;
    }
    return whole;
}

qvPlatform::TransferResult LocalFileStream::write(char const * bytes, std::size_t size) {
    // In a file that is open for both, the write belongs where the reader stands.
    if (at_ != end_) {
        std::int64_t const behind = qvPlatform::currentPosition(descriptor_);
        qvPlatform::FileResult const sought =
            qvPlatform::seekTo(descriptor_, behind - static_cast<std::int64_t>(end_ - at_));
        if (!sought.good())
            return {sought, 0};
    }
    at_ = end_ = 0;
    isAtEnd_ = false;
    qvPlatform::ConstantPiece const piece{bytes, size};
    return qvPlatform::writeAll(descriptor_, {&piece, 1});
}

} // namespace qvOS
