// The program qvpacket, run on files of the library's own writers and on damaged ones.

#include "DataFiles/PacketFileSupport.h"
#include "Support/RunProgram.h"
#include "Support/SeededRandom.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>
#include <sstream>

using namespace qvTest;

namespace {

class QvPacket : public testing::Test {
protected:
    Outcome run(std::string const & arguments) const { return runProgram(scratch_, QVPACKET_PROGRAM, arguments); }

    void put(std::string const & name, std::string const & bytes) const { writeBytes(scratch_.path(name), bytes); }

    // At the end of the test `check` goes through all these files at once and must say this of each, "" for nothing.
    void expectFault(std::string const & bytes, std::string const & fault) {
        std::string const name = "case." + std::to_string(numCases_++);
        put(name, bytes);
        caseNames_ += " " + name;
        caseFaults_ += fault.empty() ? "" : name + ": " + fault + "\n";
    }

    void TearDown() override {
        if (numCases_ > 0) {
            EXPECT_EQ(run("check" + caseNames_), (Outcome{caseFaults_.empty() ? 0 : 1, "", caseFaults_}));
        }
    }

    ScratchDirectory scratch_;

private:
    int numCases_ = 0;
    std::string caseNames_;
    std::string caseFaults_;
};

// Every kind of field, and chunks and sub-packets in all the places where they can stand.
void fillItem(ioWriteContext & writer) {
    static int const object = 0;
    char const text[] = "see {<[\"x\"]>}\\ \n\xC3\xA9\x1B[31m\xC2\x9B";
    writer.writeCStringPacket(text);
    writer.startPacket("demo.item", &object);
    writer.writeBool(true);
    writer.writeChar(-128);
    writer.writeUChar(255);
    writer.writeShort(-32768);
    writer.writeUShort(65535);
    writer.writeInt(std::numeric_limits<int>::min());
    writer.writeUInt(4294967295U);
    writer.writeInt64(std::numeric_limits<std::int64_t>::min());
    writer.writeUInt64(std::numeric_limits<std::uint64_t>::max());
    writer.writeFloat(-0.25F);
    writer.writeDouble(std::numeric_limits<double>::infinity());
    writer.writeReference(text, false);
    writer.writeReference(static_cast<void const *>(nullptr), false);
    writer.writeCString("");
    bool const bools[] = {true, false};
    writer.writeBoolArray(bools, 2);
    writer.writeCString("behind");
    writer.startChunk();
    writer.writeInt(1);
    writer.startSubPacket();
    writer.writeDouble(1.5);
    writer.startChunk();
    writer.writeCString("inner");
    writer.startChunk();
    writer.writeBoolArray(bools, 1);
    writer.endSubPacket();
    writer.writeBool(false);
    writer.writeInt(2);
    writer.startChunk();
    writer.writeInt(3);
    writer.endPacket();
}

void fillArrays(ioWriteContext & writer) {
    writer.startPacket("demo.arrays", nullptr);
    short const shorts[] = {258, -2};
    double const doubles[] = {1, -2.5, 3};
    writer.startChunk();
    writer.writeShortArray(shorts, 2);
    writer.startChunk();
    writer.writeInt(3);
    writer.writeDoubleArray(doubles, 3);
    writer.endPacket();
}

void fillBoth(ioWriteContext & writer) {
    fillItem(writer);
    fillArrays(writer);
}

std::string itemFile(Form form, std::function<void(ioWriteContext &)> const & fill = fillItem) {
    return writeFile(form, {"demo.item", "demo.arrays"}, fill);
}

// A dump without its heading, and without what depends on the encoding: where packets stand and how long they are.
std::string fieldsOf(std::string const & dump) {
    std::istringstream lines(dump);
    std::string fields;
    for (std::string line; std::getline(lines, line);) {
        std::size_t const colon = line.find(": ");
        if (line[0] != ' ' && colon != line.npos) {
            fields += line.substr(colon + 2, line.rfind(", ") - colon - 2) + "\n";
        } else if (!fields.empty()) {
            fields += line + "\n";
        }
    }
    return fields;
}

// What is left of a dump where nothing but strings shows its type, and without indentation.
std::string withoutTypes(std::string const & fields) {
    static std::string const numbers = " Bool Char UChar Short UShort Int UInt Int64 UInt64 Float Double Reference ";
    std::istringstream lines(fields);
    std::string values;
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find_first_not_of(' '));
        std::size_t const wordEnd = line.find(' ');
        if (wordEnd != line.npos && numbers.find(" " + line.substr(0, wordEnd + 1)) != numbers.npos) {
            line.erase(0, wordEnd + 1);
        }
        values += line == "BoolArray" ? "" : line + "\n";
    }
    return values;
}

