// The table of a package: records tile the data region in the order of their offsets, no two neighbours are free, and
// the end marker is the last.

#include "Base/DataFiles/ioPackageFile.h"

#include "Base/Strings/Internal/WideText.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

using qvString::IString;
using qvString::WideView;

namespace {

bool isEndMarker(IString const & name) { return name == L"."; }

// A record to be entered. The key is the first that tells names apart, in one comparison of integers; names of the same
// key, and all before keys are set, are compared whole.
struct Named {
    WideView name;
    std::uint64_t key;
    int index;

    bool operator<(Named const & other) const { return key != other.key ? key < other.key : name < other.name; }
};

// The four units behind what all names begin with.
void setKeys(qv::vector<Named> & named) {
    WideView common = named.front().name;
    for (Named const & record : named) {
        auto const [end, ignored] = std::ranges::mismatch(common, record.name);
        common = WideView(common.begin(), end);
    }
    for (Named & record : named) {
        WideView const rest = record.name.substr(common.size(), 4);
        for (std::size_t i = 0; i < 4; ++i)
            record.key = record.key << 16 | (i < rest.size() ? rest[i] : 0);
    }
}

// In a name a byte order mark is a character like others.
void assignName(IString & to, char const * bytes) {
    if (std::strncmp(bytes, "\xEF\xBB\xBF", 3) != 0)
        to.assign(bytes, qvString::UTF8);
    else
        to = IString((std::string(".") + bytes).c_str(), qvString::UTF8).substr(1);
}

} // namespace

ioPackageFileEntry const * ioPackageFile::getEntry(IString const & name) const {
    auto const place = directory_.find(name);
    return place != directory_.end() ? &entries_[place->second] : nullptr;
}

ioPackageFileEntry const * ioPackageFile::getEntry(int index) const {
    bool const isRecord = index >= 0 && index < entries_.size() && !entries_[index].name_.isEmpty();
    return isRecord ? &entries_[index] : nullptr;
}

// ---- From the directory on disk

// Takes one record as it is; takeRecords() judges them all.
void ioPackageFile::appendEntry(char const * name, std::int64_t offset, std::int64_t size, std::int64_t timestamp,
                                bool compressed) {
    ioPackageFileEntry & entry = entries_.emplace_back(this);
    assignName(entry.name_, name);
    entry.offset_ = offset;
    entry.size_ = size;
    entry.timestamp_ = timestamp;
    entry.compressed_ = compressed;
    places_.append(nullptr);
    dirty_ = true;
}

// Whether the records that were read are a table whose data region ends at `end`.
bool ioPackageFile::takeRecords(std::int64_t end) {
    directoryFault_ = findFault(end);
    if (directoryFault_ != nullptr)
        return false;
    // Neighbours that are both free become one.
    int kept = 0;
    for (int i = 0; i < entries_.size(); ++i) {
        bool const isFree = entries_[i].name_.isEmpty();
        if (isFree && kept > 0 && entries_[kept - 1].name_.isEmpty())
            entries_[kept - 1].size_ += entries_[i].size_;
        else {
            if (kept != i)
                entries_[kept] = std::move(entries_[i]);
            freeCount_ += isFree;
            ++kept;
        }
    }
    entries_.erase(entries_.begin() + kept, entries_.end());
    places_.setSize(kept);
    entries_.back().size_ = -1;
    if (!enterAllNames()) {
        directoryFault_ = "two records have one name";
        return false;
    }
    return true;
}

// In the order of the names: sorting what lies together is faster than looking for the place of each in the tree.
bool ioPackageFile::enterAllNames() {
    qv::vector<Named> named;
    named.reserve(entries_.size() - 1 - freeCount_);
    for (int i = 0; i + 1 < entries_.size(); ++i)
        if (IString const & name = entries_[i].name_; !name.isEmpty())
            named.append(Named{WideView(name.asWChar(), name.length()), 0, i});
    if (!std::is_sorted(named.begin(), named.end())) {
        setKeys(named);
        std::sort(named.begin(), named.end());
    }
    return std::all_of(named.begin(), named.end(),
                       [this](Named const & record) { return enterName(record.index, entries_[record.index].name_); });
}

