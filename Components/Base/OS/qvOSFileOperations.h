// Copying, moving, renaming and deleting files, and asking whether they are there.

#ifndef qvOSFileOperations_h
#define qvOSFileOperations_h

#include "Base/OS/qvOSFilename.h"
#include "Base/Utility/qvUtilError.h"

namespace qvOS {

// The four go to the operating system directly, and have numbers of their own. The forms with pointers bring the paths
// into normal form first; narrow ones are in the multibyte encoding.

/// Copies one file, with its permissions and the date of its last change; links are followed. The copy is never open to
/// more users than the source; the permission to run as its owner or group goes over only where those are the same.
/// Text "Error copying <from> to <to>: <system text>" with the number 2 when `from` or the directory of `to` is not
/// there, 3 when `to` is there and must not be overwritten, and 1 otherwise, so when both are one file, and for a
/// source that is no plain file. What a failure leaves of the copy is removed, but not through a link. A device or a
/// pipe as `to` gets the bytes, and stays what it is.
QV_EXPORT qvUtil::Error fileCopy(Filename const & from, Filename const & to, bool overwrite);
QV_EXPORT qvUtil::Error fileCopy(char const * from, char const * to, bool overwrite);
QV_EXPORT qvUtil::Error fileCopy(wchar_t const * from, wchar_t const * to, bool overwrite);

/// Copies and then deletes the source. That it could not be deleted is no failure: both are there then.
QV_EXPORT qvUtil::Error fileMove(Filename const & from, Filename const & to, bool overwrite);
QV_EXPORT qvUtil::Error fileMove(char const * from, char const * to, bool overwrite);
QV_EXPORT qvUtil::Error fileMove(wchar_t const * from, wchar_t const * to, bool overwrite);

/// Between two directories a fileMove() that overwrites; within one a renaming, which replaces nothing. Failure 6 with
/// "File or path specified by <to> name not found.", "A component of either path prefix deniessearch permission",
/// "source is a parent directory of target, or an attempt is made to rename the .  or ..  directory." or "Unkown system
/// error.", the last when something of the new name is there. (On a file system that cannot refuse to replace, what
/// takes the name at that very moment is replaced.)
QV_EXPORT qvUtil::Error fileRename(Filename const & from, Filename const & to);
QV_EXPORT qvUtil::Error fileRename(char const * from, char const * to);
QV_EXPORT qvUtil::Error fileRename(wchar_t const * from, wchar_t const * to);

/// One file, or a link. Failure 1 with the system's text.
QV_EXPORT qvUtil::Error fileDelete(Filename const & name);
QV_EXPORT qvUtil::Error fileDelete(char const * name);
QV_EXPORT qvUtil::Error fileDelete(wchar_t const * name);

/// Whether there is a file or a directory, and whether this process may write it. False after any failure.
QV_EXPORT bool doesFileExist(Filename const & name);
QV_EXPORT bool isFileWritable(Filename const & name);

/// Whether a name would address a device on some platform: CON, PRN, AUX, NUL, COM1 to COM9 and LPT1 to LPT9, in upper
/// or lower case, with whatever suffix. They are refused everywhere, so that packages can be unpacked anywhere.
QV_EXPORT bool isWindowsReservedDeviceName(Filename const & name);

} // namespace qvOS

// For C. Names reach the storage as they are, unless told otherwise; narrow ones are in the multibyte encoding.
extern "C" {
QV_EXPORT bool qvOS_DoesFileExistW(wchar_t const * name);
QV_EXPORT bool qvOS_DoesFileExist(char const * name);
QV_EXPORT bool qvOS_IsFileWriteableW(wchar_t const * name);
QV_EXPORT bool qvOS_IsFileWriteable(char const * name);
/// True for a plain file too. The name is brought into normal form.
QV_EXPORT bool qvOS_DoesDirectoryExist(char const * name);
/// Copies as File::copyTo() does. Mind the result: true when the copying failed, false when it went well, and false too
/// when a name leads to no storage.
QV_EXPORT bool qvOS_CopyFileToW(wchar_t const * from, wchar_t const * to);
QV_EXPORT bool qvOS_CopyFileTo(char const * from, char const * to);
/// Reads the first `size` bytes. Gives `size`, or -1 for a null buffer, a negative size, a file that cannot be read and
/// one that is shorter; 0 for 0 bytes without looking at the file.
QV_EXPORT int qvOS_ReadHeaderFromFileW(wchar_t const * name, void * buffer, int size);
QV_EXPORT int qvOS_ReadHeaderFromFile(char const * name, void * buffer, int size);
}

#endif
