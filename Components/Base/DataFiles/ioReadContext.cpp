#include "Base/DataFiles/ioReadContext.h"

#include "Base/DataFiles/Internal/ioPacketFileBuffer.h"
#include "Base/DataFiles/Internal/ioReadContextAscii.h"
#include "Base/DataFiles/Internal/ioReadContextBinary.h"
#include "Base/DataFiles/Internal/ioReadContextDebug.h"
#include "Base/DataFiles/Internal/ioReferenceTable.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioClientContext.h"
#include "Base/DataFiles/ioPacketFileError.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReferenceMap.h"

#include <memory>

ioReadContext::ioReadContext(ioBufferedStreamInput & stream, ioReadMethod method)
    : stream_(stream), packetReference_(-1), referenceDefined_(false), bad_(false), halted_(false), eofType_(nullptr),
      packetCount_(0), readMethod_(method) {}

ioReadContext::~ioReadContext() = default;

// --- references ---

int ioReadContext::readReference() {
    unsigned const number = readUInt();
    if (number >= unsigned{ioReferenceTable::endOfNumbers}) {
        badPacket();
        return 0;
    }
    return static_cast<int>(number);
}

void ioReadContext::bindReference(int reference, void * pointer, bool alias) {
    ioReferenceMap & map = *getReferenceMap();
    map.setDefinition(reference, pointer, alias);
    map.markDefined(reference, currentType());
    if (reference == packetReference_) {
        referenceDefined_ = true;
    }
}

void ioReadContext::defineReference(int reference, void * pointer) { bindReference(reference, pointer, false); }

void ioReadContext::defineReferenceAlias(int reference, void * pointer) { bindReference(reference, pointer, true); }

void ioReadContext::definePacketReference(void * pointer) { defineReference(packetReference_, pointer); }

void ioReadContext::readReferenceDefinition(void * pointer) { defineReference(readReference(), pointer); }

void ioReadContext::resolveReference(int reference, void * location, int clientValue) {
    getReferenceMap()->resolve(reference, static_cast<void **>(location), currentType(), clientValue);
}

void ioReadContext::readReferenceUsage(void * location, int clientValue) {
    resolveReference(readReference(), location, clientValue);
}

void * ioReadContext::readReferenceUsage(int & reference) {
    reference = readReference();
    if (reference == 0 || !isReferenceDefined(reference)) {
        return nullptr;
    }
    useReference(reference);
    return getReferenceDefinition(reference);
}

void * ioReadContext::readReferenceUsage() {
    int reference = 0;
    return readReferenceUsage(reference);
}

void ioReadContext::useReference(int reference) { getReferenceMap()->markUsed(reference, currentType(), 0); }

void ioReadContext::useReference(void * pointer) {
    int const reference = getReference(pointer);
    if (reference > 0) {
        useReference(reference);
    }
}

// --- chunks and sub-packets ---

void ioReadContext::badPacket() {
    if (buffer()) {
        bad_ = true;
    } else {
        setStatus(ioFailed);
    }
}

void ioReadContext::nextChunk() {
    if (!buffer()) {
        setStatus(ioFailed);
        return;
    }
    if (buffer()->chunkOpen()) {
        buffer()->setChunkOpen(false);
        buffer()->readChunkEnd(*this);
    }
    buffer()->readChunkStart(*this);
}

void ioReadContext::startSubPacket() {
    if (!buffer()) {
        setStatus(ioFailed);
        return;
    }
    buffer()->enterLevel();
    buffer()->readSubPacketStart(*this);
}

void ioReadContext::endSubPacket() {
    if (!buffer() || buffer()->level() == 0) {
        setStatus(ioFailed);
        return;
    }
    if (buffer()->chunkOpen()) {
        buffer()->setChunkOpen(false);
        buffer()->readChunkEnd(*this);
    }
    buffer()->readSubPacketEnd(*this);
    buffer()->leaveLevel();
}

// --- the reading loop ---

