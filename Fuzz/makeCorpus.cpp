// makeCorpus FOLDER: writes seeds for the fuzz targets into the folder's folders: a packet file of each form and byte
// order, packages, and some data through each filter.

#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPackageFile.h"
#include "DataFiles/PacketFileSupport.h"

#include <cstdio>

namespace {

std::string words(int count) {
    std::string text;
    for (unsigned n = 1; count > 0; --count) {
        n = n * 1664525 + 1013904223;
        text.append("abcdefghij", n >> 20 & 7).append(n % 16 == 0 ? "\n" : " ");
    }
    return text;
}

void writeThroughFilters(std::string const & folder) {
    std::pair<char const *, std::string> const samples[] = {
        {"empty", ""}, {"zeros", std::string(3000, '\0')}, {"short", words(30)}, {"words", words(3000)}};
    std::pair<char const *, void (ioBufferedStream::*)(bool)> const filters[] = {
        {"compress", &ioBufferedStream::compress},
        {"checksum", &ioBufferedStream::checksum},
        {"encrypt", &ioBufferedStream::encrypt}};
    for (auto const & [filter, operation] : filters) {
        for (auto const & [name, data] : samples) {
            ioBufferedStreamOutput out;
            out.openFile(qvTest::wide(folder + "/" + filter + "/" + name));
            (out.*operation)(true);
            out.writeData(data.data(), static_cast<int>(data.size()));
            (out.*operation)(false);
            out.writeString("behind");
            out.close();
        }
    }
}

// Entries plain and compressed, a hole, and one with nothing.
void writePackages(std::string const & folder) {
    std::string const sample = folder + "/packages/sample";
    std::string const source = folder + "/source";
    ioPackageFile package;
    bool isMade = !package.open(qvTest::wide(sample));
    std::pair<char const *, std::string> const entries[] = {
        {"dir/plain", words(5)}, {"gone", words(40)}, {"dir/packed", words(200)}, {"empty", ""}};
    for (auto const & [name, text] : entries) {
        qvTest::writeBytes(source, text);
        isMade = isMade && !package.addEntry(qvTest::wide(source), qvTest::wide(name), text.size() > 500);
    }
    isMade = isMade && !package.deleteEntry(qvTest::wide("gone")) && !package.update();
    package.close();
    std::remove(source.c_str());
    ioPackageFile none;
    isMade = isMade && !none.open(qvTest::wide(folder + "/packages/none")) && !none.update();
    if (!isMade) {
        std::fputs("the packages cannot be made\n", stderr);
    }
}

} // namespace

int main(int argc, char ** argv) {
    if (argc != 2) {
        std::fputs("usage: makeCorpus FOLDER\n", stderr);
        return 2;
    }
    char const * const names[] = {"ascii",       "binary",        "asciiDebug",
                                  "binaryDebug", "binarySwapped", "binaryDebugSwapped"};
    for (qvTest::Form const form : qvTest::allForms) {
        qvTest::TestRegistry registry(false);
        registry.with("t").with("u");
        int objects[3] = {};
        std::string const file = qvTest::writeFile(form, registry, [&](ioWriteContext & to) {
            to.startPacket("t", &objects[0]);
            to.writeReference(&objects[1], false);
            to.startChunk();
            to.writeBool(true);
            to.writeInt(-5);
            to.writeDouble(0.1);
            to.writeCString("a \"{text}\"");
            to.startChunk();
            to.startSubPacket();
            to.writeUInt64(~0ull);
            to.startChunk();
            to.writeShort(7);
            to.endSubPacket();
            to.endPacket();
            to.writeCStringPacket("text");
            to.startPacket("u", &objects[1]);
            to.writeInt(0);
            to.writeInt(3);
            to.writeIntArray(objects, 3);
            to.endPacket();
        });
        qvTest::writeBytes(std::string(argv[1]) + "/packets/" + names[static_cast<int>(form)], file);
    }
    writeThroughFilters(argv[1]);
    writePackages(argv[1]);
    return 0;
}