constexpr char header[] = "^@\n1\n1 0 1\n1 2 4 8 4 8 4\n@\n";
constexpr char registryLines[] = "   0 packetFile_string\n   1 packetFile_EOF\n   2 demo.item\n@\n";
constexpr std::size_t asciiStart = sizeof header - 1 + sizeof registryLines - 1;

std::string replaced(std::string text, std::string const & what, std::string const & with) {
    return text.replace(text.find(what), what.size(), with);
}

// A whole file of packets as text.
std::string asciiFile(std::string const & packets, int method = 0) {
    return replaced(header, "1 0 1", "1 " + std::to_string(method) + " 1") + registryLines + packets + "{ 1 0 }\n";
}

// As this machine has it, which is little endian.
std::string little(std::uint32_t value) { return std::string(reinterpret_cast<char const *>(&value), sizeof value); }

std::string frame(std::uint32_t type, std::uint32_t flag, std::string const & body) {
    return little(type) + little(flag) + little(static_cast<std::uint32_t>(body.size())) + body;
}

std::string binaryFile(std::string const & packets, int method = 3) {
    return replaced(header, "1 0 1", "1 " + std::to_string(method) + " 1") + registryLines + packets + frame(1, 0, "");
}

constexpr std::size_t binaryBodyStart = asciiStart + 12;

} // namespace

TEST_F(QvPacket, TellsOfTheFieldsOfAllForms) {
    std::string const wanted = "packetFile_string\n"
                               "  Reference 1\n"
                               "  CString \"see {<[\\\"x\\\"]>}\\\\ \\n\xC3\xA9\\x1b[31m\\xc2\\x9b\"\n"
                               "demo.item\n"
                               "  Reference 2\n"
                               "  Bool 1\n"
                               "  Char -128\n"
                               "  UChar 255\n"
                               "  Short -32768\n"
                               "  UShort 65535\n"
                               "  Int -2147483648\n"
                               "  UInt 4294967295\n"
                               "  Int64 -9223372036854775808\n"
                               "  UInt64 18446744073709551615\n"
                               "  Float -0.25\n"
                               "  Double inf\n"
                               "  Reference 1\n"
                               "  Reference 0\n"
                               "  CString \"\"\n"
                               "  BoolArray\n"
                               "    Bool 1\n"
                               "    Bool 0\n"
                               "  CString \"behind\"\n"
                               "  chunk\n"
                               "    Int 1\n"
                               "    sub-packet\n"
                               "      Double 1.5\n"
                               "      chunk\n"
                               "        CString \"inner\"\n"
                               "      chunk\n"
                               "        BoolArray\n"
                               "          Bool 1\n"
                               "    Bool 0\n"
                               "    Int 2\n"
                               "  chunk\n"
                               "    Int 3\n"
                               "packetFile_EOF\n";
    for (Form const form : allForms) {
        SCOPED_TRACE(static_cast<int>(form));
        std::string const file = itemFile(form);
        expectFault(file, "");
        put("f", file);
        Outcome const dump = run("dump f");
        EXPECT_EQ(dump.status, 0) << dump.err;
        EXPECT_EQ(dump.out.find(isSwapped(form) ? "big endian" : "little endian"), dump.out.find(", ") + 2);
        if (isDebug(form)) {
            EXPECT_EQ(fieldsOf(dump.out), wanted);
        } else if (isAscii(form)) {
            EXPECT_EQ(withoutTypes(fieldsOf(dump.out)), withoutTypes(wanted));
        }
    }
}

