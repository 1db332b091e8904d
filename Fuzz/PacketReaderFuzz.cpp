// The packet reader on any bytes, in whatever form their header names. Whatever comes, it ends with a status or with a
// fatal error that the hook turns into an exception.

#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioLargeArray.h"
#include "Base/DataFiles/ioPacketFileError.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"
#include "MemoryInput.h"

#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <set>

namespace {

struct FatalError {};

// What the client reads from each packet follows from a seed in the input's last bytes, so that the fuzzer finds
// readers that fit the file and readers that do not.
class Client : public ioClientReadContext {
public:
    Client(ioReadContext & context, std::uint32_t seed) : ioClientReadContext(context), state_(seed | 1) {}
    ~Client() override {
        for (void * text : texts_) {
            std::free(text);
        }
    }

    void postPacketRead() override {
        ioReadContext & context = getReadContext();
        void * const defined = context.getReferenceDefinition(context.getPacketReference());
        if (defined && !own_.count(defined)) {
            texts_.insert(defined);
        }
    }

    void readPacket() {
        ioReadContext & context = getReadContext();
        if (context.getPacketReference() > 0) {
            context.definePacketReference(newObject());
        }
        int depth = 0;
        for (unsigned steps = below(24); steps > 0; --steps) {
            depth += readStep(context, depth);
        }
        for (; depth > 0 && below(4) != 0; --depth) {
            context.endSubPacket();
        }
    }

    void ** newObject() {
        objects_.push_back(nullptr);
        own_.insert(&objects_.back());
        return &objects_.back();
    }

private:
    unsigned below(unsigned bound) {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 17;
        state_ ^= state_ << 5;
        return state_ % bound;
    }

    // The change of the depth.
    int readStep(ioReadContext & context, int depth) {
        double array[64];
        auto const count = static_cast<int>(below(8));
        switch (below(30)) {
        case 0:
            context.nextChunk();
            return 0;
        case 1:
            context.startSubPacket();
            return 1;
        case 2:
            if (depth == 0) {
                return 0;
            }
            context.endSubPacket();
            return -1;
        case 3:
            context.readReferenceUsage(newObject(), 1);
            return 0;
        case 4:
            context.readReferenceUsage();
            return 0;
        case 5:
            context.readReferenceDefinition(newObject());
            return 0;
        case 6:
            context.undefineReference(context.readReference());
            return 0;
        case 7: {
            char const * const text = context.readCString();
            total_ += text ? std::strlen(text) : 0;
            return 0;
        }
        case 8:
            context.readBool();
            return 0;
        case 9:
            context.readChar();
            return 0;
        case 10:
            context.readUChar();
            return 0;
        case 11:
            context.readShort();
            return 0;
        case 12:
            context.readUShort();
            return 0;
        case 13:
            context.readInt();
            return 0;
        case 14:
            context.readUInt();
            return 0;
        case 15:
            context.readInt64();
            return 0;
        case 16:
            context.readUInt64();
            return 0;
        case 17:
            context.readFloat();
            return 0;
        case 18:
            context.readDouble();
            return 0;
        case 19:
            context.readBoolArray(reinterpret_cast<bool *>(array), count);
            return 0;
        case 20:
            context.readCharArray(reinterpret_cast<char *>(array), count);
            return 0;
        case 21:
            context.readShortArray(reinterpret_cast<short *>(array), count);
            return 0;
        case 22:
            context.readIntArray(reinterpret_cast<int *>(array), count);
            return 0;
        case 23:
            context.readInt64Array(reinterpret_cast<std::int64_t *>(array), count);
            return 0;
        case 24:
            context.readFloatArray(reinterpret_cast<float *>(array), count);
            return 0;
        case 25:
            context.readDoubleArray(array, count);
            return 0;
        case 26:
            ioReadArrayParcel(context, array, 64);
            return 0;
        case 27:
            context.readRawChar();
            return 0;
        case 28:
            context.invalidPacket();
            return 0;
        default:
            total_ += context.chunkHasData() ? 1 : 0;
            return 0;
        }
    }

    std::uint32_t state_;
    std::deque<void *> objects_;
    std::set<void *> own_;
    std::set<void *> texts_;
    std::size_t total_ = 0;
};

class Registry : public ioPacketRegistry {
public:
    using ioPacketRegistry::ioPacketRegistry;
    void registerAllTypes() override {
        auto const read = [](ioClientReadContext & client) { static_cast<Client &>(client).readPacket(); };
        for (char const * name : {"test.program", "t", "u"}) {
            supportedType(new ioReadPacketByFunction(name, read));
        }
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    ioPacketFileErrorInit([](char *) {});
    ioPacketFileAbortInit([] { throw FatalError(); });
    std::uint32_t seed = 0;
    std::memcpy(&seed, data + (size - std::min(size, sizeof seed)), std::min(size, sizeof seed));
    MemoryInput stream(data, size);
    Registry registry(seed % 2 == 0);
    std::unique_ptr<ioReadContext> const context(ioReadContextAlloc(stream, &registry));
    if (!context) {
        return 0;
    }
    Client client(*context, seed);
    try {
        do {
            context->readFile(client);
        } while (context->reusePacketFile());
    } catch (FatalError const &) {
    }
    return 0;
}
