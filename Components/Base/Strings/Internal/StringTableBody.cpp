#include "Base/Strings/Internal/StringTableBody.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <functional>
#include <memory>
#include <new>
#include <stdexcept>

namespace qvStringTable {

using qvString::IString;

namespace {

constexpr int noEntry = 2; // the colour of a place; those of the tree are 0 and 1

// What the tree's own operations would have to know of its nodes: nothing, as it is asked to link them only.
constexpr qv::RBTreeImpl::TypeUtil makeTable(std::size_t nodeSize) {
    qv::RBTreeImpl::TypeUtil table = {};
    table.nodeSize = static_cast<int>(nodeSize);
    return table;
}
constexpr qv::RBTreeImpl::TypeUtil orderTable = makeTable(sizeof(StringTable::Body::Entry));

// Eight bytes of a text as a number, which compares as they do. Zeros stand for what is behind the end.
std::uint64_t partOf(std::string_view text, std::size_t from) {
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t part = 0;
    if (from < text.size())
        std::memcpy(&part, text.data() + from, std::min(sizeof part, text.size() - from));
    return __builtin_bswap64(part);
}

} // namespace

// ---- the order of the entries

StringTable::Body::Order::Order() : RBTreeImpl(&orderTable) {}

StringTable::Body::Entry * StringTable::Body::Order::firstFrom(std::string_view key) const {
    Node const * bound = &header_;
    for (Node const * node = header_.parent; node != nullptr;) {
        bool const isBefore = entryOf(node)->view() < key;
        bound = isBefore ? bound : node;
        node = isBefore ? node->right : node->left;
    }
    return entryOf(bound);
}

void StringTable::Body::Order::add(Entry & entry) noexcept {
    Node * parent = header_.right;
    bool isLeft = size() == 0;
    // Catalogs are often sorted.
    for (Node * node = isBehindAll(entry.view()) ? nullptr : header_.parent; node != nullptr;
         node = isLeft ? node->left : node->right) {
        parent = node;
        isLeft = entry.view() < entryOf(node)->view();
    }
    linkNode(parent, isLeft, &entry);
}

void StringTable::Body::Order::addBehind(Entry * before, Entry & entry) noexcept {
    Entry * const next = before != nullptr ? behind(*before) : nullptr;
    if (before == nullptr || (next != nullptr && next->view() < entry.view()))
        add(entry);
    else if (before->right == nullptr)
        linkNode(before, false, &entry);
    else
        linkNode(next, true, &entry);
}

// By eight bytes of each key at a time, behind the first `done`, which are all the same: comparing whole keys would go
// to their places again and again. Keys that have more in common, or are few, are compared as a whole.
void StringTable::Body::sort(Waiting * first, Waiting * last, std::size_t done) noexcept {
    constexpr std::ptrdiff_t few = 4;
    constexpr std::size_t much = 64;
    if (last - first < few || done >= much) {
        std::sort(first, last, [](Waiting const & a, Waiting const & b) { return a.entry->view() < b.entry->view(); });
        return;
    }
    bool areAlike = true;
    for (Waiting * at = first; at != last; ++at) {
        at->part = partOf(at->entry->view(), done);
        areAlike = areAlike && at->part == first->part;
    }
    if (!areAlike)
        std::sort(first, last, [](Waiting const & a, Waiting const & b) { return a.part < b.part; });
    while (first != last) {
        Waiting * const end =
            std::find_if(first, last, [first](Waiting const & one) { return one.part != first->part; });
        sort(first, end, done + sizeof first->part);
        first = end;
    }
}

void StringTable::Body::settle() noexcept {
    sort(waiting_.data(), waiting_.data() + waiting_.size(), 0);
    Entry * before = nullptr;
    for (std::size_t i = 0; i < waiting_.size(); ++i) {
        // What comes next in the order may lie anywhere, so it is sent for in time.
        if (i + 8 < waiting_.size())
            __builtin_prefetch(waiting_[i + 8].entry);
        if (i + 4 < waiting_.size())
            __builtin_prefetch(waiting_[i + 4].entry->bytes);
        order_.addBehind(before, *waiting_[i].entry);
        before = waiting_[i].entry;
    }
    std::vector<Waiting>().swap(waiting_);
}

// ---- places

StringTable::Body::Place * StringTable::Body::placeAt(std::uint32_t number) const {
    std::size_t const index = number - 1;
    return reinterpret_cast<Place *>(blocks_[index / placesInBlock]->bytes + index % placesInBlock * sizeof(Entry));
}

void StringTable::Body::vacate(void * place, std::uint32_t number, Node * nextFree) noexcept {
    Place * const vacant = new (place) Place;
    vacant->number = number;
    vacant->color = noEntry;
    vacant->left = nextFree;
    firstFree_ = vacant;
}

StringTable::Body::Entry & StringTable::Body::newEntry(std::string_view key, wchar_t const * units, int count) {
    if (firstFree_ == nullptr) {
        if (numPlaces_ == INT_MAX)
            throw std::length_error("qvStringTable");
        if (numPlaces_ == blocks_.size() * placesInBlock)
            blocks_.push_back(std::make_unique_for_overwrite<Block>());
        ++numPlaces_;
        vacate(placeAt(numPlaces_), numPlaces_, nullptr);
    }
    Place * const place = static_cast<Place *>(firstFree_);
    std::uint32_t const number = place->number;
    Node * const nextFree = place->left;
    try {
        Entry * const entry = new (place) Entry(key, units, count);
        entry->number = number;
        entry->color = 0;
        firstFree_ = nextFree;
        return *entry;
    } catch (...) {
        vacate(place, number, nextFree);
        throw;
    }
}

void StringTable::Body::clear() noexcept {
    for (std::uint32_t number = 1; number <= numPlaces_; ++number)
        if (placeAt(number)->color != noEntry)
            std::destroy_at(entryAt(number));
    blocks_.clear();
    numPlaces_ = 0;
    firstFree_ = nullptr;
    order_.forgetAll();
    waiting_.clear();
    slots_.clear();
    isCrowded_ = false;
}

// ---- the index

std::uint32_t StringTable::Body::hashOf(std::string_view key) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(key));
}

