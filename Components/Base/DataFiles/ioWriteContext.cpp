#include "Base/DataFiles/ioWriteContext.h"

#include "Base/DataFiles/Internal/ioPacketFileBuffer.h"
#include "Base/DataFiles/Internal/ioWriteContextAscii.h"
#include "Base/DataFiles/Internal/ioWriteContextBinary.h"
#include "Base/DataFiles/Internal/ioWriteContextDebug.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReferenceMap.h"

#include <memory>

ioWriteContext::ioWriteContext(ioBufferedStreamOutput & stream)
    : stream_(stream), inFile_(false), writeRegistry_(true), stringType_(nullptr) {}

ioWriteContext::~ioWriteContext() = default;

int ioWriteContext::writeReference(void const * pointer, bool define) {
    ioReferenceMap & map = *getReferenceMap();
    int reference = map.getReference(pointer);
    if (reference == -1) {
        reference = map.newReference(pointer);
    }
    writeReference(reference, define);
    return reference;
}

void ioWriteContext::writeReference(int reference, bool define) {
    if (define) {
        getReferenceMap()->markDefined(reference, currentType());
    }
    writeUInt(static_cast<unsigned>(reference));
}

void ioWriteContext::startFile() {
    inFile_ = true;
    if (!good()) {
        return;
    }
    ioPacketRegistry * const registry = getRegistry();
    if (!registry) {
        setStatus(ioFailed);
        return;
    }
    getHeader().writeHeader(stream_);
    registry->init();
    registry->writeRegistry(stream_, writeRegistry_);
    stringType_ = registry->lookup("packetFile_string");
    promoteStreamStatus(stream_);
}

void ioWriteContext::startPacket(char const * typeName, void const * pointer) {
    startPacket(getRegistry() ? getRegistry()->lookup(typeName) : nullptr, pointer);
}

// A packet without a type, or of a type without a number, is built like any other, so that starts and ends stay in
// balance, but never reaches the stream.
void ioWriteContext::startPacket(ioPacketType const * type, void const * pointer) {
    pushPacket();
    ioPacketFileBuffer & packet = *buffer();
    packet.reset();
    packet.setType(type);
    if (!type || type->getId() < 0) {
        setStatus(ioFailed);
        packet.invalidate();
    }
    packet.beginWrite(*this, pointer != nullptr, type);
    if (pointer) {
        writeReference(pointer, true);
    }
    if (type) {
        type->used();
    }
}

void ioWriteContext::endPacket() {
    if (!buffer()) {
        setStatus(ioFailed);
        return;
    }
    if (buffer()->level() > 0) {
        setStatus(ioFailed);
        invalidPacket();
    }
    while (buffer()->level() > 0) {
        endSubPacket();
    }
    endChunk();
    buffer()->endWrite(*this, stream_);
    if (buffer()->failed()) {
        setStatus(ioFailed);
    }
    popPacket();
}

void ioWriteContext::endChunk() {
    if (buffer()->chunkOpen()) {
        buffer()->setChunkOpen(false);
        buffer()->writeChunkEnd(*this);
    }
}

void ioWriteContext::startChunk() {
    if (!buffer()) {
        setStatus(ioFailed);
        return;
    }
    endChunk();
    buffer()->setChunkOpen(true);
    buffer()->writeChunkStart(*this);
}

void ioWriteContext::startSubPacket() {
    if (!buffer()) {
        setStatus(ioFailed);
        return;
    }
    buffer()->enterLevel();
    buffer()->writeSubPacketStart(*this);
}

void ioWriteContext::endSubPacket() {
    if (!buffer() || buffer()->level() == 0) {
        setStatus(ioFailed);
        return;
    }
    endChunk();
    buffer()->writeSubPacketEnd(*this);
    buffer()->leaveLevel();
}

void ioWriteContext::writeCStringPacket(char const * text) {
    if (!text) {
        return;
    }
    startPacket(stringType_, text);
    writeCString(text);
    endPacket();
}

void ioWriteContext::endFile() {
    if (!good()) {
        return;
    }
    if (buffer()) {
        setStatus(ioFailed);
    }
    auto * const eof = getRegistry() ? dynamic_cast<ioPacketEOF *>(getRegistry()->lookup("packetFile_EOF")) : nullptr;
    if (!eof) {
        setStatus(ioFailed);
        return;
    }
    eof->write(*this);
    endPacket();
    promoteStreamStatus(stream_);
    inFile_ = false;
}

ioWriteContext * ioWriteContextAlloc(ioBufferedStreamOutput & stream, ioWriteMethod method,
                                     ioPacketRegistry * registry) {
    std::unique_ptr<ioWriteContext> context;
    switch (method) {
    case ioWriteAscii:
        context = std::make_unique<ioWriteContextAscii>(stream);
        break;
    case ioWriteBinary:
        context = std::make_unique<ioWriteContextBinary>(stream);
        break;
    case ioWriteAsciiDebug:
        context = std::make_unique<ioWriteContextDebug<ioWriteContextAscii, ioWriteAsciiDebug>>(stream);
        break;
    case ioWriteBinaryDebug:
        context = std::make_unique<ioWriteContextDebug<ioWriteContextBinary, ioWriteBinaryDebug>>(stream);
        break;
    default:
        return nullptr;
    }
    context->associateRegistry(registry);
    return context.release();
}
