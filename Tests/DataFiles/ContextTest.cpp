#include "Base/DataFiles/ioLargeArray.h"
#include "DataFiles/PacketFileSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

using namespace qvTest;

// A writer that is used the wrong way says so, and the file stays one that can be read.
TEST(WriteContext, MisuseSetsTheStatusAndLeavesNoTrace) {
    static constexpr int ints[] = {1, 2};
    TestRegistry registry(false);
    registry.with("t");
    struct {
        char const * what;
        std::function<void(ioWriteContext &)> misuse;
    } const cases[] = {
        {"field outside packets", [](ioWriteContext & to) { to.writeInt(5); }},
        {"text outside packets", [](ioWriteContext & to) { to.writeCString(""); }},
        {"array outside packets", [](ioWriteContext & to) { to.writeIntArray(ints, 2); }},
        {"end without start", [](ioWriteContext & to) { to.endPacket(); }},
        {"chunk outside packets", [](ioWriteContext & to) { to.startChunk(); }},
        {"sub-packet outside packets", [](ioWriteContext & to) { to.startSubPacket(); }},
        {"end of no sub-packet",
         [](ioWriteContext & to) {
             to.startPacket("t", nullptr);
             to.endSubPacket();
             to.endPacket();
         }},
        {"unregistered type",
         [](ioWriteContext & to) {
             to.startPacket("unknown", nullptr);
             to.writeInt(1);
             to.endPacket();
         }},
        {"sub-packet left open",
         [](ioWriteContext & to) {
             to.startPacket("t", nullptr);
             to.startSubPacket();
             to.startChunk();
             to.endPacket();
         }},
        {"packet left open", [](ioWriteContext & to) { to.startPacket("t", nullptr); }},
    };
    for (Form const form : {Form::ascii, Form::binary, Form::asciiDebug, Form::binaryDebug}) {
        for (auto const & c : cases) {
            SCOPED_TRACE(c.what);
            ScratchDirectory const scratch;
            ioBufferedStreamOutput stream;
            stream.openFile(wide(scratch.path("file")));
            auto const writer = makeWriter(stream, form, &registry);
            writer->startFile();
            c.misuse(*writer);
            bool const leftOpen = std::string(c.what) == "packet left open";
            EXPECT_EQ(leftOpen ? ioGood : ioFailed, writer->getStatus());
            writer->endFile();
            EXPECT_EQ(ioFailed, writer->getStatus());
            stream.close();
            std::string const file = bytesOf(scratch.path("file"));
            EXPECT_EQ(leftOpen ? ioGood : ioBadData, Reader(file, {}).read());
            bool const innerOnly = std::string(c.what) == "end of no sub-packet";
            std::size_t const packet = isAscii(form) ? 8 : 12;
            EXPECT_EQ((leftOpen || innerOnly ? packet : 0), file.size() - packetsAt(file)) << file;
        }
    }
}

TEST(WriteContext, StatusesOfStreamAndRegistry) {
    ScratchDirectory const scratch;
    ioBufferedStreamOutput stream;
    stream.openFile(wide(scratch.path("file")));
    EXPECT_EQ(nullptr, ioWriteContextAlloc(stream, static_cast<ioWriteMethod>(4), nullptr));
    std::unique_ptr<ioWriteContext> writer(ioWriteContextAlloc(stream, ioWriteBinary, nullptr));
    writer->startFile();
    EXPECT_EQ(ioFailed, writer->getStatus());
    stream.close();
    EXPECT_EQ("", bytesOf(scratch.path("file")));

    TestRegistry registry(false);
    registry.with("t");
    std::vector<double> const values(5000);
    for (bool const leavesOneOpen : {false, true}) {
        stream.openFile(wide("/dev/full"));
        writer.reset(ioWriteContextAlloc(stream, ioWriteBinary, &registry));
        writer->startFile();
        if (leavesOneOpen) {
            writer->startPacket("t", nullptr);
        }
        writer->startPacket("t", nullptr);
        writer->writeDoubleArray(values.data(), 5000);
        writer->endPacket();
        EXPECT_EQ(ioGood, writer->getStatus());
        writer->endFile();
        EXPECT_EQ(ioDiskFull, writer->getStatus());
    }

    ioBufferedStreamOutput closed;
    writer.reset(ioWriteContextAlloc(closed, ioWriteAscii, &registry));
    writer->startFile();
    EXPECT_EQ(ioFailed, writer->getStatus());
}