TEST_F(QvPacket, ShowsBytesWhereTheFormTellsNoMore) {
    put("plain", itemFile(Form::binary, [](ioWriteContext & writer) {
            writer.startPacket("demo.item", "");
            writer.writeCString("0123456789abcdef\n");
            writer.endPacket();
        }));
    EXPECT_EQ(run("dump plain").out, "binary, little endian, version 1\n"
                                     "type 0 packetFile_string\ntype 1 packetFile_EOF\ntype 2 demo.item\n"
                                     "type 3 demo.arrays\n"
                                     "104: demo.item, 34 bytes\n"
                                     "  Reference 1\n"
                                     "  00000078  30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66  0123456789abcdef\n"
                                     "  00000088  0a 00                                            ..\n"
                                     "138: packetFile_EOF, 12 bytes\n");
    put("arrays", itemFile(Form::binaryDebug, fillArrays));
    EXPECT_EQ(fieldsOf(run("dump arrays").out),
              "demo.arrays\n"
              "  chunk\n"
              "    ShortArray\n"
              "      0000007b  02 01 fe ff                                      ....\n"
              "  chunk\n"
              "    Int 3\n"
              "    DoubleArray\n"
              "      0000008b  00 00 00 00 00 00 f0 3f 00 00 00 00 00 00 04 c0  .......?........\n"
              "      0000009b  00 00 00 00 00 00 08 40                          .......@\n"
              "packetFile_EOF\n");
    put("arrays", itemFile(Form::asciiDebug, fillArrays));
    EXPECT_EQ(fieldsOf(run("dump arrays").out), "demo.arrays\n"
                                                "  chunk\n    ShortArray\n      Short 258\n      Short -2\n"
                                                "  chunk\n    Int 3\n"
                                                "    DoubleArray\n      Double 1\n      Double -2.5\n      Double 3\n"
                                                "packetFile_EOF\n");
}

TEST_F(QvPacket, CountsPacketsByType) {
    put("f", asciiFile("{ 2 1 5 7 }\n"));
    EXPECT_EQ(run("show f").out, "form        ascii, version 1\n"
                                 "byte order  little endian\n"
                                 "registry    3 types\n"
                                 "header      87 bytes, with the registry\n"
                                 "    number   packets   objects         bytes  type\n"
                                 "         0         0         0             0  packetFile_string\n"
                                 "         1         1         0             8  packetFile_EOF\n"
                                 "         2         1         1            12  demo.item\n"
                                 "     total         2         1            20\n");

    // A registry that was left out, a second file behind the first, and a file that is cut behind a packet.
    std::string const bare = std::string(header) + "@\n{ 7 0 }\n{ 1 0 }\n";
    put("a", bare);
    put("b", bare + bare);
    put("c", bare.substr(0, bare.size() - 8));
    std::string const top = "form        ascii, version 1\nbyte order  little endian\nregistry    left out\n"
                            "header      29 bytes, with the registry\n"
                            "    number   packets   objects         bytes  type\n";
    std::string const seven = "         7         1         0             8  type 7\n";
    std::string const table = "         1         1         0             8  type 1\n" + seven +
                              "     total         2         0            16\n";
    EXPECT_EQ(run("show a b c"), (Outcome{1,
                                          "== a\n" + top + table + "== b\n" + top + table +
                                              "note: 45 bytes follow the end packet\n== c\n" + top + seven +
                                              "     total         1         0             8\n",
                                          "c: offset 37: the file ends without an end packet\n"}));
    EXPECT_EQ(run("check a b").status, 0);
}

