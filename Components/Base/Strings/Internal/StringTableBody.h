// What a string table holds.

#ifndef StringTableBody_h
#define StringTableBody_h

#include "Base/Containers/qvRBTreeImpl.h"
#include "Base/Strings/qvStringTableStringTable.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace qvStringTable {

// Entries that do not move, a tree of them in the order of their keys, and an index of them by hash. What is beside the
// tree has measured reasons, with catalogs of 100,000 entries:
//
// - A search that goes down the tree meets some 17 keys at places all over the memory, and takes twice the time of a
//   standard map; the index has the entry at the first or second look. Keys that are made to collide end the index, and
//   the tree alone serves on.
// - Entries are the nodes of the tree. They lie in blocks in the order of their coming, and go in that order, with all
//   blocks: so a catalog is read, and cleared, from one end of the memory to the other, and the next one finds no
//   memory in pieces.
// - While a catalog is read, entries that do not come in order wait, and are sorted before they go into the tree. To
//   search for the place of each would take longer than all else together.
class StringTable::Body {
    using Node = qv::RBTreeImpl::Node;

public:
    // In the blocks, with an entry or without.
    struct Place : Node {
        std::uint32_t number; // from 1
    };
    struct Entry : Place {
        Entry(std::string_view keyText, wchar_t const * units, int count)
            : key(keyText), bytes(key.value().asChar()), length(key.value().length()), text(units, count) {}
        std::string_view view() const { return {bytes, length}; }

        Key const key;
        char const * const bytes; // of the key, for searches: on the way through it there are two more places to visit
        unsigned const length;
        qvString::IString text;
    };

    Body() = default;
    Body(Body const &) = delete;
    Body & operator=(Body const &) = delete;
    ~Body() { clear(); }

    int size() const { return order_.size() + static_cast<int>(waiting_.size()); }
    void clear() noexcept;

    // Null when there is none.
    Entry * find(std::string_view key) const;
    // The units are copied, zeros and all. Always true; throws without a trace.
    bool assign(std::string_view key, wchar_t const * units, int count);
    bool remove(std::string_view key) noexcept;

    // In key order: the first entry whose key is not less, and the one behind another; null at the end. Not while
    // entries wait.
    Entry const * firstFrom(std::string_view key) const;
    Entry const * behind(Entry const & entry) const;

    // What a key that is not there has.
    qvString::IString const & emptyText() const { return emptyText_; }

    // While one of these lives, new entries may wait.
    class Filling {
    public:
        explicit Filling(Body & body) : body_(body) { body_.isFilling_ = true; }
        Filling(Filling const &) = delete;
        Filling & operator=(Filling const &) = delete;
        ~Filling() {
            body_.isFilling_ = false;
            body_.settle();
        }

    private:
        Body & body_;
    };

    // For tests: how keys are hashed, and whether the index has ended.
    static std::uint32_t hashOf(std::string_view key);
    bool isCrowded() const { return isCrowded_; }

private:
    class Order : public qv::RBTreeImpl {
    public:
        Order();
        // Where its key says; no other entry has that.
        void add(Entry & entry) noexcept;
        // The same, quick when it comes next behind `before`, which may be null.
        void addBehind(Entry * before, Entry & entry) noexcept;
        bool isBehindAll(std::string_view key) const { return size() == 0 || entryOf(header_.right)->view() < key; }
        Entry * firstFrom(std::string_view key) const;
        Entry * behind(Entry const & entry) const { return entryOf(entry.next()); }
        void takeOut(Entry & entry) noexcept { unlinkNode(&entry); }
        void forgetAll() noexcept { initializeTreeState(); }

    private:
        Entry * entryOf(Node const * node) const {
            return node == &header_ ? nullptr : static_cast<Entry *>(const_cast<Node *>(node));
        }
    };

    struct Slot {
        std::uint32_t hash;
        std::uint32_t number; // of the entry's place; 0 when free
    };
    // An entry that waits, and eight bytes of its key as a number.
    struct Waiting {
        Entry * entry;
        std::uint64_t part;
    };
    static constexpr std::size_t placesInBlock = 64;
    struct Block {
        alignas(Entry) std::byte bytes[placesInBlock * sizeof(Entry)];
    };
    static constexpr std::size_t firstSlots = 64;
    static constexpr std::size_t longestSearch = 1000;

    Place * placeAt(std::uint32_t number) const;
    // Null for the number of a free slot.
    Entry * entryAt(std::uint32_t number) const {
        return number == 0 ? nullptr : static_cast<Entry *>(placeAt(number));
    }
    // The place becomes the first free one.
    void vacate(void * place, std::uint32_t number, Node * nextFree) noexcept;
    Entry & newEntry(std::string_view key, wchar_t const * units, int count);

    void settle() noexcept;
    static void sort(Waiting * first, Waiting * last, std::size_t done) noexcept;

    bool hasIndex() const { return !slots_.empty(); }
    std::size_t startOf(std::uint32_t hash) const { return hash & (slots_.size() - 1); }
    std::size_t behind(std::size_t slot) const { return startOf(static_cast<std::uint32_t>(slot + 1)); }
    // The slot with the key, or the free one where it would go. There must be slots.
    std::size_t slotOf(std::string_view key, std::uint32_t hash) const;
    void makeRoom();
    void put(std::size_t slot, Slot const & content) noexcept;
    void freeSlot(std::size_t slot) noexcept;

    std::vector<std::unique_ptr<Block>> blocks_;
    std::uint32_t numPlaces_ = 0;  // in the blocks, from the first on
    Node * firstFree_ = nullptr;   // of those without an entry, linked by `left`
    Order order_;                  // all entries but those that wait
    std::vector<Waiting> waiting_; // there is an index as long as any does
    bool isFilling_ = false;
    std::vector<Slot> slots_; // a power of two, at most half of them taken; probed one behind the other
    bool isCrowded_ = false;  // by keys that collide: there is no index until the table is cleared
    qvString::IString emptyText_;
};

} // namespace qvStringTable

#endif
