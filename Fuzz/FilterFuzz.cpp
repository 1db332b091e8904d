// A filter's decoder on any bytes: whatever comes, it ends with a status, and data that the filter has written itself
// comes back. QV_FUZZ_FILTER is the operation that pushes the filter.

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/OS/qvOSIOStream.h"
#include "MemoryInput.h"

#include <cstdlib>
#include <string>
#include <vector>

namespace {

// A small stream can stand for very much data: what lies beyond this is left unread.
constexpr std::size_t mostRead = std::size_t{1} << 22;

class Sink : public qvOS::IOStream {
public:
    qvUtil::Error read(void *, unsigned, unsigned * count) override {
        *count = 0;
        return {};
    }
    qvUtil::Error write(void const * buffer, unsigned size, unsigned * count) override {
        bytes.append(static_cast<char const *>(buffer), size);
        *count = size;
        return {};
    }
    std::string bytes;
};

std::string readAll(ioBufferedStreamInput & in, std::size_t pieceSize) {
    std::vector<char> piece(pieceSize);
    std::string data;
    int got = 0;
    do {
        got = in.readData(piece.data(), static_cast<int>(piece.size()));
        data.append(piece.data(), static_cast<std::size_t>(got));
    } while ((got > 0 || in.good()) && data.size() < mostRead);
    return data;
}

void require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    std::size_t const pieceSize = size == 0 ? 1 : std::size_t{1} << data[size - 1] % 15;
    MemoryInput stream(data, size);
    stream.QV_FUZZ_FILTER(true);
    readAll(stream, pieceSize);
    stream.QV_FUZZ_FILTER(false);
    stream.resetStatus();
    readAll(stream, pieceSize);

    Sink sink;
    ioBufferedStreamOutput out;
    out.openIOStream(&sink);
    out.QV_FUZZ_FILTER(true);
    auto const * const plain = reinterpret_cast<char const *>(data);
    out.writeData(plain, static_cast<int>(size));
    out.close();
    require(out.good());
    MemoryInput again(reinterpret_cast<std::uint8_t const *>(sink.bytes.data()), sink.bytes.size());
    again.QV_FUZZ_FILTER(true);
    require(readAll(again, pieceSize) == std::string(plain, size));
    require(again.getStatus() == ioStreamEOF || again.getStatus() == ioStreamCompressEnd);
    return 0;
}