TEST(ReadContext, StatusesOfStreamAndRegistry) {
    auto const nothing = [](ioWriteContext &) {};
    std::string const file = writeFile(Form::binary, {}, nothing);
    Reader reader(file, {});
    reader.context->associateRegistry(nullptr);
    EXPECT_EQ(ioFailed, reader.read());
    EXPECT_EQ(-1, reader.context->getPacketReference());

    // A type number behind the registry, and negative numbers and sizes.
    std::size_t const at = packetsAt(file);
    for (auto const & [offset, bytes] :
         {std::pair(std::size_t{0}, "\2\0\0\0"), std::pair(std::size_t{0}, "\xff\xff\xff\xff"),
          std::pair(std::size_t{8}, "\xff\xff\xff\xff"), std::pair(std::size_t{8}, "\xff\xff\xff\x7f")}) {
        std::string damaged = file;
        damaged.replace(at + offset, 4, std::string(bytes, 4));
        EXPECT_EQ(ioBadData, Reader(damaged, {}).read());
    }
    // Outside packets there is nothing to read.
    for (Form const form : {Form::ascii, Form::binary, Form::binaryDebug}) {
        Reader idle(writeFile(form, {}, nothing), {});
        EXPECT_EQ(0, idle.context->readInt());
        EXPECT_EQ(ioFailed, idle.context->getStatus());
        idle.context->nextChunk();
        idle.context->startSubPacket();
        idle.context->endSubPacket();
        idle.context->invalidPacket();
        EXPECT_FALSE(idle.context->chunkHasData());
    }
}

TEST(ReadContext, ReferencesOfDamagedFilesStaySmall) {
    for (unsigned const number : {0x7fff0000u, 0x7fffffffu, 0xffffffffu, 0x7ffeffffu}) {
        std::string const file = writePacket(Form::binary, [&](ioWriteContext & to) {
            to.writeUInt(number);
            to.writeUInt(number / 3);
        });
        void * location = &location;
        Reader reader(file, [&](ioReadContext & from) {
            from.readReferenceUsage(&location, 1);
            from.readReferenceUsage(&location, 2);
        });
        EXPECT_EQ(number < 0x7fff0000u ? ioGood : ioBadData, reader.read());
        EXPECT_EQ(nullptr, location);
        EXPECT_EQ(number < 0x7fff0000u ? 2u : 0u, reader.types.type(0).unresolved.size());
    }
}

TEST(ReadContext, ReferencesInAllTheirForms) {
    int objects[3] = {};
    std::string const file = writeFile(Form::asciiDebug, {"test.define", "test.use"}, [&](ioWriteContext & to) {
        to.startPacket("test.use", nullptr);
        to.writeReference(&objects[0], false);
        to.writeReference(&objects[0], false);
        to.writeReference(nullptr, false);
        to.endPacket();
        to.startPacket("test.define", &objects[0]);
        to.writeReference(&objects[1], true);
        to.endPacket();
        to.startPacket("test.use", nullptr);
        to.writeReference(&objects[0], false);
        to.writeReference(&objects[1], false);
        to.writeReference(nullptr, false);
        to.endPacket();
    });
    int uses = 0;
    int read[3] = {};
    void * early[2] = {read, read};
    TestRegistry reading(true);
    reading
        .with("test.define",
              [&](ioReadContext & from) {
                  EXPECT_EQ(nullptr, early[1]);
                  EXPECT_FALSE(from.isReferenceDefined(1));
                  from.definePacketReference(&read[0]);
                  EXPECT_EQ(&read[0], early[1]);
                  from.readReferenceDefinition(&read[1]);
                  from.defineReferenceAlias(2, &read[2]);
                  EXPECT_EQ(2, from.getReference(&read[1]));
                  EXPECT_EQ(2, from.getReference(&read[2]));
                  EXPECT_EQ(&read[2], from.getReferenceDefinition(2));
              })
        .with("test.use", [&](ioReadContext & from) {
            if (uses++ == 0) {
                int reference = -1;
                EXPECT_EQ(nullptr, from.readReferenceUsage(reference)); // does not wait
                EXPECT_EQ(1, reference);
                from.readReferenceUsage(&early[1], 5);
                from.readReferenceUsage(&early[0], 6);
                EXPECT_EQ(nullptr, early[0]);
            } else {
                EXPECT_EQ(&read[0], from.readReferenceUsage());
                EXPECT_EQ(&read[2], from.readReferenceUsage());
                EXPECT_EQ(nullptr, from.readReferenceUsage());
                EXPECT_TRUE(from.isReferenceDefined(&read[0]));
                EXPECT_FALSE(from.isReferenceDefined(&uses));
                from.undefineReference(&read[0]);
                EXPECT_FALSE(from.isReferenceDefined(1));
            }
        });
    Reader reader(file, reading);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(2, uses);
    EXPECT_TRUE(reading.type(0).unreferenced.empty());
}

