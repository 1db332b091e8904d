// The list of packet types that a program knows, and their numbers in the file at hand.

#ifndef ioPacketRegistry_h
#define ioPacketRegistry_h

#include "Base/DataFiles/ioContext.h"
#include "Base/Signals/qvRTBSignal.h"

class ioBufferedStreamInput;
class ioBufferedStreamOutput;
class ioPacketRegistryImpl;
class ioPacketType;

// A registry owns the types that it is given. Built with fromFile false it gives out the numbers itself, in the order
// of registration, which is what a writer needs (and the reader of a file without type lines). Built with true it
// takes the numbers from the registry at the head of the file that is read, matching the types by their names.
//
// Numbers, once given, stay for the life of the registry: a further file that is read through it must name the same
// types in the same order. A registry is not owned by the contexts that use it, outlives them, and is used by one of
// them at a time.
class QV_EXPORT ioPacketRegistry {
public:
    explicit ioPacketRegistry(bool fromFile);
    virtual ~ioPacketRegistry();
    // Called once, by init: hands the client's types to supportedType.
    virtual void registerAllTypes() = 0;

    ioPacketRegistry(ioPacketRegistry const &) = delete;
    ioPacketRegistry & operator=(ioPacketRegistry const &) = delete;

    // Takes over the type. One whose name is not 1 to 83 bytes without white space, or stands here already, is kept
    // until the registry is destroyed but never entered: lookups do not find it and it gets no number.
    void supportedType(ioPacketType * type);
    // On the first call registers "packetFile_string", "packetFile_EOF" and the client's types. startFile and
    // readFile call it.
    void init();

    // The type of that number or name; null if there is none.
    ioPacketType * lookup(int id) const;
    ioPacketType * lookup(char const * name) const;

    // One line "%4d %s\n" for each number, if asked for, and the end of the registry.
    void writeRegistry(ioBufferedStreamOutput & stream, bool withTypes) const;
    // Numbers the types as the file's lines say. A name that nobody has registered gets a type whose packets are
    // skipped. ioBadData for lines that are out of sequence, name a type twice, or number a type otherwise than it is
    // numbered already; ioFailed when the stream ends or fails. Then the registry stays as it was.
    ioStatus readRegistry(ioBufferedStreamInput & stream);

private:
    void registerNumber(ioPacketType * type);
    bool enterName(ioPacketType * type);

    ioPacketRegistryImpl * impl_;
    bool initialised_;
    bool fromFile_;
};

// A registry that asks whoever is connected to its signal for the types, so that modules which do not know each other
// can share one file.
class QV_EXPORT ioSimplePacketRegistry : public ioPacketRegistry {
public:
    using Signal = qvRTB::SignalArg<ioSimplePacketRegistry *>;

    explicit ioSimplePacketRegistry(bool fromFile);
    ~ioSimplePacketRegistry() override;
    // Emits the signal with this registry.
    void registerAllTypes() override;

    // Connect to it before the registry is first used, and answer with add or supportedType.
    Signal & getRegisterSignal() { return signal_; }

    // A type that is only written; its packets are skipped on reading.
    void add(char const * name);
    // A type whose packets are read by the function.
    void add(char const * name, void (*function)());

private:
    Signal signal_;
};

#endif
