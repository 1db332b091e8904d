// A program outside the tree: text, a container, a failure, a signal, and a packet file that is written and read.

#include "Base/qvBase.h"

#include <cstdio>
#include <memory>

namespace {

struct Item {
    int size = 0;
    Item * owner = nullptr;
};

Item * readItem = nullptr;

class ItemType : public ioPacketType {
public:
    ItemType() : ioPacketType("client.item") {}
    void read(ioClientReadContext & client) override {
        ioReadContext & context = client.getReadContext();
        readItem = new Item;
        context.definePacketReference(readItem);
        context.readInt(readItem->size);
        context.readReferenceUsage(&readItem->owner, 0);
    }
};

class Registry : public ioPacketRegistry {
public:
    using ioPacketRegistry::ioPacketRegistry;
    void registerAllTypes() override { supportedType(new ItemType); }
};

bool writeAndRead(qvString::IString const & name) {
    Item item;
    item.size = 42;
    item.owner = &item;
    Registry writing(false);
    ioBufferedStreamOutput out;
    out.openFile(name);
    std::unique_ptr<ioWriteContext> writer(ioWriteContextAlloc(out, ioWriteAsciiDebug, &writing));
    writer->startFile();
    writer->startPacket("client.item", &item);
    writer->writeInt(item.size);
    writer->writeReference(item.owner, false);
    writer->endPacket();
    writer->endFile();
    out.close();
    if (!writer->good() || !out.good()) {
        return false;
    }

    Registry reading(true);
    ioBufferedStreamInput in;
    in.openFile(name);
    std::unique_ptr<ioReadContext> reader(ioReadContextAlloc(in, &reading));
    if (!reader) {
        return false;
    }
    ioClientReadContext client(*reader);
    bool const read = reader->readFile(client) == ioGood && readItem && readItem->size == 42;
    bool const cyclic = read && readItem->owner == readItem;
    delete readItem;
    return cyclic;
}

} // namespace

int main() {
    qvString::IString text(L"gr\x00fc\x00df");
    qv::vector<qvString::IString> texts;
    texts.append(text);
    qvUtil::Error const error(7, "no %S", texts[0].asWChar());
    qvRTB::SignalVoid signal;
    int calls = 0;
    signal.addCallback([&] { ++calls; });
    signal.emit();

    char const name[] = "client.qvp";
    bool const good =
        error && error.num() == 7 && calls == 1 && texts[0] == text && writeAndRead(qvString::IString(name));
    std::remove(name);
    std::puts(good ? "the client works" : "the client does not work");
    return good ? 0 : 1;
}