TEST(ReadContext, StringsBecomeMemoryThatCanBeReferredTo) {
    char const shared[] = "shared {text}";
    for (Form const form : allForms) {
        std::string const file = writeFile(form, {"t"}, [&](ioWriteContext & to) {
            to.writeCStringPacket(nullptr);
            to.startPacket("t", nullptr);
            to.writeReference(shared, false);
            to.endPacket();
            to.writeCStringPacket(shared);
        });
        char * text = nullptr;
        EXPECT_EQ(ioGood, Reader(file, [&](ioReadContext & from) { from.readReferenceUsage(&text, 0); }).read());
        EXPECT_STREQ(shared, text);
        std::free(text);
    }
}

TEST(Contexts, ShareOneMapAndOneNumbering) {
    int objects[2] = {};
    qv::Reference<ioReferenceMap> const map(ioPacketFileNewReferenceMap());
    auto const fileWith = [&](int index) {
        return writeFile(Form::ascii, {"t"}, [&](ioWriteContext & to) {
            to.associateReferenceMap(&*map);
            to.startPacket("t", &objects[index]);
            to.writeReference(&objects[1 - index], false);
            to.endPacket();
        });
    };
    std::string const first = fileWith(0);
    std::string const second = fileWith(1);
    EXPECT_EQ("{ 2 1 1 2 }\n{ 1 0 }\n", first.substr(packetsAt(first)));
    EXPECT_EQ("{ 2 1 2 1 }\n{ 1 0 }\n", second.substr(packetsAt(second)));
    EXPECT_EQ(1, map->refs());
}

TEST(FatalError, NamesTheOpenPacketsAndRunsTheHook) {
    writeFile(Form::binary, {"t", "u"}, [](ioWriteContext & to) {
        to.startPacket("t", nullptr);
        to.startPacket("u", nullptr);
        to.startPacket("t", nullptr);
        EXPECT_EQ("ioPacketFile: Fatal error.  Aborting.\n  0: 2\n  1: 3\n", fatalTextOf([&] { to.fatalError(); }));
        to.endPacket();
        to.endPacket();
        to.endPacket();
    });
}

TEST(FatalErrorDeathTest, WithoutHooksItGoesToStandardErrorAndAborts) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            TestRegistry registry(false);
            ioBufferedStreamOutput stream;
            makeWriter(stream, Form::binary, &registry)->fatalError();
        },
        testing::KilledBySignal(SIGABRT), "^ioPacketFile: Fatal error.  Aborting.\n$");
}

namespace {

template <typename T>
void expectParcels() {
    for (Form const form : allForms) {
        for (int const count : {0, 1, 1023, 1024, 1025, 5000}) {
            T data[5000];
            for (int i = 0; i < count; ++i) {
                data[i] = static_cast<T>(i % 2 == 0 ? i * 3 : -i);
            }
            TestRegistry writing(false);
            writing.with("test.owner").with("test.parcel");
            std::string const file = writeFile(form, writing, [&](ioWriteContext & to) {
                to.startPacket("test.owner", &data);
                to.endPacket();
                ioWriteLargeArray(to, "test.parcel", &data, count, data);
            });
            EXPECT_EQ((count + 1023) / 1024, writing.type(1).getNumUsages());
            T got[5000];
            int owner = 0;
            int parcels = 0;
            TestRegistry reading(true);
            reading.with("test.owner", [&](ioReadContext & from) { from.definePacketReference(&owner); })
                .with("test.parcel", [&](ioReadContext & from) {
                    EXPECT_EQ(&owner, from.readReferenceUsage());
                    ++parcels % 2 == 0 ? ioReadArrayParcel(from, got) : ioReadArrayParcel(from, got, count);
                });
            EXPECT_EQ(ioGood, Reader(file, reading).read());
            EXPECT_TRUE(std::equal(data, data + count, got));
        }
    }
}

} // namespace

