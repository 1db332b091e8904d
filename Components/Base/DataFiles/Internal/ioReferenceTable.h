// The records of reference numbers: dense from 1 up as far as the numbers in use make that worth its memory, sparse
// beyond.

#ifndef ioReferenceTable_h
#define ioReferenceTable_h

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvVector.h"

class ioPacketType;

// A location that waits for the definition of a reference.
struct ioWaitingLocation {
    ioWaitingLocation * next;
    void * location;
    ioPacketType const * type;
    int clientValue;
};

struct ioReferenceRecord {
    bool touched = false; // anything but a query has reached this record
    bool defined = false;
    bool valid = true; // until the reference is undefined
    bool alias = false;
    int uses = 0;
    void * pointer = nullptr;
    ioPacketType const * definingType = nullptr;
    ioWaitingLocation * waiting = nullptr; // newest first
};

// Dense records lie in blocks that never move, so a record's place is stable. A number out of the dense table's reach
// gets a record of its own; should the dense table grow over it later, the record moves in when it is next reached.
class ioReferenceTable {
public:
    // The numbers of a damaged file may be anything; from here up they are refused everywhere.
    static constexpr int endOfNumbers = 0x7fff0000;
    static constexpr bool isNumber(int reference) { return reference > 0 && reference < endOfNumbers; }

    ioReferenceTable() = default;
    ~ioReferenceTable();
    ioReferenceTable(ioReferenceTable const &) = delete;
    ioReferenceTable & operator=(ioReferenceTable const &) = delete;

    // The record of a number that was touched, null otherwise.
    ioReferenceRecord const * find(int reference) const {
        if (reference > 0 && reference < count_) {
            ioReferenceRecord const & record = dense(reference);
            if (record.touched) {
                return &record;
            }
        }
        return findSparse(reference);
    }

    // The record of a number that isNumber accepts, touched from now on.
    ioReferenceRecord & touch(int reference) {
        if (reference < count_ && dense(reference).touched) {
            return dense(reference);
        }
        return touchNew(reference);
    }

    // Calls the function with each touched number and its record, in rising order, and copes with numbers that it
    // touches meanwhile.
    template <typename Function>
    void forEachTouched(Function function);

    int highest() const { return highest_; }
    // Records of the dense table that are built so far, the one of number 0 included.
    int numDense() const { return count_; }

private:
    static constexpr int recordsInBlock = 2083;
    // The dense table reaches this far, and further by so many numbers for each that is in use.
    static constexpr int freeReach = 65536;
    static constexpr int reachPerTouched = 2;

    ioReferenceRecord & dense(int reference) const {
        return blocks_[reference / recordsInBlock][reference % recordsInBlock];
    }
    ioReferenceRecord const * findSparse(int reference) const;
    ioReferenceRecord & touchNew(int reference);
    void growDense(int reference);
    void sortedSparse(qv::vector<int> & numbers) const;

    qv::vector<ioReferenceRecord *> blocks_;
    int count_ = 0;
    int highest_ = 0;
    int numTouched_ = 0;
    qv::map<int, ioReferenceRecord> sparse_; // ordered: no choice of numbers makes it slow
};

template <typename Function>
void ioReferenceTable::forEachTouched(Function function) {
    qv::vector<int> sparse;
    sortedSparse(sparse);
    int nextSparse = 0;
    auto const visitSparseBelow = [&](int bound) {
        for (; nextSparse < sparse.size() && sparse[nextSparse] < bound; ++nextSparse) {
            int const reference = sparse[nextSparse];
            function(reference, touch(reference));
        }
    };
    for (int reference = 1; reference < count_ && reference <= highest_; ++reference) {
        visitSparseBelow(reference);
        if (dense(reference).touched && (nextSparse == sparse.size() || sparse[nextSparse] != reference)) {
            function(reference, dense(reference));
        }
    }
    visitSparseBelow(endOfNumbers);
}

#endif
