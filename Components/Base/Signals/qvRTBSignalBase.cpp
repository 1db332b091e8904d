#include "Base/Signals/qvRTBSignalBase.h"

#include "Base/Signals/qvRTBSignalClient.h"

#include <memory>
#include <stdexcept>
#include <utility>

namespace qvRTB {

static_assert(sizeof(SignalClient) == sizeof(void *));

SignalBase::connectionItem::connectionItem(SignalBase * list) : next(list->head_), owner(list) {
    if (next)
        next->previous = this;
    list->head_ = this;
}

void SignalBase::connectionItem::unlink() {
    if (!owner)
        return;
    (previous ? previous->next : owner->head_) = next;
    if (next)
        next->previous = previous;
    next = previous = nullptr;
    owner = nullptr;
}

// The link between the halves is cut first, so that they do not end each other in turns. A client's half holds no
// callback and ends without running foreign code; a signal's half deletes its callback when nothing reaches it any
// more, because the callback's destructor may use the signal and the client, or destroy them.
void SignalBase::connectionItem::destroy() {
    if (connectionItem * const other = std::exchange(peer, nullptr)) {
        other->peer = nullptr;
        other->destroy();
    }
    if (lockCount != 0) {
        destroyPending = true;
        return;
    }
    unlink();
    delete this;
}

void SignalBase::connectionItem::destroyUnlocked() {
    if (lockCount == 0)
        destroy();
}

void SignalBase::connectionItem::refuseLock() {
    --lockCount;
    throw std::length_error("qvRTB: too many nested emissions of a signal");
}

// To everybody the list is empty from here on, yet the items stand in a list all the time: what one callback's
// destructor disconnects leaves it in order. An item that is locked loses its successor, which ends the emission that
// stands on it.
void SignalBase::destroyAll() {
    while (head_) {
        SignalBase dying;
        dying.head_ = std::exchange(head_, nullptr);
        for (connectionItem * item = dying.head_; item; item = item->next)
            item->owner = &dying;
        while (connectionItem * const item = dying.head_) {
            item->unlink();
            item->destroy();
        }
    }
}

Connection * SignalBase::addCallback(FunctionBase * function) {
    if (!function)
        return nullptr;
    std::unique_ptr<FunctionBase> owned(function);
    connectionItem * const item = createConnectionItem();
    item->function = owned.release();
    return item;
}

Connection * SignalBase::addCallback(FunctionBase * function, SignalClient & client) {
    if (!function)
        return nullptr;
    struct EndHalf {
        void operator()(connectionItem * item) const { item->destroy(); }
    };
    std::unique_ptr<FunctionBase> owned(function);
    std::unique_ptr<connectionItem, EndHalf> half(client.halves_.createConnectionItem());
    connectionItem * const item = createConnectionItem();
    item->function = owned.release();
    item->peer = half.release();
    item->peer->peer = item;
    return item;
}

void SignalBase::disconnect(Connection * connection) {
    for (connectionItem * item = head_; item; item = item->next)
        if (item == connection) {
            item->destroy();
            return;
        }
}

int SignalBase::numConnections() const {
    int count = 0;
    for (connectionItem const * item = head_; item; item = item->next)
        ++count;
    return count;
}

bool SignalBase::isConnected(Connection const * connection) const {
    for (connectionItem const * item = head_; item; item = item->next)
        if (item == connection)
            return !item->destroyPending;
    return false;
}

void SignalBase::disconnectInstance(void * instance) {
    for (Cursor cursor(*this); cursor.isOnItem(); cursor.advance())
        if (cursor.item().function->isInstance(instance))
            cursor.item().destroy();
}

Connection * SignalBase::findGlobalCallback(void * function) const {
    for (connectionItem * item = head_; item; item = item->next)
        if (item->function->isGlobalFunction(function))
            return item;
    return nullptr;
}

void * SignalBase::findInstance(void * instance) const {
    for (connectionItem * item = head_; item; item = item->next)
        if (!item->destroyPending && item->function->isInstance(instance))
            return static_cast<Connection *>(item);
    return nullptr;
}

} // namespace qvRTB
