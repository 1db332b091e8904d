// The types of packets: each knows its name and number, and on reading decodes the packets of its kind.

#ifndef ioPacketType_h
#define ioPacketType_h

#include "Base/qvBaseConfig.h"

class ioClientReadContext;
class ioPacketRegistry;
class ioWriteContext;

// One type of packet. The name is the stable key by which files and programs agree; the number means something in
// one file and one registry only. Derive from it and override read to take packets in:
//
//     void PointType::read(ioClientReadContext & client) {
//         ioReadContext & context = client.getReadContext();
//         auto * point = new Point;
//         context.definePacketReference(point);
//         context.readDouble(point->x);
//         context.readReferenceUsage(&point->owner, 0);
//     }
//
// A type belongs to the registry that it was given to, and is used by one context at a time.
class QV_EXPORT ioPacketType {
public:
    // The name is 1 to 83 bytes without white space; it is copied. A type of any other name can be made but no
    // registry enters it.
    explicit ioPacketType(char const * name);
    virtual ~ioPacketType();
    // Takes the fields of the current packet. What it leaves unread is skipped. When the packet has a reference, read
    // must define it (ioReadContext::definePacketReference) or call ioContext::invalidPacket, which is what this
    // default does, so that packets of a plain type are skipped.
    virtual void read(ioClientReadContext & client);
    // At the end of a file: memory that a packet of this type defined, and that nothing in the file refers to. The
    // default does nothing.
    virtual void memoryNotReferenced(ioClientReadContext & client, void * memory);
    // At the end of a file: a location, recorded by a packet of this type, whose reference nobody defined. It holds
    // null. The last argument is what the client gave with the location. The default does nothing.
    virtual void hasUnresolvedPointer(ioClientReadContext & client, void * location, int clientValue);

    ioPacketType(ioPacketType const &) = delete;
    ioPacketType & operator=(ioPacketType const &) = delete;

    // -1 until a registry has given a number.
    int getId() const { return id_; }
    char const * getName() const { return name_; }
    // Packets of this type that were written or read so far.
    int getNumUsages() const { return usages_; }
    // Called by the contexts for each packet.
    void used() const { usages_ = static_cast<int>(static_cast<unsigned>(usages_) + 1); }

    // Whether a pointer of this type stayed unresolved, and whether memory of it stayed unreferenced.
    bool isUnresolved() const { return (flags_ & flagUnresolved) != 0; }
    bool isUnreferenced() const { return (flags_ & flagUnreferenced) != 0; }
    // Set the flag, then call the virtual operation.
    void handleUnresolvedPtr(ioClientReadContext & client, void * location, int clientValue);
    void handleUnreferencedMemory(ioClientReadContext & client, void * memory);

private:
    friend class ioPacketRegistry;
    static constexpr unsigned flagUnresolved = 1;
    static constexpr unsigned flagUnreferenced = 2;

    char * name_;
    int id_;
    mutable int usages_;
    unsigned flags_;
};

// A type whose packets are read by a function. With a null one they are skipped like those of an unknown type.
class QV_EXPORT ioReadPacketByFunction : public ioPacketType {
public:
    ioReadPacketByFunction(char const * name, void (*function)(ioClientReadContext &));
    void read(ioClientReadContext & client) override;

private:
    void (*function_)(ioClientReadContext &);
};

// A callback without arguments, for readers that know their context otherwise.
class QV_EXPORT ioReadCallback {
public:
    virtual ~ioReadCallback();
    virtual void read() = 0;
};

class QV_EXPORT ioGlobalReadCallback : public ioReadCallback {
public:
    explicit ioGlobalReadCallback(void (*function)());
    void read() override;

private:
    void (*function_)();
};

// A type whose packets are read by a callback, which it owns. Without one it is a type for writing: on reading its
// packets are skipped like those of an unknown type.
class QV_EXPORT ioSimplePacketType : public ioPacketType {
public:
    explicit ioSimplePacketType(char const * name, ioReadCallback * callback = nullptr);
    ~ioSimplePacketType() override;
    void read(ioClientReadContext & client) override;

private:
    ioReadCallback * callback_;
};

// "packetFile_string", type 0 of every file: a text that can be referred to. On reading the text is copied to memory
// of its own from malloc, and the packet's reference is defined to be that copy. Whoever takes the pointer owns the
// copy and frees it with free; the library does not.
class QV_EXPORT ioPacketString : public ioPacketType {
public:
    ioPacketString();
    void read(ioClientReadContext & client) override;
};

// "packetFile_EOF", type 1 of every file: the packet that ends it.
class QV_EXPORT ioPacketEOF : public ioPacketType {
public:
    ioPacketEOF();
    void read(ioClientReadContext & client) override;
    // Starts a packet of this type.
    virtual void write(ioWriteContext & context);
};

#endif
