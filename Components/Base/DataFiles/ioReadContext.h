// The reader of packet files: it hands each packet to its type, which pulls the fields out of the context.

#ifndef ioReadContext_h
#define ioReadContext_h

#include "Base/DataFiles/ioContext.h"
#include "Base/DataFiles/ioHeader.h"

#include <cstdint>

class ioBufferedStreamInput;
class ioClientReadContext;

// Reads one packet file, or a run of them, from one stream:
//
//     std::unique_ptr<ioReadContext> context(ioReadContextAlloc(stream, &registry));
//     if (!context) ... // no packet file
//     ioClientReadContext client(*context);
//     if (context->readFile(client) != ioGood) ...
//
// The fields of a packet are read in the order in which they were written, up to where the reader stops; the rest is
// skipped. A field behind the end of the current chunk or sub-packet reads as 0, false or an empty string (null in
// the ASCII forms): the file's writer did not know it yet. A field behind the end of the packet reads the same, and
// makes the packet bad: it is delivered to its end, and then readFile ends with ioBadData. What is asked outside
// packets sets ioFailed.
class QV_EXPORT ioReadContext : public ioContext {
public:
    ~ioReadContext() override;

    // Whether the chunk that nextChunk moved to holds data.
    virtual bool chunkHasData() = 0;

    // Binds the object that this packet builds to the packet's reference.
    virtual void definePacketReference(void * pointer);
    // Reads a reference and lets the location, the address of a pointer, receive the object: now when it is defined,
    // otherwise when it will be, and null until then. The location must stay where it is. The client's value comes
    // back in the reports of what stayed unresolved.
    virtual void readReferenceUsage(void * location, int clientValue);
    // Reads a reference and gives the object, null when it is not defined yet; nothing waits.
    virtual void * readReferenceUsage(int & reference);
    virtual void * readReferenceUsage();
    // Reads a reference and binds the object to it.
    virtual void readReferenceDefinition(void * pointer);
    // Reads a reference number. One from 0x7fff0000 up makes the packet bad and reads as 0.
    virtual int readReference();
    virtual void defineReference(int reference, void * pointer);
    // Enters a second pointer for a reference; the newest one is the definition.
    virtual void defineReferenceAlias(int reference, void * pointer);
    virtual void resolveReference(int reference, void * location, int clientValue);
    // Counts a use, so that the object is not reported as unreferenced.
    virtual void useReference(void * pointer);
    virtual void useReference(int reference);

    virtual bool readBool() = 0;
    virtual char readChar() = 0;
    virtual unsigned char readUChar() = 0;
    virtual short readShort() = 0;
    virtual unsigned short readUShort() = 0;
    virtual int readInt() = 0;
    virtual unsigned readUInt() = 0;
    virtual std::int64_t readInt64() = 0;
    virtual std::uint64_t readUInt64() = 0;
    virtual float readFloat() = 0;
    virtual double readDouble() = 0;
    // Binary forms: valid until the next packet is read. ASCII forms: valid until the next call on any ASCII reader of
    // the process.
    virtual char const * readCString() = 0;

    // Elements that are not there become 0; whether the packet is bad then is told above. A count below 1 stores
    // nothing.
    virtual void readBoolArray(bool * values, int count) = 0;
    virtual void readCharArray(char * values, int count) = 0;
    virtual void readUCharArray(unsigned char * values, int count) = 0;
    virtual void readShortArray(short * values, int count) = 0;
    virtual void readUShortArray(unsigned short * values, int count) = 0;
    virtual void readIntArray(int * values, int count) = 0;
    virtual void readUIntArray(unsigned * values, int count) = 0;
    virtual void readInt64Array(std::int64_t * values, int count) = 0;
    virtual void readUInt64Array(std::uint64_t * values, int count) = 0;
    virtual void readFloatArray(float * values, int count) = 0;
    virtual void readDoubleArray(double * values, int count) = 0;

    // One character of the body.
    virtual char readRawChar() = 0;

    void readBool(bool & value) { value = readBool(); }
    void readChar(char & value) { value = readChar(); }
    void readUChar(unsigned char & value) { value = readUChar(); }
    void readShort(short & value) { value = readShort(); }
    void readUShort(unsigned short & value) { value = readUShort(); }
    void readInt(int & value) { value = readInt(); }
    void readUInt(unsigned & value) { value = readUInt(); }
    void readInt64(std::int64_t & value) { value = readInt64(); }
    void readUInt64(std::uint64_t & value) { value = readUInt64(); }
    void readFloat(float & value) { value = readFloat(); }
    void readDouble(double & value) { value = readDouble(); }

    // Reads registry and packets up to the end packet. The result is the status: ioGood when the end packet was
    // reached.
    ioStatus readFile(ioClientReadContext & client);
    // After readFile: prepares for a following file in the same stream. True when there is one of the same form;
    // then call readFile again. Its registry must fit the numbers that the first one gave, and what earlier files
    // left unresolved or unreferenced is reported again at its end. False leaves the context halted.
    bool reusePacketFile();
    // Makes readFile stop behind the current packet, with ioHalted, or with the failure of a packet that was bad.
    void halt() { halted_ = true; }
    // The reference that the current packet defines, 0 for none; -1 before the first packet.
    int getPacketReference() const { return packetReference_; }
    // Packets that were passed through the life of this context, those with an unknown reference flag included, which
    // are not delivered.
    int getPacketCount() const { return packetCount_; }
    ioReadMethod getReadMethod() const { return readMethod_; }

    // Marks the current packet as bad, for clients who find values in it that cannot be.
    void badPacket();
    // Whether the current packet has been found bad so far, by a field that is not there or by badPacket.
    bool isPacketBad() const { return bad_; }

    // Ends the chunk that is open at this level and moves to the next one; chunkHasData tells whether it is there.
    void nextChunk();
    void startSubPacket();
    // Ends an open chunk of the sub-packet, and skips what was not read.
    void endSubPacket();

protected:
    ioReadContext(ioBufferedStreamInput & stream, ioReadMethod method);

private:
    void readPacket(ioClientReadContext & client);
    void deliverPacket(ioClientReadContext & client, int referenceFlag);
    void bindReference(int reference, void * pointer, bool alias);

    ioBufferedStreamInput & stream_;
    int packetReference_;
    bool referenceDefined_;
    bool bad_;
    bool halted_;
    ioPacketType const * eofType_;
    int packetCount_;
    ioReadMethod readMethod_;
};

// Reads the header of a packet file and makes the context that fits its form and byte order; null when there is no
// such header. The caller deletes the context; the stream must outlive it and not move before readFile. The registry
// may be null and associated later.
QV_EXPORT ioReadContext * ioReadContextAlloc(ioBufferedStreamInput & stream, ioPacketRegistry * registry);

#endif
