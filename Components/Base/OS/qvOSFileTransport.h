// A stream of bytes that has a name in some storage.

#ifndef qvOSFileTransport_h
#define qvOSFileTransport_h

#include "Base/Containers/qvVector.h"
#include "Base/OS/qvOSFileStatus.h"
#include "Base/OS/qvOSIOStream.h"

namespace qvOS {

/// How a transport is opened: a set of these bits. Text is binary on this platform. OpenRead with OpenWrite opens a
/// file that must exist for both, and keeps its contents; OpenWrite alone creates or empties; OpenAppend, which
/// overrides the two, creates when needed, reads anywhere and writes at the end. OpenCreate and OpenBinary change
/// nothing.
enum OpenMode { OpenText = 1, OpenBinary = 2, OpenRead = 4, OpenWrite = 8, OpenAppend = 16, OpenCreate = 32 };

/// How File::deleteSelf() goes about it.
enum DeleteFlags {
    DeleteShallow = 64,   ///< a directory itself, which must be empty
    DeleteRecursing = 128 ///< what a deletion of a whole tree passes on; changes nothing
};

/// A named resource of some kind of storage: the local disk, or what a module adds through FileFactory. It is a value
/// of one thread at a time. File is the handle that callers use on one.
///
/// The numbers and texts of its failures are those of File::getError(); an operation that a transport does not offer
/// gives -1 with "This function is not implemented.". Storage of another kind implements what is pure here.
class QV_EXPORT FileTransport : public IOStream {
public:
    FileTransport() = default;
    FileTransport(FileTransport const &) = delete;
    FileTransport & operator=(FileTransport const &) = delete;
    ~FileTransport() override;

    /// `mode` is a set of OpenMode bits. A transport that is open is closed first. Failures: 18 when there is no such
    /// file, 2 when there is one already, 4 otherwise.
    virtual qvUtil::Error open(int mode) = 0;
    /// Creates a file of a new name, made from this one, and opens it; the name becomes the transport's own.
    virtual qvUtil::Error openTemp(int mode);
    virtual qvUtil::Error close() = 0;
    virtual qvUtil::Error makeDirectory() = 0;
    /// Creates a directory of a new name, which becomes the transport's own.
    virtual qvUtil::Error makeTempDirectory();
    /// Creates the directory with all those above it that are missing. Success when it is there. A name that ends in a
    /// separator, or has a doubled one, names a directory twice: when that was missing it is made, and gives 2.
    virtual qvUtil::Error makeDirectoryAll();
    /// Gives the names in a directory, as the storage has them, in its own order; with `fullPaths` each behind the
    /// directory's name.
    virtual qvUtil::Error readDir(qv::vector<qvString::IString> & list, bool fullPaths) = 0;
    /// Copies the contents, of a directory all that is in it, to a transport of any kind; both must be closed. What a
    /// failure leaves of the target stays there. Failures: 9 when one is open; 7 when both have the same name, are two
    /// names of one local file, or the target would lie in the directory itself; those of opening, reading and writing.
    /// Links are followed, but for one to a directory above it, which gives 7 for this entry. A special file of the
    /// local disk, such as a device or a pipe, is not copied: 4.
    virtual qvUtil::Error copyTo(FileTransport & target);
    /// Copies, and deletes itself when that went well; within one storage a renaming where that can be done. Nothing
    /// that exists is replaced by a renaming. Failures: those of copyTo() and deleteSelf(), 18 when there is nothing. A
    /// directory that is copied, to another disk or into an existing one, is deleted only when it is empty: otherwise
    /// both are there, and the result is 13.
    virtual qvUtil::Error moveTo(FileTransport & target);
    /// Deletes the file, or the directory, which must be empty (13).
    virtual qvUtil::Error deleteSelf() = 0;
    virtual bool isDirectory() = 0;
    virtual bool isOpen() = 0;
    virtual qvString::IString getFullName() = 0;
    /// The full name up to its last separator, which is included.
    virtual qvString::IString getNameTitle() = 0;
    /// What follows the last separator; empty when there is none.
    virtual qvString::IString getNameBase() = 0;
    virtual wchar_t getSeparator() = 0;
    /// Tells the kind of storage.
    virtual qvString::IString transportId() = 0;
    /// Fills in what it knows; a resource that is missing is no failure, exists() tells it.
    virtual qvUtil::Error query(FileStatus & status) = 0;
    virtual qvUtil::Error queryOwnerGroup(FileStatus & status);

    /// Deletes a directory with everything in it, as far as possible: what resists is left, and then the directory
    /// gives 13. Symbolic links are removed, not followed, also by a name with a separator at its end; but whoever
    /// exchanges a directory on the way for a link meanwhile leads the deletion elsewhere.
    qvUtil::Error recursiveDeleteSelf();
    /// Copies, or moves, all entries of this directory into another one. A failure stops nothing, and the first one is
    /// the result. 10 when one of the two is no directory.
    qvUtil::Error recreateDirStructure(FileTransport & target, bool move);
};

/// Makes the transports of one kind of storage.
class QV_EXPORT FileTransportFactory {
public:
    FileTransportFactory() = default;
    FileTransportFactory(FileTransportFactory const &) = delete;
    FileTransportFactory & operator=(FileTransportFactory const &) = delete;
    virtual ~FileTransportFactory();

    /// A new transport, which is the caller's; null when the name is not for this factory.
    virtual FileTransport * create(qvString::IString const & name) = 0;
};

} // namespace qvOS

#endif