TEST(LargeArray, EveryElementTypeComesBackInEveryForm) {
#define QV_RUN(name, type, tag, arrayTag) expectParcels<type>();
    IO_FIELD_TYPES(QV_RUN)
#undef QV_RUN
}

TEST(LargeArray, ParcelsThatLieAboutTheirPlaceAreRefused) {
    struct {
        int start;
        int count;
        bool good;
    } const cases[] = {
        {0, 4, true},   {6, 4, true},   {-1, 4, false},   {7, 4, false},          {0, 0, false},
        {0, -1, false}, {0, 11, false}, {0, 1025, false}, {2147483647, 1, false}, {2147483647, 2147483647, false},
        {10, 1, false}, {9, 1, true}};
    for (auto const & c : cases) {
        std::string const file = writePacket(Form::binary, [&](ioWriteContext & to) {
            to.writeInt(c.start);
            to.writeInt(c.count);
            for (int i = 0; i < 2000; ++i) {
                to.writeInt(77);
            }
        });
        int values[10] = {};
        Reader reader(file, [&](ioReadContext & from) { ioReadArrayParcel(from, values, 10); });
        EXPECT_EQ(c.good ? ioGood : ioBadData, reader.read()) << c.start << ' ' << c.count;
        EXPECT_EQ(c.good ? c.count : 0, std::count(std::begin(values), std::end(values), 77));
    }
}

// A body that still lies in the stream's storage stays what it is when somebody else uses the stream, and a text stays
// until the next packet is read, even when the stream is closed.
TEST(ReadContext, PacketsStayWhateverHappensToTheStream) {
    for (Form const form : allForms) {
        SCOPED_TRACE(form);
        std::string const bytes = writeFile(form, {"t"}, [](ioWriteContext & to) {
            for (int i = 0; i < 3; ++i) {
                to.startPacket("t", nullptr);
                to.writeInt(12345);
                to.writeCString("a text");
                to.writeInt(54321);
                to.endPacket();
            }
        });
        void (*const uses[])(ioBufferedStreamInput &) = {[](ioBufferedStreamInput & stream) { stream.readChar(); },
                                                         [](ioBufferedStreamInput & stream) {
                                                             char block[70000];
                                                             stream.readData(block, sizeof block);
                                                         },
                                                         [](ioBufferedStreamInput & stream) { stream.seek(0); },
                                                         [](ioBufferedStreamInput & stream) { stream.close(); }};
        for (auto const use : uses) {
            int numRead = 0;
            char const * kept = nullptr;
            ioBufferedStreamInput * stream = nullptr;
            Reader reader(bytes, [&](ioReadContext & context) {
                use(*stream);
                EXPECT_EQ(12345, context.readInt());
                kept = context.readCString();
                EXPECT_EQ(54321, context.readInt());
                context.halt();
                ++numRead;
            });
            stream = &reader.stream;
            EXPECT_EQ(ioHalted, reader.read());
            EXPECT_EQ(1, numRead);
            reader.stream.close();
            EXPECT_STREQ("a text", kept);
        }
    }
}

// A type without a callback skips its packets, those with a reference too.
TEST(PacketTypes, WithoutACallbackSkipTheirPackets) {
    static int const object = 0;
    std::string const bytes = writeFile(Form::binary, {"function", "callback"}, [](ioWriteContext & to) {
        for (char const * const type : {"function", "callback"}) {
            to.startPacket(type, type == std::string("function") ? &object : static_cast<void const *>(type));
            to.writeInt(1);
            to.endPacket();
        }
    });
    ioSimplePacketRegistry registry(true);
    registry.getRegisterSignal().addCallback([](ioSimplePacketRegistry * to) {
        to->add("callback", nullptr);
        to->supportedType(new ioReadPacketByFunction("function", nullptr));
    });
    Reader reader(bytes, registry);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(2, reader.context->getPacketCount());
}
