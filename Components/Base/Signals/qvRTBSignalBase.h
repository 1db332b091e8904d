// The untyped core of all signals: a list of connections whose either end may go at any moment, also during a call.

#ifndef qvRTBSignalBase_h
#define qvRTBSignalBase_h

#include "Base/Signals/qvRTBFunction.h"
#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvRTB {

class SignalClient;

// What a connection is known by, from the call that made it until it ends. It has no operations; give it back to
// `disconnect` of the signal that it came from.
class Connection {
protected:
    Connection() = default;
    ~Connection() = default;
    Connection(Connection const &) = delete;
    Connection & operator=(Connection const &) = delete;
};

// The connections of a signal; the typed signals derive from it and add no data. It has no virtual operation: a signal
// is a member or a local, and is destroyed as what it is.
//
// A signal and whatever is connected to it belong to one thread at a time. Any operation may be called from within a
// callback, the destruction of the signal, of the client and of the running connection included.
class QV_EXPORT SignalBase {
public:
    SignalBase(SignalBase const &) = delete;
    SignalBase & operator=(SignalBase const &) = delete;

    // Connects for as long as the signal lives, or until `disconnect`. The signal owns `function` from here on, also
    // when memory runs out. A null `function` connects nothing and gives null. The typed signals narrow the parameter
    // to the callbacks that they can call.
    Connection * addCallback(FunctionBase * function);

    // Ends a connection of this signal and deletes its callback, which happens after the call when it is running. The
    // argument is searched for by its address alone, the latest connections first, and never looked into: a connection
    // of another signal or null does nothing. One that has ended does nothing either, as long as no newer connection
    // has taken its address.
    void disconnect(Connection * connection);

    // The length of the list. A connection that was ended while it runs is counted until its run is over.
    int numConnections() const;

    // Whether the list holds anything, counted as above.
    bool isConnected() const { return head_ != nullptr; }

    // Whether this is a connection of this signal that has not been ended.
    bool isConnected(Connection const * connection) const;

protected:
    // One end of a connection. A connection that is bound to a client has a second item in the client's list.
    class QV_NO_EXPORT connectionItem : public Connection {
    public:
        // Links the item in front of `list`. The other fields are the list's to fill in.
        explicit connectionItem(SignalBase * list);
        ~connectionItem() { delete function; }

        // A locked item stays in its list, and in memory, whatever happens to the connection. Throws
        // std::length_error when 65,535 nested emissions stand on the item already.
        void lock() {
            if (++lockCount == 0) [[unlikely]]
                refuseLock();
        }
        void unlock() {
            --lockCount;
            if (destroyPending) [[unlikely]]
                destroyUnlocked();
        }

        // Ends the connection on both sides. The item itself goes now, or with its last `unlock`.
        QV_EXPORT void destroy();

        void unlink();

        connectionItem * next;
        connectionItem * previous = nullptr;
        FunctionBase * function = nullptr; // owned; null in a client's half
        SignalBase * owner;                // the list that this item stands in; null once it has left it
        connectionItem * peer = nullptr;   // the other half
        std::uint16_t lockCount = 0;
        bool destroyPending = false;

    private:
        QV_EXPORT void destroyUnlocked();
        [[noreturn]] QV_EXPORT void refuseLock();
    };

    // Stands on one item after the other and keeps the one that it stands on alive. The next item is found after
    // the callback has returned and is locked before the current one is let go, because letting go can delete a
    // callback whose destructor disconnects others. No step touches the signal, which may be gone by then.
    class Cursor {
    public:
        explicit Cursor(SignalBase const & signal) : item_(signal.head_) {
            if (item_)
                item_->lock();
        }
        ~Cursor() {
            if (item_)
                item_->unlock();
        }
        Cursor(Cursor const &) = delete;
        Cursor & operator=(Cursor const &) = delete;

        bool isOnItem() const { return item_ != nullptr; }
        connectionItem & item() const { return *item_; }

        void advance() {
            connectionItem * const next = item_->next;
            if (next)
                next->lock();
            connectionItem * const passed = item_;
            item_ = next;
            passed->unlock();
        }

    private:
        connectionItem * item_;
    };

    SignalBase() = default;
    ~SignalBase() {
        if (head_)
            destroyAll();
    }

    // Connects as above, and until `client` dies.
    Connection * addCallback(FunctionBase * function, SignalClient & client);

    // Ends every connection whose callback calls a member function of this object.
    void disconnectInstance(void * instance);

    // The latest connection to this free function, null if there is none.
    Connection * findGlobalCallback(void * function) const;

    // The latest connection to this object that has not been ended, null if there is none.
    void * findInstance(void * instance) const;

private:
    friend class SignalClient;

    connectionItem * createConnectionItem() { return new connectionItem(this); }
    void destroyAll();

    connectionItem * head_ = nullptr;
};

} // namespace qvRTB

#endif
