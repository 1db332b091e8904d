#include "Base/DataFiles/Internal/ioBuffer.h"
#include "Base/DataFiles/Internal/ioBufferFD.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Support/ScratchDirectory.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <random>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

using namespace qvTest;

namespace {

// An end of a chain in memory that can be told to fail.
class MemoryEnd : public ioBuffer {
public:
    explicit MemoryEnd(ioBufferDirection direction) : ioBuffer(direction) {}
    int bufferType() const override { return 0; }
    void close() override { closed = true; }
    int readBlock(char * to, int count) override {
        if (lies) {
            return lies;
        }
        int const n = std::min({count, pieceSize, static_cast<int>(bytes.size() - readAt)});
        std::copy_n(bytes.data() + readAt, n, to);
        readAt += static_cast<std::size_t>(n);
        if (n == 0) {
            setStatus(ioBufferEOF);
        }
        return n;
    }
    void writeBlock(char * from, int count) override {
        blocks.push_back(count);
        if (static_cast<int>(blocks.size()) == failingBlock) {
            setStatus(failure);
            return;
        }
        bytes.append(from, static_cast<std::size_t>(count));
    }

    std::string bytes;
    std::size_t readAt = 0;
    int pieceSize = blockSize;
    int lies = 0;
    std::vector<int> blocks;
    int failingBlock = 0;
    ioBufferStatus failure = ioBufferDiskFull;
    bool closed = false;
};

// A filter that passes everything on.
class PassingFilter : public ioBuffer {
public:
    explicit PassingFilter(ioBufferDirection direction) : ioBuffer(direction) {}
    int bufferType() const override { return 1; }
    void close() override { next()->close(); }
    void finish() override { ++finished; }
    int readBlock(char * to, int count) override {
        int const n = next()->read(to, count);
        promoteStatus(ioBufferEnds::included);
        return n;
    }
    void writeBlock(char * from, int count) override {
        next()->write(from, count);
        promoteStatus(ioBufferEnds::included);
    }
    static inline int finished = 0;
};

std::vector<int> progressed;

// A stream on an end of the test's own.
class TestOutput : public ioBufferedStreamOutput {
public:
    explicit TestOutput(ioBuffer * end) { openOn(end); }
};

// A stream that is open.
template <class Stream>
struct On : Stream {
    explicit On(std::string const & path) { this->openFile(wide(path)); }
};
using Input = On<ioBufferedStreamInput>;
using Output = On<ioBufferedStreamOutput>;

} // namespace

TEST(Buffer, WritesOnceForEachFullBlockAndKeepsTheRest) {
    MemoryEnd end(ioBufferDirection::output);
    std::string const text(10000, 'x');
    end.write(text.data(), 0);
    end.write(text.data(), -5);
    EXPECT_TRUE(end.blocks.empty());
    end.write(text.data(), 10000);
    EXPECT_THAT(end.blocks, testing::ElementsAre(4096, 4096));
    end.flushBuffer();
    EXPECT_THAT(end.blocks, testing::ElementsAre(4096, 4096, 1808));
    EXPECT_EQ(text, end.bytes);
}

TEST(Buffer, ReadsThroughAnySizeOfPieces) {
    std::string text;
    for (int i = 0; i < 9000; ++i) {
        text += static_cast<char>(i * 7);
    }
    for (int const pieceSize : {1, 7, 4095, 4096, 100000}) {
        auto end = std::make_unique<MemoryEnd>(ioBufferDirection::input);
        end->bytes = text;
        end->pieceSize = pieceSize;
        PassingFilter filter(ioBufferDirection::input);
        filter.setNext(std::move(end));
        std::string got(text.size() + 10, 0);
        EXPECT_EQ(0, filter.read(got.data(), 0));
        int const first = filter.read(got.data(), 1000);
        EXPECT_EQ(1000, first);
        EXPECT_EQ(8000, filter.read(got.data() + first, static_cast<int>(got.size()) - first));
        EXPECT_EQ(text, got.substr(0, text.size()));
        EXPECT_EQ(ioBufferEOF, filter.status());
    }
    MemoryEnd lying(ioBufferDirection::input);
    for (int const count : {-1, 5000}) {
        lying.lies = count;
        lying.fill();
        EXPECT_EQ(count < 0 ? 0 : 4096, lying.numAvailable());
        lying.consume(lying.numAvailable());
    }
}

