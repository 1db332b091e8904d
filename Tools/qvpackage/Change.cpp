#include "Change.h"

#include "Support/Names.h"

#include "Base/OS/qvOSFileOperations.h"

#include <filesystem>
#include <sys/stat.h>

void openForOthers(qvString::IString const & file) {
    mode_t const mask = ::umask(0);
    ::umask(mask);
    ::chmod(bytesOf(file).c_str(), 0666 & ~mask);
}

bool findPackage(std::string const & package, qvString::IString & name) {
    name = nameOf(package);
    if (qvOS::Filename(name).name() == name)
        return true;
    // Normal form follows the letters; here it is to follow the links.
    namespace fs = std::filesystem;
    fs::path const path(package);
    std::error_code failure;
    fs::path const directory = fs::canonical(path.has_parent_path() ? path.parent_path() : fs::path("."), failure);
    name = nameOf((directory / path.filename()).string());
    if (!failure && qvOS::Filename(name).name() == name)
        return true;
    complain(shown(package) + ": a package of this name cannot be changed");
    return false;
}

Change::Change(std::string const & package, How how) : argument_(package), how_(how) {}

bool Change::fail(qvUtil::Error const & error) {
    complain(error);
    giveUp();
    return false;
}

qvString::IString const & Change::workName() const { return saving_ ? saving_->getTempFilename().name() : name_; }

bool Change::begin(Presence presence) {
    if (!findPackage(argument_, name_))
        return false;
    isNew_ = !qvOS::doesFileExist(qvOS::Filename(name_));
    if (isNew_ && presence == Presence::required) {
        complain(shown(name_) + ": there is no such package");
        return false;
    }
    if (how_ == How::onACopy) {
        saving_.emplace(qvOS::Filename(name_));
        if (!saving_->init()) {
            complain(shown(name_) + ": cannot be replaced");
            return false;
        }
        if (!isNew_) {
            if (qvUtil::Error const error = qvOS::fileCopy(qvOS::Filename(name_), saving_->getTempFilename(), true))
                return fail(error);
        }
    }
    if (qvUtil::Error const error = package_.open(workName()))
        return fail(error);
    if (isNew_)
        openForOthers(workName());
    return true;
}

void Change::giveUp() {
    package_.close();
    if (saving_) {
        saving_->invalidate();
        static_cast<void>(saving_->finalize());
    }
}

bool Change::finish() {
    if (qvUtil::Error const error = package_.update())
        return fail(error);
    package_.close();
    return swapIn();
}

bool Change::swapIn() {
    if (!saving_ || saving_->finalize())
        return true;
    complain(shown(name_) + ": cannot be replaced");
    return false;
}
