// The commands of one user action.

#ifndef qvUndoGroup_h
#define qvUndoGroup_h

#include "Base/Undo/qvUndoState.h"
#include "Base/qvBaseConfig.h"

namespace qvUndo {

class Command;
class Manager;

// A group is done and undone as a whole. One that is dynamic is no step of its own: it is done and undone together
// with the group in front of it. Groups come from `Manager::newGroup`, belong to the manager, and die when they leave
// its history. Deleting one by hand takes it out of the history like any other end; do not while an operation of a
// command runs.
//
// The order of the virtual operations is what subclasses in other modules rely on.
class QV_EXPORT Group : public State {
public:
    // The manager is for subclasses to keep.
    explicit Group(Manager * manager);
    // Commits all commands, then destroys them.
    virtual ~Group();
    Group(Group const &) = delete;
    Group & operator=(Group const &) = delete;

    // Does the commands from the first on, or undoes them from the last on. False when one fails, which makes the group
    // invalid, and when the group is invalid; what ran before a failure stays as it is.
    virtual bool doIt() = 0;
    virtual bool undoIt() = 0;

    // Takes a command over. Nothing happens with null, with one that is in a group, and when this group is being
    // destroyed.
    virtual void addCommand(Command * command) = 0;
    // From the first for 0 and up, from the last for -1 and down; null out of range.
    virtual Command * getCommand(int index) = 0;
    virtual int getNumCommands() = 0;
    // The sum over the commands, asked for afresh; the greatest int when it is greater.
    virtual int getNumBytesUsed() = 0;
    // Never null.
    virtual char const * getName() = 0;
    // The number that the manager gave, from 1 on.
    virtual int getID() = 0;
    // The number of the next command.
    virtual int nextCommandID() = 0;

    // False keeps limits, and the removal of invalid groups at the end, from removing the group. True at first.
    virtual void setPrunable(bool prunable) = 0;
    virtual bool isPrunable() = 0;
    virtual bool isDynamic() = 0;
    virtual void setDynamic(bool dynamic) = 0;

    // Tells that the commands need this object. Null is not noted.
    virtual void declarePointer(void * pointer) = 0;
    virtual bool declaresPointer(void * pointer) = 0;
    // Makes the group invalid when it declares the object.
    virtual void pointerDestroyed(void * pointer) = 0;

    // Called before a command is appended, and on the last group when a new one begins.
    virtual void groupHook() = 0;
};

} // namespace qvUndo

#endif
