#include "Commands.h"
#include "Support/Names.h"

#include "Base/OS/qvOSFile.h"

bool isThere(std::string const & package) {
    qvOS::FileStatus status;
    return qvOS::File::query(nameOf(package), status) || status.exists();
}

bool openExisting(ioPackageFile & package, std::string const & name, qvUtil::Error * damage) {
    constexpr int noSoundPackage = 17;
    if (!isThere(name)) {
        complain(shown(name) + ": there is no such package");
        return false;
    }
    qvUtil::Error const error = package.open(nameOf(name));
    if (!error)
        return true;
    complain(error);
    if (damage != nullptr && error.num() == noSoundPackage)
        *damage = error;
    return false;
}
