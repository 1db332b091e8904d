#include "Base/DataFiles/Internal/ioLzwEncoder.h"
#include "Base/DataFiles/ioBlockCipher.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "DataFiles/FilterReference.h"
#include "DataFiles/MemoryStream.h"
#include "Support/ScratchDirectory.h"
#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <cstring>
#include <malloc.h>
#include <map>
#include <vector>

using namespace qvTest;

// Puts an encoder where it would be behind very much input.
struct ioLzwEncoderCounters {
    static void set(ioLzwEncoder & encoder, ReferenceCounters counters) {
        encoder.input_ = counters.input;
        encoder.outputBytes_ = counters.output;
        encoder.checkpoint_ = counters.input + 10000;
    }
};

namespace {

enum class Filter { compress, checksum, encrypt };
using Filters = std::vector<Filter>;

void push(ioBufferedStream & stream, Filter filter, bool on = true) {
    if (filter == Filter::compress) {
        stream.compress(on);
    } else if (filter == Filter::checksum) {
        stream.checksum(on);
    } else {
        stream.encrypt(on);
    }
}

void pushAll(ioBufferedStream & stream, Filters const & filters) {
    for (Filter const filter : filters) {
        push(stream, filter);
    }
}

void popAll(ioBufferedStream & stream, Filters const & filters) {
    for (std::size_t n = filters.size(); n > 0; --n) {
        push(stream, filters[n - 1], false);
    }
}

enum class End { byClose, byPops };

ioStreamStatus write(MemoryStream & memory, std::string const & data, Filters const & filters, End end) {
    ioBufferedStreamOutput out;
    out.openIOStream(&memory);
    pushAll(out, filters);
    out.writeData(data.data(), static_cast<int>(data.size()));
    if (end == End::byPops) {
        popAll(out, filters);
    }
    out.close();
    return out.getStatus();
}

std::string written(std::string const & data, Filters const & filters, End end = End::byClose) {
    MemoryStream memory;
    EXPECT_EQ(ioStreamGood, write(memory, data, filters, end));
    return memory.bytes;
}

struct ReadBack {
    std::string data;
    ioStreamStatus status;
};

// Reads in pieces of random sizes until nothing comes, which may be behind the piece that met the failure.
std::string readAll(ioBufferedStreamInput & in, SeededRandom & random) {
    std::string data;
    std::string piece(20000, 0);
    int got = 0;
    do {
        got = in.readData(piece.data(), 1 + random.below(random.oneIn(2) ? 40 : 20000));
        data.append(piece, 0, static_cast<std::size_t>(got));
    } while (got > 0 || in.good());
    return data;
}

ReadBack readBack(std::string const & stream, Filters const & filters, SeededRandom & random) {
    MemoryStream memory(stream);
    ioBufferedStreamInput in;
    in.openIOStream(&memory);
    pushAll(in, filters);
    std::string data = readAll(in, random);
    return {std::move(data), in.getStatus()};
}

// Bytes of an alphabet so small that strings repeat, or so large that they do not.
std::string randomBytes(SeededRandom & random, int size, int alphabet, int first = 'a') {
    std::string bytes(static_cast<std::size_t>(size), 0);
    for (char & c : bytes) {
        c = static_cast<char>(first + random.below(alphabet));
    }
    return bytes;
}

std::vector<std::string> samples(SeededRandom & random) {
    std::vector<std::string> all{"", "x", std::string(1, '\0'), std::string(2, '\0'), std::string(300000, 'r')};
    for (int const size : {240, 241, 4095, 4096, 4097, 12288}) {
        all.push_back(randomBytes(random, size, 5));
    }
    all.push_back(randomBytes(random, 700000, 256));        // clear codes
    all.push_back(randomBytes(random, 700000, 3, 0));       // zeros among others
    all.push_back(std::string(4000000, '\0') + all.back()); // long strings of zeros
    all.push_back(randomBytes(random, 200000, 256) + all[11].substr(0, 300000) + std::string(5000, 'x'));
    all.push_back(randomBytes(random, 0x800000 + 200000, 40)); // the other form of the ratio
    return all;
}

} // namespace