TEST(Buffer, FailuresOfTheEndReachTheTopAndPoppingFinishes) {
    auto end = std::make_unique<MemoryEnd>(ioBufferDirection::output);
    MemoryEnd & below = *end;
    auto filter = std::make_unique<PassingFilter>(ioBufferDirection::output);
    filter->setNext(std::move(end));
    filter->write("text", 4);
    filter->flushChain();
    EXPECT_EQ("text", below.bytes);
    EXPECT_TRUE(filter->good());
    filter->write("lost", 4);
    filter->setStatus(ioBufferChecksumFailed);
    filter->flushChain();
    EXPECT_EQ("text", below.bytes);
    EXPECT_EQ(ioBufferChecksumFailed, filter->status());
    below.setStatus(ioBufferEOF);
    filter->promoteStatus(ioBufferEnds::ignored);
    EXPECT_EQ(ioBufferChecksumFailed, filter->status());
    filter->promoteStatus(ioBufferEnds::included);
    EXPECT_EQ(ioBufferEOF, filter->status());

    PassingFilter::finished = 0;
    std::unique_ptr<ioBuffer> const popped = filter->popNext();
    EXPECT_EQ(1, PassingFilter::finished);
    EXPECT_EQ(&below, popped.get());
}

// Whatever the sizes of the single calls, the file has the bytes in their order, and they come back.
TEST(BufferedStream, AnySizesOfTransfersGiveTheSameBytes) {
    ScratchDirectory const scratch;
    std::mt19937 random(20261);
    for (int round = 0; round < 30; ++round) {
        std::string wanted;
        Output out(scratch.path("file"));
        while (wanted.size() < 60000) {
            std::size_t const size = random() % (round % 3 == 0 ? 100 : 20000);
            std::string piece(size, 0);
            std::generate(piece.begin(), piece.end(), [&] { return static_cast<char>(random()); });
            if (size % 5 == 1) {
                out.writeChar(piece[0]);
                piece.resize(1);
            } else {
                out.writeData(piece.data(), static_cast<int>(size));
            }
            wanted += piece;
            if (random() % 10 == 0) {
                EXPECT_EQ(static_cast<std::int64_t>(wanted.size()), out.tell());
            }
        }
        out.close();
        EXPECT_TRUE(out.good());
        ASSERT_TRUE(wanted == bytesOf(scratch.path("file")));
        EXPECT_EQ(static_cast<std::int64_t>(wanted.size()), ioBufferedStream::fileSize(wide(scratch.path("file"))));

        Input in(scratch.path("file"));
        std::string got;
        while (in.good()) {
            std::string piece(1 + random() % (round % 3 == 0 ? 100 : 20000), 0);
            if (piece.size() % 5 == 1) {
                piece[0] = in.readChar();
                got.append(piece, 0, in.good() ? 1 : 0);
            } else {
                int const n = in.readData(piece.data(), static_cast<int>(piece.size()));
                got.append(piece, 0, static_cast<std::size_t>(n));
            }
        }
        EXPECT_EQ(ioStreamEOF, in.getStatus());
        ASSERT_TRUE(wanted == got);
    }
}

TEST(BufferedStream, ReadsTextAsTold) {
    ScratchDirectory const scratch;
    std::string const path = scratch.path("text");
    struct {
        char const * text;
        int number;
        char next; // the character behind what was consumed, 0 at the end
    } const numbers[] = {{"-12\nx", -12, 'x'},
                         {" \t\n 7,x", 7, 'x'},
                         {"", 0, 0},
                         {"abc", 0, 'b'},
                         {"--5", 0, '5'},
                         {"2147483648 x", 2147483647, 'x'},
                         {"-99999999999999999999 x", -2147483647 - 1, 'x'},
                         {"000000000000000000000000000000000000001234567", 1, '3'},
                         {"-00000000000000000000000000000000000000123456", 0, '2'}};
    for (auto const & c : numbers) {
        writeBytes(path, c.text);
        Input in(path);
        EXPECT_EQ(c.number, in.readInt()) << c.text;
        EXPECT_EQ(c.next, in.readChar()) << c.text;
    }

    writeBytes(path, "first\n\nlonger line\nlast");
    Input in(path);
    char line[8];
    in.readLine(nullptr, 8);
    in.readLine(line, 1);
    EXPECT_STREQ("", line);
    for (char const * wanted : {"first\n", "\n", "longer ", "line\n", "last"}) {
        in.readLine(line, sizeof line);
        EXPECT_STREQ(wanted, line);
    }
    EXPECT_EQ(ioStreamEOF, in.getStatus());
    line[0] = 'x';
    in.readLine(line, sizeof line);
    EXPECT_STREQ("", line);
    line[0] = 'x';
    in.resetStatus();
    in.readLine(line, 0);
    EXPECT_STREQ("", line);
}

