// What a client's own code is handed with each packet: the context, and whatever state the client adds by deriving.

#ifndef ioClientContext_h
#define ioClientContext_h

#include "Base/qvBaseConfig.h"

class ioReadContext;
class ioWriteContext;

// Passed to readFile and on to each packet type's read. Derive from it to carry state between packets, such as the
// document under construction.
class QV_EXPORT ioClientReadContext {
public:
    explicit ioClientReadContext(ioReadContext & context) : context_(context) {}
    virtual ~ioClientReadContext();
    // Called before and behind each packet's read. They do nothing here.
    virtual void prePacketRead();
    virtual void postPacketRead();

    ioReadContext & getReadContext() const { return context_; }

private:
    ioReadContext & context_;
};

// The counterpart for a client's writing code.
class QV_EXPORT ioClientWriteContext {
public:
    explicit ioClientWriteContext(ioWriteContext & context) : context_(context) {}

    ioWriteContext & getWriteContext() const { return context_; }

private:
    ioWriteContext & context_;
};

#endif