TEST(CompressFilter, WritesTheStreamOfTheReferenceBitByBit) {
    SeededRandom random;
    for (std::string const & data : samples(random)) {
        SCOPED_TRACE(data.size());
        std::string const stream = written(data, {Filter::compress});
        ASSERT_TRUE(referenceCompress(data) == stream);
        ReadBack const back = readBack(stream, {Filter::compress}, random);
        EXPECT_EQ(ioStreamCompressEnd, back.status);
        ASSERT_TRUE(data == back.data);
    }
    // Two zeros get the key that counts as free. They are forgotten when a later string takes their slot, which needs
    // their first slot to be taken before: by a code of 256 times c with the byte c, which many rounds meet.
    for (int round = 0; round < 40; ++round) {
        std::string data = randomBytes(random, 30000 + random.below(20000), 255, 1);
        for (int pieces = 4000; pieces > 0; --pieces) {
            data += randomBytes(random, 1 + random.below(8), 255, 1) + std::string(2, '\0');
        }
        ASSERT_TRUE(referenceCompress(data) == written(data, {Filter::compress}));
    }
}

// The same while there are few strings, where it takes names of slots to bring it about: 0 and 69000.
TEST(CompressFilter, ForgetsTwoZerosBeforeItHasManyStrings) {
    SeededRandom random;
    std::map<std::string, int> codes; // of the strings of two bytes and more
    std::string data;
    std::string current;
    auto const feed = [&](std::string const & bytes) {
        for (char const c : bytes) {
            data += c;
            bool const isKnown = codes.contains(current + c);
            if (!isKnown && !current.empty())
                codes.emplace(current + c, 258 + static_cast<int>(codes.size()));
            current = isKnown ? current + c : std::string(1, c);
        }
    };
    // Bytes whose first begins a string.
    auto const begin = [&](std::string const & bytes) {
        while (codes.contains(current + bytes[0]))
            feed(randomBytes(random, 1, 255, 1));
        feed(bytes);
    };
    auto const follow = [&](int code, char byte) {
        while (codes.size() < static_cast<std::size_t>(code) - 256)
            feed(randomBytes(random, 1, 255, 1));
        begin(
            std::find_if(codes.begin(), codes.end(), [&](auto const & known) { return known.second == code; })->first);
        feed({byte});
    };
    std::string const twoZeros(2, '\0');
    follow(512, 2); // has slot 0
    begin(twoZeros);
    begin("\xC4\x86");   // has slot 34500
    follow(708, '\x84'); // would have it, and has 69000
    begin(twoZeros);
    feed(randomBytes(random, 5000, 255, 1));
    begin(twoZeros + "\1\7");
    ASSERT_TRUE(referenceCompress(data) == written(data, {Filter::compress}));
}

TEST(CompressFilter, CountersGoBeyond32Bits) {
    SeededRandom random;
    for (ReferenceCounters const counters : {ReferenceCounters{0x7FFF0000, 0x7FF00000},
                                             {0xFFFF0000, 0xFFFE0000},
                                             {0x1000000000, 0x200000000},
                                             {0x7FFF0000, 0}}) {
        std::string const data = randomBytes(random, 400000, 256);
        auto const encoder = ioLzwEncoder::make();
        ioLzwEncoderCounters::set(*encoder, counters);
        std::string stream;
        for (std::size_t at = 0; at < data.size(); at += 4000) {
            encoder->encode(data.data() + at, 4000);
            stream.append(encoder->output(), static_cast<std::size_t>(encoder->outputSize()));
            encoder->takeOutput();
        }
        encoder->end();
        stream.append(encoder->output(), static_cast<std::size_t>(encoder->outputSize()));
        EXPECT_TRUE(referenceCompress(data, counters) == stream);
    }
}

