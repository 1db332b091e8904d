#include "Base/DataFiles/Internal/ioBufferFileSubset.h"
#include "Base/DataFiles/Internal/ioBufferIOStream.h"
#include "Base/DataFiles/Internal/ioBufferTCP.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "DataFiles/MemoryStream.h"
#include "Support/ErrorMatchers.h"
#include "Support/ScratchDirectory.h"
#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <limits>
#include <unistd.h>

using namespace qvTest;

namespace {

constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max();

std::string numbered(int size) {
    std::string text(static_cast<std::size_t>(size), 0);
    for (std::size_t at = 0; at < text.size(); ++at) {
        text[at] = static_cast<char>(at * 7 + at / 251);
    }
    return text;
}

} // namespace

TEST(FileSlice, PresentsARangeAsAWholeFile) {
    ScratchDirectory const scratch;
    std::string const file = numbered(300000);
    writeBytes(scratch.path("file"), file);
    auto const name = wide(scratch.path("file"));
    struct {
        std::int64_t start;
        std::int64_t size;
        ioStreamStatus opened;
        bool open;
    } const cases[] = {
        {0, 300000, ioStreamGood, true},    {100, 5000, ioStreamGood, true},    {4096, 4096, ioStreamGood, true},
        {1, 299999, ioStreamGood, true},    {299999, 1, ioStreamGood, true},    {100, 0, ioStreamEOF, true},
        {0, 300001, ioStreamEOF, true},     {299000, 2000, ioStreamEOF, true},  {300000, 5, ioStreamEOF, true},
        {400000, 5, ioStreamEOF, true},     {most, most, ioStreamEOF, true},    {5, most, ioStreamEOF, true},
        {-1, 5, ioStreamOpenFailed, false}, {5, -1, ioStreamOpenFailed, false},
    };
    SeededRandom random;
    for (auto const & c : cases) {
        SCOPED_TRACE(testing::Message() << c.start << ", " << c.size);
        ioBufferedStreamInput in;
        in.openFileSlice(name, c.start, c.size);
        EXPECT_EQ(c.opened, in.getStatus());
        ASSERT_EQ(c.open, in.isOpen());
        if (!c.open) {
            continue;
        }
        auto const size = static_cast<std::int64_t>(file.size());
        auto const start = static_cast<std::size_t>(std::min(c.start, size));
        std::string const wanted = file.substr(start, static_cast<std::size_t>(std::min(c.size, size)));
        std::string got(wanted.size() + 10, 0);
        EXPECT_EQ(static_cast<int>(wanted.size()), in.readData(got.data(), static_cast<int>(got.size())));
        got.resize(wanted.size());
        EXPECT_TRUE(wanted == got);
        EXPECT_EQ(ioStreamEOF, in.getStatus());
    }
    ioBufferedStreamInput in;
    in.openFileSlice(wide(scratch.path("missing")), 0, 1);
    EXPECT_EQ(ioStreamOpenFailed, in.getStatus());
    in.openFileSlice(name, 0, 1); // the status is not reset
    EXPECT_EQ(ioStreamOpenFailed, in.getStatus());
    EXPECT_FALSE(in.isOpen());
}

// Against the file itself, with positions moved about.
TEST(FileSlice, SeeksAndTellsInTheRange) {
    SeededRandom random;
    ScratchDirectory const scratch;
    std::string const file = numbered(700000);
    writeBytes(scratch.path("file"), file);
    for (int round = 0; round < 20; ++round) {
        auto const start = random.below(300000);
        auto const size = 1 + random.below(400000);
        std::string const slice = file.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(size));
        ioBufferedStreamInput in;
        in.openFileSlice(wide(scratch.path("file")), start, size);
        EXPECT_EQ(0, in.tell());
        for (int step = 0; step < 40; ++step) {
            int const to = random.below(size);
            ASSERT_TRUE(in.seek(to));
            std::string got(static_cast<std::size_t>(1 + random.below(random.oneIn(3) ? 200000 : 5000)), 0);
            if (to + static_cast<int>(got.size()) > size) {
                got.resize(static_cast<std::size_t>(size - to));
            }
            EXPECT_EQ(static_cast<int>(got.size()), in.readData(got.data(), static_cast<int>(got.size())));
            ASSERT_TRUE(slice.substr(static_cast<std::size_t>(to), got.size()) == got);
            // What was read ahead within the block is dropped, and no more.
            std::int64_t const next = in.tell();
            EXPECT_GE(next, to + static_cast<int>(got.size()));
            EXPECT_LT(next, to + static_cast<int>(got.size()) + 4096);
            if (next < size) {
                EXPECT_EQ(slice[static_cast<std::size_t>(next)], in.readChar());
            }
        }
        for (std::int64_t const outside : {std::int64_t{size}, most, std::int64_t{-1}}) {
            in.openFileSlice(wide(scratch.path("file")), start, size);
            EXPECT_FALSE(in.seek(outside));
            EXPECT_EQ(ioStreamEOF, in.getStatus());
            in.resetStatus();
        }
    }
    ioBufferFileSubset link(0);
    link.open(wide(scratch.path("file")), 5, 10);
    char bytes[20];
    EXPECT_EQ(10, link.readBlock(bytes, 20));
    EXPECT_EQ(10, link.tell());
    EXPECT_EQ(0, link.readBlock(bytes, 20));
    EXPECT_EQ(ioBufferEOF, link.status());
    EXPECT_EQ(-1, link.readBlock(bytes, 20));
    link.close();
    // A pipe has no ranges: its bytes are not taken for those of one.
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    ASSERT_EQ(20, write(ends[1], bytes, 20));
    ioBufferedStreamInput in;
    in.openFileSlice(wide("/dev/fd/" + std::to_string(ends[0])), 5, 10);
    EXPECT_EQ(0, in.readData(bytes, 10));
    EXPECT_EQ(ioStreamEOF, in.getStatus());
    ::close(ends[0]);
    ::close(ends[1]);
}

