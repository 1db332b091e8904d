#include "Base/Undo/Internal/qvUndoGroupImpl.h"

#include "Base/Undo/Internal/qvUndoCommandRun.h"
#include "Base/Undo/Internal/qvUndoManagerImpl.h"
#include "Base/Undo/Internal/qvUndoReportFile.h"
#include "Base/Undo/qvUndoCommand.h"
#include "Base/Undo/qvUndoReport.h"

#include <algorithm>
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

GroupImpl::GroupImpl(ManagerImpl & manager, char const * name)
    : Group(&manager), id_(manager.nextGroupID()), manager_(manager), name_(copyOf(name)) {
    if (reportFile.isOpen())
        qvUndoReport("  qvUndo::Group: new group (%s)\n", name_.get());
}

// Every commit comes before the first destruction, so that a command may still see its neighbours in its own. Loops go
// by index and ask for the size again: what is called here may delete commands by hand.
GroupImpl::~GroupImpl() {
    ManagerImpl::Hold const hold(manager_);
    isDying_ = true;
    manager_.moveCursorOff(*this);
    if (reportFile.isOpen())
        qvUndoReport("  qvUndo::Group: delete group (%s) - %d bytes\n", name_.get(), getNumBytesUsed());
    manager_.getBusySignal().emit(true);
    for (int i = 0; i < commands_.size(); ++i)
        commands_[i]->commit();
    for (int i = 0; i < commands_.size(); ++i) {
        Command * const command = std::exchange(commands_[i], nullptr);
        if (command) {
            command->group_ = nullptr;
            delete command;
        }
    }
    commands_.clear();
    sigDestroyed_.emit(this);
    name_.reset();
    manager_.getBusySignal().emit(false);
}

// The command's own `doIt` would hold the history once more for each.
template <bool (*run)(Command &)>
bool GroupImpl::runCommand(int index) {
    try {
        return run(*commands_[index]);
    } catch (...) {
        if (Command * const command = getCommand(index))
            command->stateInvalid();
        throw;
    }
}

bool GroupImpl::doIt() {
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
    for (int i = 0; i < commands_.size(); ++i) {
        if (!runCommand<CommandRun::doIt>(i))
            return fail("  ! qvUndo::Group: 'do' of command %d (%s) returnedfailure status\n", i);
    }
    stateDone();
    return true;
}

bool GroupImpl::undoIt() {
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
    for (int i = commands_.size() - 1; i >= 0; i = std::min(i, commands_.size()) - 1) {
        if (!runCommand<CommandRun::undoIt>(i))
            return fail("  ! qvUndo::Group: 'undo' of command %d (%s) returnedfailure status\n", i);
    }
    stateUndone();
    return true;
}

bool GroupImpl::fail(char const * format, int index) {
    if (reportFile.isOpen()) {
        Command * const command = getCommand(index);
        qvUndoReport(format, index, command ? command->getName() : "");
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

int GroupImpl::getNumBytesUsed() {
    std::int64_t sum = 0;
    for (int i = 0; i < commands_.size(); ++i)
        sum += commands_[i] ? commands_[i]->getNumBytesUsed() : 0;
    return saturatedBytes(sum);
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
    if (place != commands_.end())
        commands_.erase(place);
}

} // namespace qvUndo