// Whatever the stream, the data and what ends it are the reference's, and the next link is left behind the end code.
TEST(CompressFilter, ReadsAnyBytesLikeTheReference) {
    SeededRandom random;
    auto const check = [&](std::string const & stream) {
        ReferenceData const wanted = referenceDecompress(stream);
        MemoryStream memory(stream);
        ioBufferedStreamInput in;
        in.openIOStream(&memory);
        in.compress(true);
        ASSERT_TRUE(wanted.data == readAll(in, random));
        ASSERT_EQ(wanted.end == ReferenceEnd::endCode ? ioStreamCompressEnd : ioStreamFailed, in.getStatus());
        in.compress(false);
        if (wanted.end == ReferenceEnd::endCode) {
            EXPECT_TRUE(in.good());
            ASSERT_EQ(stream.substr(wanted.used), readAll(in, random));
        }
    };
    std::string const sound =
        referenceCompress(randomBytes(random, 3000, 4) + "\x80\x81" + std::string(500, '\0')) + "behind";
    for (std::size_t cut = 0; cut < sound.size(); ++cut) {
        check(sound.substr(0, cut));
    }
    for (int round = 0; round < 3000; ++round) {
        std::string stream = sound;
        for (int changes = 1 + random.below(3); changes > 0; --changes) {
            stream[static_cast<std::size_t>(random.below(static_cast<int>(sound.size())))] =
                static_cast<char>(random.bits());
        }
        check(round % 4 == 0 ? "\x1F\x9D\x90" + randomBytes(random, 200, 256) : stream);
    }
    // A clear code, and behind it what may not follow one: codes of nine bits, in groups of their own.
    auto const group = [](std::vector<unsigned> const & codes) {
        std::string bytes(9, 0);
        for (unsigned at = 0; at < 9 * codes.size(); ++at) {
            unsigned const bit = codes[at / 9] >> (at % 9) & 1;
            bytes[at / 8] = static_cast<char>(bytes[at / 8] | static_cast<int>(bit << (at % 8)));
        }
        return bytes;
    };
    for (unsigned const code : {65u, 255u, 256u, 257u, 258u, 511u}) {
        check("\x1F\x9D\x90" + group({65, 258, 256}) + group({code, 258, 259, 257}));
        check("\x1F\x9D\x90" + group({code, 66, 258, 257}));
        check("\x1F\x9D\x90" + group({65, code, 257}));
    }
}

// Data that has been read to its last byte is read, though its end code has not been met.
TEST(CompressFilter, TakenOffBehindTheDataItLeavesWhatFollows) {
    for (int const size : {1, 4095, 4096, 8192}) {
        std::string const data(static_cast<std::size_t>(size), 'd');
        MemoryStream memory;
        ioBufferedStreamOutput out;
        out.openIOStream(&memory);
        out.writeString("before");
        out.compress(true);
        out.writeData(data.data(), size);
        out.compress(false);
        out.writeString("behind");
        out.close();
        EXPECT_EQ("before" + referenceCompress(data) + "behind", memory.bytes);

        ioBufferedStreamInput in;
        in.openIOStream(&memory);
        std::string got(data.size() + 6, 0);
        EXPECT_EQ(6, in.readData(got.data(), 6));
        in.compress(true);
        EXPECT_EQ(size, in.readData(got.data(), size));
        EXPECT_FALSE(in.seek(0));
        EXPECT_EQ(0, in.tell());
        in.compress(false);
        EXPECT_TRUE(in.good());
        EXPECT_EQ(6, in.readData(got.data(), 6));
        EXPECT_EQ("behind", got.substr(0, 6));
        in.compress(false); // nothing is left to take off
        EXPECT_EQ(ioStreamFailed, in.getStatus());
    }
}

