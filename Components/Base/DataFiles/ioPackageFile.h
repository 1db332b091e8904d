// A file that bundles files.

#ifndef ioPackageFile_h
#define ioPackageFile_h

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvVector.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPackageFileEntry.h"
#include "Base/DataFiles/ioPackageFileSource.h"
#include "Base/Utility/qvUtilError.h"

#include <cstdint>

namespace qvPlatform {
struct FileIdentity;
}

namespace qvUtil {
class Progress;
}

namespace ioPackageIO {
class PackageRegistry;
class PackageReadContext;
} // namespace ioPackageIO

// A package file: a text header with a pointer to the directory, the bytes of the entries one behind the other, and the
// directory, which is a binary packet file. Entries are added, replaced and deleted in place, and what they leave is
// used again; the file itself never shrinks, but write() makes a compact copy.
//
//     ioPackageFile package;
//     if (qvUtil::Error const error = package.open(L"maps.package"))
//         return error;
//     if (qvUtil::Error const error = package.addEntry(L"/tmp/world.map", L"maps/world.map", true))
//         return error;
//     return package.update(); // the directory on disk now knows it
//
// Changes reach the data in the file at once, and the directory with update(); without it, the file is left as at the
// last update() only as long as nothing was added: what is appended lies where the directory stood, and then the file
// cannot be opened any more. To be safe against an end of the process work on a copy (qvOS::ProtectedWrite), or use
// write(). update() leaves all bytes on stable storage, the pointer, which makes the new directory the valid one, last.
//
// Every operation gives an Error, with a number and a text for each reason; %s stands for the file's name, unless told
// otherwise. Behind a failure the table is consistent, and the object can go on. An object belongs to one thread at a
// time; two objects on one file, of which one changes it, are a fault of their owners, for nothing is locked.
//
// What takes long reports on a Progress, if it gets one, from 0 to 1, where it arrives with success (what is unpacked
// is estimated); it does not ask whether it is cancelled.
//
//      1  "Internal error."
//      2  "Can not create file: %s"
//      3  "The package file has not been opened yet."
//      4  "The package file is not writable.", and with another wording of it
//      5  the text of qvOS::File::makeDirectoryAll()
//      6  "File does not exist: %s\n"
//      7  what cannot be read: the package, an entry or a file; "The given package file entry is NULL."
//      8  "While compressing file it changed size: %s"
//      9  "Error reading ...: %s", of damaged entries too
//     10  "Error writing ...: %s", "Error compressing file: %s"
//     11  "File is using a windows reserved device name.  Please choose another name: %s", "The name can not be empty."
//     12  "File is using a name which is not allowed: %s"
//     13  "Can not delete named entry as it does not exist: %s"
//     14  "The entry is already present in the package: %s"
//     15  "Could not open package for write: %s", "The source entry can not be in the package."
//     16  "While writing file for entry it changed size: %s"
//     17  "The file is not a package file: %s", "Can not open directory: %s", "Error reading directory: %s"
class QV_EXPORT ioPackageFile {
public:
    ioPackageFile();
    ioPackageFile(ioPackageFile const &) = delete;
    ioPackageFile & operator=(ioPackageFile const &) = delete;
    // Closes the file. What was changed since the last update() is lost.
    virtual ~ioPackageFile();

    // Opens a package, or creates one where there is no such file; a new one is no package for others before its first
    // update(). Failures: 2, 7, 10, 15, 17, and 4 with the system's text where the file cannot be asked
    // about; then the object is as a new one.
    qvUtil::Error open(qvString::IString const & name);
    // Writes the directory if anything has changed since the package was opened. Failures: 1, 3, 4, 10, 15.
    qvUtil::Error update();
    // Lets the file go; the object stays usable.
    void close();

