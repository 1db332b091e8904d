#include "Base/Undo/Internal/qvUndoGroupImpl.h"

#include "Base/Undo/Internal/qvUndoCommandRun.h"
#include "Base/Undo/Internal/qvUndoManagerImpl.h"
#include "Base/Undo/Internal/qvUndoReportFile.h"
#include "Base/Undo/qvUndoCommand.h"
#include "Base/Undo/qvUndoReport.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <utility>

namespace qvUndo {

namespace {

std::unique_ptr<char[]> copyOf(char const * text) {
    std::size_t const size = std::strlen(text) + 1;
    std::unique_ptr<char[]> copy(new char[size]);
    std::memcpy(copy.get(), text, size);
    return copy;
}

} // namespace

int saturatedBytes(std::int64_t sum) { return int(std::clamp<std::int64_t>(sum, INT_MIN, INT_MAX)); }

GroupImpl::GroupImpl(ManagerImpl & manager, char const * name)
    : Group(&manager), id_(manager.nextGroupID()), manager_(manager), name_(copyOf(name)) {
    if (reportFile.isOpen())
        qvUndoReport("  qvUndo::Group: new group (%s)\n", name_.get());
}

// Every commit comes before the first destruction, so that a command may still see its neighbours in its own.
GroupImpl::~GroupImpl() {
    ManagerImpl::Hold const hold(manager_);
    isDying_ = true;
    manager_.moveCursorOff(*this);
    if (reportFile.isOpen())
        qvUndoReport("  qvUndo::Group: delete group (%s) - %d bytes\n", name_.get(), getNumBytesUsed());
    manager_.getBusySignal().emit(true);
    for (Walk walk(*this, Walk::forward); walk.at < commands_.size(); ++walk.at)
        commands_[walk.at]->commit();
    for (Walk walk(*this, Walk::forward); walk.at < commands_.size(); ++walk.at) {
        Command * const command = std::exchange(commands_[walk.at], nullptr);
        command->group_ = nullptr;
        delete command;
    }
    commands_.clear();
    sigDestroyed_.emit(this);
    name_.reset();
    manager_.getBusySignal().emit(false);
}

// The command's own `doIt` would hold the history once more for each.
template <bool (*run)(Command &)>
bool GroupImpl::runCommand(Walk const & walk) {
    try {
        return run(*commands_[walk.at]);
    } catch (...) {
        commands_[walk.at]->stateInvalid();
        throw;
    }
}

bool GroupImpl::doIt() {
    if (isDying_)
        return false;
    ManagerImpl::Hold const hold(manager_);
    if (reportFile.isOpen())
        qvUndoReport("  + qvUndo::Group: doIt() - (%s) %d commands %d bytes.\n", name_.get(), commands_.size(),
                     getNumBytesUsed());
    if (!isValid()) {
        qvUndoReport("  ! qvUndo::Group: doIt() - (%s) invalid group.\n", name_.get());
        return false;
    }
    if (lastWasDoIt())
        return true;
    for (Walk walk(*this, Walk::forward); walk.at < commands_.size(); ++walk.at) {
        if (!runCommand<CommandRun::doIt>(walk))
            return fail("  ! qvUndo::Group: 'do' of command %d (%s) returnedfailure status\n", walk.at);
    }
    stateDone();
    return true;
}

bool GroupImpl::undoIt() {
    if (isDying_)
        return false;
    ManagerImpl::Hold const hold(manager_);
    if (reportFile.isOpen())
        qvUndoReport("  - qvUndo::Group: undoIt() - (%s) %d commands %d bytes.\n", name_.get(), commands_.size(),
                     getNumBytesUsed());
    if (!isValid()) {
        qvUndoReport("  ! qvUndo::Group: undoIt() - (%s) invalid group.\n", name_.get());
        return false;
    }
    if (lastWasUndoIt())
        return true;
    for (Walk walk(*this, Walk::backward); walk.at >= 0; --walk.at) {
        if (!runCommand<CommandRun::undoIt>(walk))
            return fail("  ! qvUndo::Group: 'undo' of command %d (%s) returnedfailure status\n", walk.at);
    }
    stateUndone();
    return true;
}

bool GroupImpl::fail(char const * format, int index) {
    if (reportFile.isOpen()) {
        qvUndoReport(format, index, commands_[index]->getName());
        qvUndoReport("  ! qvUndo::Group: marking group (%s) invalid.\n", name_.get());
    }
    stateInvalid();
    return false;
}

// A command without a number comes back here with one.
void GroupImpl::addCommand(Command * command) {
    if (!command || command->group_)
        return;
    if (command->id_ == 0)
        return command->addToGroup(this);
    if (!command->isJoining_) // it is in a group of another class
        return;
    if (isDying_) {
        command->id_ = 0;
        return;
    }
    groupHook();
    commands_.append(command);
    command->group_ = this;
}

Command * GroupImpl::getCommand(int index) {
    int const fromFirst = index < 0 ? index + commands_.size() : index;
    return fromFirst >= 0 && fromFirst < commands_.size() ? commands_[fromFirst] : nullptr;
}

std::int64_t GroupImpl::countBytes() {
    std::int64_t sum = 0;
    for (int i = 0; i < commands_.size(); ++i)
        sum += commands_[i] ? commands_[i]->getNumBytesUsed() : 0;
    return sum;
}

void GroupImpl::declarePointer(void * pointer) {
    if (pointer)
        pointers_.insert(pointer);
}

void GroupImpl::pointerDestroyed(void * pointer) {
    if (!declaresPointer(pointer))
        return;
    if (reportFile.isOpen()) {
        qvUndoReport("!   qvUndo::Group: pointer 0x%p declared by group has been destroyed\n", pointer);
        qvUndoReport("!   qvUndo::Group: marking group (%s) invalid.\n", name_.get());
    }
    stateInvalid();
}

void GroupImpl::forgetCommand(Command * command) {
    auto const place = std::find(commands_.begin(), commands_.end(), command);
    if (place == commands_.end())
        return;
    int const index = int(place - commands_.begin());
    commands_.erase(place);
    for (Walk * walk = innermostWalk_; walk; walk = walk->outer())
        walk->commandHasLeft(index);
}

} // namespace qvUndo
