// From pointers to the reference numbers that they were given.

#ifndef ioPointerTable_h
#define ioPointerTable_h

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

// Open addressing over a power of two of places. A writer asks for every pointer that it meets, several times per
// object: one multiplication and, nearly always, one cache line serve that, where a descent through a tree costs a
// miss on every level. Entries are never removed, only overwritten.
class ioPointerTable {
public:
    // The pointer's number, 0 when it is unknown.
    int find(void const * pointer) const {
        if (size_ == 0) {
            return 0;
        }
        Entry const & entry = entries_[placeOf(pointer)];
        return entry.pointer ? entry.reference : 0;
    }

    // The pointer must not be null.
    void set(void const * pointer, int reference) {
        if (size_ >= limit_) {
            grow();
        }
        Entry & entry = entries_[placeOf(pointer)];
        size_ += entry.pointer ? 0 : 1;
        entry = {pointer, reference};
    }

private:
    struct Entry {
        void const * pointer = nullptr;
        int reference = 0;
    };
    static constexpr unsigned initialBits = 6;

    // Where the pointer is, or would go: linear probing ends at a free place, since the table is never full.
    std::size_t placeOf(void const * pointer) const {
        constexpr std::uint64_t multiplier = 0x9E3779B97F4A7C15u; // 2 to the power 64 by the golden ratio
        std::size_t const mask = (std::size_t{1} << bits_) - 1;
        auto const key = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(pointer));
        auto place = static_cast<std::size_t>((key * multiplier) >> (64 - bits_));
        while (entries_[place].pointer && entries_[place].pointer != pointer) {
            place = (place + 1) & mask;
        }
        return place;
    }

    void grow() {
        std::size_t const oldPlaces = entries_ ? std::size_t{1} << bits_ : 0;
        unsigned const bits = entries_ ? bits_ + 1 : initialBits;
        std::size_t const places = std::size_t{1} << bits;
        std::unique_ptr<Entry[]> const old = std::exchange(entries_, std::make_unique<Entry[]>(places));
        bits_ = bits;
        limit_ = places / 8 * 5;
        for (std::size_t i = 0; i < oldPlaces; ++i) {
            if (old[i].pointer) {
                entries_[placeOf(old[i].pointer)] = old[i];
            }
        }
    }

    std::unique_ptr<Entry[]> entries_;
    unsigned bits_ = 0;
    std::size_t size_ = 0;
    std::size_t limit_ = 0;
};

#endif
