// makeCorpus FOLDER: writes one file of each form and byte order, as seeds for the fuzzing of the packet reader.

#include "DataFiles/PacketFileSupport.h"

#include <cstdio>

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
        qvTest::writeBytes(std::string(argv[1]) + "/" + names[static_cast<int>(form)], file);
    }
    return 0;
}
