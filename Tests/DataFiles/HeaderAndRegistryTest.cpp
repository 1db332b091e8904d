#include "DataFiles/MemoryStream.h"
#include "DataFiles/PacketFileSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace qvTest;

namespace {

std::string const header = "^@\n1\n1 1 1\n1 2 4 8 4 8 4\n@\n";

// What a registry reads from a text, as ioStatus.
int readRegistry(ioPacketRegistry & registry, std::string const & text) {
    MemoryStream memory(text);
    ioBufferedStreamInput stream;
    stream.openIOStream(&memory);
    return registry.readRegistry(stream);
}

std::string written(std::function<void(ioBufferedStreamOutput &)> const & write) {
    MemoryStream memory;
    ioBufferedStreamOutput stream;
    stream.openIOStream(&memory);
    write(stream);
    stream.close();
    return memory.bytes;
}

ioReadMethod readMethodOf(std::string const & text, bool & valid) {
    MemoryStream memory(text);
    ioBufferedStreamInput stream;
    stream.openIOStream(&memory);
    ioHeader read;
    EXPECT_FALSE(read.isValid());
    valid = read.readHeader(stream);
    EXPECT_EQ(valid, read.isValid());
    return read.determineReadMethod();
}

} // namespace

TEST(Header, IsWrittenByteForByte) {
    EXPECT_EQ(header, written([](ioBufferedStreamOutput & to) { ioHeader(ioWriteBinary).writeHeader(to); }));
}

TEST(Header, IsReadOnlyWhenItCanBe) {
    struct {
        std::string text;
        bool valid;
        ioReadMethod method;
    } const cases[] = {
        {header, true, ioReadBinarySameEndian},
        {"^@\n1\n0 1 1\n1 2 4 8 4 8 4\n@\n", true, ioReadBinarySwapped},
        {"^@\n1\n1 3 1\n1 2 4 8 4 8 8\n@\n", true, ioReadBinaryDebugSameEndian},
        {"^@\n1\n0 3 1\n1 2 4 8 4 8 4\n@\n", true, ioReadBinaryDebugSwapped},
        {"^@\n99\n-1 0 0\n9 9 9 9 9 9 9\n@\n", true, ioReadAscii},
        {"^@\n1\n0 2 1\n1 2 4 8 4 8 4\nmore of a later version\n@\n", true, ioReadAsciiDebug},
        {"^@\n1\n1 7 1\n1 2 4 8 4 8 4\n@\n", true, ioReadInvalid},
        {"^@\n1\n1 -1 1\n1 2 4 8 4 8 4\n@\n", true, ioReadInvalid},
        {"^@\n1\n1 1 0\n1 2 4 8 4 8 4\n@\n", false, ioReadBinarySameEndian},
        {"^@\n1\n1 1 1\n1 4 4 8 4 8 4\n@\n", false, ioReadBinarySameEndian},
        {"^@\n1\n1 0 1\n1 4 4 8 4 8 4\n@\n", true, ioReadAscii},
        {"^@\r\n1\n1 1 1\n1 2 4 8 4 8 4\n@\n", false, ioReadInvalid},
        {"@^\n1\n1 1 1\n1 2 4 8 4 8 4\n@\n", false, ioReadInvalid},
    };
    for (auto const & c : cases) {
        bool valid = false;
        EXPECT_EQ(c.method, readMethodOf(c.text, valid)) << c.text;
        EXPECT_EQ(c.valid, valid) << c.text;
    }
    for (std::size_t cut = 0; cut < header.size(); ++cut) {
        bool valid = true;
        readMethodOf(header.substr(0, cut), valid);
        EXPECT_FALSE(valid) << cut;
    }
    EXPECT_EQ(nullptr, Reader("", {}).context);
    EXPECT_EQ(nullptr, Reader("^@\n1\n1 7 1\n1 2 4 8 4 8 4\n@\n@\n", {}).context);
}

// The whole file as a text, to the byte.
TEST(PacketFileLayout, AsciiFileIsAsDocumented) {
    int item = 0;
    std::string const file = writeFile(Form::ascii, {"demo.item"}, [&](ioWriteContext & to) {
        for (int reference = 1; reference < 5; ++reference) {
            to.getReferenceMap()->newReference(&to + reference);
        }
        to.startPacket("demo.item", &item);
        to.writeInt(7);
        to.endPacket();
    });
    EXPECT_EQ("^@\n1\n1 0 1\n1 2 4 8 4 8 4\n@\n   0 packetFile_string\n   1 packetFile_EOF\n   2 demo.item\n@\n"
              "{ 2 1 5 7 }\n{ 1 0 }\n",
              file);
}