// The end marker is where it is told, and in front of it the records lie without gap or overlap.
char const * ioPackageFile::findFault(std::int64_t end) const {
    if (entries_.empty() || !isEndMarker(entries_.back().name_) || entries_.back().offset_ != end)
        return "the end marker is missing or elsewhere";
    std::int64_t at = dataOffset_;
    for (int i = 0; i + 1 < entries_.size(); ++i) {
        ioPackageFileEntry const & entry = entries_[i];
        if (isEndMarker(entry.name_))
            return "there is a second end marker";
        if (entry.offset_ != at)
            return "there is a gap or an overlap";
        if (entry.size_ < 0 || entry.size_ > end - at)
            return "a record reaches behind the data";
        at += entry.size_;
    }
    return at == end ? nullptr : "there is a gap in front of the end marker";
}

char const * ioPackageFile::validate() const {
    if (packageName_.isEmpty())
        return nullptr;
    if (char const * const fault = findFault(entries_.back().offset_))
        return fault;
    int numFree = 0;
    int numNamed = 0;
    for (int i = 0; i + 1 < entries_.size(); ++i) {
        IString const & name = entries_[i].name_;
        numFree += name.isEmpty();
        numNamed += !name.isEmpty();
        if (name.isEmpty() && entries_[i + 1].name_.isEmpty())
            return "two neighbours are free";
        auto const place = directory_.find(name);
        bool const isEntered = place != directory_.end() && place->second == i && places_[i] == &place->second;
        if (name.isEmpty() ? places_[i] != nullptr : !isEntered)
            return "a name leads elsewhere";
    }
    return numFree == freeCount_ && numNamed == directory_.size() && places_.size() == entries_.size()
               ? nullptr
               : "the counts are wrong";
}

// ---- Changes

// False when the name is there already. Names mostly come in their order.
bool ioPackageFile::enterName(int index, IString const & name) {
    int const before = directory_.size();
    auto const place = directory_.try_emplace(directory_.end(), name, index);
    bool const isNew = directory_.size() > before;
    if (isNew)
        places_[index] = &place->second;
    return isNew;
}

// The names of the records from a place on follow them.
void ioPackageFile::movePlaces(int index, int by) {
    for (; index < places_.size(); ++index)
        if (places_[index] != nullptr)
            *places_[index] += by;
}

// A record without a name in front of another one.
void ioPackageFile::insertRecord(int index, std::int64_t offset, std::int64_t size) {
    ioPackageFileEntry record(this);
    record.offset_ = offset;
    record.size_ = size;
    places_.insert(places_.begin() + index, nullptr);
    try {
        entries_.insert(entries_.begin() + index, std::move(record));
    } catch (...) {
        places_.erase(places_.begin() + index);
        throw;
    }
    movePlaces(index + 1, 1);
    dirty_ = true;
}

// Gives a record of that size: a free part, the first that is large enough, or one behind all others. Its name is still
// empty, and it does not count as free.
int ioPackageFile::createEntry(std::int64_t size) {
    int const last = entries_.size() - 1;
    for (int i = 0; freeCount_ > 0 && i < last; ++i) {
        if (!entries_[i].name_.isEmpty() || entries_[i].size_ < size)
            continue;
        if (entries_[i].size_ > size)
            splitEntry(i, size);
        --freeCount_;
        dirty_ = true;
        return i;
    }
    std::int64_t const offset = entries_.back().offset_;
    insertRecord(last, offset, size);
    updateDirectoryEntry(offset + size);
    return last;
}

// A free record becomes two, the first of that size.
void ioPackageFile::splitEntry(int index, std::int64_t size) {
    insertRecord(index, entries_[index].offset_, size);
    entries_[index + 1].offset_ += size;
    entries_[index + 1].size_ -= size;
    ++freeCount_;
}

// A record takes over the one behind it.
void ioPackageFile::joinEntries(int index) {
    entries_[index].size_ += entries_[index + 1].size_;
    entries_.erase(entries_.begin() + index + 1);
    places_.erase(places_.begin() + index + 1);
    movePlaces(index + 1, -1);
    --freeCount_;
    dirty_ = true;
}

// The bytes stay where they are, the name goes.
void ioPackageFile::freeEntry(int index) {
    if (places_[index] != nullptr) {
        places_[index] = nullptr;
        directory_.erase(directory_.find(entries_[index].name_));
    }
    entries_[index].name_ = IString();
    ++freeCount_;
    if (entries_[index + 1].name_.isEmpty())
        joinEntries(index);
    if (index > 0 && entries_[index - 1].name_.isEmpty())
        joinEntries(index - 1);
    dirty_ = true;
}