TEST_F(QvPacket, FindsEveryCut) {
    for (Form const form : allForms) {
        std::string const file = itemFile(form, fillBoth);
        run("--version; rm -f cut.*");
        for (std::size_t length = 0; length < file.size(); ++length) {
            put("cut." + std::to_string(length), file.substr(0, length));
        }
        Outcome const result = run("check cut.*");
        EXPECT_EQ(result.status, 1);
        std::istringstream lines(result.err);
        std::size_t found = 0;
        for (std::string line; std::getline(lines, line); ++found) {
            std::size_t length = 0;
            std::size_t offset = 0;
            ASSERT_EQ(std::sscanf(line.c_str(), "cut.%zu: offset %zu: ", &length, &offset), 2) << line;
            EXPECT_LE(offset, length) << line;
        }
        EXPECT_EQ(found, file.size()) << static_cast<int>(form);
    }
}

TEST_F(QvPacket, TellsWhatIsWrongWithAHeader) {
    std::string const good = asciiFile("");
    struct {
        char const * what;
        char const * with;
        char const * fault;
    } const cases[] = {
        {"^@", "^A", "offset 1: the magic line of a packet file is missing"},
        {"\n1\n", "\nx\n", "offset 3: the version is not a number"},
        {"\n1\n", "\n1 \n", "offset 4: the version line is not a number alone"},
        {"1 0 1\n", "2 0 1\n", "offset 5: the byte order flag is neither 0 nor 1"},
        {"1 0 1\n", "1 4 1\n", "offset 7: the method is not 0, 1, 2 or 3"},
        {"1 0 1\n", "1 99999999999 1\n", "offset 7: the method is too large"},
        {"1 0 1\n", "1\t0 1\n", "offset 6: the format line is not three numbers with blanks between them"},
        {"1 0 1\n", "1 0 0\n", "offset 9: the format flag is not 1"},
        {"4 8 4\n@", "4 8\n@", "offset 22: the size line is not seven numbers with blanks between them"},
        {"8 4\n@", "8 4\n#", "offset 25: the end line of the header is missing"},
        {"   1 p", "   2 p", "offset 50: a line of the registry does not begin with the number 1"},
        {"   1 p", "1 p", "offset 50: a line of the registry does not begin with the number 1"},
        {"packetFile_string", "string", "offset 32: type 0 is not packetFile_string"},
        {"packetFile_EOF", "packetFile_End", "offset 55: type 1 is not packetFile_EOF"},
        {"demo.item", "packetFile_EOF", "offset 70: the name of type 2 stands twice"},
        {"demo.item", "demo item", "offset 79: there is white space in the name of a type"},
        {"demo.item", "", "offset 75: a type has no name"},
        {"@\n{", "@{", "offset 86: the end line of the registry is not complete"},
        {"   1 packetFile_EOF\n   2 demo.item\n", "", "offset 50: the registry has no packetFile_EOF"},
    };
    expectFault(good, "");
    for (auto const & c : cases) {
        expectFault(replaced(good, c.what, c.with), c.fault);
    }
    std::string const longest(83, 'n');
    expectFault(replaced(good, "demo.item", longest), "");
    expectFault(replaced(good, "demo.item", longest + "n"), "offset 75: the name of a type is longer than 83 bytes");
    expectFault(replaced(good, "demo.item", longest + longest),
                "offset 70: a line of the registry is longer than 95 bytes");
    // The sizes bind binary files only.
    expectFault(replaced(good, "1 2 4 8", "1 4 4 8"), "");
    expectFault(replaced(binaryFile("", 1), "1 2 4 8", "1 4 4 8"),
                "offset 13: the size of a type is not the one of a binary file");
}

