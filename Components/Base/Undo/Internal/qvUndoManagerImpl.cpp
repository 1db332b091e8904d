#include "Base/Undo/Internal/qvUndoManagerImpl.h"

#include "Base/Undo/Internal/qvUndoReportFile.h"
#include "Base/Undo/qvUndoReport.h"

#include <iterator>
#include <memory>

namespace qvUndo {

ManagerImpl::ManagerImpl() : cursor_(queue_.end()) {}

// The hold is never released: nothing that is called from here begins a group.
ManagerImpl::~ManagerImpl() {
    hold();
    destroyAllGroups();
}

void ManagerImpl::retire() {
    retired_ = true;
    if (!isHeld())
        delete this;
}

// ---- Undo and do

// Signals around a walk over the groups of one step. A walk that throws is a failure that the caller hears of. Whoever
// was told that it begins is told that it ends, also when another listener throws.
template <class Walk>
bool ManagerImpl::runStep(Walk walk) {
    struct Busy {
        bool & flag;
        explicit Busy(bool & f) : flag(f) { flag = true; }
        ~Busy() { flag = false; }
    };
    Busy const busy(busy_);
    bool hasBegun = false;
    bool good = false;
    try {
        getBusySignal().emit(true);
        hasBegun = true;
        good = walk();
        if (!good)
            currentGroupIsInvalid();
    } catch (...) {
        if (hasBegun)
            currentGroupIsInvalid();
        getBusySignal().emit(false);
        throw;
    }
    getBusySignal().emit(false);
    return good;
}

// Steps without a command are passed over, because the user would see nothing happen.
bool ManagerImpl::undoIt() {
    if (isHeld())
        return false;
    Hold const held(*this);
    for (;;) {
        if (reportFile.isOpen())
            qvUndoReport("- qvUndo::Manager: undoIt() - %d groups, %d bytes used\n", queue_.size(),
                         saturatedBytes(countBytes()));
        if (!canUndo()) {
            qvUndoReport("- qvUndo::Manager: undoIt() - at beginning of queue.\n");
            return true;
        }
        int commands = 0;
        bool const good = runStep([&] { return undoGroups(commands); });
        if (!good || commands != 0)
            return good;
        qvUndoReport("- qvUndo::Manager: undoIt() - empty group, undoing again.\n");
    }
}

bool ManagerImpl::doIt() {
    if (isHeld())
        return false;
    Hold const held(*this);
    for (;;) {
        if (reportFile.isOpen())
            qvUndoReport("+ qvUndo::Manager: doIt() - %d groups, %d bytes used\n", queue_.size(),
                         saturatedBytes(countBytes()));
        if (!canDo()) {
            qvUndoReport("+ qvUndo::Manager: doIt() - at end of queue.\n");
            return true;
        }
        int commands = 0;
        bool const good = runStep([&] { return doGroups(commands); });
        if (!good || commands != 0)
            return good;
        qvUndoReport("+ qvUndo::Manager: doIt() - empty group, doing again.\n");
    }
}

// Backward through the dynamic groups to the one that heads them. Both walks add up the commands on their way. Whether
// there is a group at all is asked behind the signal, as its listeners may have deleted some by hand.
bool ManagerImpl::undoGroups(int & commands) {
    while (canUndo()) {
        --cursor_;
        GroupImpl & group = **cursor_;
        commands += group.getNumCommands();
        if (!group.undoIt())
            return false;
        if (!group.isDynamic())
            break;
    }
    return true;
}

bool ManagerImpl::doGroups(int & commands) {
    while (canDo()) {
        GroupImpl & group = **cursor_;
        commands += group.getNumCommands();
        if (!group.doIt())
            return false;
        ++cursor_;
        if (!canDo() || !(*cursor_)->isDynamic())
            break;
    }
    return true;
}

void ManagerImpl::currentGroupIsInvalid() {
    if (queue_.empty())
        return;
    qvUndoReport("qvUndo::Manager: currentGroupIsInvalid()\n");
    destroyAllGroups();
}

// ---- The queue. Groups take themselves out of it when they are deleted, and callbacks may delete others by hand, so
// ---- every loop looks at the queue anew.

Group * ManagerImpl::newGroup(char const * name, bool dynamic) {
    if (maxGroups_ < 0 || isHeld())
        return nullptr;
    Hold const held(*this);
    char const * const shown = name ? name : "";
    qvUndoReport("--------------------------------------------------------\n");
    qvUndoReport("qvUndo::newGroup (%s, dynamic = %d)\n", shown, int(dynamic));
    pruneUndoneGroups();
    pruneTrailingInvalidGroups();
    if (!queue_.empty())
        queue_.back()->groupHook();
    enforceLimits(Room::forOneStep);
    if (retired_)
        return nullptr;
    auto group = std::make_unique<GroupImpl>(*this, shown);
    group->setDynamic(dynamic);
    group->getDestroyedSignal().addCallback(this, &ManagerImpl::groupDestroyed, client_);
    appendGroup(*group);
    return group.release();
}

void ManagerImpl::appendGroup(GroupImpl & group) {
    queue_.append(&group);
    group.setPlace(std::prev(queue_.end()));
    cursor_ = queue_.end();
}

void ManagerImpl::moveCursorOff(GroupImpl & group) {
    if (group.isInQueue() && cursor_ == group.place())
        ++cursor_;
}

void ManagerImpl::groupDestroyed(Group * group) {
    GroupImpl * const known = dynamic_cast<GroupImpl *>(group);
    if (!known || &known->manager() != this || !known->isDying() || !known->isInQueue())
        return;
    getGroupDestroyedSignal().emit(group);
    queue_.erase(known->place());
    known->clearPlace();
}

void ManagerImpl::destroyAllGroups() {
    qvUndoReport("qvUndo::Manager: clearAllGroups()\n");
    while (!queue_.empty())
        delete queue_.front();
    cursor_ = queue_.end();
}

void ManagerImpl::clearAllGroups() {
    if (isHeld())
        return;
    Hold const held(*this);
    destroyAllGroups();
}

void ManagerImpl::deleteLastGroup() {
    if (isHeld() || canDo() || queue_.empty())
        return;
    Hold const held(*this);
    qvUndoReport("qvUndo::Manager: deleteLastGroup()\n");
    if (queue_.back()->getNumCommands() == 0)
        delete queue_.back();
    else
        destroyAllGroups();
}

void ManagerImpl::pruneUndoneGroups() {
    if (!canDo())
        return;
    qvUndoReport("qvUndo::Manager: pruneUndoneGroups()\n");
    // The cursor goes on to the next group when the one at it dies.
    while (canDo())
        delete *cursor_;
}

void ManagerImpl::pruneTrailingInvalidGroups() {
    qvUndoReport("qvUndo::Manager: pruneTrailingInvalidGroups()\n");
    while (!queue_.empty() && !queue_.back()->isValid() && queue_.back()->isPrunable()) {
        delete queue_.back();
        cursor_ = queue_.end();
    }
}

// ---- Limits. Steps and bytes are counted afresh each time: commands and groups change what they answer without
// ---- telling anybody.

void ManagerImpl::setMaxGroups(int maxGroups) {
    maxGroups_ = maxGroups;
    if (isHeld() || canDo())
        return;
    Hold const held(*this);
    enforceLimits(Room::none);
}

void ManagerImpl::setMaxBytes(int maxBytes) {
    maxBytes_ = maxBytes;
    if (isHeld() || canDo())
        return;
    Hold const held(*this);
    enforceLimits(Room::none);
}

void ManagerImpl::enforceLimits(Room room) {
    if (maxGroups_ != 0) {
        int const limit = room == Room::forOneStep ? maxGroups_ - 1 : maxGroups_;
        while (!queue_.empty() && countSteps() > limit && queue_.front()->isPrunable())
            deleteOldestStep();
    }
    if (maxBytes_ != 0) {
        while (!queue_.empty() && countBytes() > maxBytes_ && queue_.front()->isPrunable())
            deleteOldestStep();
    }
    cursor_ = queue_.end();
}

// With a group goes whatever hangs on it; a dynamic group at the front hangs on nothing any more.
void ManagerImpl::deleteOldestStep() {
    bool const wasDynamic = queue_.front()->isDynamic();
    delete queue_.front();
    while (!wasDynamic && !queue_.empty() && queue_.front()->isDynamic())
        delete queue_.front();
}

int ManagerImpl::countSteps() {
    int steps = 0;
    for (GroupImpl * group : queue_)
        steps += steps == 0 || !group->isDynamic();
    return steps;
}

std::int64_t ManagerImpl::countBytes() {
    std::int64_t sum = 0;
    for (GroupImpl * group : queue_)
        sum += group->countBytes();
    return sum;
}

// ---- Questions

Group * ManagerImpl::getGroup(int index) {
    int const count = queue_.size();
    int const fromFirst = index < 0 ? index + count : index;
    if (fromFirst < 0 || fromFirst >= count)
        return nullptr;
    if (fromFirst < count / 2)
        return *std::next(queue_.begin(), fromFirst);
    return *std::prev(queue_.end(), count - fromFirst);
}

Group * ManagerImpl::getCurrentGroup() { return canDo() ? *cursor_ : nullptr; }

int ManagerImpl::getNumGroups(bool countStepsOnly) { return countStepsOnly ? countSteps() : queue_.size(); }

bool ManagerImpl::canUndo() { return cursor_ != queue_.begin(); }

bool ManagerImpl::canDo() { return cursor_ != queue_.end(); }

Group * ManagerImpl::findGroup(int id) {
    for (GroupImpl * group : queue_) {
        if (group->getID() == id)
            return group;
    }
    return nullptr;
}

bool ManagerImpl::isInCurrentStep(int id) {
    for (auto place = cursor_; place != queue_.begin();) {
        --place;
        if ((*place)->getID() <= id)
            return true;
        if (!(*place)->isDynamic())
            return false;
    }
    return false;
}

void ManagerImpl::associateGroups(int firstID, int lastID) {
    qvUndoReport("qvUndo::Manager: associateGroups (%d, %d)\n", firstID, lastID);
    bool isFirst = true;
    for (GroupImpl * group : queue_) {
        if (group->getID() < firstID || group->getID() > lastID)
            continue;
        group->setDynamic(!isFirst);
        isFirst = false;
    }
}

void ManagerImpl::pointerDestroyed(void * pointer) {
    for (GroupImpl * group : queue_)
        group->pointerDestroyed(pointer);
}

} // namespace qvUndo