TEST(BufferedStream, FormatsAtMost1023Bytes) {
    ScratchDirectory const scratch;
    for (int const length : {0, 1, 1021, 1022, 1023, 1024, 2000}) {
        Output out(scratch.path("file"));
        out.printf("%s", std::string(static_cast<std::size_t>(length), 'p').c_str());
        out.close();
        EXPECT_TRUE(out.good());
        EXPECT_EQ(std::string(static_cast<std::size_t>(std::min(length, 1023)), 'p'), bytesOf(scratch.path("file")));
    }
}

TEST(BufferedStream, SeeksTellsAndUpdatesInPlace) {
    ScratchDirectory const scratch;
    std::string const path = scratch.path("file");
    writeBytes(path, std::string(5000, 'a') + std::string(5000, 'b'));
    ioBufferedStreamOutput out;
    out.truncateOnOpen(false);
    out.openFile(wide(path));
    EXPECT_TRUE(out.seek(4999));
    out.writeString("XY");
    EXPECT_EQ(5001, out.tell());
    EXPECT_TRUE(out.seek(-1));
    EXPECT_EQ(10000, out.tell());
    out.writeString("Z");
    out.close();
    EXPECT_EQ(std::string(4999, 'a') + "XY" + std::string(4999, 'b') + "Z", bytesOf(path));

    Input in(path);
    EXPECT_EQ('a', in.readChar());
    EXPECT_EQ(4096, in.tell()); // what was read ahead is dropped
    EXPECT_TRUE(in.seek(4999));
    EXPECT_EQ('X', in.readChar());
    EXPECT_TRUE(in.seek(-1));
    EXPECT_EQ(0, in.readChar());
    EXPECT_EQ(ioStreamEOF, in.getStatus());

    out.truncateOnOpen(true);
    out.openFile(wide(path));
    out.close();
    EXPECT_EQ("", bytesOf(path));
}

TEST(BufferedStream, ClosedStreamsFailCleanly) {
    ioBufferedStreamInput in;
    ioBufferedStreamOutput out;
    char buffer[4] = "abc";
    in.close();
    out.flush();
    EXPECT_TRUE(in.good() && out.good());
    std::function<bool()> const attempts[] = {
        [&] { return in.readChar() == 0; },
        [&] { return in.readData(buffer, 3) == 0; },
        [&] { return in.readInt() == 0; },
        [&] { return in.readLine(buffer, 4), std::string(buffer).empty(); },
        [&] { return !in.seek(0); },
        [&] { return in.tell() == 0; },
        [&] { return in.openSocket(nullptr), !in.isOpen(); },
        [&] { return out.writeChar('x'), true; },
        [&] { return out.writeData("x", 1), true; },
        [&] { return out.printf("%d", 1), true; },
    };
    for (auto const & attempt : attempts) {
        EXPECT_TRUE(attempt()) << &attempt - attempts;
        EXPECT_NE(in.getStatus() == ioStreamFailed, out.getStatus() == ioStreamFailed) << &attempt - attempts;
        in.resetStatus();
        out.resetStatus();
    }

    ScratchDirectory const scratch;
    out.openFile(wide(scratch.path("missing/file")));
    EXPECT_EQ(ioStreamOpenFailed, out.getStatus());
    EXPECT_FALSE(out.isOpen());
    in.openFile(wide(scratch.path("missing")));
    EXPECT_EQ(ioStreamOpenFailed, in.getStatus());
    EXPECT_EQ(-1, ioBufferedStream::fileSize(wide("")));
    EXPECT_EQ(-1, ioBufferedStream::fileSize(wide(scratch.path("missing"))));

    in.openFile(wide(scratch.path("."))); // a folder opens, and fails when it is read
    EXPECT_EQ(0, in.readChar());
    EXPECT_EQ(ioStreamFailed, in.getStatus());

    // An open on an open stream closes it first, with what it holds.
    out.openFile(wide(scratch.path("one")));
    out.writeString("1");
    out.openFile(wide(scratch.path("two")));
    EXPECT_EQ("1", bytesOf(scratch.path("one")));
}

