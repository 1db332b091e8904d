// Names for files that are needed for a while, and clearing away what was left of such files.

#ifndef qvOSTemporaryFiles_h
#define qvOSTemporaryFiles_h

#include "Base/OS/qvOSFilename.h"

namespace qvOS {

/// Where temporary files go: TMPDIR of the environment where that is a directory, else /tmp.
QV_EXPORT Filename getTempDirectory();

/// A new name in the temporary directory: up to three characters of `prefix` ("OVTMP" for null), digits that make it
/// unique, the process's number, and "." with `suffix` unless that is empty. There was no file of that name a moment
/// ago; nothing keeps others from taking it, and no file is made. When the directory takes no file, the name begins at
/// the root and has neither prefix nor digits.
QV_EXPORT Filename createTmpFilename(qvString::IString suffix, wchar_t const * prefix);
/// The same in a directory of the caller's, with "recover" for a null `prefix`. For the current directory pass ".":
/// with an empty path, as Filename::dirname() gives for a bare name, the result lies in the root.
QV_EXPORT Filename createNewFilenameVariant(Filename directory, wchar_t const * prefix, qvString::IString suffix);

/// Deletes files in a directory, not in those below it, that the programs of the family left there more than seven days
/// ago: by their last change, and by their names, which are vor*.unload, vorenTempFile.*, *.vz$, mek*out<digit> and
/// mek*cmd<digit>.bat. Gives how many were deleted.
QV_EXPORT int cleanupTempDirectory(qvString::IString const & directory);
/// The same in the temporary directory, and in /tmp where that is another one.
QV_EXPORT int cleanupTempDirectory();

} // namespace qvOS

// For C. The caller releases the results with free(). A null suffix counts as empty.
extern "C" {
/// createTmpFilename() with its own prefix, in the multibyte encoding; null for an empty name.
QV_EXPORT char * qvOS_CreateTemporaryFileName(char const * suffix);
QV_EXPORT wchar_t * qvOS_CreateTemporaryFileNameW(wchar_t const * suffix);
QV_EXPORT char * qvOS_GetTemporaryDirectory();
QV_EXPORT wchar_t * qvOS_GetTemporaryDirectoryW();
}

#endif