    // Null where there is none of that name. The name is taken as it is stored.
    ioPackageFileEntry const * getEntry(qvString::IString const & name) const;
    // The record at a place of the table, the end marker the last; null for a free record and outside the table.
    ioPackageFileEntry const * getEntry(int index) const;
    // The number of named entries.
    int size() const { return directory_.size(); }
    // The names, in their order, with the places of their records in the table.
    qv::map<qvString::IString, int> const & getDirectory() const { return directory_; }
    qvString::IString const & getPackageFileName() const { return packageName_; }

    // Adds a file under a name, which is cleaned up first; an entry of that name is replaced, and lost when copying
    // into the package fails: "Error reading file for entry: %s", "Error writing entry: %s" and 16. Asked to, it is
    // stored compressed when that makes it smaller; for a large file this needs room in the temporary directory. The
    // file must keep its size meanwhile, and not be the package itself (15). Failures: 3, 4, 6 to 12, 15, 16.
    qvUtil::Error addEntry(qvString::IString const & file, qvString::IString const & name, bool compress,
                           qvUtil::Progress * progress = nullptr);
    // The same of a file that was made ready before, as often as wanted. Failures: 3, 4, 7, 9 to 12, 15, 16; 7 also
    // when nothing is ready.
    qvUtil::Error addEntry(ioPackageFileSource const & source, qvString::IString const & name,
                           qvUtil::Progress * progress = nullptr);
    // Adds an entry of another package, as it is stored there. Failures: 3, 4, 7, 9 to 12, 14 to 16.
    qvUtil::Error addEntry(ioPackageFileEntry const * entry, qvString::IString const & name,
                           qvUtil::Progress * progress = nullptr);
    // Frees an entry's place. Failures: 3, 4, 13.
    qvUtil::Error deleteEntry(qvString::IString const & name);

    // Writes what an entry holds to a file, whose directory is created. The file gets its name when it is whole: a
    // failure leaves what was there. The package's file may stay open until something is written or close(). A null
    // entry is no failure. With a limit, contents of more bytes give 10. Failures: 2, 5, 7, 9, 10.
    qvUtil::Error extractEntry(ioPackageFileEntry const * entry, qvString::IString const & file,
                               std::int64_t limit = noLimit, qvUtil::Progress * progress = nullptr) const;
    // Writes all entries, in the order of their names, to files below a directory, up to the first failure. An entry
    // that would come out elsewhere, by its name or through a symbolic link that lies there, is refused with 12; then
    // the others are written all the same.
    qvUtil::Error expand(qvString::IString const & directory) const;
    // Refuses, with 12, a name that leads out of any directory to which it is joined.
    static qvUtil::Error verifyExtractName(qvString::IString const & name);
    // Where expand() puts an entry of that name below a directory; 12 when it refuses to, also for want of a path so
    // long.
    static qvUtil::Error placeBelow(qvString::IString const & directory, qvString::IString const & name,
                                    qvString::IString & file);

    // Writes a copy without free parts, and goes on with that. A file of that name is replaced, but not this package's
    // own (4, "The pacakge is not writable."). Behind a failure this object goes on with its own file; the other one is
    // lost, and what was written of the copy stays there. Failures: 3, and those of open(), addEntry() and update().
    qvUtil::Error write(qvString::IString const & name, qvUtil::Progress * progress = nullptr);

    // Whether the file begins like a package with a directory. The directory is not read.
    static bool isFilePackageFile(qvString::IString const & name);
    // The form in which a name is stored: relative, with forward slashes, without a drive and leading dots.
    qvString::IString cleanupName(qvString::IString const & name) const;

    static constexpr std::int64_t noLimit = -1;

    // For tools: where the bytes of entries begin in the file, -1 while no package is open.
    std::int64_t getDataOffset() const { return dataOffset_; }
    // What was wrong with the records of the last directory that open() refused with "Error reading directory: %s";
    // null when they could not even be read.
    char const * getDirectoryFault() const { return directoryFault_; }
    // For tests: what is wrong with the table, null when all its rules hold.
    char const * validate() const;

private:
    friend class ioPackageIO::PackageReadContext;
    struct Source;
    class NewRecord;

