#include "Base/Undo/qvUndoManager.h"

#include "Base/Undo/Internal/qvUndoManagerImpl.h"

#include <utility>

namespace qvUndo {

namespace {

constinit Manager * installedManager = nullptr;

} // namespace

Manager::Manager() = default;

Manager::~Manager() {
    if (installedManager == this)
        installedManager = nullptr;
}

Manager * newManager() { return new ManagerImpl; }

void installManager(Manager * manager) {
    Manager * const before = std::exchange(installedManager, manager);
    if (before == manager)
        return;
    if (ManagerImpl * const known = dynamic_cast<ManagerImpl *>(before))
        known->retire();
    else
        delete before;
}

Manager * getInstalledManager() { return installedManager; }

} // namespace qvUndo
