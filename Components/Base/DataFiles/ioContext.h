// What writers and readers of packet files have in common: the status, the registry, the packet that is open, and
// the map between pointers and reference numbers.

#ifndef ioContext_h
#define ioContext_h

#include "Base/Utility/qvReference.h"
#include "Base/qvBaseConfig.h"

class ioBufferedStream;
class ioPacketFileBuffer;
class ioPacketRegistry;
class ioPacketType;
class ioReferenceMap;

// Status of a packet-file context.
enum ioStatus : int {
    ioGood = 0,          // no failure
    ioFailed = 1,        // general failure, or a context used the wrong way
    ioOpenFailed = 2,    // the stream could not be opened
    ioEndOfFile = 3,     // the reader has met the end packet; never seen after readFile returns
    ioBadData = 4,       // the stream ended early, or what was read is not a packet file
    ioDiskFull = 5,      // the disk is full
    ioHalted = 6,        // halt stopped the reader
    ioChecksumFailed = 7 // data failed a checksum
};

// Base of all contexts. A failure sets the status, which then never becomes good again; where the stream has failed
// too, it is the stream's failure that the status tells in the end. A context belongs to one thread at a time. The
// registry and the stream that it works with are not its own and must outlive it.
class QV_EXPORT ioContext {
public:
    virtual ~ioContext();
    // After this the reference is dead: it is neither defined nor reported, and its pointer is unknown to the map.
    virtual void undefineReference(int reference);
    virtual void undefineReference(void * pointer);

    ioContext(ioContext const &) = delete;
    ioContext & operator=(ioContext const &) = delete;

    bool good() const { return status_ == ioGood; }
    ioStatus getStatus() const { return status_; }

    void associateRegistry(ioPacketRegistry * registry) { registry_ = registry; }
    ioPacketRegistry * getRegistry() const { return registry_; }
    // The type of that number in the registry; null if there is none, or no registry.
    ioPacketType * lookupType(int id) const;

    // Gives up the current packet: a writer drops it, a reader skips it. Nothing outside packets. A packet that is
    // dropped keeps the reference number that it has taken; what refers to it will stay unresolved.
    void invalidPacket();

    // The reference of a pointer: 0 for null, -1 for one that the map does not know or that was undefined.
    int getReference(void const * pointer) const;
    bool isReferenceDefined(int reference) const;
    bool isReferenceDefined(void const * pointer) const;
    // The pointer that defines the reference, null if there is none.
    void * getReferenceDefinition(int reference) const;
    // Calls the function, with the location and the client's value, for every location that was recorded by packets
    // of this type and is still waiting for its definition.
    void reportUnresolvedPtrs(ioPacketType * type, void (*function)(void *, int));
    // Replaces the context's map, so that several contexts share one and their files one numbering. Null is ignored.
    void associateReferenceMap(ioReferenceMap * map);
    ioReferenceMap * getReferenceMap() const;

    // Reports a fatal error and the packets that are open, runs the hook of ioPacketFileAbortInit, and ends the
    // process. It does not return, unless by an exception that the hook throws; context and stream can be destroyed
    // behind that.
    [[noreturn]] void fatalError();

protected:
    ioContext();

    // The packet buffer of this form of file.
    virtual ioPacketFileBuffer * newBuffer() = 0;
    // Tells the subclass the current buffer; null outside packets.
    virtual void setBuffer(ioPacketFileBuffer * buffer) = 0;

    // Sets the status unless a failure is there already.
    void setStatus(ioStatus status);
    void clearStatus() { status_ = ioGood; }
    // Takes over the status of the stream, unless that is good.
    void promoteStreamStatus(ioBufferedStream const & stream);

    void pushPacket();
    void popPacket();
    // The current packet's buffer, null outside packets.
    ioPacketFileBuffer * buffer() const { return buffer_; }
    int depth() const { return depth_; }
    ioPacketType const * currentType() const;

private:
    ioPacketRegistry * registry_;
    ioPacketFileBuffer * buffer_;
    qv::Reference<ioReferenceMap> reference_;
    ioPacketFileBuffer ** buffers_;
    int capacity_;
    int depth_;
    ioStatus status_;
};

#endif
