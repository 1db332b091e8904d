#include "Change.h"

#include "Names.h"

#include "Base/OS/qvOSFileOperations.h"

#include <sys/stat.h>

void openForOthers(qvString::IString const & file) {
    mode_t const mask = ::umask(0);
    ::umask(mask);
    ::chmod(bytesOf(file).c_str(), 0666 & ~mask);
}

Change::Change(std::string const & package, How how) : name_(nameOf(package)), how_(how) {}

bool Change::fail(qvUtil::Error const & error) {
    complain(error);
    giveUp();
    return false;
}

qvString::IString const & Change::workName() const { return saving_ ? saving_->getTempFilename().name() : name_; }

bool Change::begin(Presence presence) {
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
