// The one implementation of the reference map.

#ifndef ioReferenceMapImpl_h
#define ioReferenceMapImpl_h

#include "Base/Containers/qvBlockAllocator.h"
#include "Base/DataFiles/Internal/ioPointerTable.h"
#include "Base/DataFiles/Internal/ioReferenceTable.h"
#include "Base/DataFiles/ioReferenceMap.h"

class ioReferenceMapImpl : public ioReferenceMap {
public:
    ioReferenceMapImpl();

    int newReference(void const * pointer) override;
    void setDefinition(int reference, void const * pointer, bool alias) override;
    int getReference(void const * pointer) override;
    bool isDefined(int reference) override;
    void * getDefinition(int reference) override;
    void markDefined(int reference, ioPacketType const * type) override;
    void markUsed(int reference, ioPacketType const * type, int clientValue) override;
    void undefine(int reference) override;
    void undefine(void const * pointer) override;
    void resolve(int reference, void ** location, ioPacketType const * type, int clientValue) override;
    void resolveRemaining(ioClientReadContext & client) override;
    void reportUnresolved(ioPacketType * type, void (*function)(void *, int)) override;

    ioReferenceTable const & table() const { return table_; }

protected:
    ~ioReferenceMapImpl() override;

private:
    struct Entry {
        void const * pointer;
        int reference;
    };

    void report(int reference, ioClientReadContext & client);
    void reportWaiting(int reference, ioClientReadContext & client);
    ioPointerTable & pointers();

    // A reader hardly ever asks for the number of a pointer, so what it defines is only noted down. The first such
    // question, which a writer asks at once, enters it all into the table.
    qv::vector<Entry> noted_;
    bool noting_ = true;
    ioPointerTable pointers_;
    ioReferenceTable table_;
    qv::BlockAllocator waitingNodes_;
    // Numbers that may have something to report: they began to wait, or were defined before any use. In no order, and
    // some of them twice.
    qv::vector<int> open_;
    int next_ = 0;
    int numUndefined_ = 0;
};

#endif
