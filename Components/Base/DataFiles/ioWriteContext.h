// The writer of packet files: the client calls field writers, the form of the file decides what bytes they become.

#ifndef ioWriteContext_h
#define ioWriteContext_h

#include "Base/DataFiles/ioContext.h"
#include "Base/DataFiles/ioHeader.h"

#include <cstdint>

class ioBufferedStreamOutput;

// Writes one packet file to one stream:
//
//     std::unique_ptr<ioWriteContext> context(ioWriteContextAlloc(stream, ioWriteBinary, &registry));
//     context->startFile();
//     context->startPacket("demo.item", &item); // item can be referred to from now on
//     context->writeInt(item.size);
//     context->writeReference(item.owner, false);
//     context->endPacket();
//     context->endFile();
//     stream.close();
//     if (!context->good() || !stream.good()) ...
//
// A packet is built in memory and reaches the stream whole at endPacket. A packet may be started while another is
// open; it then stands in the file before the outer one. Field writers report nothing: a failure of the stream shows
// in the status behind endFile. What is written outside packets, a packet of an unregistered type, with sub-packets
// left open or beyond 2 GiB, and an end without a start set ioFailed and put nothing into the file.
class QV_EXPORT ioWriteContext : public ioContext {
public:
    ~ioWriteContext() override;

    // Writes the reference of the pointer, which gets a new one when it has none, and returns it. With define true
    // the current packet declares itself to be that object, as startPacket does for its pointer.
    virtual void writeReference(int reference, bool define);
    virtual int writeReference(void const * pointer, bool define);

    virtual void writeBool(bool value) = 0;
    virtual void writeChar(char value) = 0;
    virtual void writeUChar(unsigned char value) = 0;
    virtual void writeShort(short value) = 0;
    virtual void writeUShort(unsigned short value) = 0;
    virtual void writeInt(int value) = 0;
    virtual void writeUInt(unsigned value) = 0;
    virtual void writeInt64(std::int64_t value) = 0;
    virtual void writeUInt64(std::uint64_t value) = 0;
    virtual void writeFloat(float value) = 0;
    virtual void writeDouble(double value) = 0;
    // Up to the terminator; a null pointer writes the empty string.
    virtual void writeCString(char const * text) = 0;

    // The elements only: the reader must know their number, for example from a field of its own. A count below 1
    // writes no element.
    virtual void writeBoolArray(bool const * values, int count) = 0;
    virtual void writeCharArray(char const * values, int count) = 0;
    virtual void writeUCharArray(unsigned char const * values, int count) = 0;
    virtual void writeShortArray(short const * values, int count) = 0;
    virtual void writeUShortArray(unsigned short const * values, int count) = 0;
    virtual void writeIntArray(int const * values, int count) = 0;
    virtual void writeUIntArray(unsigned const * values, int count) = 0;
    virtual void writeInt64Array(std::int64_t const * values, int count) = 0;
    virtual void writeUInt64Array(std::uint64_t const * values, int count) = 0;
    virtual void writeFloatArray(float const * values, int count) = 0;
    virtual void writeDoubleArray(double const * values, int count) = 0;

    // One character of body text, escaped where the form needs it.
    virtual void writeRawChar(char c) = 0;
    // The header of this form.
    virtual ioHeader getHeader() const = 0;

    // Whether startFile writes the type lines. True at first; the reader of a file without them needs a registry
    // that gives out the same numbers by itself.
    void writePacketRegistry(bool write) { writeRegistry_ = write; }

    // Writes header and registry. Without a registry the status becomes ioFailed and nothing is written.
    void startFile();
    // Starts a packet. A pointer that is not null becomes the object that this packet defines; its reference is the
    // first field of the body.
    void startPacket(ioPacketType const * type, void const * pointer);
    void startPacket(char const * typeName, void const * pointer);
    void endPacket();
    // Ends the chunk that is open at this level, if any, and starts the next one.
    void startChunk();
    void startSubPacket();
    void endSubPacket();
    // A packet of its own for a text, which can be referred to by the text's address. Null writes nothing.
    void writeCStringPacket(char const * text);
    // Writes the end packet, unless the status is bad already. A packet that is still open sets ioFailed. The stream
    // is neither flushed nor closed.
    void endFile();

protected:
    explicit ioWriteContext(ioBufferedStreamOutput & stream);

private:
    void endChunk();

    ioBufferedStreamOutput & stream_;
    bool inFile_;
    bool writeRegistry_;
    ioPacketType const * stringType_;
};

// A context for that form of file, null for a value that is none of the four. The caller deletes it; the stream must
// outlive it. The registry may be null and associated later.
QV_EXPORT ioWriteContext * ioWriteContextAlloc(ioBufferedStreamOutput & stream, ioWriteMethod method,
                                               ioPacketRegistry * registry);

#endif
