#include "DataFilesBenchDocument.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioLargeArray.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"
#include "Base/DataFiles/ioReferenceMap.h"
#include "Base/DataFiles/ioWriteContext.h"
#include "Base/Strings/qvStringIString.h"
#include "Base/Utility/qvReference.h"

namespace bench {

namespace {

using PlainItem = PlainDocument::ItemType;

class Client : public ioClientReadContext {
public:
    Client(ioReadContext & context, PlainDocument & document) : ioClientReadContext(context), document_(document) {}
    PlainDocument & document() { return document_; }

private:
    PlainDocument & document_;
};

void readDocument(ioClientReadContext & client) {
    ioReadContext & context = client.getReadContext();
    PlainDocument & document = static_cast<Client &>(client).document();
    context.definePacketReference(&document);
    document.items.reserve(static_cast<std::size_t>(context.readInt()));
    document.doubles.resize(static_cast<std::size_t>(context.readInt()));
}

void readItem(ioClientReadContext & client) {
    ioReadContext & context = client.getReadContext();
    auto * const item = new PlainItem();
    static_cast<Client &>(client).document().items.push_back(item);
    context.definePacketReference(item);
    Scalars & scalars = item->scalars;
    scalars.flag = context.readBool();
    scalars.kind = static_cast<signed char>(context.readChar());
    scalars.level = context.readShort();
    scalars.count = context.readInt();
    scalars.mask = context.readUInt();
    scalars.id = context.readInt64();
    scalars.weight = context.readFloat();
    scalars.value = context.readDouble();
    for (PlainItem *& reference : item->references) {
        context.readReferenceUsage(&reference, 0);
    }
    item->name = context.readCString();
}

void readParcel(ioClientReadContext & client) {
    ioReadContext & context = client.getReadContext();
    auto * const document = static_cast<PlainDocument *>(context.readReferenceUsage());
    ioReadArrayParcel(context, document->doubles.data(), static_cast<int>(document->doubles.size()));
}

class Registry : public ioPacketRegistry {
public:
    using ioPacketRegistry::ioPacketRegistry;
    void registerAllTypes() override {
        supportedType(new ioReadPacketByFunction("bench.document", readDocument));
        supportedType(new ioReadPacketByFunction("bench.item", readItem));
        supportedType(new ioReadPacketByFunction("bench.parcel", readParcel));
        supportedType(new ioPacketType("bench.node"));
    }
};

void writeItem(ioWriteContext & context, ioPacketType const * type, PlainItem const & item) {
    context.startPacket(type, &item);
    Scalars const & scalars = item.scalars;
    context.writeBool(scalars.flag);
    context.writeChar(static_cast<char>(scalars.kind));
    context.writeShort(scalars.level);
    context.writeInt(scalars.count);
    context.writeUInt(scalars.mask);
    context.writeInt64(scalars.id);
    context.writeFloat(scalars.weight);
    context.writeDouble(scalars.value);
    for (PlainItem const * reference : item.references) {
        context.writeReference(reference, false);
    }
    context.writeCString(item.name.c_str());
    context.endPacket();
}

// Writes a file with whatever the function writes into it.
template <class Fill>
void writeFile(char const * path, ioWriteMethod method, Fill fill) {
    Registry registry(false);
    ioBufferedStreamOutput stream;
    stream.openFile(qvString::IString(path, qvString::UTF8));
    std::unique_ptr<ioWriteContext> const context(ioWriteContextAlloc(stream, method, &registry));
    context->startFile();
    fill(*context, registry);
    context->endFile();
    stream.close();
    if (!context->good() || !stream.good()) {
        fail("a packet file could not be written");
    }
}

void writeDoubles(ioWriteContext & context, PlainDocument const & document) {
    context.startPacket("bench.document", &document);
    context.writeInt(static_cast<int>(document.items.size()));
    context.writeInt(static_cast<int>(document.doubles.size()));
    context.endPacket();
    ioWriteLargeArray(context, "bench.parcel", &document, static_cast<int>(document.doubles.size()),
                      document.doubles.data());
}

template <ioWriteMethod method>
void write(PlainDocument & document, char const * path) {
    writeFile(path, method, [&document](ioWriteContext & context, Registry & registry) {
        writeDoubles(context, document);
        ioPacketType const * const type = registry.lookup("bench.item");
        for (PlainItem const * item : document.items) {
            writeItem(context, type, *item);
        }
    });
}

void read(PlainDocument & document, char const * path) {
    Registry registry(true);
    ioBufferedStreamInput stream;
    stream.openFile(qvString::IString(path, qvString::UTF8));
    std::unique_ptr<ioReadContext> const context(ioReadContextAlloc(stream, &registry));
    if (!context) {
        fail("a packet file has no header");
    }
    Client client(*context, document);
    if (context->readFile(client) != ioGood) {
        fail("a packet file could not be read");
    }
}

// A document without items.
PlainDocument & documentOfDoubles() {
    static PlainDocument document;
    document.doubles = sample().doubles;
    return document;
}

void doublesWrite(benchmark::State & state) {
    MemoryFile const file;
    PlainDocument const & document = documentOfDoubles();
    for (auto _ : state) {
        writeFile(file.path(), ioWriteBinary,
                  [&](ioWriteContext & context, Registry &) { writeDoubles(context, document); });
    }
}

void doublesRead(benchmark::State & state) {
    MemoryFile const file;
    writeFile(file.path(), ioWriteBinary,
              [](ioWriteContext & context, Registry &) { writeDoubles(context, documentOfDoubles()); });
    PlainDocument back;
    back.doubles.resize(static_cast<std::size_t>(numDoubles));
    for (auto _ : state) {
        read(back, file.path());
    }
    if (back.doubles != sample().doubles) {
        fail("the doubles that were read are not those that were written");
    }
}

void referencesWrite(benchmark::State & state) {
    auto const nodes = makeNodes();
    for (auto _ : state) {
        writeFile("/dev/null", ioWriteBinary, [&nodes](ioWriteContext & context, Registry & registry) {
            ioPacketType const * const type = registry.lookup("bench.node");
            for (auto const & node : nodes) {
                context.startPacket(type, node.get());
                for (Node const * used : node->uses) {
                    context.writeReference(used, false);
                }
                context.endPacket();
            }
        });
    }
}

void referenceMapAlone(benchmark::State & state) {
    auto const nodes = makeNodes();
    ioPacketType const type("bench.node");
    for (auto _ : state) {
        qv::Reference<ioReferenceMap> const map(ioPacketFileNewReferenceMap());
        long sum = 0;
        auto const numberOf = [&map](Node const * node) {
            int const known = map->getReference(node);
            return known == -1 ? map->newReference(node) : known;
        };
        for (auto const & node : nodes) {
            map->markDefined(numberOf(node.get()), &type);
            for (Node const * used : node->uses) {
                sum += numberOf(used);
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}

} // namespace

void addQvRows() {
    addDocumentRows("packets binary", "qv", Digits::all, write<ioWriteBinary>, read);
    addDocumentRows("packets ascii", "qv", Digits::ofText, write<ioWriteAscii>, read);
    benchmark::RegisterBenchmark("doubles alone write|1e6 doubles on a file in memory|qv", doublesWrite)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("doubles alone read|1e6 doubles on a file in memory|qv", doublesRead)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("reference map|100,000 pointers, four uses each|qv", referencesWrite)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("reference map alone|100,000 pointers, four uses each|qv", referenceMapAlone)
        ->Unit(benchmark::kMillisecond);
}

} // namespace bench
