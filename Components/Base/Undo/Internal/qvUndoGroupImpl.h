// The group that managers make.

#ifndef qvUndoGroupImpl_h
#define qvUndoGroupImpl_h

#include "Base/Containers/qvList.h"
#include "Base/Containers/qvSet.h"
#include "Base/Containers/qvVector.h"
#include "Base/Signals/qvRTBSignal.h"
#include "Base/Undo/qvUndoGroup.h"

#include <memory>

namespace qvUndo {

class ManagerImpl;

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
    int getNumBytesUsed() override;
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
    template <bool (*run)(Command &)>
    bool runCommand(int index);
    bool fail(char const * format, int index);

    qvRTB::SignalArg<Group *> sigDestroyed_;
    qv::vector<Command *> commands_; // owned; null where one has been destroyed with the group
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
