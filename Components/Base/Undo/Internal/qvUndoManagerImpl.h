// The manager's history.

#ifndef qvUndoManagerImpl_h
#define qvUndoManagerImpl_h

#include "Base/Containers/qvList.h"
#include "Base/Signals/qvRTBSignal.h"
#include "Base/Undo/Internal/qvUndoGroupImpl.h"
#include "Base/Undo/qvUndoManager.h"

#include <cstdint>

namespace qvUndo {

class ManagerImpl final : public Manager {
public:
    ManagerImpl();
    ~ManagerImpl() override;

    bool undoIt() override;
    bool doIt() override;
    Group * newGroup(char const * name, bool dynamic) override;
    Group * getGroup(int index) override;
    Group * getCurrentGroup() override;
    int getNumGroups(bool countSteps) override;
    bool canUndo() override;
    bool canDo() override;
    Group * findGroup(int id) override;
    bool isInCurrentStep(int id) override;
    void deleteLastGroup() override;
    void clearAllGroups() override;
    void associateGroups(int firstID, int lastID) override;
    void pointerDestroyed(void * pointer) override;
    int nextGroupID() override { return ++idCounter_; }
    void setMaxGroups(int maxGroups) override;
    void setMaxBytes(int maxBytes) override;
    int getMaxGroups() override { return maxGroups_; }
    int getMaxBytes() override { return maxBytes_; }
    bool isBusy() override { return busy_; }
    void groupDestroyed(Group * group) override;

    // While it is held the history stays as it is: nobody but the holder changes the queue. A manager that was retired
    // meanwhile dies with the last hold.
    void hold() { ++holds_; }
    void release() {
        if (--holds_ == 0 && retired_) [[unlikely]]
            delete this;
    }
    class Hold {
    public:
        explicit Hold(ManagerImpl & manager) : manager_(manager) { manager_.hold(); }
        ~Hold() { manager_.release(); }
        Hold(Hold const &) = delete;
        Hold & operator=(Hold const &) = delete;

    private:
        ManagerImpl & manager_;
    };

    // Destroys the manager, now or when it is held no more.
    void retire();

    // A group that begins to die is no longer what comes next.
    void moveCursorOff(GroupImpl & group);

private:
    using Queue = qv::list<GroupImpl *>;
    enum class Room { none, forOneStep };

    bool isHeld() const { return holds_ != 0; }

    template <class Walk>
    bool runStep(Walk walk);
    bool undoGroups(int & commands);
    bool doGroups(int & commands);
    void currentGroupIsInvalid();

    void appendGroup(GroupImpl & group);
    void destroyAllGroups();
    void pruneUndoneGroups();
    void pruneTrailingInvalidGroups();
    void enforceLimits(Room room);
    void deleteOldestStep();
    int countSteps();
    std::int64_t countBytes();

    qvRTB::SignalClient client_;
    Queue queue_; // owned, the oldest group first
    Queue::iterator cursor_;
    int idCounter_ = 0;
    int maxGroups_ = 0;
    int maxBytes_ = 10000000;
    bool busy_ = false;
    bool retired_ = false;
    int holds_ = 0;
};

} // namespace qvUndo

#endif
