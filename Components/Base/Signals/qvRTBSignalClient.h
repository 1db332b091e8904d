// The receiver's side of connections.

#ifndef qvRTBSignalClient_h
#define qvRTBSignalClient_h

#include "Base/Signals/qvRTBSignalBase.h"

namespace qvRTB {

// Ties connections to the life of the object that receives the callbacks: when the client dies, every connection that
// was made with it ends. It is a base or a member of the receiver. A base dies behind the members of the derived
// class, so a receiver that can be called while it is being destroyed holds its client as its last member.
//
// Connections are no part of a receiver's value: a copy has none, and an assignment changes none.
class SignalClient {
public:
    SignalClient() = default;
    SignalClient(SignalClient const &) {}
    SignalClient & operator=(SignalClient const &) { return *this; }
    ~SignalClient() = default;

private:
    friend class SignalBase;

    // The far halves of the connections; it is never emitted.
    SignalBase halves_;
};

} // namespace qvRTB

#endif
