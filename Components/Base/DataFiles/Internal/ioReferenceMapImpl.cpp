#include "Base/DataFiles/Internal/ioReferenceMapImpl.h"

#include "Base/Containers/qvVector.h"
#include "Base/DataFiles/ioPacketType.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

namespace {

constexpr int waitingNodesInBlock = 100;

// A location is the address of a pointer of the client's own type.
void fill(void * location, void * pointer) {
    if (location) {
        std::memcpy(location, &pointer, sizeof pointer);
    }
}

void countUse(ioReferenceRecord & record) { record.uses = static_cast<int>(static_cast<unsigned>(record.uses) + 1); }

} // namespace

ioReferenceMapImpl::ioReferenceMapImpl() : waitingNodes_(sizeof(ioWaitingLocation), waitingNodesInBlock) {}

ioReferenceMapImpl::~ioReferenceMapImpl() = default;

ioPointerTable & ioReferenceMapImpl::pointers() {
    if (noting_) [[unlikely]] {
        for (Entry const & entry : noted_) {
            pointers_.set(entry.pointer, entry.reference);
        }
        noting_ = false;
        noted_ = qv::vector<Entry>();
    }
    return pointers_;
}

int ioReferenceMapImpl::newReference(void const * pointer) {
    // A map that is shared with a reader may hold numbers ahead of those given out here.
    do {
        if (next_ + 1 == ioReferenceTable::endOfNumbers) {
            throw std::length_error("ioReferenceMap: no more reference numbers");
        }
        ++next_;
    } while (table_.find(next_));
    setDefinition(next_, pointer, false);
    return next_;
}

void ioReferenceMapImpl::setDefinition(int reference, void const * pointer, bool alias) {
    if (!pointer || !ioReferenceTable::isNumber(reference)) {
        return;
    }
    ioReferenceRecord & record = table_.touch(reference);
    if (noting_) {
        noted_.append(Entry{pointer, reference});
    } else {
        pointers_.set(pointer, reference);
    }
    record.pointer = const_cast<void *>(pointer);
    record.alias = alias;
}

int ioReferenceMapImpl::getReference(void const * pointer) {
    if (!pointer) {
        return 0;
    }
    int const reference = pointers().find(pointer);
    if (reference == 0 || (numUndefined_ > 0 && !table_.find(reference)->valid)) {
        return -1;
    }
    return reference;
}

bool ioReferenceMapImpl::isDefined(int reference) {
    ioReferenceRecord const * const record = table_.find(reference);
    return record && record->valid && record->defined;
}

void * ioReferenceMapImpl::getDefinition(int reference) {
    ioReferenceRecord const * const record = table_.find(reference);
    return record ? record->pointer : nullptr;
}

void ioReferenceMapImpl::markDefined(int reference, ioPacketType const * type) {
    if (!ioReferenceTable::isNumber(reference)) {
        return;
    }
    ioReferenceRecord & record = table_.touch(reference);
    if (record.uses == 0 && !record.defined) {
        open_.append(reference);
    }
    record.defined = true;
    record.definingType = type;
    while (ioWaitingLocation * const node = record.waiting) {
        fill(node->location, record.pointer);
        record.waiting = node->next;
        waitingNodes_.free(node);
    }
}

void ioReferenceMapImpl::markUsed(int reference, ioPacketType const *, int) {
    if (ioReferenceTable::isNumber(reference)) {
        countUse(table_.touch(reference));
    }
}

void ioReferenceMapImpl::undefine(int reference) {
    if (!ioReferenceTable::isNumber(reference)) {
        return;
    }
    ioReferenceRecord & record = table_.touch(reference);
    numUndefined_ += record.valid ? 1 : 0;
    record.valid = false;
    record.pointer = nullptr;
}

void ioReferenceMapImpl::undefine(void const * pointer) {
    if (pointer) {
        undefine(pointers().find(pointer));
    }
}

void ioReferenceMapImpl::resolve(int reference, void ** location, ioPacketType const * type, int clientValue) {
    fill(location, nullptr);
    if (!ioReferenceTable::isNumber(reference)) {
        return;
    }
    ioReferenceRecord & record = table_.touch(reference);
    countUse(record);
    if (record.defined) {
        fill(location, record.pointer);
        return;
    }
    if (!record.waiting) {
        open_.append(reference);
    }
    record.waiting = new (waitingNodes_.alloc()) ioWaitingLocation{record.waiting, location, type, clientValue};
}

// The client may define the reference while it is told of the locations; then the rest has been filled and is not
// reported. So the nodes are not walked while client code runs.
void ioReferenceMapImpl::reportWaiting(int reference, ioClientReadContext & client) {
    qv::vector<ioWaitingLocation> waiting;
    for (ioWaitingLocation const * node = table_.find(reference)->waiting; node; node = node->next) {
        waiting.append(*node);
    }
    for (ioWaitingLocation const & entry : waiting) {
        if (!table_.find(reference)->waiting) {
            return;
        }
        if (entry.type) {
            const_cast<ioPacketType *>(entry.type)->handleUnresolvedPtr(client, entry.location, entry.clientValue);
        }
    }
}

void ioReferenceMapImpl::report(int reference, ioClientReadContext & client) {
    if (table_.find(reference)->valid && table_.find(reference)->waiting) {
        reportWaiting(reference, client);
    }
    ioReferenceRecord const & record = *table_.find(reference);
    if (record.valid && record.defined && record.uses == 0 && record.definingType) {
        const_cast<ioPacketType *>(record.definingType)->handleUnreferencedMemory(client, record.pointer);
    }
}

// What stays open is reported again behind the next file that is read with this map, so it stays in the list.
void ioReferenceMapImpl::resolveRemaining(ioClientReadContext & client) {
    qv::vector<int> numbers;
    numbers.swap(open_);
    std::sort(numbers.begin(), numbers.end());
    int previous = 0;
    for (int const reference : numbers) {
        ioReferenceRecord const & record = *table_.find(reference);
        if (reference != previous && record.valid && (record.waiting || record.uses == 0)) {
            open_.append(reference);
            report(reference, client);
        }
        previous = reference;
    }
}

void ioReferenceMapImpl::reportUnresolved(ioPacketType * type, void (*function)(void *, int)) {
    table_.forEachTouched([&](int, ioReferenceRecord const & record) {
        qv::vector<ioWaitingLocation> waiting;
        for (ioWaitingLocation const * node = record.waiting; node; node = node->next) {
            if (node->type == type) {
                waiting.append(*node);
            }
        }
        for (ioWaitingLocation const & entry : waiting) {
            function(entry.location, entry.clientValue);
        }
    });
}
