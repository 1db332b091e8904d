// The group that managers make.

#ifndef qvUndoGroupImpl_h
#define qvUndoGroupImpl_h

#include "Base/Containers/qvList.h"
#include "Base/Containers/qvSet.h"
#include "Base/Containers/qvVector.h"
#include "Base/Signals/qvRTBSignal.h"
#include "Base/Undo/qvUndoGroup.h"

#include <cstdint>
#include <memory>

namespace qvUndo {

class ManagerImpl;

// A sum of bytes in the type that the interface gives.
int saturatedBytes(std::int64_t sum);

class GroupImpl final : public Group {
public:
    using Place = qv::list<GroupImpl *>::iterator;

    // The name must not be null.
    GroupImpl(ManagerImpl & manager, char const * name);
    ~GroupImpl() override;

    bool doIt() override;
    bool undoIt() override;
    void addCommand(Command * command) override;
    Command * getCommand(int index) override;
    int getNumCommands() override { return commands_.size(); }
    int getNumBytesUsed() override { return saturatedBytes(countBytes()); }
    char const * getName() override { return name_.get(); }
    int getID() override { return id_; }
    int nextCommandID() override { return ++commandCounter_; }
    void setPrunable(bool prunable) override { prunable_ = prunable; }
    bool isPrunable() override { return prunable_; }
    bool isDynamic() override { return dynamic_; }
    void setDynamic(bool dynamic) override { dynamic_ = dynamic; }
    void declarePointer(void * pointer) override;
    bool declaresPointer(void * pointer) override { return pointers_.contains(pointer); }
    void pointerDestroyed(void * pointer) override;
    void groupHook() override {}

    // What the commands say, not cut to an int.
    std::int64_t countBytes();

    ManagerImpl & manager() { return manager_; }
    qvRTB::SignalArg<Group *> & getDestroyedSignal() { return sigDestroyed_; }

    // For a command that is deleted by hand.
    void forgetCommand(Command * command);

    // Where the group stands in its manager's queue, so that no search is needed when it leaves; only while it does.
    Place place() const { return place_; }
    bool isInQueue() const { return isInQueue_; }
    void setPlace(Place place) {
        place_ = place;
        isInQueue_ = true;
    }
    void clearPlace() { isInQueue_ = false; }
    bool isDying() const { return isDying_; }

private:
    // A loop over the commands. What it calls may delete others by hand, at which the loop is set right, and may add
    // some: so ask for the number of commands anew.
    class Walk {
    public:
        enum Direction { forward, backward };
        Walk(GroupImpl & group, Direction direction)
            : at(direction == forward ? 0 : group.commands_.size() - 1), group_(group), outer_(group.innermostWalk_),
              direction_(direction) {
            group.innermostWalk_ = this;
        }
        ~Walk() { group_.innermostWalk_ = outer_; }
        Walk(Walk const &) = delete;
        Walk & operator=(Walk const &) = delete;

        Walk * outer() const { return outer_; }
        void commandHasLeft(int index) { at -= index < at || (index == at && direction_ == forward); }

        int at;

    private:
        GroupImpl & group_;
        Walk * const outer_;
        Direction const direction_;
    };

    template <bool (*run)(Command &)>
    bool runCommand(Walk const & walk);
    bool fail(char const * format, int index);

    qvRTB::SignalArg<Group *> sigDestroyed_;
    qv::vector<Command *> commands_; // owned; null where one has been destroyed with the group
    Walk * innermostWalk_ = nullptr;
    qv::set<void *> pointers_;
    int id_;
    int commandCounter_ = 0;
    ManagerImpl & manager_;
    std::unique_ptr<char[]> name_;
    bool dynamic_ = false;
    bool prunable_ = true;
    bool isInQueue_ = false;
    bool isDying_ = false;
    Place place_;
};

} // namespace qvUndo

#endif
