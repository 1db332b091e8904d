// The map between the objects of a program and the reference numbers that stand for them in packet files.

#ifndef ioReferenceMap_h
#define ioReferenceMap_h

#include "Base/Utility/qvReferenceCount.h"
#include "Base/qvBaseConfig.h"

class ioClientReadContext;
class ioPacketType;

// On writing, gives each pointer a number, from 1 in the order in which pointers are first met; 0 is the null
// pointer. On reading, binds the numbers of the file to the objects that its packets build, keeps the locations that
// wait for a number's definition, and reports at the end what stayed open.
//
// Counted; held by the contexts that use it. Used by one thread at a time. No operation reports failure; numbers
// below 1, or from 0x7fff0000 up, are ignored. Numbers below
// 65536 have a table that reaches up to the largest of them; of those above, memory is in proportion to how many were
// used, some hundred bytes for each, however far apart they lie.
class QV_EXPORT ioReferenceMap : public qv::ReferenceCount {
public:
    // Takes the next free number and binds the pointer to it. Throws std::length_error when there is none left.
    virtual int newReference(void const * pointer) = 0;
    // Binds the pointer to the reference, whatever was bound to it before. Null is ignored.
    virtual void setDefinition(int reference, void const * pointer, bool alias) = 0;
    // 0 for null, -1 for a pointer that is unknown or was undefined.
    virtual int getReference(void const * pointer) = 0;
    virtual bool isDefined(int reference) = 0;
    virtual void * getDefinition(int reference) = 0;
    // The reference is now defined, by a packet of this type: locations that wait for it are filled.
    virtual void markDefined(int reference, ioPacketType const * type) = 0;
    // Counts a use of the reference without a location.
    virtual void markUsed(int reference, ioPacketType const * type, int clientValue) = 0;
    // For good: a later setDefinition binds a pointer but does not revive the reference.
    virtual void undefine(int reference) = 0;
    virtual void undefine(void const * pointer) = 0;
    // Makes the location null, counts a use, and fills the location now or when the reference is defined. The
    // location must stay where it is until then.
    virtual void resolve(int reference, void ** location, ioPacketType const * type, int clientValue) = 0;
    // Reports, in the order of the numbers, each location that waits for a live reference to the type that recorded
    // it, and each definition that was never used to the type that made it.
    virtual void resolveRemaining(ioClientReadContext & client) = 0;
    // Calls the function for each location that waits and was recorded by this type.
    virtual void reportUnresolved(ioPacketType * type, void (*function)(void *, int)) = 0;

protected:
    ~ioReferenceMap() override;
};

// A new map that nobody holds yet.
QV_EXPORT ioReferenceMap * ioPacketFileNewReferenceMap();

#endif
