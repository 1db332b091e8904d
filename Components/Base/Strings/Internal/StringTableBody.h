// What a string table holds.

#ifndef StringTableBody_h
#define StringTableBody_h

#include "Base/Containers/qvMap.h"
#include "Base/Strings/qvStringTableStringTable.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace qvStringTable {

// A tree in key order, and beside it an index of its entries by hash: a search that goes down the tree meets some 17
// keys of 100,000 at places all over the memory, each behind two pointers, and takes twice the time of a standard map;
// the index has the entry at the first or second look. Entries do not move, so it holds their addresses. Keys that are
// made to collide end the index, and the tree alone serves on.
class StringTable::Body {
public:
    using Map = qv::map<Key, qvString::IString>;
    using Entry = Map::value_type;

    Map const & entries() const { return entries_; }
    void clear();

    // Null when there is none.
    qvString::IString * find(std::string_view key) const;
    // The text is taken over. Always true; throws without a trace.
    bool assign(std::string_view key, qvString::IString && text);
    bool remove(Key const & key);

    // What a key that is not there has.
    qvString::IString const & emptyText() const { return emptyText_; }

private:
    struct Slot {
        std::uint32_t hash;
        Entry * entry; // null when free
    };
    static constexpr std::size_t firstSlots = 64;
    static constexpr std::size_t longestSearch = 1000;

    static std::uint32_t hashOf(std::string_view key);
    // The slot with the key, or the free one where it would go. There must be slots.
    std::size_t slotOf(std::string_view key, std::uint32_t hash) const;
    std::size_t behind(std::size_t slot) const { return (slot + 1) & (slots_.size() - 1); }
    bool hasIndex() const { return !slots_.empty(); }
    void makeRoom();
    void add(Entry * entry, std::uint32_t hash);
    void freeSlot(std::size_t slot);

    Map entries_;
    Map::iterator last_ = entries_.end(); // what was added last; catalogs are often sorted
    std::vector<Slot> slots_;             // a power of two, at most half of them taken; probed one behind the other
    bool isCrowded_ = false;              // by keys that collide: there is no index until the table is cleared
    qvString::IString emptyText_;
};

} // namespace qvStringTable

#endif