TEST_F(QvPacket, TellsWhatIsWrongWithAnAsciiPacket) {
    struct {
        int method;
        char const * packet;
        std::size_t at; // in the packet
        char const * reason;
    } const cases[] = {
        {0, "{2 0 }\n", 1, "a packet does not begin with \"{ \""},
        {0, "\n", 0, "a packet does not begin with \"{ \""},
        {0, "{ -1 0 }\n", 2, "the type of a packet is not a number"},
        {0, "{ 3 0 }\n", 2, "type 3 is not in the registry"},
        {0, "{ 2  0 }\n", 4, "the reference flag is not a number"},
        {0, "{ 2 2 }\n", 4, "the reference flag is neither 0 nor 1"},
        {0, "{ 2 0}\n", 5, "there is no blank behind the reference flag"},
        {0, "{ 2 0 }", 7, "there is no newline behind the closing brace of a packet"},
        {0, "{ 1 1 5 }\n", 0, "the end packet has a reference"},
        {0, "{ 1 0 5 }\n", 6, "the end packet has a body"},
        {0, "{ 2 1 }\n", 6, "a packet does not begin with the reference that its frame tells of"},
        {0, "{ 2 1 -5 }\n", 6, "a packet does not begin with the reference that its frame tells of"},
        {0, "{ 2 1 5.5 }\n", 6, "what stands behind the tag of a field is no UInt"},
        {0, "{ 2 1 0 }\n", 6, "the reference of a packet is 0"},
        {0, "{ 2 1 2147418112 }\n", 6, "reference 2147418112 is too large"},
        {0, "{ 2 0 7}\n", 7, "there is no blank behind a field"},
        {0, "{ 2 0  7 }\n", 6, "there is no field where one should be"},
        {0, "{ 2 0 +7 }\n", 6, "a field is neither a number nor a string"},
        {0, "{ 2 0 0x7 }\n", 6, "a field is neither a number nor a string"},
        {0, "{ 2 0 1.e+05 }\n", 6, "a field is neither a number nor a string"},
        {0, "{ 2 0 1e+5 }\n", 6, "a field is neither a number nor a string"},
        {0, "{ 2 0 1,5 }\n", 6, "a field is neither a number nor a string"},
        {0, "{ 2 0 \"a }\n", 6, "a string has no end"},
        {0, "{ 2 0 \"a\"}\n", 9, "there is no blank behind a field"},
        {0, "{ 2 0 \"a<\" }\n", 8, "a character in a string lacks its backslash"},
        {0, "{ 2 0 \"\\a\" }\n", 7, "a backslash in a string protects nothing"},
        {0, "{ 2 0 [ ] }\n", 6, "there is no field where one should be"},
        {0, "{ 2 0 \n 7 }\n", 6, "a newline does not begin a chunk or a sub-packet"},
        {0, "{ 2 0 \n  [ 7 }\n", 6, "a chunk has no end"},
        {0, "{ 2 0 \n  < 7 }\n", 6, "a sub-packet has no end"},
        {0, "{ 2 0 \n  < 7 ] > }\n", 13, "a ] without its ["},
        {0, "{ 2 0 > }\n", 6, "a > without its <"},
        {0, "{ 2 0 \n  [ \n  [ ] ] }\n", 11, "a chunk stands directly in a chunk"},
        {2, "{ 2 0 7 }\n", 7, "\" \" is not the tag of a field"},
        {2, "{ 2 0 x7 }\n", 6, "\"x\" is not the tag of a field"},
        {2, "{ 2 0 \"a\" }\n", 6, "\"\\\"\" is not the tag of a field"},
        {2, "{ 2 0 sa }\n", 7, "there is no string behind the tag of a CString"},
        {2, "{ 2 0 i1.5 }\n", 7, "what stands behind the tag of a field is no Int"},
        {2, "{ 2 0 b2 }\n", 7, "a number does not fit a field of type Bool"},
        {2, "{ 2 0 c-129 }\n", 7, "a number does not fit a field of type Char"},
        {2, "{ 2 0 H-1 }\n", 7, "a number does not fit a field of type UShort"},
        {2, "{ 2 0 L18446744073709551616 }\n", 7, "a number does not fit a field of type UInt64"},
        {2, "{ 2 0 r5 }\n", 7, "there is no UInt behind the tag of a Reference"},
        {2, "{ 2 1 i5 }\n", 6, "a packet does not begin with the reference that its frame tells of"},
        {2, "{ 2 0 5i1 x }\n", 10, "\"x\" is not the tag of a field"},
    };
    for (auto const & c : cases) {
        expectFault(asciiFile(c.packet, c.method), "offset " + std::to_string(asciiStart + c.at) + ": " + c.reason);
    }
    expectFault(asciiFile("{ 2 0 \"\\\\}\n"), "offset 93: a string has no end");
    expectFault(replaced(asciiFile("{ 2 0 \\}\n"), "{ 1 0 }\n", ""), "offset 87: a packet has no closing brace");
    expectFault(asciiFile(std::string("{ 2 0 \"\0\" }\n", 12)), "offset 94: there is a zero byte in a string");
    for (char const * number : {"-0", "1e+05", "-1.25e-300", "inf", "-inf", "nan", "-nan", "18446744073709551616"}) {
        expectFault(asciiFile(std::string("{ 2 0 ") + number + " }\n"), "");
    }
}

