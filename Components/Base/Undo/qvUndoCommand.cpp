#include "Base/Undo/qvUndoCommand.h"

#include "Base/Undo/Internal/qvUndoGroupImpl.h"
#include "Base/Undo/Internal/qvUndoManagerImpl.h"
#include "Base/Undo/Internal/qvUndoReportFile.h"
#include "Base/Undo/qvUndoReport.h"

#include <cstring>

namespace qvUndo {

// Keeps the history as it is while an operation runs. An operation that throws has failed.
class Command::Run {
public:
    explicit Run(Command & command)
        : command_(command), manager_(command.group_ ? &command.group_->manager() : nullptr) {
        if (manager_)
            manager_->hold();
    }
    ~Run() {
        if (!ended_)
            command_.stateInvalid();
        // The last act: a manager that was replaced meanwhile takes the command with it.
        if (manager_)
            manager_->release();
    }
    Run(Run const &) = delete;
    Run & operator=(Run const &) = delete;

    bool end(bool good) {
        ended_ = true;
        return good;
    }

private:
    Command & command_;
    ManagerImpl * manager_;
    bool ended_ = false;
};

Command::Command(Group * group, char const * name) {
    if (name) {
        std::size_t const size = std::strlen(name) + 1;
        name_.reset(new char[size]);
        std::memcpy(name_.get(), name, size);
    }
    addToGroup(group);
}

Command::~Command() {
    if (group_)
        group_->forgetCommand(this);
    if (id_ != 0 && reportFile.isOpen())
        qvUndoReport("    qvUndo::Command: delete (%s, 0x%p)\n", getName(), static_cast<void *>(this));
}

int Command::getNumBytesUsed() { return 1024; }

void Command::commit() {}

// The group gets the command with its number and takes the number away again when it refuses.
void Command::addToGroup(Group * group) {
    if (!group || id_ != 0)
        return;
    id_ = group->nextCommandID();
    try {
        group->addCommand(this);
    } catch (...) {
        id_ = 0;
        throw;
    }
    if (id_ != 0 && reportFile.isOpen())
        qvUndoReport("    qvUndo::Command: new (%s, 0x%p)\n", getName(), static_cast<void *>(this));
}

bool Command::doIt() {
    if (!isValid())
        return false;
    if (lastWasDoIt())
        return true;
    Run run(*this);
    if (reportFile.isOpen())
        qvUndoReport("    + qvUndo::Command: doIt (%s, 0x%p), %d bytes\n", getName(), static_cast<void *>(this),
                     getNumBytesUsed());
    bool const good = doOperation();
    stateDone();
    if (!good) {
        if (reportFile.isOpen())
            qvUndoReport("    - qvUndo::Command: 'do' of %s returned failure.  Marking invalid.\n", getName());
        stateInvalid();
    }
    return run.end(good);
}

bool Command::undoIt() {
    if (!isValid())
        return false;
    if (lastWasUndoIt())
        return true;
    Run run(*this);
    if (reportFile.isOpen())
        qvUndoReport("    - qvUndo::Command: undoIt (%s, 0x%p), %d bytes\n", getName(), static_cast<void *>(this),
                     getNumBytesUsed());
    bool const good = undoOperation();
    stateUndone();
    if (!good) {
        if (reportFile.isOpen())
            qvUndoReport("    - qvUndo::Command: undo of %s returned failure.  Marking invalid.\n", getName());
        stateInvalid();
    }
    return run.end(good);
}

} // namespace qvUndo
