#include "Base/Strings/qvStringTableStringTable.h"

#include "Base/Strings/Internal/KeyParts.h"
#include "Base/Strings/Internal/StringTableBody.h"

#include <algorithm>
#include <functional>
#include <iterator>
#include <utility>

namespace qvStringTable {

using qvString::CString;
using qvString::IString;

// ---- entries

std::uint32_t StringTable::Body::hashOf(std::string_view key) {
    return static_cast<std::uint32_t>(std::hash<std::string_view>()(key));
}

std::size_t StringTable::Body::slotOf(std::string_view key, std::uint32_t hash) const {
    std::size_t slot = hash & (slots_.size() - 1);
    while (slots_[slot].entry != nullptr && (slots_[slot].hash != hash || slots_[slot].entry->first.value() != key))
        slot = behind(slot);
    return slot;
}

IString * StringTable::Body::find(std::string_view key) const {
    if (hasIndex()) {
        Entry * const entry = slots_[slotOf(key, hashOf(key))].entry;
        return entry != nullptr ? &entry->second : nullptr;
    }
    auto const entry = entries_.find(Key(key));
    return entry != entries_.end() ? const_cast<IString *>(&entry->second) : nullptr;
}

// For one more entry.
void StringTable::Body::makeRoom() {
    if (isCrowded_ || 2 * (static_cast<std::size_t>(entries_.size()) + 1) <= slots_.size())
        return;
    std::vector<Slot> old(std::max(firstSlots, 2 * slots_.size()), Slot{0, nullptr});
    old.swap(slots_);
    for (Slot const & taken : old)
        if (taken.entry != nullptr && hasIndex())
            add(taken.entry, taken.hash);
}

void StringTable::Body::add(Entry * entry, std::uint32_t hash) {
    std::size_t slot = hash & (slots_.size() - 1);
    std::size_t steps = 0;
    for (; slots_[slot].entry != nullptr; slot = behind(slot))
        ++steps;
    slots_[slot] = {hash, entry};
    isCrowded_ = steps > longestSearch;
    if (isCrowded_)
        slots_.clear();
}

// What follows in the same run moves up, so that no search ends too early.
void StringTable::Body::freeSlot(std::size_t slot) {
    std::size_t const mask = slots_.size() - 1;
    for (std::size_t next = behind(slot); slots_[next].entry != nullptr; next = behind(next)) {
        std::size_t const wanted = slots_[next].hash & mask;
        if (((next - wanted) & mask) >= ((next - slot) & mask)) {
            slots_[slot] = slots_[next];
            slot = next;
        }
    }
    slots_[slot].entry = nullptr;
}

bool StringTable::Body::assign(std::string_view key, IString && text) {
    if (IString * const old = find(key)) {
        *old = std::move(text);
        return true;
    }
    makeRoom();
    Map::const_iterator const hint = last_ == entries_.end() ? last_ : std::next(last_);
    last_ = entries_.try_emplace(hint, Key(key), std::move(text));
    if (hasIndex())
        add(&*last_, hashOf(key));
    return true;
}

bool StringTable::Body::remove(Key const & key) {
    // The key may be that of the entry, which goes last.
    Map::iterator const entry = entries_.find(key);
    if (entry == entries_.end())
        return false;
    if (hasIndex())
        freeSlot(slotOf(key.value(), hashOf(key.value())));
    if (last_ == entry)
        last_ = entries_.end();
    entries_.erase(entry);
    return true;
}

void StringTable::Body::clear() {
    slots_.clear();
    entries_.clear();
    last_ = entries_.end();
    isCrowded_ = false;
}

// ---- the table

StringTable::StringTable() : body_(new Body) {}
StringTable::~StringTable() { delete body_; }

int StringTable::size() const { return body_->entries().size(); }
bool StringTable::isEmpty() const { return body_->entries().empty(); }
void StringTable::clear() { body_->clear(); }

bool StringTable::keyExists(Key const & key) const { return body_->find(key.value()) != nullptr; }

IString const & StringTable::getString(Key const & key, bool * found) const {
    return getString(key, body_->emptyText(), found);
}

IString const & StringTable::getString(Key const & key, IString const & fallback, bool * found) const {
    IString const * const text = body_->find(key.value());
    if (found != nullptr)
        *found = text != nullptr;
    return text != nullptr ? *text : fallback;
}

bool StringTable::assign(Key const & key, IString const & text) {
    // Assigned, as a copy would end at a zero; and before the entry changes, in which the text may stand.
    IString copy;
    copy.assign(text);
    body_->assign(key.value(), std::move(copy));
    return true;
}

bool StringTable::remove(Key const & key) { return body_->remove(key); }

int StringTable::getKeys(int (*compare)(Key const &, Key const &), Key const & reference, qv::vector<Key> & out) const {
    qv::vector<Key> keys; // the reference may lie in `out`
    for (Body::Entry const & entry : body_->entries())
        if (compare(reference, entry.first) == 0)
            keys.append(entry.first);
    out.swap(keys);
    return out.size();
}

int StringTable::getKeysInSet(Key const & reference, qv::vector<Key> & out) const {
    CString prefix(partsOf(reference.value()).setID);
    if (prefix.isEmpty())
        return getKeys([](Key const & a, Key const & b) { return a.compareSetID(b); }, reference, out);
    // A set's keys stand together in the order, as they begin with its name and the dot.
    prefix.append('.');
    qv::vector<Key> keys;
    Body::Map const & entries = body_->entries();
    for (auto at = entries.lower_bound(Key(prefix)); at != entries.end(); ++at) {
        if (!std::string_view(at->first.value()).starts_with(prefix))
            break;
        if (partsOf(at->first.value()).areTwo)
            keys.append(at->first);
    }
    out.swap(keys);
    return out.size();
}

StringTable & appStringTable() {
    static StringTable table;
    return table;
}

} // namespace qvStringTable
