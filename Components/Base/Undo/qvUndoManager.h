// The history of undoable actions.

#ifndef qvUndoManager_h
#define qvUndoManager_h

#include "Base/Signals/qvRTBSignal.h"
#include "Base/Undo/qvUndoGroup.h"
#include "Base/qvBaseConfig.h"

namespace qvUndo {

// One queue of groups with a cursor: the groups in front of it can be undone, the one at it and those behind it can be
// done again. A step is a group together with the dynamic groups behind it. A process usually has one manager, which it
// installs:
//
//     qvUndo::installManager(qvUndo::newManager());
//     ...
//     if (qvUndo::Group * group = qvUndo::getInstalledManager()->newGroup("drag", false))
//         (new MoveVertex(group, ...))->doIt(); // the manager's doIt is for what was undone
//
// When a group fails, or is found invalid, the whole history is dropped.
//
// Manager, groups and commands belong to one thread at a time. Callbacks and operations of commands may call the
// manager, but the history stays as it is while `doIt` or `undoIt` runs, while any operation of a command in a group
// runs, and while a group is being destroyed: then `newGroup` gives null, `doIt` and `undoIt` give false,
// `deleteLastGroup` and `clearAllGroups` do nothing, and the setters of limits only store them. The first do of a new
// command counts, though `isBusy` is false there: an action inside of it gets no group, and belongs into the one that
// runs. What an operation throws drops the history like a failure and goes to the caller. Callbacks must not throw
// while a group is being destroyed.
//
// The order of the virtual operations is what subclasses in other modules rely on.
class QV_EXPORT Manager {
public:
    Manager();
    // Commits and destroys all commands. A manager must not be deleted from within its own operations and callbacks;
    // `installManager` may be called there.
    virtual ~Manager();
    Manager(Manager const &) = delete;
    Manager & operator=(Manager const &) = delete;

    // Undo, or do again, one step; steps without a command are passed over with it. False when a group failed, and the
    // history is empty then. True when there is nothing to do.
    virtual bool undoIt() = 0;
    virtual bool doIt() = 0;

    // Drops what was undone, and old steps beyond the limits, and begins a group at the end, with the cursor behind it.
    // Null when undo is off, which a negative `getMaxGroups` tells, or as told above: the caller then acts without undo
    // of its own. A null name counts as "". It takes constant time without limits. A limit on steps lets it look at
    // every group, one on bytes ask every command: with 10,000 groups of 10 commands about a tenth of a millisecond,
    // and one or two milliseconds.
    virtual Group * newGroup(char const * name, bool dynamic) = 0;

    // From the first for 0 and up, from the last for -1 and down; null out of range.
    virtual Group * getGroup(int index) = 0;
    // The group at the cursor, null at the end.
    virtual Group * getCurrentGroup() = 0;
    // The length of the queue, or with `countSteps` the number of steps. The first group begins a step even when it is
    // dynamic.
    virtual int getNumGroups(bool countSteps) = 0;
    virtual bool canUndo() = 0;
    virtual bool canDo() = 0;
    // Null when no group has that id.
    virtual Group * findGroup(int id) = 0;
    // Whether the step in front of the cursor reaches back to that id. Ids that are still to come are taken to lie in
    // it.
    virtual bool isInCurrentStep(int id) = 0;

    // Drops the last group when it has no command, else the whole history. Does nothing unless the cursor is at the
    // end.
    virtual void deleteLastGroup() = 0;
    virtual void clearAllGroups() = 0;
    // Ties the groups with these ids, and those between them, to one step.
    virtual void associateGroups(int firstID, int lastID) = 0;
    // An object has died: groups that declare it become invalid.
    virtual void pointerDestroyed(void * pointer) = 0;
    // Counts up and gives the number, for the next group.
    virtual int nextGroupID() = 0;

    // Limits on steps and on bytes; 0 means none. A negative number of steps turns undo off. When something is undone
    // they take effect with the next group, otherwise at once; the byte limit acts before a group grows, so the history
    // may be above it until the next group. At first there is no limit on steps, and one of 10,000,000 bytes.
    virtual void setMaxGroups(int maxGroups) = 0;
    virtual void setMaxBytes(int maxBytes) = 0;
    virtual int getMaxGroups() = 0;
    virtual int getMaxBytes() = 0;

    // Whether `doIt` or `undoIt` of the manager runs.
    virtual bool isBusy() = 0;

    // A group's last word to its manager. Does nothing for any other group.
    virtual void groupDestroyed(Group * group) = 0;

    // Emitted with true and false around every `doIt` and `undoIt` that has something to do, and around the destruction
    // of every group. A callback that throws for `doIt` or `undoIt` ends it, behind a false for all, also for those
    // whom the true did not reach; the history stays when nothing had run.
    qvRTB::SignalArg<bool> & getBusySignal() { return sigBusy_; }
    // Emitted with a group whose commands are gone, when it is about to leave the queue.
    qvRTB::SignalArg<Group *> & getGroupDestroyedSignal() { return sigGroupDestroyed_; }

private:
    qvRTB::SignalArg<bool> sigBusy_;
    qvRTB::SignalArg<Group *> sigGroupDestroyed_;
};

// A manager with an empty history, which is the caller's until it is installed.
QV_EXPORT Manager * newManager();

// Makes a manager the process's own, or with null leaves the process without one. The one before is destroyed, when it
// is another; if it is at work, as soon as it has ended. The one that is installed last stays until the process ends.
QV_EXPORT void installManager(Manager * manager);

// Null at first.
QV_EXPORT Manager * getInstalledManager();

} // namespace qvUndo

#endif