// Every write that can fail is let fail once: the failure shows, and what went out before it stays.
TEST(BufferedStream, AFailingWriteShowsWhereverItIs) {
    for (int failing = 1; failing <= 5; ++failing) {
        for (auto const & [failure, status] :
             {std::pair(ioBufferDiskFull, ioStreamDiskFull), std::pair(ioBufferChecksumFailed, ioStreamChecksumFailed),
              std::pair(ioBufferFailed, ioStreamFailed), std::pair(ioBufferCompressEnd, ioStreamCompressEnd)}) {
            auto * const end = new MemoryEnd(ioBufferDirection::output);
            end->failingBlock = failing;
            end->failure = failure;
            TestOutput out(end);
            for (int i = 0; i < 1000; ++i) {
                out.writeData("0123456789abcdef", 16);
            }
            EXPECT_EQ(failing > 3, out.good());
            out.flush();
            EXPECT_EQ(failing > 4 ? ioStreamGood : status, out.getStatus());
            EXPECT_EQ(failing > 4 ? 16000u : 4096u * static_cast<unsigned>(failing - 1), end->bytes.size());
            out.close();
            EXPECT_EQ(failing > 4 ? ioStreamGood : status, out.getStatus());
        }
    }
}

TEST(BufferedStream, FiltersDoNotSeek) {
    auto end = std::make_unique<MemoryEnd>(ioBufferDirection::output);
    auto * const filter = new PassingFilter(ioBufferDirection::output);
    filter->setNext(std::move(end));
    TestOutput out(filter);
    EXPECT_FALSE(out.seek(0));
    EXPECT_TRUE(out.good());
}

// A descriptor that others share is left where single blocks would have left it.
TEST(BufferedStream, ReadingAheadIsGivenBack) {
    ScratchDirectory const scratch;
    writeBytes(scratch.path("file"), std::string(50000, 'x'));
    int const saved = dup(0);
    ASSERT_NE(nullptr, std::freopen(scratch.path("file").c_str(), "rb", stdin));
    int const shared = dup(0);
    ioBufferedStreamInput in;
    in.openStdin();
    char bytes[5000];
    EXPECT_EQ(5000, in.readData(bytes, 5000));
    EXPECT_EQ(8192, in.tell());
    EXPECT_EQ(5000, in.readData(bytes, 5000));
    in.close();
    EXPECT_EQ(16384, lseek(shared, 0, SEEK_CUR));
    close(shared);
    dup2(saved, 0);
    close(saved);
}

TEST(BufferedStream, AFullDiskIsToldApart) {
    Output out("/dev/full");
    EXPECT_TRUE(out.good());
    std::string const text(100000, 'x');
    out.writeData(text.data(), 100000);
    EXPECT_EQ(ioStreamDiskFull, out.getStatus());
}

// A pipe gives and takes what it likes.
TEST(BufferedStream, StandardStreamsMayBePipes) {
    std::string text;
    for (int i = 0; i < 300000; ++i) {
        text += static_cast<char>(i * 13);
    }
    int ends[2];
    ASSERT_EQ(0, pipe(ends));
    pid_t const child = fork();
    if (child == 0) {
        dup2(ends[1], 1);
        close(ends[0]);
        close(ends[1]);
        ioBufferedStreamOutput out;
        out.openStdout();
        out.writeData(text.data(), static_cast<int>(text.size()));
        out.close();
        _exit(out.good() ? 0 : 1);
    }
    close(ends[1]);
    int const savedInput = dup(0);
    dup2(ends[0], 0);
    close(ends[0]);
    ioBufferedStreamInput in;
    in.openStdin();
    std::string got(text.size() + 1, 0);
    int const n = in.readData(got.data(), static_cast<int>(got.size()));
    got.resize(static_cast<std::size_t>(n));
    EXPECT_TRUE(text == got);
    EXPECT_EQ(ioStreamEOF, in.getStatus());
    EXPECT_FALSE(in.seek(0));
    in.close();
    dup2(savedInput, 0);
    close(savedInput);
    int status = -1;
    waitpid(child, &status, 0);
    EXPECT_EQ(0, status);
}

TEST(BufferedStream, ProgressCountsBlocks) {
    ScratchDirectory const scratch;
    ioBufferedStreamOutput out;
    out.associateProgressFunction([](int) { FAIL(); });
    out.openFile(wide(scratch.path("file")));
    progressed.clear();
    out.associateProgressFunction([](int total) { progressed.push_back(total); });
    std::string const text(20000, 'x');
    out.writeData(text.data(), 20000);
    out.close();
    EXPECT_THAT(progressed, testing::ElementsAre(4096, 8192, 12288, 16384, 20000));
    progressed.clear();
    Input in(scratch.path("file"));
    in.associateProgressFunction([](int total) { progressed.push_back(total); });
    std::string got(20000, 0);
    EXPECT_EQ(20000, in.readData(got.data(), 20000));
    EXPECT_THAT(progressed, testing::ElementsAre(4096, 8192, 12288, 16384, 20000));
}