TEST(ChecksumFilter, WritesAFrameForEachBlock) {
    SeededRandom random;
    for (int const size : {0, 1, 2, 3, 4095, 4096, 4097, 8193, 50000}) {
        std::string const data = randomBytes(random, size, 256);
        std::uint16_t sum = 0;
        std::string wanted;
        for (std::size_t at = 0; at < data.size(); at += 4096) {
            wanted += referenceFrame(data.substr(at, 4096), sum);
        }
        std::string const stream = written(data, {Filter::checksum});
        ASSERT_TRUE(wanted == stream) << size;
        ReadBack const back = readBack(stream, {Filter::checksum}, random);
        EXPECT_EQ(ioStreamEOF, back.status);
        ASSERT_TRUE(data == back.data);
    }
    std::uint16_t sum = 0; // frames of any size, larger than a request too
    std::string data;
    std::string stream;
    for (int const size : {1, 4097, 70001, 12, 300000, 5000}) {
        std::string const part = randomBytes(random, size, 256);
        data += part;
        stream += referenceFrame(part, sum);
    }
    EXPECT_TRUE(data == readBack(stream, {Filter::checksum}, random).data);
}

TEST(ChecksumFilter, FindsEveryChangedByteAndEveryCut) {
    SeededRandom random;
    std::uint16_t sum = 0;
    std::string const first = referenceFrame("first frame", sum);
    std::string const stream = first + referenceFrame("and the second", sum);
    for (std::size_t at = 0; at < stream.size(); ++at) {
        std::string changed = stream;
        changed[at] = static_cast<char>(changed[at] ^ 1 << random.below(8));
        ReadBack const back = readBack(changed, {Filter::checksum}, random);
        EXPECT_EQ(ioStreamChecksumFailed, back.status) << at;
        std::size_t const sizeFieldsEnd = 8;
        std::size_t const whole = at < sizeFieldsEnd ? 0 : at < first.size() + sizeFieldsEnd ? 11 : 25;
        EXPECT_EQ(whole, back.data.size()) << at; // the bytes of the bad frame come, if its size can be believed
        bool const between = at == 0 || at == first.size();
        EXPECT_EQ(between ? ioStreamEOF : ioStreamChecksumFailed,
                  readBack(stream.substr(0, at), {Filter::checksum}, random).status)
            << at;
    }
}

TEST(ChecksumFilter, AllocatesNothingForBytesThatNeverCome) {
    SeededRandom random;
    for (char const * size : {"\x7F\xFF\xFF\xFF\x80\0\0\0", "\x80\0\0\0\x7F\xFF\xFF\xFF", "\xFF\xFF\xFF\xFF\0\0\0\0",
                              "\0\0\0\0\xFF\xFF\xFF\xFF"}) {
        MemoryStream memory(std::string(size, 8) + "ss" + std::string(100000, 'x'));
        auto const inUse = [] {
            auto const now = mallinfo2();
            return now.uordblks + now.hblkhd;
        };
        std::size_t atEnd = 0;
        memory.atEnd = [&] { atEnd = inUse(); };
        std::size_t const before = inUse();
        ioBufferedStreamInput in;
        in.openIOStream(&memory);
        in.checksum(true);
        readAll(in, random);
        EXPECT_EQ(ioStreamChecksumFailed, in.getStatus());
        EXPECT_LT(atEnd, before + 1000000);
    }
}

namespace {

// What makes streams of this library readable by it.
constexpr std::uint32_t firstWord = 0x5B8D0C93;
constexpr std::uint32_t wordStep = 0xC6A4F1B7;
constexpr std::array<std::uint32_t, 8> streamKey{0x3C91E8A5, 0xD6274B1F, 0x81F05C63, 0x4AB79D2E,
                                                 0xE9630F74, 0x172DC8BA, 0x5E84A639, 0xB20F71CD};

ReferenceTable const & streamTable() {
    static ReferenceTable const table = referenceExpansion(firstWord, wordStep, streamKey, 4, false);
    return table;
}

} // namespace

