// A stream on bytes in memory, that can be told to give and take little at a time, and to fail.

#ifndef MemoryStream_h
#define MemoryStream_h

#include "Base/OS/qvOSIOStream.h"

#include <algorithm>
#include <functional>
#include <string>
#include <utility>

namespace qvTest {

class MemoryStream : public qvOS::IOStream {
public:
    explicit MemoryStream(std::string initial = {}) : bytes(std::move(initial)) {}

    // The last bytes come together with the Error that tells the end, as from a file.
    qvUtil::Error read(void * buffer, unsigned size, unsigned * count) override {
        if (readAt == bytes.size() && atEnd) {
            atEnd();
        }
        auto const n = std::min({std::size_t{size}, bytes.size() - readAt, pieceSize});
        std::copy_n(bytes.data() + readAt, n, static_cast<char *>(buffer));
        readAt += n;
        *count = static_cast<unsigned>(n);
        return readAt == bytes.size() ? qvUtil::Error(3, "End Of File") : qvUtil::Error();
    }

    qvUtil::Error write(void const * buffer, unsigned size, unsigned * count) override {
        auto const n = std::min({std::size_t{size}, capacity - bytes.size(), pieceSize});
        bytes.append(static_cast<char const *>(buffer), n);
        *count = static_cast<unsigned>(n);
        return bytes.size() == capacity ? qvUtil::Error(4, "An I/O problem has occurred") : qvUtil::Error();
    }

    std::string bytes;
    std::size_t readAt = 0;
    std::size_t pieceSize = ~std::size_t{0};
    std::size_t capacity = ~std::size_t{0} >> 1;
    std::function<void()> atEnd;
};

} // namespace qvTest

#endif
