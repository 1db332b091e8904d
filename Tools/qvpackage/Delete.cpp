#include "Change.h"
#include "Commands.h"
#include "Support/Names.h"
#include "Support/ProgressBar.h"

namespace {

// Whether it is the package that is damaged, and not the room for the copy that is missing.
bool isOfContents(qvUtil::Error const & error) {
    constexpr int unreadable = 7;
    constexpr int damaged = 9;
    constexpr int cutShort = 16;
    return error.num() == unreadable || error.num() == damaged || error.num() == cutShort;
}

} // namespace

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
    qvString::IString name;
    if (!openExisting(source, package) || !findPackage(target, name))
        return unusable;
    qvOS::ProtectedWrite saving{qvOS::Filename(name)};
    if (!saving.init()) {
        complain(shown(target) + ": cannot be replaced");
        return unusable;
    }
    qvUtil::Progress progress;
    ProgressBar bar(ProgressBar::Use::whereATerminalIs, progress);
    progress.setCaption(shown(target).c_str());
    // Damage is found in the copy, and the target is as it was.
    qvUtil::Error const error = source.write(saving.getTempFilename().name(), &progress);
    source.close();
    bar.clear();
    if (error) {
        complain(error);
        saving.invalidate();
    } else
        openForOthers(saving.getTempFilename().name()); // unless there is one already, whose permissions stay
    if (saving.finalize())
        return allWell;
    if (!error)
        complain(shown(target) + ": cannot be replaced");
    return isOfContents(error) ? withFaults : unusable;
}