TEST(PacketFileLayout, FieldsHaveTheirBytes) {
    auto const body = [](Form form) {
        int object = 0;
        std::string const file = writeFile(form, {"t"}, [&](ioWriteContext & to) {
            to.startPacket("t", &object);
            to.writeBool(true);
            to.writeChar(-2);
            to.writeUChar(254);
            to.writeShort(-3);
            to.writeUShort(65533);
            to.writeInt(-4);
            to.writeUInt(4000000000u);
            to.writeInt64(-5);
            to.writeUInt64(6);
            to.writeFloat(0.1f);
            to.writeDouble(0.1);
            to.writeCString("a\"\\{b\n");
            to.writeCString(nullptr);
            to.writeReference(&object, false);
            bool const bools[] = {true, false};
            to.writeBoolArray(bools, 2);
            int const ints[] = {1, 2};
            to.writeIntArray(ints, 2);
            to.startChunk();
            to.startSubPacket();
            to.endSubPacket();
            to.endPacket();
        });
        return file.substr(packetsAt(file));
    };
    EXPECT_EQ(
        "{ 2 1 1 1 -2 254 -3 65533 -4 4000000000 -5 6 0.1 0.1 \"a\\\"\\\\\\{b\n\" \"\" 1 1 0 1 2 \n  [ \n  < > ] }\n"
        "{ 1 0 }\n",
        body(Form::ascii));
    EXPECT_EQ("{ 2 1 rI1 b1 c-2 C254 h-3 H65533 i-4 I4000000000 l-5 L6 f0.1 d0.1 s\"a\\\"\\\\\\{b\n\" s\"\" rI1 Bb1 b0 "
              "5i1 i2 \n  [ \n  < > ] }\n{ 1 0 }\n",
              body(Form::asciiDebug));

    auto const text = [](auto const &... parts) { return (std::string() + ... + std::string(parts)); };
    using std::string_literals::operator""s;
    std::string const end = "\1\0\0\0\0\0\0\0\0\0\0\0"s;
    std::string const plain = text("\1\0\0\0"s, "\1"s, "\xfe"s, "\xfe"s, "\xfd\xff"s, "\xfd\xff"s, "\xfc\xff\xff\xff"s,
                                   "\0\x28\x6b\xee"s, "\xfb\xff\xff\xff\xff\xff\xff\xff"s, "\6\0\0\0\0\0\0\0"s,
                                   "\xcd\xcc\xcc\x3d"s, "\x9a\x99\x99\x99\x99\x99\xb9\x3f"s, "a\"\\{b\n\0"s, "\0"s,
                                   "\1\0\0\0"s, "\1\0"s, "\1\0\0\0\2\0\0\0"s, ",\x9\0\0\0"s, ".\4\0\0\0"s);
    EXPECT_EQ(text("\2\0\0\0\1\0\0\0"s, std::string(1, static_cast<char>(plain.size())), "\0\0\0"s, plain, end),
              body(Form::binary));
    std::string const tagged =
        text("rI\1\0\0\0"s, "b\1"s, "c\xfe"s, "C\xfe"s, "h\xfd\xff"s, "H\xfd\xff"s, "i\xfc\xff\xff\xff"s,
             "I\0\x28\x6b\xee"s, "l\xfb\xff\xff\xff\xff\xff\xff\xff"s, "L\6\0\0\0\0\0\0\0"s, "f\xcd\xcc\xcc\x3d"s,
             "d\x9a\x99\x99\x99\x99\x99\xb9\x3f"s, "sa\"\\{b\n\0"s, "s\0"s, "rI\1\0\0\0"s, "Bb\1b\0"s,
             "5\1\0\0\0\2\0\0\0"s, ",i\xb\0\0\0"s, ".i\5\0\0\0"s);
    EXPECT_EQ(text("\2\0\0\0\1\0\0\0"s, std::string(1, static_cast<char>(tagged.size())), "\0\0\0"s, tagged, end),
              body(Form::binaryDebug));
}

TEST(Registry, NumbersAndNamesAreGivenOutOnce) {
    TestRegistry registry(false);
    auto * const refused = new ioPacketType("two words");
    auto * const twin = new ioPacketType("demo.item");
    registry.with("demo.item").with("demo.other");
    registry.init();
    registry.supportedType(refused);
    registry.supportedType(refused);
    registry.supportedType(twin);
    registry.supportedType(&registry.type(0));
    registry.supportedType(new ioPacketType(""));
    registry.supportedType(new ioPacketType(std::string(84, 'n').c_str()));
    registry.supportedType(new ioPacketType(std::string(83, 'n').c_str()));
    registry.init();
    EXPECT_EQ(-1, refused->getId());
    EXPECT_EQ(-1, twin->getId());
    EXPECT_EQ(&registry.type(0), registry.lookup("demo.item"));
    EXPECT_EQ(&registry.type(1), registry.lookup(3));
    EXPECT_EQ(nullptr, registry.lookup(-1));
    EXPECT_EQ(nullptr, registry.lookup(5));
    EXPECT_EQ(nullptr, registry.lookup("two words"));
    EXPECT_EQ(nullptr, registry.lookup(static_cast<char const *>(nullptr)));
    std::string const lines = "   0 packetFile_string\n   1 packetFile_EOF\n   2 demo.item\n   3 demo.other\n   4 " +
                              std::string(83, 'n') + "\n@\n";
    EXPECT_EQ(lines, written([&](ioBufferedStreamOutput & to) { registry.writeRegistry(to, true); }));
    EXPECT_EQ("@\n", written([&](ioBufferedStreamOutput & to) { registry.writeRegistry(to, false); }));
    TestRegistry reading(true);
    reading.with(std::string(83, 'n').c_str());
    reading.init();
    EXPECT_EQ(ioGood, readRegistry(reading, lines));
    EXPECT_EQ(4, reading.type(0).getId());
    // The same registry reads a further file only if that names the same types in the same order.
    EXPECT_EQ(ioGood, readRegistry(reading, lines));
    EXPECT_EQ(ioBadData, readRegistry(reading, "0 packetFile_EOF\n1 packetFile_string\n@\n"));
}

