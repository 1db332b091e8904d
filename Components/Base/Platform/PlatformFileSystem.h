// What lies in the file system under a name, and what can be done to it. Names are taken as they are: a relative one
// starts at the process's current directory, and one with a zero character in it leads to nothing.

#ifndef PlatformFileSystem_h
#define PlatformFileSystem_h

#include "Base/Containers/qvVector.h"
#include "Base/Platform/PlatformFile.h"
#include "Base/Strings/qvStringIString.h"

#include <cstdint>

namespace qvPlatform {

// The character between the parts of a name, and the one between the entries of a search path.
wchar_t nameSeparator();
char searchPathSeparator();
// The longest name in characters, with its end.
int maxNameLength();

// ---- Names of the system

// A name as the system gave it: UTF-8, with the units 0xDC80 to 0xDCFF for the bytes that are none.
qvString::IString nameFromSystem(char const * bytes);

// ---- Opening

enum class OpenMode {
    read,   // the file must exist
    write,  // created, or emptied
    create, // write; `exists` when there is anything of that name; for its owner only
    update, // read and write; the file must exist, and keeps its contents
    append  // read and write, everything at the end; created when missing
};

// A new file gets the permissions that the user's mask leaves, but where the mode tells others.
FileResult openFile(qvString::IString const & name, OpenMode mode, Descriptor & descriptor);

// Leaves what was written through the descriptor on stable storage.
FileResult syncDescriptor(Descriptor descriptor);
// The same for a file by its name, and for the entries of a directory.
FileResult syncFile(qvString::IString const & name);
FileResult syncDirectory(qvString::IString const & name);

// Takes all bytes out of a file that is open for writing.
FileResult emptyDescriptor(Descriptor descriptor);

// ---- What a name leads to

enum class FileKind { file, directory, symbolicLink, other };

enum class Links {
    follow, // the facts are those of what a symbolic link leads to
    keep    // the link itself
};

// Tells two names of one file from two files.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    bool operator==(FileIdentity const &) const = default;
};

struct FileFacts {
    FileKind kind = FileKind::other;
    FileIdentity identity;
    std::int64_t size = 0;                     // bytes
    std::int64_t creationTime = 0;             // seconds since 1970; that of the last change where none is kept
    std::int64_t modificationTime = 0;         // seconds since 1970
    std::uint32_t modificationNanoseconds = 0; // behind that second
    std::uint32_t permissions = 0;             // of the binding's own meaning, and so the two below
    std::uint32_t owner = 0;
    std::uint32_t group = 0;
};

FileResult queryFile(qvString::IString const & name, Links links, FileFacts & facts);
FileResult queryDescriptor(Descriptor descriptor, FileFacts & facts);

// Whether this process may read or write it.
bool mayRead(qvString::IString const & name);
bool mayWrite(qvString::IString const & name);

// The names of owner and group, empty where the system has none for the number.
FileResult queryOwner(qvString::IString const & name, qvString::IString & owner, qvString::IString & group);

// Appends the bare names in the order of the system, "." and ".." among them. An empty name is the current directory.
// notUsable where the name leads to something that is no directory; so is a link that is kept.
FileResult listDirectory(qvString::IString const & name, Links links, qv::vector<qvString::IString> & list);

// ---- Changing it

// One directory; its parent must be there.
FileResult makeDirectory(qvString::IString const & name);
// notEmpty tells a directory that is not.
FileResult removeDirectory(qvString::IString const & name);
// A file, or a symbolic link itself.
FileResult removeFile(qvString::IString const & name);
// Never replaces anything: the outcome is `exists` then. `invalid` tells a directory that would go into itself. On a
// file system that cannot refuse by itself it asks first, and what gets the name between the two steps is replaced.
FileResult renameFile(qvString::IString const & from, qvString::IString const & to);

// Takes the place of a file that is there, in one step.
FileResult replaceFile(qvString::IString const & from, qvString::IString const & to);

// The three give an open file what is known of another, the model.
FileResult setModificationTime(Descriptor descriptor, FileFacts const & model);
// That a program runs as its owner or group goes over only where these are the model's.
FileResult setPermissions(Descriptor descriptor, FileFacts const & model);
// Takes away what the model does not allow to others than the owner. `own` is what the file has.
FileResult narrowPermissions(Descriptor descriptor, FileFacts const & own, FileFacts const & model);

// Copies all of one file to the begin of another, both just opened and the other empty; holes stay holes where the
// system can tell them. A file that ends before its size, as some that the system makes up do, ends there in the copy.
FileResult copyDescriptor(Descriptor from, Descriptor to);

// ---- Places

// Empty when there is none.
qvString::IString currentDirectory();
FileResult setCurrentDirectory(qvString::IString const & name);

// The name from the root of the file system on, without "." and "..", whether it leads to anything or not. Links are
// not resolved. `invalid` for an empty name.
FileResult absoluteName(qvString::IString const & name, qvString::IString & absolute);
// With all links on the way resolved; the name must lead to something.
FileResult resolvedName(qvString::IString const & name, qvString::IString & resolved);

// TMPDIR of the environment where that is a directory, else /tmp.
qvString::IString temporaryDirectory();

enum class Access {
    ownerOnly, // reading and writing
    byMask     // what the user's mask leaves to everybody
};

// Makes a new empty file of a name that was not there: up to three characters of the prefix, hexadecimal digits,
// ".tmp".
FileResult makeUniqueFile(qvString::IString const & directory, qvString::IString const & prefix, Access access,
                          qvString::IString & name);
// The same, and leaves it open for reading and writing.
FileResult makeUniqueFile(qvString::IString const & directory, qvString::IString const & prefix, Access access,
                          qvString::IString & name, Descriptor & descriptor);

struct FileSystemFacts {
    std::uint64_t size = 0;  // bytes
    std::uint64_t avail = 0; // bytes that this process may still write
    bool isRemote = false;
};

// Of the file system that the name lies in.
FileResult queryFileSystem(qvString::IString const & name, FileSystemFacts & facts);

int processId();

} // namespace qvPlatform

#endif
