// Loads the catalogs of user-visible texts.

#ifndef qvStringTableManager_h
#define qvStringTableManager_h

#include "Base/Strings/qvStringIString.h"
#include "Base/Utility/qvUtilError.h"
#include "Base/qvBaseConfig.h"

namespace qvOS {
class Filename;
}

namespace qvStringTable {

/// Reads a catalog, a text file in UTF-8, into appStringTable(). An entry is a key, a blank, `=`, and a text in double
/// quotes; an entry whose key is there already replaces its text.
///
///     // Comments stand on lines of their own, behind one blank at most.
///     gui.ok = "OK"
///     gui.path = "The name \"%S\"\n\tis taken."
///
/// A line that ends with a backslash goes on with the next one; blanks at the start of that are gone, and one before
/// the backslash stays. In a text \n is a line feed, \t a tab, \r\n both ends of a line, and \" or "" a double quote;
/// other backslashes stay. Lines end with LF or CR LF, the last one with either or nothing. A byte order mark at the
/// start of a line is skipped, and a line is over at a zero byte. What is longer than 4097 bytes comes as several lines
/// of at most so many, which are cut between characters.
///
/// Reading stops at the first fault, and the entries before it stay. The line in a message is the last one of its
/// entry.
///
///     1  "Can't open catalog file %s for read: %s\n"       the file, the system's text
///     2  "Error reading file %s: %s\n"                     the same
///     3  "String file parsing error encountered, line %d, file %S: \n%S: %S\n"    ..., what is wrong, the entry:
///        "Expected idToken = \"quoted value string\" format"
///        "Expected quotes surrounding value string. Illegal character(s) encountered at start or end of string"
///        "Key string contains non-ascii characters"
///        "Key string does not have valid format"
///     4  "Error assigning string table entry for key:%s, value%s\n"
///     5  "String file conversion error encountered, line %d, file %S: \n%S: %S\n", with
///        "Error interpreting input as UTF-8" and the line with U+FFFD in it
///
/// An entry that is open at the end of the file, behind a backslash, is dropped.
class QV_EXPORT FileUtil {
public:
    static qvUtil::Error readCatalogFile(qvOS::Filename const & name);
};

/// The same by either form of a name.
class QV_EXPORT Manager {
public:
    static qvUtil::Error loadCatalog(qvOS::Filename const & name);
    static qvUtil::Error loadCatalog(qvString::IString const & name);
};

} // namespace qvStringTable

#endif