    QV_NO_EXPORT void reset();
    QV_NO_EXPORT qvPlatform::FileIdentity identity() const;
    QV_NO_EXPORT qvUtil::Error openPackageForOutput();
    QV_NO_EXPORT void closePackageForOutput() const;

    QV_NO_EXPORT qvUtil::Error createPackage();
    QV_NO_EXPORT qvUtil::Error writePackageHeader();
    QV_NO_EXPORT qvUtil::Error writeDirectoryPointer(std::int64_t value, std::int64_t & end);
    QV_NO_EXPORT qvUtil::Error readPackageHeader();
    QV_NO_EXPORT qvUtil::Error writeDirectory();
    QV_NO_EXPORT qvUtil::Error writeRecords();
    QV_NO_EXPORT qvUtil::Error readDirectory();
    QV_NO_EXPORT bool takeRecords(std::int64_t end);

    // The table
    QV_NO_EXPORT void appendEntry(char const * name, std::int64_t offset, std::int64_t size, std::int64_t timestamp,
                                  bool compressed);
    QV_NO_EXPORT void updateDirectoryEntry(std::int64_t offset) { entries_.back().offset_ = offset; }
    QV_NO_EXPORT int createEntry(std::int64_t size);
    QV_NO_EXPORT void splitEntry(int index, std::int64_t size);
    QV_NO_EXPORT void joinEntries(int index);
    QV_NO_EXPORT void freeEntry(int index);
    QV_NO_EXPORT void insertRecord(int index, std::int64_t offset, std::int64_t size);
    QV_NO_EXPORT void movePlaces(int index, int by);
    QV_NO_EXPORT bool enterAllNames();
    QV_NO_EXPORT bool enterName(int index, qvString::IString const & name);
    QV_NO_EXPORT char const * findFault(std::int64_t end) const;

    // Contents
    QV_NO_EXPORT qvUtil::Error verifyAddEntry(qvString::IString const & name) const;
    QV_NO_EXPORT qvUtil::Error copySourceIntoPackage(ioPackageFileSource::Impl & source, qvString::IString const & name,
                                                     qvUtil::Progress * progress);
    QV_NO_EXPORT qvUtil::Error copyEntryIntoPackage(ioPackageFileEntry const * entry, qvString::IString const & name,
                                                    qvUtil::Progress * progress);
    template <class Write>
    QV_NO_EXPORT qvUtil::Error putIntoPackage(Source const & source, Write write);
    QV_NO_EXPORT qvUtil::Error copyStreamIntoPackage(ioBufferedStreamInput & stream, Source const & source);
    QV_NO_EXPORT qvUtil::Error copyAllInto(ioPackageFile & copy, qvUtil::Progress * progress) const;
    QV_NO_EXPORT void takeOver(ioPackageFile & other);
    QV_NO_EXPORT ioBufferedStreamInput & inputAt(std::int64_t offset) const;

    qvString::IString packageName_; // empty while no package is open
    std::uint64_t fileDevice_ = 0;  // of the file, which tell it from others
    std::uint64_t fileNumber_ = 0;
    bool writable_ = false;
    bool dirty_ = false;              // the table differs from the directory on disk
    std::int64_t pointerOffset_ = -1; // where the directory pointer stands
    std::int64_t dataOffset_ = -1;    // behind it: where the data region begins
    qv::map<qvString::IString, int> directory_;
    qv::vector<ioPackageFileEntry> entries_; // in the order of their offsets, the end marker last
    qv::vector<int *> places_;               // of each record the number in directory_, null for one without a name
    char const * directoryFault_ = nullptr;  // of the last directory that was read
    int freeCount_ = 0;                      // records with an empty name
    // Reading closes the output first, so that a second descriptor sees all bytes, and writing the input.
    mutable ioBufferedStreamOutput output_;
    mutable bool outputOpen_ = false;
    mutable ioBufferedStreamInput input_;  // what is extracted as it is stored
    mutable std::int64_t inputOffset_ = 0; // where the next byte of it stands in the file
};

#endif
