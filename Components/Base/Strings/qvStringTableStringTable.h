// The table of user-visible texts.

#ifndef qvStringTableStringTable_h
#define qvStringTableStringTable_h

#include "Base/Containers/qvVector.h"
#include "Base/Strings/qvStringIString.h"
#include "Base/Strings/qvStringTableKey.h"
#include "Base/qvBaseConfig.h"

namespace qvStringTable {

/// Texts by their keys. A program has one, appStringTable(), into which catalogs are loaded at its start; see
/// qvStringTableManager.h. Finding a text takes constant time on average.
///
/// Nothing is locked: fill a table before threads read it. An IString keeps its narrow form, so threads that ask the
/// same text for one must not do so at once (see qvStringIString.h).
///
///     qvStringTable::StringTable & texts = qvStringTable::appStringTable();
///     title.setText(texts.getString("gui.title", fallback));
class QV_EXPORT StringTable {
public:
    StringTable();
    ~StringTable();
    StringTable(StringTable const &) = delete;
    StringTable & operator=(StringTable const &) = delete;

    int size() const;
    bool isEmpty() const;
    void clear();

    bool keyExists(Key const & key) const;
    /// The text, which stays until its key is assigned or removed; or an empty string that stays as long as the table.
    /// *found, when it is given, tells which.
    qvString::IString const & getString(Key const & key, bool * found = nullptr) const;
    /// The text, or `fallback` itself, which must live as long as the result is used.
    qvString::IString const & getString(Key const & key, qvString::IString const & fallback,
                                        bool * found = nullptr) const;

    /// Adds the entry, or replaces the text of the one that is there. Always true. std::bad_alloc leaves the table as
    /// it was.
    bool assign(Key const & key, qvString::IString const & text);
    /// False when there is no such key.
    bool remove(Key const & key);

    /// Fills `out` with the keys for which compare(reference, key) gives 0, in their order, and gives their number.
    /// `compare` is asked for each key of the table.
    int getKeys(int (*compare)(Key const &, Key const &), Key const & reference, qv::vector<Key> & out) const;
    /// The same for the keys that are in the set of `reference`.
    int getKeysInSet(Key const & reference, qv::vector<Key> & out) const;

    /// The entries, for the sources of this folder only.
    class QV_NO_EXPORT Body;
    QV_NO_EXPORT Body & body() { return *body_; }

private:
    Body * body_;
};

/// The table of the process. It is there before the program's own static objects are made.
QV_EXPORT StringTable & appStringTable();

} // namespace qvStringTable

#endif