TEST_F(QvPacket, TellsWhatIsWrongWithABinaryPacket) {
    struct {
        std::string packet;
        std::size_t at; // in the packet
        char const * reason;
    } const cases[] = {
        {frame(3, 0, ""), 0, "type 3 is not in the registry"},
        {frame(0xFFFFFFFF, 0, ""), 0, "type -1 is not in the registry"},
        {frame(2, 2, ""), 4, "the reference flag is neither 0 nor 1"},
        {little(2) + little(0) + little(0x80000000), 8, "the size of a packet is negative"},
        {little(2) + little(0) + little(13), 8, "a packet of 13 bytes has only 12 left in the file"},
        {frame(1, 1, ""), 0, "the end packet has a reference"},
        {frame(1, 0, "bx"), 12, "the end packet has a body"},
        {frame(2, 1, ""), 12, "a packet does not begin with the reference that its frame tells of"},
        {frame(2, 1, "I" + little(5)), 12, "a packet does not begin with the reference that its frame tells of"},
        {frame(2, 1, "r" + little(5)), 13, "there is no UInt behind the tag of a Reference"},
        {frame(2, 1, "rI" + little(0)), 14, "the reference of a packet is 0"},
        {frame(2, 0, "rI" + little(0x7fff0000)), 14, "reference 2147418112 is too large"},
        {frame(2, 0, "x"), 12, "\"x\" is not the tag of a field"},
        {frame(2, 0, "\x80"), 12, "\"\\x80\" is not the tag of a field"},
        {frame(2, 0, "i123"), 13, "a field of type Int is cut short"},
        {frame(2, 0, "b\x02"), 13, "a number does not fit a field of type Bool"},
        {frame(2, 0, "sabc"), 13, "a string has no end"},
        {frame(2, 0, "," + little(4)), 13, "the size of a chunk has no tag"},
        {frame(2, 0, ","), 13, "the size of a chunk has no tag"},
        {frame(2, 0, ",i123"), 14, "a field of type Int is cut short"},
        {frame(2, 0, ",i" + little(4)), 13, "the size of a chunk does not cover itself"},
        {frame(2, 0, ".i" + little(0xFFFFFFFF)), 13, "the size of a sub-packet does not cover itself"},
        {frame(2, 0, ".i" + little(6)), 13, "a sub-packet reaches past the end of what it stands in"},
        {frame(2, 0, ".i" + little(11) + ",i" + little(6)), 19, "a chunk reaches past the end of what it stands in"},
        {frame(2, 0, ",i" + little(11) + ",i" + little(5)), 18, "a chunk stands directly in a chunk"},
        {frame(2, 0, ",i" + little(8) + "sab" + std::string(1, 0)), 19, "a string has no end"},
        {frame(2, 0, ",i" + little(7) + "5?" + "x"), 20, "\"x\" is not the tag of a field"},
    };
    for (auto const & c : cases) {
        expectFault(binaryFile(c.packet), "offset " + std::to_string(asciiStart + c.at) + ": " + c.reason);
    }
    // The plain form looks at nothing but the frame and the reference.
    expectFault(binaryFile(frame(2, 1, little(5) + "x"), 1), "");
    expectFault(binaryFile(frame(2, 1, "abc"), 1),
                "offset " + std::to_string(binaryBodyStart) +
                    ": a packet does not begin with the reference that its frame tells of");
    expectFault(binaryFile(frame(2, 0, "5x")), "");
    expectFault(binaryFile("").substr(0, asciiStart + 11),
                "offset " + std::to_string(asciiStart + 11) + ": the file ends inside the frame of a packet");
}