TEST(StreamEnd, PassesOnWhatTheStreamTells) {
    std::string const text = numbered(10000);
    for (std::size_t const pieceSize : {std::size_t{1}, std::size_t{4095}, std::size_t{100000}}) {
        MemoryStream memory;
        memory.pieceSize = pieceSize;
        ioBufferedStreamOutput out;
        out.openIOStream(&memory);
        out.writeData(text.data(), 10000);
        out.close();
        EXPECT_TRUE(out.good());
        EXPECT_TRUE(text == memory.bytes);
        ioBufferedStreamInput in;
        in.openIOStream(&memory);
        std::string got(10001, 0);
        EXPECT_EQ(10000, in.readData(got.data(), 10001)); // the last bytes come with an Error
        EXPECT_EQ(text, got.substr(0, 10000));
        EXPECT_EQ(ioStreamEOF, in.getStatus());
    }
    MemoryStream empty;
    char byte = 0;
    ioBufferIOStream stream(ioBufferDirection::input, &empty);
    EXPECT_EQ(0, stream.readBlock(&byte, 1));
    EXPECT_EQ(ioBufferEOF, stream.status());
    EXPECT_THAT(stream.error(), FailsWith(3, "End Of File"));
    ioBufferTCP socket(ioBufferDirection::input, &empty);
    EXPECT_EQ(0, socket.readBlock(&byte, 1));
    EXPECT_EQ(ioBufferFailed, socket.status());
    empty.bytes = "x";
    ioBufferTCP last(ioBufferDirection::input, &empty);
    EXPECT_EQ(1, last.readBlock(&byte, 1));
    EXPECT_TRUE(last.good());
}

// A stream that says nothing and does nothing would be asked for ever.
TEST(StreamEnd, AsksNobodyForEver) {
    MemoryStream stuck("never read");
    stuck.pieceSize = 0;
    ioBufferedStreamInput in;
    in.openIOStream(&stuck);
    EXPECT_EQ(0, in.readChar());
    EXPECT_EQ(ioStreamEOF, in.getStatus());
    ioBufferedStreamOutput out;
    out.openIOStream(&stuck);
    out.writeChar('x');
    out.close();
    EXPECT_EQ(ioStreamFailed, out.getStatus());
}

TEST(StreamEnd, WithoutAStreamFails) {
    ioBufferedStreamInput in;
    ioBufferedStreamOutput out;
    in.openIOStream(nullptr);
    EXPECT_EQ(ioStreamFailed, in.getStatus());
    EXPECT_FALSE(in.isOpen());
    out.openIOStream(nullptr);
    EXPECT_EQ(ioStreamFailed, out.getStatus());
    out.openSocket(nullptr);
    EXPECT_EQ(ioStreamFailed, out.getStatus());
    MemoryStream memory("text");
    char bytes[4] = {};
    for (auto const direction : {ioBufferDirection::input, ioBufferDirection::output}) {
        ioBufferTCP link(direction, &memory);
        link.close(); // forgets the socket
        if (link.input()) {
            link.readBlock(bytes, 4);
        } else {
            link.writeBlock(bytes, 4);
        }
        EXPECT_EQ(ioBufferFailed, link.status());
    }
    EXPECT_EQ("text", memory.bytes);
    EXPECT_EQ(0u, memory.readAt);
}
