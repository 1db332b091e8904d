#include "Base/DataFiles/Internal/ioReferenceTable.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

ioReferenceTable::~ioReferenceTable() {
    for (ioReferenceRecord * block : blocks_) {
        std::free(block);
    }
}

ioReferenceRecord const * ioReferenceTable::findSparse(int reference) const {
    if (sparse_.empty()) {
        return nullptr;
    }
    auto const found = sparse_.find(reference);
    return found == sparse_.end() ? nullptr : &found->second;
}

ioReferenceRecord & ioReferenceTable::touchNew(int reference) {
    bool const inReach = std::int64_t{reference} < freeReach + std::int64_t{reachPerTouched} * numTouched_;
    if (reference >= count_ && inReach) {
        growDense(reference);
    }
    ioReferenceRecord * record = nullptr;
    auto const found = sparse_.empty() ? sparse_.end() : sparse_.find(reference);
    bool const isNew = found == sparse_.end();
    if (reference >= count_) {
        record = isNew ? &sparse_[reference] : &found->second;
    } else {
        record = &dense(reference);
        if (!isNew) {
            *record = found->second;
            sparse_.erase(found);
        }
    }
    if (isNew) {
        record->touched = true;
        ++numTouched_;
        highest_ = std::max(highest_, reference);
    }
    return *record;
}

// The steps are those in which a file's numbers usually come: a handful, or very many.
void ioReferenceTable::growDense(int reference) {
    int const wanted = reference < 10 ? 10 : reference < 100 ? 100 : reference < 1000 ? 1000 : reference + 20000;
    while (count_ < wanted) {
        int const place = count_ % recordsInBlock;
        if (place == 0) {
            blocks_.reserve(blocks_.size() + 1);
            void * const block = std::malloc(recordsInBlock * sizeof(ioReferenceRecord));
            if (!block) {
                throw std::bad_alloc();
            }
            blocks_.append(static_cast<ioReferenceRecord *>(block));
        }
        int const built = std::min(recordsInBlock - place, wanted - count_);
        std::uninitialized_value_construct_n(blocks_.back() + place, built);
        count_ += built;
    }
}

void ioReferenceTable::sortedSparse(qv::vector<int> & numbers) const {
    for (auto const & entry : sparse_) {
        numbers.append(entry.first);
    }
}