TEST(BlockCipher, IsThePublishedOneWithAnotherExpansion) {
    // The published vector of a key and a text of zeros.
    ReferenceTable const published = referenceExpansion(0xB7E15163, 0x9E3779B9, {}, 3, true);
    unsigned char const wanted[] = "\x8f\xc3\xa5\x36\x56\xb1\xf7\x78\xc1\x29\xdf\x4e\x98\x48\xa4\x1e";
    unsigned char block[16] = {};
    fdblhypsin2_(block, block, published.data());
    EXPECT_EQ(0, std::memcmp(wanted, block, 16));
    fdblhypcos2_(block, block, published.data());
    EXPECT_EQ(std::string(16, '\0'), std::string(reinterpret_cast<char *>(block), 16));

    struct {
        int length;
        int lastIndex;
    } const lengths[] = {{-5, 1}, {8, 1}, {15, 1}, {16, 2}, {32, 4}, {55, 6}, {56, 7}, {1000, 7}};
    for (auto const & c : lengths) {
        ReferenceTable const table = referenceExpansion(firstWord, wordStep, streamKey, c.lastIndex, false);
        EXPECT_EQ(0, std::memcmp(table.data(), fdblarccos2_(streamKey.data(), c.length), sizeof table)) << c.length;
    }
    struct {
        int bits;
        std::size_t bytes;
    } const sizes[] = {{-5, 4}, {32, 4}, {47, 5}, {63, 7}, {64, 8}, {128, 16}, {256, 32}, {999, 32}};
    for (auto const & c : sizes) {
        std::array<std::uint32_t, 8> key{};
        std::memcpy(key.data(), streamKey.data(), c.bytes);
        ReferenceTable const table =
            referenceExpansion(firstWord, wordStep, key, static_cast<int>(c.bytes / 4) - 1, false);
        EXPECT_EQ(0, std::memcmp(table.data(), fdblarctan2_(streamKey.data(), c.bits), sizeof table)) << c.bits;
    }
}

TEST(EncryptFilter, WritesAndReadsTheFramesOfTheReference) {
    SeededRandom random;
    for (int const size : {0, 1, 15, 16, 17, 80, 97, 239, 240, 241, 4095, 4096, 4097, 30000}) {
        std::string const data = randomBytes(random, size, 256);
        std::string const stream = written(data, {Filter::encrypt});
        ASSERT_TRUE(referenceEncrypt(data, streamTable(), false) == stream) << size;
        for (bool const swapped : {false, true}) {
            ReadBack const back = readBack(referenceEncrypt(data, streamTable(), swapped), {Filter::encrypt}, random);
            EXPECT_EQ(ioStreamEOF, back.status);
            ASSERT_TRUE(data == back.data) << size;
        }
    }
    for (int mark = 2; mark < 256; ++mark) {
        EXPECT_EQ(ioStreamFailed,
                  readBack(std::string(1, static_cast<char>(mark)) + "\1x", {Filter::encrypt}, random).status);
    }
    std::string const frames("\1\0\2ab\0\0\1c\0", 10); // empty frames anywhere, all in the clear
    EXPECT_EQ("abc", readBack(frames, {Filter::encrypt}, random).data);
    std::size_t const frameEnds[] = {0, 1, 2, 5, 6, 7, 9, 10};
    for (std::size_t cut = 0; cut <= frames.size(); ++cut) {
        bool const between = std::count(std::begin(frameEnds), std::end(frameEnds), cut) != 0;
        EXPECT_EQ(between ? ioStreamEOF : ioStreamFailed,
                  readBack(frames.substr(0, cut), {Filter::encrypt}, random).status);
    }
}

namespace {

std::vector<Filters> allStacks() {
    std::vector<Filters> stacks{{}};
    for (std::size_t at = 0; stacks[at].size() < 3; ++at) {
        for (Filter const filter : {Filter::compress, Filter::checksum, Filter::encrypt}) {
            stacks.push_back(stacks[at]);
            stacks.back().push_back(filter);
        }
    }
    return stacks;
}

} // namespace

