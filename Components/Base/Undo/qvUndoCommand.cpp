#include "Base/Undo/qvUndoCommand.h"

#include "Base/Undo/Internal/qvUndoCommandRun.h"
#include "Base/Undo/Internal/qvUndoGroupImpl.h"
#include "Base/Undo/Internal/qvUndoManagerImpl.h"
#include "Base/Undo/Internal/qvUndoReportFile.h"
#include "Base/Undo/qvUndoReport.h"

#include <cstring>

namespace qvUndo {

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
    isJoining_ = true;
    try {
        group->addCommand(this);
    } catch (...) {
        isJoining_ = false;
        id_ = 0;
        throw;
    }
    isJoining_ = false;
    if (id_ != 0 && reportFile.isOpen())
        qvUndoReport("    qvUndo::Command: new (%s, 0x%p)\n", getName(), static_cast<void *>(this));
}

namespace {

// Keeps the history as it is while an operation runs. To be let go last: a manager that was replaced meanwhile takes
// the command with it.
class MaybeHold {
public:
    explicit MaybeHold(ManagerImpl * manager) : manager_(manager) {
        if (manager_)
            manager_->hold();
    }
    ~MaybeHold() {
        if (manager_)
            manager_->release();
    }
    MaybeHold(MaybeHold const &) = delete;
    MaybeHold & operator=(MaybeHold const &) = delete;

private:
    ManagerImpl * manager_;
};

} // namespace

bool Command::doIt() {
    MaybeHold const held(group_ ? &group_->manager() : nullptr);
    try {
        return CommandRun::doIt(*this);
    } catch (...) {
        stateInvalid();
        throw;
    }
}

bool Command::undoIt() {
    MaybeHold const held(group_ ? &group_->manager() : nullptr);
    try {
        return CommandRun::undoIt(*this);
    } catch (...) {
        stateInvalid();
        throw;
    }
}

// ---- What is rare in a run

void CommandRun::traceDo(Command & command) {
    qvUndoReport("    + qvUndo::Command: doIt (%s, 0x%p), %d bytes\n", command.getName(), static_cast<void *>(&command),
                 command.getNumBytesUsed());
}

void CommandRun::traceUndo(Command & command) {
    qvUndoReport("    - qvUndo::Command: undoIt (%s, 0x%p), %d bytes\n", command.getName(),
                 static_cast<void *>(&command), command.getNumBytesUsed());
}

void CommandRun::fail(Command & command, char const * format) {
    qvUndoReport(format, command.getName());
    command.stateInvalid();
}

} // namespace qvUndo
