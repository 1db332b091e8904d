// Replaces a file so that the old or the new contents survive a failure at any moment.

#ifndef qvOSProtectedWrite_h
#define qvOSProtectedWrite_h

#include "Base/OS/qvOSFilename.h"

namespace qvOS {

/// The caller writes the new contents to a temporary file beside the real one, and finalize() swaps it in through a
/// backup. The contents are on stable storage before they get the name, and the directory when finalize() returns,
/// where it can be synced: that it cannot is no failure.
///
///     qvOS::ProtectedWrite saving(document);
///     if (!saving.init())
///         return failed(saving.getStatus());
///     if (!writeDocument(saving.getTempFilename()))
///         saving.invalidate();
///     if (!saving.finalize())
///         return failed(saving.getStatus());
///
/// What a process that ends at some point leaves: while the caller writes, the old file and a part of the new one;
/// during finalize(), the old file, or the old one under the backup's name with the new one whole beside it, or the new
/// one. The names are fresh each time, and nothing looks for such leftovers.
///
/// The permission bits of the file stay, those to run as another user only where the new file has the same owner and
/// group; until finalize() the new contents have the permissions that their writer gave them. Where the name is a
/// symbolic link, what the link leads to is replaced. A link that leads to nothing, and whatever is there and is no
/// plain file, such as a directory, a device or a pipe, count as not writable. Two at once on one file are not
/// provided for.
///
/// With the copy strategy the temporary file and the backup lie in the temporary directory and are copied, for
/// directories in which no file can be made; then each of the three files may be partial at some point, but never all,
/// and a failure leaves the backup unless the file itself is known to be whole.
/// It is in force when useCopyStrategy() was called before init(), or when the environment has
/// ORVEN_PROTECTED_WRITE_USE_COPY, which is looked at once.
class QV_EXPORT ProtectedWrite {
public:
    enum status {
        StatusOk = 0,               ///< no failure so far
        StatusNotWritable = 1,      ///< it is no file that can be written, or the new contents did not reach its name
        StatusNoTempDirectory = 2,  ///< the temporary directory is missing and cannot be made
        StatusBadTempDirectory = 3, ///< it is no directory
        StatusOldTempFile = 4,      ///< a file of a name that is needed cannot be deleted
        StatusNoNewFile = 5,        ///< finalize(): nothing was written
        StatusNoBackup = 6,         ///< finalize(): the file could not be moved out of the way; it is as it was
        StatusInvalidated = 7       ///< finalize() behind invalidate(); the file is as it was
    };

    /// Touches nothing.
    explicit ProtectedWrite(Filename const & main);
    ProtectedWrite(ProtectedWrite const &) = default;
    ProtectedWrite & operator=(ProtectedWrite const &) = default;
    /// Deletes the temporary file if there is one; so does each copy of this object.
    ~ProtectedWrite();

    void useCopyStrategy() { useCopy_ = true; }
    /// Chooses the names. True when all is well; a second call only tells that again.
    bool init();
    /// Swaps the new contents in, and clears away. True when all is well; without init() nothing is done, and that is
    /// well. The backup that was made is deleted, unless the file itself could not be put back.
    bool finalize();
    /// The new contents are not to be used.
    void invalidate() { valid_ = false; }

    status getStatus() const { return status_; }
    Filename const & getMainFilename() const { return main_; }
    /// Where to write.
    Filename const & getTempFilename() const { return temp_; }

private:
    QV_NO_EXPORT Filename const & target() const { return resolved_.name().isEmpty() ? main_ : resolved_; }
    QV_NO_EXPORT void lookAtMain();
    QV_NO_EXPORT void prepareTempDirectory();
    QV_NO_EXPORT void swapIn();

    Filename main_;
    Filename temp_;
    Filename backup_;
    status status_ = StatusOk;
    bool initialized_ = false;
    bool valid_ = true;
    bool useCopy_ = false;
    bool backupIsSpare_ = false; // a backup was made, and does not hold the last whole contents
    Filename resolved_;          // what main_ leads to where that is a link, else empty
};

} // namespace qvOS

#endif