ioStatus ioReadContext::readFile(ioClientReadContext & client) {
    ioPacketRegistry * const registry = getRegistry();
    if (!registry) {
        setStatus(ioFailed);
        return getStatus();
    }
    registry->init();
    if (registry->readRegistry(stream_) != ioGood) {
        setStatus(ioBadData);
        return getStatus();
    }
    eofType_ = registry->lookup("packetFile_EOF");

    // Takes the buffer off also when the client's code, or the hook of a fatal error, leaves by an exception.
    struct OpenPacket {
        explicit OpenPacket(ioReadContext & context) : context_(context) { context_.pushPacket(); }
        ~OpenPacket() { context_.popPacket(); }
        OpenPacket(OpenPacket const &) = delete;
        OpenPacket & operator=(OpenPacket const &) = delete;
        ioReadContext & context_;
    };
    {
        OpenPacket const open(*this);
        while (good() && !halted_) {
            readPacket(client);
        }
    }
    if (halted_) {
        setStatus(ioHalted);
    }
    if (getStatus() == ioEndOfFile) {
        // Also when a report of the client's leaves by an exception.
        struct BecomeGood {
            ~BecomeGood() { context.clearStatus(); }
            ioReadContext & context;
        };
        BecomeGood const atEnd{*this};
        getReferenceMap()->resolveRemaining(client);
    }
    return getStatus();
}

void ioReadContext::readPacket(ioClientReadContext & client) {
    buffer()->reset();
    packetReference_ = 0;
    referenceDefined_ = false;
    bad_ = false;
    int const referenceFlag = buffer()->readFromStream(*this, stream_);
    if (!stream_.good()) {
        promoteStreamStatus(stream_);
        return;
    }
    ioPacketType const * const type = currentType();
    if (!type) {
        setStatus(ioBadData);
        return;
    }
    type->used();
    if (type == eofType_) {
        buffer()->endRead(*this);
        setStatus(ioEndOfFile);
        return;
    }
    deliverPacket(client, referenceFlag);
}

void ioReadContext::deliverPacket(ioClientReadContext & client, int referenceFlag) {
    auto * const type = const_cast<ioPacketType *>(currentType());
    if (referenceFlag == 0 || referenceFlag == 1) {
        if (referenceFlag == 1) {
            packetReference_ = readReference();
        }
        client.prePacketRead();
        type->read(client);
        client.postPacketRead();
    }
    buffer()->endRead(*this);
    if (bad_) {
        setStatus(ioBadData);
        return;
    }
    if (packetReference_ != 0 && !referenceDefined_ && buffer()->valid()) {
        ioPacketFileError("ioPacketFile: A packet type: '%s'\n", type->getName());
        ioPacketFileError("  had a reference associated with it but no \n");
        ioPacketFileError("  definition was provided by the client code.\n");
        ioPacketFileError("  The undefined reference is: %d.\n", packetReference_);
        fatalError();
    }
    ++packetCount_;
}

bool ioReadContext::reusePacketFile() {
    clearStatus();
    halted_ = false;
    ioHeader header;
    if (header.readHeader(stream_) && header.determineReadMethod() == readMethod_) {
        return true;
    }
    halted_ = true;
    return false;
}

ioReadContext * ioReadContextAlloc(ioBufferedStreamInput & stream, ioPacketRegistry * registry) {
    ioHeader header;
    if (!header.readHeader(stream)) {
        return nullptr;
    }
    ioReadMethod const method = header.determineReadMethod();
    std::unique_ptr<ioReadContext> context;
    switch (method) {
    case ioReadInvalid:
        return nullptr;
    case ioReadBinarySameEndian:
        context = std::make_unique<ioReadContextBinarySameEndian>(stream, method);
        break;
    case ioReadBinarySwapped:
        context = std::make_unique<ioReadContextBinarySwapped>(stream, method);
        break;
    case ioReadAscii:
        context = std::make_unique<ioReadContextAscii>(stream, method);
        break;
    case ioReadBinaryDebugSameEndian:
        context = std::make_unique<ioReadContextDebug<ioReadContextBinarySameEndian>>(stream, method);
        break;
    case ioReadBinaryDebugSwapped:
        context = std::make_unique<ioReadContextDebug<ioReadContextBinarySwapped>>(stream, method);
        break;
    case ioReadAsciiDebug:
        context = std::make_unique<ioReadContextDebug<ioReadContextAscii>>(stream, method);
        break;
    }
    context->associateRegistry(registry);
    return context.release();
}
