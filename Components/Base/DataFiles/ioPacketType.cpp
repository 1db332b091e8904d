#include "Base/DataFiles/ioPacketType.h"

#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioReadContext.h"
#include "Base/DataFiles/ioWriteContext.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

char * mallocCopy(char const * text) {
    std::size_t const size = std::strlen(text) + 1;
    void * copy = std::malloc(size);
    if (!copy) {
        throw std::bad_alloc();
    }
    return static_cast<char *>(std::memcpy(copy, text, size));
}

} // namespace

ioPacketType::ioPacketType(char const * name) : name_(mallocCopy(name ? name : "")), id_(-1), usages_(0), flags_(0) {}

ioPacketType::~ioPacketType() { std::free(name_); }

void ioPacketType::read(ioClientReadContext & client) { client.getReadContext().invalidPacket(); }

void ioPacketType::memoryNotReferenced(ioClientReadContext &, void *) {}

void ioPacketType::hasUnresolvedPointer(ioClientReadContext &, void *, int) {}

void ioPacketType::handleUnresolvedPtr(ioClientReadContext & client, void * location, int clientValue) {
    flags_ |= flagUnresolved;
    hasUnresolvedPointer(client, location, clientValue);
}

void ioPacketType::handleUnreferencedMemory(ioClientReadContext & client, void * memory) {
    flags_ |= flagUnreferenced;
    memoryNotReferenced(client, memory);
}

ioReadPacketByFunction::ioReadPacketByFunction(char const * name, void (*function)(ioClientReadContext &))
    : ioPacketType(name), function_(function) {}

void ioReadPacketByFunction::read(ioClientReadContext & client) {
    if (function_) {
        function_(client);
    } else {
        ioPacketType::read(client);
    }
}

ioReadCallback::~ioReadCallback() = default;

ioGlobalReadCallback::ioGlobalReadCallback(void (*function)()) : function_(function) {}

void ioGlobalReadCallback::read() {
    if (function_) {
        function_();
    }
}

ioSimplePacketType::ioSimplePacketType(char const * name, ioReadCallback * callback)
    : ioPacketType(name), callback_(callback) {}

ioSimplePacketType::~ioSimplePacketType() { delete callback_; }

void ioSimplePacketType::read(ioClientReadContext & client) {
    if (callback_) {
        callback_->read();
    } else {
        ioPacketType::read(client);
    }
}

ioPacketString::ioPacketString() : ioPacketType("packetFile_string") {}

void ioPacketString::read(ioClientReadContext & client) {
    ioReadContext & context = client.getReadContext();
    char const * const text = context.readCString();
    if (!text) {
        context.badPacket();
    } else if (!context.isPacketBad() && context.getPacketReference() > 0) { // or nobody could ever take the copy
        context.definePacketReference(mallocCopy(text));
    }
}

ioPacketEOF::ioPacketEOF() : ioPacketType("packetFile_EOF") {}

void ioPacketEOF::read(ioClientReadContext &) {}

void ioPacketEOF::write(ioWriteContext & context) { context.startPacket(getName(), nullptr); }
