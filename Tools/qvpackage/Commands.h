// The commands of qvpackage. Each reports what goes wrong on standard error and gives the exit status.

#ifndef Commands_h
#define Commands_h

#include "Base/DataFiles/ioPackageFile.h"
#include "Base/Utility/qvUtilError.h"

#include <cstdint>
#include <string>
#include <vector>

enum Status {
    allWell = 0,
    withFaults = 1, // something was left out, missing or damaged
    unusable = 2    // the package cannot be read or written, or the arguments make no sense
};

enum class How { onACopy, inPlace };

struct AddOptions {
    bool compress = false;
    bool quiet = false;
    How how = How::onACopy;
};

struct ExtractOptions {
    std::string directory = ".";
    std::int64_t limit = -1; // bytes to be written in all; below 0 for any number
};

// Names of files and entries are those of the command line: bytes, as a rule UTF-8.
Status add(AddOptions const & options, std::string const & package, std::vector<std::string> const & files);
Status list(bool isLong, std::string const & package);
Status extract(ExtractOptions const & options, std::string const & package, std::vector<std::string> const & names);
Status deleteEntries(How how, std::string const & package, std::vector<std::string> const & names);
Status compact(std::string const & package, std::string const & target);
Status check(std::string const & package);
Status info(std::string const & package);

// Whether a file is there, also one that cannot be asked about.
bool isThere(std::string const & package);

// Opens a package that is to be there: the library makes one where there is none. False with the reason told; `damage`
// then holds the failure when it was that the file is no sound package.
bool openExisting(ioPackageFile & package, std::string const & name, qvUtil::Error * damage = nullptr);

// Writes "qvpackage: " and the text, on a line of its own.
void complain(std::string const & text);
void complain(qvUtil::Error const & error);

#endif