// Any filters in any order, the same twice too, between plain bytes; in a file, a slice of one, and a stream.
TEST(Filters, StackOnAnyEnd) {
    SeededRandom random;
    ScratchDirectory const scratch;
    qvString::IString const name = wide(scratch.path("file"));
    for (Filters const & filters : allStacks()) {
        SCOPED_TRACE(testing::PrintToString(filters));
        MemoryStream memory;
        ioBufferedStreamOutput out;
        if (random.oneIn(2)) {
            out.openFile(name);
        } else {
            memory.pieceSize = static_cast<std::size_t>(1 + random.below(5000));
            out.openIOStream(&memory);
        }
        std::string data;
        for (Filter const filter : filters) {
            out.writeString("|");
            push(out, filter);
        }
        for (int pieces = random.below(12); pieces > 0; --pieces) {
            std::string const piece = randomBytes(random, random.below(9000), random.oneIn(2) ? 3 : 256);
            out.writeData(piece.data(), static_cast<int>(piece.size()));
            if (random.oneIn(4)) {
                out.flush();
            }
            data += piece;
        }
        popAll(out, filters);
        EXPECT_TRUE(out.good());
        out.writeString("behind");
        out.close();
        EXPECT_TRUE(out.good());
        std::string const bytes = memory.bytes.empty() ? bytesOf(scratch.path("file")) : memory.bytes;

        writeBytes(scratch.path("around"), "1234567" + bytes + "890");
        for (int end = 0; end < 3; ++end) {
            MemoryStream source(bytes);
            source.pieceSize = static_cast<std::size_t>(1 + random.below(5000));
            writeBytes(scratch.path("file"), bytes);
            ioBufferedStreamInput in;
            if (end == 0) {
                in.openFile(name);
            } else if (end == 1) {
                in.openFileSlice(wide(scratch.path("around")), 7, static_cast<std::int64_t>(bytes.size()));
            } else {
                in.openIOStream(&source);
            }
            for (Filter const filter : filters) {
                EXPECT_EQ('|', in.readChar());
                push(in, filter);
            }
            std::string got(data.size(), 0);
            ASSERT_EQ(static_cast<int>(data.size()), in.readData(got.data(), static_cast<int>(data.size())));
            ASSERT_TRUE(data == got);
            // Only the compressor's data has an end of its own: below or above the others what follows is theirs.
            if (filters.empty() || (filters == Filters{Filter::compress} && !data.empty())) {
                popAll(in, filters);
                EXPECT_EQ("behind", readAll(in, random));
                EXPECT_EQ(ioStreamEOF, in.getStatus());
            }
        }
    }
}

// A stream that takes so many bytes and no more: the failure shows, at the latest behind close.
TEST(Filters, AFullDiskShowsWhereverItIsMet) {
    SeededRandom random;
    std::string const data = randomBytes(random, 9000, 200);
    for (Filters const & filters : allStacks()) {
        for (End const end : {End::byClose, End::byPops}) {
            std::size_t const whole = written(data, filters, end).size();
            for (std::size_t const capacity : {std::size_t{1}, std::size_t{4097}, whole - 1}) {
                MemoryStream memory;
                memory.capacity = capacity;
                EXPECT_EQ(ioStreamFailed, write(memory, data, filters, end));
                EXPECT_EQ(capacity, memory.bytes.size());
            }
        }
        ioBufferedStreamOutput full;
        full.openFile(wide("/dev/full"));
        pushAll(full, filters);
        full.writeString("x");
        full.close();
        EXPECT_EQ(ioStreamDiskFull, full.getStatus());
    }
}

TEST(Filters, OnAClosedStreamFail) {
    for (Filter const filter : {Filter::compress, Filter::checksum, Filter::encrypt}) {
        for (bool const on : {true, false}) {
            ioBufferedStreamInput in;
            push(in, filter, on);
            EXPECT_EQ(ioStreamFailed, in.getStatus());
        }
    }
}
