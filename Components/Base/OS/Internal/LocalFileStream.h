// An open local file: what a stream of the C runtime does, but that no write waits in a buffer, so that every failure
// is told by the call that meets it.

#ifndef LocalFileStream_h
#define LocalFileStream_h

#include "Base/Platform/PlatformFileSystem.h"

#include <cstddef>
#include <memory>

namespace qvOS {

class LocalFileStream {
public:
    LocalFileStream() = default;
    LocalFileStream(LocalFileStream const &) = delete;
    LocalFileStream & operator=(LocalFileStream const &) = delete;
    ~LocalFileStream() { close(); }

    // Must be closed.
    qvPlatform::FileResult open(qvString::IString const & name, qvPlatform::OpenMode mode);
    // Gives nothing back of what was read ahead. A failure of the system is no news: nothing is buffered.
    void close();
    bool isOpen() const { return descriptor_ != qvPlatform::noDescriptor; }
    qvPlatform::Descriptor descriptor() const { return descriptor_; }

    // As many bytes as there are up to `size`; fewer mean the end, which then stays, or a failure.
    qvPlatform::TransferResult read(char * bytes, std::size_t size);
    bool isAtEnd() const { return isAtEnd_; }
    qvPlatform::TransferResult write(char const * bytes, std::size_t size);

private:
    static constexpr std::size_t blockSize = 16384;

    qvPlatform::TransferResult readSome(char * bytes, std::size_t size);

    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
    bool isAtEnd_ = false;
    // Small reads come from here: the bytes from at_ to end_ are read ahead.
    std::unique_ptr<char[]> block_;
    std::size_t at_ = 0;
    std::size_t end_ = 0;
};

} // namespace qvOS

#endif
