#include "Change.h"
#include "Commands.h"
#include "Names.h"

Status deleteEntries(How how, std::string const & package, std::vector<std::string> const & names) {
    Change change(package, how);
    if (!change.begin(Presence::required))
        return unusable;
    Status status = allWell;
    for (std::string const & name : names) {
        if (qvUtil::Error const error = change.package().deleteEntry(nameOf(name))) {
            complain(error);
            status = withFaults;
        }
    }
    return change.finish() ? status : unusable;
}

Status compact(std::string const & package, std::string const & target) {
    ioPackageFile source;
    if (qvUtil::Error const error = source.open(nameOf(package))) {
        complain(error);
        return unusable;
    }
    qvOS::ProtectedWrite saving(qvOS::Filename(nameOf(target)));
    if (!saving.init()) {
        complain(shown(target) + ": cannot be replaced");
        return unusable;
    }
    // Damage is found in the copy, and the target is as it was.
    qvUtil::Error const error = source.write(saving.getTempFilename().name());
    source.close();
    if (error) {
        complain(error);
        saving.invalidate();
    } else
        openForOthers(saving.getTempFilename().name()); // unless there is one already, whose permissions stay
    if (saving.finalize())
        return allWell;
    if (!error)
        complain(shown(target) + ": cannot be replaced");
    return error ? withFaults : unusable;
}
