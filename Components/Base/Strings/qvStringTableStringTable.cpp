#include "Base/Strings/qvStringTableStringTable.h"

#include "Base/Strings/Internal/KeyParts.h"
#include "Base/Strings/Internal/StringTableBody.h"

#include <string_view>

namespace qvStringTable {

using qvString::CString;
using qvString::IString;

StringTable::StringTable() : body_(new Body) {}
StringTable::~StringTable() { delete body_; }

int StringTable::size() const { return body_->size(); }
bool StringTable::isEmpty() const { return body_->size() == 0; }
void StringTable::clear() { body_->clear(); }

bool StringTable::keyExists(Key const & key) const { return body_->find(key.value()) != nullptr; }

IString const & StringTable::getString(Key const & key, bool * found) const {
    return getString(key, body_->emptyText(), found);
}

IString const & StringTable::getString(Key const & key, IString const & fallback, bool * found) const {
    Body::Entry const * const entry = body_->find(key.value());
    if (found != nullptr)
        *found = entry != nullptr;
    return entry != nullptr ? entry->text : fallback;
}

bool StringTable::assign(Key const & key, IString const & text) {
    return body_->assign(key.value(), text.asWChar(), static_cast<int>(text.length()));
}

bool StringTable::remove(Key const & key) { return body_->remove(key.value()); }

int StringTable::getKeys(int (*compare)(Key const &, Key const &), Key const & reference, qv::vector<Key> & out) const {
    qv::vector<Key> keys; // the reference may lie in `out`
    for (Body::Entry const * at = body_->firstFrom(""); at != nullptr; at = body_->behind(*at))
        if (compare(reference, at->key) == 0)
            keys.append(at->key);
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
    for (Body::Entry const * at = body_->firstFrom(prefix); at != nullptr; at = body_->behind(*at)) {
        if (!at->view().starts_with(prefix))
            break;
        if (partsOf(at->view()).areTwo)
            keys.append(at->key);
    }
    out.swap(keys);
    return out.size();
}

StringTable & appStringTable() {
    static StringTable table;
    return table;
}

} // namespace qvStringTable
