// Names that are not yet in a set.

#ifndef qvUtilUniqueNames_h
#define qvUtilUniqueNames_h

#include "Base/Containers/qvSet.h"
#include "Base/Strings/qvStringCString.h"
#include "Base/qvBaseConfig.h"

namespace qv {
class ImplBase;
}

namespace qvUtil {

class UniqueNamesImpl;

/// A set of names that numbers those it has already: beside "abc" the name "abc" becomes "abc-1", and then "abc-2". A
/// name is a base, and maybe a separator with decimal digits behind it, and maybe a suffix behind that, which the
/// number goes in front of: with the suffix ".x" the name "abc.x" becomes "abc-1.x".
///
///     qvUtil::UniqueNames names("_");
///     names.insert("part"); // "part"
///     names.insert("part"); // "part_1"
///
/// A copy works on the same set as the one that it was made from, and must not outlive the one that was made first. One
/// thread at a time may use a set.
class QV_EXPORT UniqueNames {
public:
    explicit UniqueNames(qvString::CString const & separator = "-", qvString::CString const & suffix = "");
    UniqueNames(UniqueNames const & other) : impl_(other.impl_), owns_(false) {}
    UniqueNames & operator=(UniqueNames const &) = delete;
    ~UniqueNames();

    /// Both hold for later insertions, and for all copies.
    void setSuffix(qvString::CString const & suffix);
    void setSeparator(qvString::CString const & separator);

    /// All names that were given out.
    qv::set<qvString::CString> const & getNames() const;

    /// Gives the name as it is when it is not in the set, even if it looks numbered. Otherwise its number becomes one
    /// more than the greatest of those names in the set that differ from it in their number only. The result is in the
    /// set then, and was not before. The time grows with the number of names that begin with the same base.
    qvString::CString insert(qvString::CString const & name);

private:
    QV_NO_EXPORT UniqueNamesImpl & impl() const;

    qv::ImplBase * impl_;
    bool owns_;
};

} // namespace qvUtil

#endif