std::size_t StringTable::Body::slotOf(std::string_view key, std::uint32_t hash) const {
    std::size_t slot = startOf(hash);
    while (slots_[slot].number != 0 && (slots_[slot].hash != hash || entryAt(slots_[slot].number)->view() != key))
        slot = behind(slot);
    return slot;
}

// For one more entry.
void StringTable::Body::makeRoom() {
    if (isCrowded_ || 2 * (static_cast<std::size_t>(size()) + 1) <= slots_.size())
        return;
    std::vector<Slot> old(std::max(firstSlots, 2 * slots_.size()), Slot{0, 0});
    old.swap(slots_);
    for (Slot const & taken : old) {
        if (taken.number == 0 || !hasIndex())
            continue;
        std::size_t slot = startOf(taken.hash);
        while (slots_[slot].number != 0)
            slot = behind(slot);
        put(slot, taken);
    }
}

// The slot is free. When it is too far from where its search begins, the index ends.
void StringTable::Body::put(std::size_t slot, Slot const & content) noexcept {
    slots_[slot] = content;
    isCrowded_ = ((slot - startOf(content.hash)) & (slots_.size() - 1)) > longestSearch;
    if (isCrowded_) {
        std::vector<Slot>().swap(slots_);
        settle();
    }
}

// What follows in the same run moves up, so that no search ends too early.
void StringTable::Body::freeSlot(std::size_t slot) noexcept {
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t next = behind(slot); slots_[next].number != 0; next = behind(next)) {
        std::size_t const wanted = startOf(slots_[next].hash);
        if (((next - wanted) & mask) >= ((next - slot) & mask)) {
            slots_[slot] = slots_[next];
            slot = next;
        }
    }
    slots_[slot].number = 0;
}

// ---- entries

StringTable::Body::Entry * StringTable::Body::find(std::string_view key) const {
    if (hasIndex())
        return entryAt(slots_[slotOf(key, hashOf(key))].number);
    Entry * const entry = order_.firstFrom(key);
    return entry != nullptr && entry->view() == key ? entry : nullptr;
}

bool StringTable::Body::assign(std::string_view key, wchar_t const * units, int count) {
    makeRoom();
    std::uint32_t const hash = hashOf(key);
    std::size_t const slot = hasIndex() ? slotOf(key, hash) : 0;
    Entry * const old = hasIndex() ? entryAt(slots_[slot].number) : find(key);
    if (old != nullptr) {
        old->text = IString(units, count);
        return true;
    }
    bool const waits = isFilling_ && hasIndex() && !order_.isBehindAll(key);
    if (waits && waiting_.size() == waiting_.capacity())
        waiting_.reserve(std::max<std::size_t>(64, 2 * waiting_.size()));
    Entry & entry = newEntry(key, units, count);
    if (waits)
        waiting_.push_back({&entry, 0});
    else
        order_.add(entry);
    if (hasIndex())
        put(slot, {hash, entry.number});
    return true;
}

bool StringTable::Body::remove(std::string_view key) noexcept {
    Entry * const entry = find(key);
    if (entry == nullptr)
        return false;
    if (hasIndex())
        freeSlot(slotOf(key, hashOf(key)));
    order_.takeOut(*entry);
    std::uint32_t const number = entry->number;
    std::destroy_at(entry); // the key may have been that of the entry
    vacate(entry, number, firstFree_);
    return true;
}

StringTable::Body::Entry const * StringTable::Body::firstFrom(std::string_view key) const {
    return order_.firstFrom(key);
}

StringTable::Body::Entry const * StringTable::Body::behind(Entry const & entry) const { return order_.behind(entry); }

} // namespace qvStringTable