TEST(Registry, LinesAreCheckedForTheirSequence) {
    struct {
        char const * lines;
        ioStatus status;
    } const cases[] = {{"0 a\n1 b\n2 c\n@\n", ioGood},
                       {"@\n", ioGood},
                       {"7 a\n8 b\n@\n", ioGood},
                       {"-3 a\n-2 b\n@ anything\n", ioGood},
                       {"   0 a with more\n1 b\n@\n", ioGood},
                       {"0 a\n1 b\n3 c\n@\n", ioBadData},
                       {"0 a\n0 b\n@\n", ioBadData},
                       {"2147483647 a\n-2147483648 b\n@\n", ioBadData},
                       {"0 a\n1 a\n@\n", ioBadData},
                       {"0\n@\n", ioBadData},
                       {"\n@\n", ioBadData},
                       {"a 0\n@\n", ioBadData},
                       {"0 a\n", ioFailed},
                       {"", ioFailed},
                       {"0 a\n@", ioFailed}};
    for (auto const & c : cases) {
        TestRegistry registry(true);
        EXPECT_EQ(c.status, readRegistry(registry, c.lines)) << c.lines;
    }
    TestRegistry registry(true);
    EXPECT_EQ(ioBadData, readRegistry(registry, "0 " + std::string(200, 'n') + "\n@\n"));
    EXPECT_EQ(nullptr, registry.lookup(0));
    // A registry that was refused leaves no trace, and the next file finds its place.
    EXPECT_EQ(ioBadData, readRegistry(registry, "0 b\n1 a\n7 c\n@\n"));
    EXPECT_EQ(nullptr, registry.lookup("b"));
    EXPECT_EQ(ioGood, readRegistry(registry, "0 a\n1 b\n@\n"));
    EXPECT_EQ(ioBadData, readRegistry(registry, "0 a\n1 a\n@\n"));
    std::string many;
    for (int i = 0; i < 10002; ++i) {
        many += std::to_string(i) + ' ' + std::string(77, 'n') + std::to_string(100000 + i) + '\n';
    }
    TestRegistry large(true);
    EXPECT_EQ(ioGood, readRegistry(large, many + "@\n"));
}

TEST(Registry, ModulesRegisterThroughTheSignal) {
    static std::vector<int> read;
    read.clear();
    ioSimplePacketRegistry writing(false);
    auto const registerTypes = [](ioSimplePacketRegistry * registry) {
        registry->add("demo.silent");
        registry->add("demo.item", [] { read.push_back(1); });
    };
    writing.getRegisterSignal().addCallback(registerTypes);
    std::string const file = writeFile(Form::binary, writing, [](ioWriteContext & to) {
        int object = 0;
        for (char const * name : {"demo.silent", "demo.item", "demo.item"}) {
            to.startPacket(name, name[5] == 's' ? &object : nullptr);
            to.endPacket();
        }
    });
    ioSimplePacketRegistry reading(true);
    reading.getRegisterSignal().addCallback(registerTypes);
    Reader reader(file, reading);
    EXPECT_EQ(ioGood, reader.read());
    EXPECT_EQ(2u, read.size());
    EXPECT_EQ(1, reading.lookup("demo.silent")->getNumUsages());
}

TEST(Registry, FilesWithoutTypeLinesNeedTheSameNumbers) {
    TestRegistry registry(false);
    registry.with("t");
    std::string const file = written([&](ioBufferedStreamOutput & to) {
        auto const writer = makeWriter(to, Form::ascii, &registry);
        writer->writePacketRegistry(false);
        writer->startFile();
        writer->startPacket("t", nullptr);
        writer->endPacket();
        writer->endFile();
    });
    EXPECT_EQ("^@\n1\n1 0 1\n1 2 4 8 4 8 4\n@\n@\n{ 2 0 }\n{ 1 0 }\n", file);

    int calls = 0;
    TestRegistry same(false);
    same.with("t", [&](ioReadContext &) { ++calls; });
    EXPECT_EQ(ioGood, Reader(file, same).read());
    EXPECT_EQ(1, calls);
    TestRegistry fromFile(true);
    fromFile.with("t", [&](ioReadContext &) { ++calls; });
    EXPECT_EQ(ioBadData, Reader(file, fromFile).read());
    EXPECT_EQ(1, calls);
}
