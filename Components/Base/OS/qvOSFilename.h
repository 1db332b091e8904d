// A path on the local file system, in one normal form and in its parts.

#ifndef qvOSFilename_h
#define qvOSFilename_h

#include "Base/Containers/qvVector.h"
#include "Base/Strings/qvStringIString.h"

namespace qvOS {

/// A path. Making one brings the text into normal form: one kind of separator, no doubled or trailing separators, and
/// `directory/../` folded away where that needs no knowledge of the disk. The parts are worked out when one of them is
/// asked for first. Nothing here looks at the disk but setCwd(), getCwd() and makeDir(), and a relative path stays
/// relative.
///
/// Drives (`C:`) are understood on every platform, and network names (`\\server\share`) in values whose separator is
/// `\` and in joined paths that carry them. With the separator `/`, which is the one of this platform, a backslash in a
/// name becomes a `/`, and the network name an ordinary path.
///
/// Distinct values are independent. Several threads may read one value only after one of the part accessors has run;
/// their references stay valid until the value changes.
///
///     qvOS::Filename file(L"scenes/../maps/world.tar.gz");
///     file.name();       // maps/world.tar.gz
///     file.dirname();    // maps
///     file.baseTrunk();  // world.tar
///     file.baseSuffix(); // gz
class QV_EXPORT Filename {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = Filename;

    /// What stands between the parts of a path here: `/`.
    static wchar_t separator();
    /// What stands between the entries of a search path here: `:`.
    static char pathSeparator();
    /// The most characters of a path: 4096.
    static int maxLength();

    Filename();
    Filename(qvString::IString const & name);
    /// With a separator of its own. The other one, `/` or for that `\`, is replaced by it.
    Filename(qvString::IString const & name, wchar_t sep);
    Filename(qvString::CString const & name, char sep);
    Filename(char const * name, char sep);
    /// `a` and `b` joined, see join().
    Filename(qvString::IString const & a, qvString::IString const & b);
    Filename(Filename const & a, Filename const & b);
    /// Takes the path as it is, and the default separator.
    Filename(Filename const & other);
    virtual ~Filename();

    /// Takes the path as it is, and its separator.
    Filename & operator=(Filename const & other);
    /// Keeps the separator.
    Filename & operator=(qvString::IString const & name);

    /// The path in normal form.
    qvString::IString const & name() const { return path_; }
    /// The drive with its colon, or the network name's server and share.
    qvString::IString const & prefix() const;
    /// All in front of the last separator, the prefix included; the root keeps its separator.
    qvString::IString const & dirname() const;
    /// All behind the last separator.
    qvString::IString const & basename() const;
    /// The base name up to its last dot.
    qvString::IString const & baseTrunk() const;
    /// The base name behind its last dot.
    qvString::IString const & baseSuffix() const;
    /// The five parts in the order above; always five.
    qv::vector<qvString::IString> components() const;
    /// Whether it starts at a drive's root, with a network name, or with a `/` where that is the separator.
    bool isAbsolute() const;

    /// Joined with the default separator. An empty part adds nothing; behind a bare drive (`C:`) no separator is put.
    /// Other separators inside the parts stay as they are.
    static qvString::IString join(qvString::IString const & a, qvString::IString const & b);
    static qvString::IString join(qvString::IString const & a, qvString::IString const & b,
                                  qvString::IString const & c);
    static qvString::IString join(qvString::IString const & a, qvString::IString const & b, qvString::IString const & c,
                                  qvString::IString const & d);

    /// Makes it the process's current directory. True on success.
    bool setCwd();
    /// Takes the current directory; an empty path where there is none any more.
    void getCwd();
    /// Creates one directory, whose parent must exist. True on success; false also when it is there already.
    bool makeDir() const;

protected:
    void assign(qvString::IString const & name);
    void assign(qvString::IString const & a, qvString::IString const & b);
    /// The normal form of `in`.
    void canonicalize(qvString::IString const & in, wchar_t sep, qvString::IString & out) const;
    void removeDuplicateSeparators(qvString::IString & s, wchar_t sep) const;
    void removeTrailingSeparators(qvString::IString & s, wchar_t sep) const;
    void removeSlashDotDotSlash(qvString::IString & s, wchar_t sep) const;

private:
    struct Parts;

    QV_NO_EXPORT Parts const & split() const;
    QV_NO_EXPORT void deleteImpl();

    wchar_t separator_;
    qvString::IString path_;
    mutable Parts * parts_ = nullptr; // null until a part is asked for
};

} // namespace qvOS

// For C. Paths are in the multibyte encoding. The caller's buffer must have room for the result and its terminator;
// nothing checks that. A part is never longer than the normal form of its path, and a joined path never longer than
// the two with a separator; a character that changes its place takes as many bytes as before.
extern "C" {
QV_EXPORT void qvOS_FilenamePrefix(char const * path, char * out);
QV_EXPORT void qvOS_FilenameDirname(char const * path, char * out);
QV_EXPORT void qvOS_FilenameBasename(char const * path, char * out);
QV_EXPORT void qvOS_FilenameBaseTrunk(char const * path, char * out);
QV_EXPORT void qvOS_FilenameBaseSuffix(char const * path, char * out);
QV_EXPORT void qvOS_FilenameJoin(char const * a, char const * b, char * out);
/// Creates one directory of the normal form. True on success.
QV_EXPORT bool qvOS_FilenameMakeDir(char const * path);
}

#endif