// Whatever the bytes, the program ends by itself with one of its own answers.
TEST_F(QvPacket, SurvivesAnyBytes) {
    SeededRandom random;
    for (Form const form : allForms) {
        std::string const file = itemFile(form, fillBoth);
        constexpr int numFiles = 400;
        for (int i = 0; i < numFiles; ++i) {
            std::string changed = file;
            static constexpr char likely[] = "{}[]<>\"\\ \n,.iIrsbB5\xFF\x7F";
            std::size_t const from = packetsAt(file) - 8;
            for (int n = 1 + random.below(3); n > 0; --n) {
                auto const at = from + static_cast<std::size_t>(random.below(static_cast<int>(file.size() - from)));
                changed[at] =
                    random.oneIn(2) ? static_cast<char>(random.below(256)) : likely[random.below(sizeof likely)];
            }
            put("any." + std::to_string(i), changed);
        }
        Outcome const checked = run("check any.*");
        EXPECT_EQ(checked.status, 1);
        Outcome const dumped = run("dump any.*");
        EXPECT_EQ(dumped.status, 1);
        EXPECT_EQ(dumped.err, checked.err);
        EXPECT_EQ(run("show any.*").status & ~1, 0);
    }
}

TEST_F(QvPacket, TakesNoMoreThanTheFileIsWorth) {
    constexpr std::size_t depth = 200000;
    std::string nested;
    for (std::size_t i = 0; i < depth; ++i) {
        nested += "\n  < ";
    }
    put("unclosed", asciiFile("{ 2 0 " + nested + "}\n"));
    EXPECT_EQ(run("check unclosed").err, "unclosed: offset 1000088: a sub-packet has no end\n");
    for (std::size_t i = 0; i < depth; ++i) {
        nested += "> ";
    }
    put("nested", asciiFile("{ 2 0 " + nested + "}\n"));
    Outcome const dump = run("dump nested");
    EXPECT_EQ(dump.status, 0);
    EXPECT_LT(dump.out.size(), depth * 300);
    EXPECT_NE(dump.out.find(" at depth 200000\n"), std::string::npos);
}

TEST_F(QvPacket, AnswersToItsArguments) {
    EXPECT_EQ(run("--version").out, "qvpacket " QVPACKET_VERSION "\n");
    Outcome const help = run("--help");
    EXPECT_EQ(help.status, 0);
    for (char const * wrong : {"", "show", "check", "dump", "list f", "--check f"}) {
        EXPECT_EQ(run(wrong), (Outcome{2, "", help.out})) << wrong;
    }
    put("good", asciiFile(""));
    put("bad", "no packet file");
    EXPECT_EQ(run("check good nowhere bad ."), (Outcome{2, "",
                                                        "nowhere: cannot be read\n"
                                                        "bad: offset 0: the magic line of a packet file is missing\n"
                                                        ".: cannot be read\n"}));
    EXPECT_EQ(run("dump good > /dev/full"), (Outcome{2, "", "qvpacket: the output cannot be written\n"}));
}
