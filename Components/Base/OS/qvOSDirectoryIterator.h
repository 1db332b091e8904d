// A walk through a tree of directories.

#ifndef qvOSDirectoryIterator_h
#define qvOSDirectoryIterator_h

#include "Base/Containers/qvList.h"
#include "Base/Strings/qvStringIString.h"

namespace qvOS {

/// Walks a tree level by level: the root first, then what lies in it, then what lies in that; within a directory in the
/// order of the system. A directory is read when the walk goes on from it, so what appears or goes later is not
/// noticed, and what has gone meanwhile has no children. Nothing is reported: what cannot be read or asked about is
/// left out, a bad root too, and so are special files, such as devices and pipes, and links that lead to one or to
/// nothing. Any other symbolic link is an entry that the walk does not go into, and no directory. "." and ".." of a
/// directory are no entries, whatever the root is called; the root itself may be one of them. The list of what is still
/// to come is kept, at most the entries of two levels.
///
///     for (qvOS::DirectoryIterator walk(L"project"); walk.valid(); walk.next())
///         if (walk.onDirectory() && isHidden(walk.getName()))
///             walk.prune();
class QV_EXPORT DirectoryIterator {
public:
    /// Separators at the end of `root` are left out.
    explicit DirectoryIterator(qvString::IString const & root);
    virtual ~DirectoryIterator();

    /// Whether there is a current entry. The others are for when there is.
    bool valid() const { return !entries_.empty(); }
    /// The full path of the current entry.
    qvString::IString const & getName() const { return entries_.front().name; }
    /// Anything that is no directory.
    bool onFile() const { return !onDirectory(); }
    bool onDirectory() const { return entries_.front().directory; }
    /// Leaves out what is in the current directory.
    void prune() { entries_.front().pruned = true; }
    void next();

private:
    struct iteratorEntry {
        qvString::IString name;
        bool valid = false;     // the path was found
        bool directory = false; // it is one
        bool pruned = false;
    };

    QV_NO_EXPORT static iteratorEntry examine(qvString::IString const & name);
    QV_NO_EXPORT void visitDirectory(iteratorEntry const & entry);

    qv::list<iteratorEntry> entries_; // the current one in front
};

} // namespace qvOS

#endif
