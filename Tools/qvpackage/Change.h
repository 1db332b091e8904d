// A package that is being changed: on a copy that takes its place at the end, or in place.

#ifndef Change_h
#define Change_h

#include "Commands.h"

#include "Base/DataFiles/ioPackageFile.h"
#include "Base/OS/qvOSProtectedWrite.h"

#include <optional>

// Gives a new file what the user's mask leaves of reading and writing: the library makes packages for their owner.
void openForOthers(qvString::IString const & file);

// The library's name of a package that is to be replaced, which it brings into normal form. False, with the reason
// told, when that is the name of another file.
bool findPackage(std::string const & package, qvString::IString & name);

enum class Presence { required, madeWhenAbsent };

class Change {
public:
    Change(std::string const & package, How how);
    Change(Change const &) = delete;
    Change & operator=(Change const &) = delete;

    // False, with the reason told, when the package cannot be changed.
    bool begin(Presence presence);
    ioPackageFile & package() { return package_; }
    // The file that is written meanwhile.
    qvString::IString const & workName() const;
    // Leaves the package as it was, on a copy.
    void giveUp();
    // Writes the directory and swaps the copy in. False, with the reason told, when that failed.
    bool finish();
    // Swaps in a file that somebody else has written at workName().
    bool swapIn();

private:
    bool fail(qvUtil::Error const & error);

    std::string argument_;
    qvString::IString name_; // since begin()
    How how_;
    bool isNew_ = false;
    ioPackageFile package_;
    std::optional<qvOS::ProtectedWrite> saving_;
};

#endif
