// Files that no writer makes: what is wrong with them shows, and nothing costs more than its bytes are worth.

#include "DataFiles/PacketFileSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace qvTest;

namespace {

std::string asciiFile(std::string const & packets, char method = '0') {
    return std::string("^@\n1\n1 ") + method +
           " 1\n1 2 4 8 4 8 4\n@\n   0 packetFile_string\n   1 packetFile_EOF\n   2 t\n@\n" + packets + "{ 1 0 }\n";
}

std::string binaryPacket(int flag, std::string const & body) {
    std::int32_t const frame[3] = {2, flag, static_cast<std::int32_t>(body.size())};
    return std::string(reinterpret_cast<char const *>(frame), sizeof frame) + body;
}

std::string binaryFile(std::string const & packets) {
    std::string const end("\1\0\0\0\0\0\0\0\0\0\0\0", 12);
    std::string file = asciiFile("", '1');
    return file.substr(0, packetsAt(file)) + packets + end;
}

std::string number(std::int32_t value) { return std::string(reinterpret_cast<char const *>(&value), sizeof value); }

int statusOf(std::string const & file, ReadFunction read) { return Reader(file, std::move(read)).read(); }

#ifdef __SANITIZE_ADDRESS__
constexpr bool memoryCanBeLimited = false; // the sanitizer takes far more than it is limited to
#else
constexpr bool memoryCanBeLimited = true;
#endif

// Runs the function in a process of its own with little memory to take, and tells whether it came through.
bool runsWithin(std::size_t megabytes, std::function<bool()> const & function) {
    pid_t const child = fork();
    if (child == 0) {
        rlimit const limit{megabytes << 20, megabytes << 20};
        if (memoryCanBeLimited) {
            setrlimit(RLIMIT_DATA, &limit);
        }
        bool good = false;
        try {
            good = function();
        } catch (...) {
        }
        _exit(good ? 0 : 1);
    }
    int status = -1;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

// Whether twice the size takes about twice the time, and not four times. Small times say nothing and pass.
template <typename Function>
void expectLinear(Function run, int size) {
    auto const timed = [&](int n) {
        double best = 1e9;
        for (int i = 0; i < 3; ++i) {
            auto const start = std::chrono::steady_clock::now();
            run(n);
            best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        }
        return best;
    };
    double const once = timed(size);
    double const eight = timed(8 * size);
    EXPECT_TRUE(eight < 0.05 || eight < 24 * once) << once << " s, and for eight times as much " << eight << " s";
}

} // namespace

// Chunks and sub-packets whose sizes lie end with what they lie in.
TEST(HostileFile, SizesThatLieEndWithTheirContainer) {
    struct {
        std::int32_t size;
        int status;
        std::vector<int> read; // the fields that are found in the chunk or sub-packet
    } const cases[] = {{12, ioGood, {5, 6}},
                       {8, ioGood, {5}},
                       {4, ioGood, {}},
                       {0, ioGood, {}},
                       {13, ioBadData, {5, 6}},
                       {100, ioBadData, {5, 6}},
                       {-1, ioBadData, {5, 6}},
                       {INT32_MIN, ioBadData, {5, 6}},
                       {INT32_MAX, ioBadData, {5, 6}}};
    for (auto const & c : cases) {
        for (char const marker : {',', '.'}) {
            std::vector<int> read;
            std::string const body = marker + number(c.size) + number(5) + number(6);
            int const status = statusOf(binaryFile(binaryPacket(0, body)), [&](ioReadContext & from) {
                marker == ',' ? from.nextChunk() : from.startSubPacket();
                for (int i = 0; i < 3; ++i) {
                    if (int const value = from.readInt()) {
                        read.push_back(value);
                    }
                }
                if (marker == '.') {
                    from.endSubPacket();
                }
            });
            EXPECT_EQ(c.status, status) << c.size << marker;
            EXPECT_EQ(c.read, read) << c.size << marker;
        }
    }
    // A size field that is not whole.
    for (std::string const & body : {std::string(","), std::string(",\1\2\3"), std::string(".\1")}) {
        EXPECT_EQ(ioBadData, statusOf(binaryFile(binaryPacket(0, body)), [&](ioReadContext & from) {
                      body[0] == ',' ? from.nextChunk() : from.startSubPacket();
                      EXPECT_EQ(0, from.readInt());
                  }));
    }
}

TEST(HostileFile, AsciiBracketsThatDoNotFit) {
    struct {
        char const * body;
        int status;
    } const cases[] = {{"\n  [ 1 ] ", ioGood},
                       {"\n  [ 1 ", ioBadData},
                       {"\n  [ 1 > ] ", ioBadData},
                       {"\n  [ 1 \n  < 2 > ] ", ioGood},
                       {"\n  [ 1 \n  < 2 ] ", ioBadData},
                       {"\n  [ 1 \n  < 2 \n  [ 3 > ] ", ioBadData},
                       {"\n  [ 1 \n  < 2 \n  [ 3 ] > ] ", ioGood},
                       {"", ioBadData},
                       {"] ", ioBadData},
                       {"> ", ioBadData},
                       {"\n  [ 1 \\", ioBadData},
                       {"\n  [ ] ", ioGood}};
    for (auto const & c : cases) {
        int const status = statusOf(asciiFile(std::string("{ 2 0 ") + c.body + "}\n"), [](ioReadContext & from) {
            from.nextChunk();
            from.readInt();
            if (from.chunkHasData()) {
                from.startSubPacket();
                from.readInt();
                from.endSubPacket();
            }
            from.nextChunk();
        });
        EXPECT_EQ(c.status, status) << c.body;
    }
}

// In both encodings a chunk keeps its data while a sub-packet of it is read.
TEST(HostileFile, ChunksHaveDataBehindTheirSubPackets) {
    for (Form const form : allForms) {
        std::string const file = writePacket(form, [](ioWriteContext & to) {
            to.startChunk();
            for (int depth = 0; depth < 25; ++depth) {
                to.startSubPacket();
                to.startChunk();
                to.writeInt(depth);
            }
            for (int depth = 0; depth < 25; ++depth) {
                to.endSubPacket();
            }
            to.writeInt(7);
        });
        EXPECT_EQ(ioGood, statusOf(file, [](ioReadContext & from) {
                      from.nextChunk();
                      for (int depth = 0; depth < 25; ++depth) {
                          from.startSubPacket();
                          EXPECT_FALSE(from.chunkHasData());
                          from.nextChunk();
                          EXPECT_TRUE(from.chunkHasData());
                          EXPECT_EQ(depth, from.readInt());
                      }
                      for (int depth = 0; depth < 25; ++depth) {
                          from.endSubPacket();
                          EXPECT_TRUE(from.chunkHasData());
                      }
                      EXPECT_EQ(7, from.readInt());
                  }));
    }
}

// What stands where a number should is passed over, as atoi would take it, and the fields have an end.
TEST(HostileFile, AsciiFieldsThatAreNone) {
    for (char const * body : {"[ ", "\"x\" ", "< ", "{ ", "\\} ", "abc ", "  ", "\n\t ", ""}) {
        std::vector<int> values(1000, 1);
        EXPECT_EQ(ioBadData, statusOf(asciiFile(std::string("{ 2 0 ") + body + "}\n"),
                                      [&](ioReadContext & from) { from.readIntArray(values.data(), 1000); }))
            << body;
        EXPECT_THAT(values, testing::Each(0));
    }
    for (char const * body : {"abc", "\"abc", "\"abc\\", "\"", "] ", "> ", "5 \"a\" "}) {
        bool const read = std::string(body) == "5 \"a\" ";
        EXPECT_EQ(read ? ioGood : ioBadData, statusOf(asciiFile(std::string("{ 2 0 ") + body + "}\n"),
                                                      [&](ioReadContext & from) {
                                                          char const * const got = from.readCString();
                                                          EXPECT_EQ(read, got != nullptr);
                                                      }))
            << body;
    }
}

// The library's own type gives no file a way to the fatal path.
TEST(HostileFile, TextsThatAreMissingAreBadData) {
    FatalErrorsThrow const hook;
    for (char const * body : {"5 ", "5 ] ", "5 > ", "5 \n  [ \"abc\" ] ", "5 \"abc", ""}) {
        EXPECT_EQ(ioBadData, statusOf(asciiFile(std::string("{ 0 1 ") + body + "}\n"), {})) << body;
    }
    std::string packet = binaryPacket(1, number(5) + "abc");
    packet[0] = 0;
    EXPECT_EQ(ioBadData, statusOf(binaryFile(packet), {}));
}

TEST(HostileFile, TagsFromAboveAsciiPassAndOthersAreNamed) {
    EXPECT_EQ(ioGood, statusOf(asciiFile("{ 2 0 \xe9"
                                         "7 }\n",
                                         '2'),
                               [](ioReadContext & from) { EXPECT_EQ(7, from.readInt()); }));
    EXPECT_THAT(fatalTextOf([] {
                    statusOf(asciiFile("{ 2 0 ?7 }\n", '2'),
                             [](ioReadContext & from) { from.readUInt64Array(nullptr, 1); });
                }),
                testing::StartsWith("Packet file type mismatch:\n   got: (invalid type) (3f)\n"
                                    "   expected: UInt64Array (38)\n"));
}

TEST(HostileFile, BadPacketsAreDeliveredToTheirEnd) {
    struct Client : ioClientReadContext {
        using ioClientReadContext::ioClientReadContext;
        void prePacketRead() override { events += "pre "; }
        void postPacketRead() override { events += "post "; }
        std::string events;
    };
    Client * current = nullptr;
    Reader reader(asciiFile("{ 2 0 1 }\n{ 2 0 2 }\n{ 2 0 3 }\n"), [&](ioReadContext & from) {
        current->events += "read ";
        if (from.readInt() == 2) {
            from.badPacket();
            from.halt();
            EXPECT_TRUE(from.good());
        }
    });
    Client client(*reader.context);
    current = &client;
    EXPECT_EQ(ioBadData, reader.context->readFile(client));
    EXPECT_EQ("pre read post pre read post ", client.events);
    EXPECT_EQ(1, reader.context->getPacketCount());
}

TEST(HostileFile, AnnouncedSizesCostNothing) {
    std::string body = binaryPacket(0, "");
    body.replace(8, 4, number(INT32_MAX));
    std::string const file = binaryFile(body + std::string(100000, 'x'));
    EXPECT_TRUE(runsWithin(64, [&] { return statusOf(file, [](ioReadContext &) {}) == ioBadData; }));
}

// Numbers that lie apart cost about the same as numbers in a row.
TEST(HostileFile, ReferencesCostWhatTheyAreWorth) {
    for (int const step : {1, 3, 16, 2083, 42043, 65536}) {
        std::string body;
        for (std::int64_t i = 1; i <= 100000 && i * step < 0x7fff0000; ++i) {
            body += number(static_cast<std::int32_t>(i * step));
        }
        auto const count = static_cast<int>(body.size() / 4);
        std::string const file = binaryFile(binaryPacket(0, body));
        EXPECT_TRUE(runsWithin(96, [&] {
            return statusOf(file, [&](ioReadContext & from) {
                       for (int i = 0; i < count; ++i) {
                           from.useReference(from.readReference());
                       }
                   }) == ioGood;
        })) << step;
    }
}

TEST(HostileFile, TimeGrowsWithTheSizeOnly) {
    expectLinear(
        [](int n) {
            std::string body;
            for (int i = 1; i <= n && i < 51000; ++i) {
                body += number(i * 42043);
            }
            statusOf(binaryFile(binaryPacket(0, body)), [&](ioReadContext & from) {
                for (int i = 0; i < n; ++i) {
                    from.useReference(from.readReference());
                }
            });
        },
        6000);
    expectLinear(
        [](int n) {
            statusOf(asciiFile("{ 2 0 " + std::string(static_cast<std::size_t>(n), ' ') + "}\n"),
                     [&](ioReadContext & from) {
                         for (int i = 0; i < n; ++i) {
                             from.readInt();
                         }
                     });
        },
        10000);
    expectLinear(
        [](int n) {
            statusOf(asciiFile("{ 2 0 " + std::string(static_cast<std::size_t>(n), '\\') + "\\}}\n"),
                     [](ioReadContext & from) { from.readCString(); });
        },
        20000);
    // A run of tiny files behind one with many references that nothing leaves open.
    expectLinear(
        [](int n) {
            std::string packets;
            for (int i = 1; i <= n; ++i) {
                packets += "{ 2 0 " + std::to_string(i) + " }\n";
            }
            std::string file = asciiFile(packets);
            for (int i = 0; i < n / 4; ++i) {
                file += "^@\n1\n1 0 1\n1 2 4 8 4 8 4\n@\n@\n{ 1 0 }\n";
            }
            Reader reader(file, [](ioReadContext & from) { from.useReference(from.readReference()); });
            do {
                reader.read();
            } while (reader.context->reusePacketFile());
            EXPECT_EQ(n, reader.context->getPacketCount());
        },
        1000);
}
