// One undoable action of the application.

#ifndef qvUndoCommand_h
#define qvUndoCommand_h

#include "Base/Undo/qvUndoState.h"
#include "Base/qvBaseConfig.h"

#include <memory>

namespace qvUndo {

class CommandRun;
class Group;
class GroupImpl;

// A state machine around the two operations that a subclass writes. It is made with `new` and given to a group, which
// owns it from there on, commits it and deletes it.
//
//     class MoveVertex : public qvUndo::Command {
//     public:
//         MoveVertex(qvUndo::Group * group, ...) : Command(group, "move vertex"), ... {}
//         bool doOperation() override { std::swap(vertex_->position, other_); return true; }
//         bool undoOperation() override { return doOperation(); }
//     };
//
//     if (qvUndo::Group * group = manager->newGroup("drag", false))
//         (new MoveVertex(group, ...))->doIt();
//
// While an operation of a command in a group runs, the group's manager keeps its history as it is, whoever called
// `doIt()` or `undoIt()`: qvUndoManager.h says which of its operations then do nothing. An operation may give its own
// group another command; a do in progress reaches that one too, an undo does not. What an operation throws goes to the
// caller and leaves the command invalid.
//
// A command that is deleted by hand leaves its group without a commit, and those that are left are done, undone and
// committed as if it had never been there. It must not be deleted while an operation or commit of its own runs.
class QV_EXPORT Command : public State {
public:
    // With a group as by `addToGroup`; without one the command is free and its caller's. The name is copied and may be
    // null.
    Command(Group * group, char const * name);
    virtual ~Command();
    Command(Command const &) = delete;
    Command & operator=(Command const &) = delete;

    // The action and its reversal: false when it failed, which makes the command invalid.
    virtual bool doOperation() = 0;
    virtual bool undoOperation() = 0;
    // What the command costs, in bytes, for the manager's limit; 1024 here. Asked for at any time.
    virtual int getNumBytesUsed();
    // The command is about to be destroyed and will never be done or undone again: what it keeps back can be let go.
    // All commands of a group are committed before the first of them is destroyed. Must not throw.
    virtual void commit();

    // Takes the next number of the group, and gives the command to it. A command that is in a group, of whatever class,
    // stays there, and a group that is being destroyed takes none. Null does nothing.
    void addToGroup(Group * group);

    // Calls the operation, unless the last one was of the same kind, which succeeds without a call. False when it
    // failed, and without a call when the command is not valid.
    bool doIt();
    bool undoIt();

    // The number within the group, from 1 on; 0 when it is in none.
    int getID() const { return id_; }
    // "noname" when it was given none.
    char const * getName() const { return name_ ? name_.get() : "noname"; }

private:
    friend class CommandRun;
    friend class GroupImpl;

    int id_ = 0;
    bool isJoining_ = false; // it has its number and is not yet in the group
    std::unique_ptr<char[]> name_;
    // Set by the group that owns the command, which is how a second one knows, and how a run finds the history that
    // must not change meanwhile.
    GroupImpl * group_ = nullptr;
};

} // namespace qvUndo

#endif
