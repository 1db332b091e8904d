#include "Commands.h"
#include "Support/Names.h"

#include "Base/OS/qvOSFile.h"

bool openExisting(ioPackageFile & package, std::string const & name, qvUtil::Error * damage) {
    constexpr int noSoundPackage = 17;
    qvOS::FileStatus status;
    if (!qvOS::File::query(nameOf(name), status) && !status.exists()) {
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
