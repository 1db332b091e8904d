// The do and undo of a command for whoever holds the history already.

#ifndef qvUndoCommandRun_h
#define qvUndoCommandRun_h

#include "Base/Undo/Internal/qvUndoReportFile.h"
#include "Base/Undo/qvUndoCommand.h"

namespace qvUndo {

// Inline, because a step of small commands costs little more than the calls of their operations.
class CommandRun {
public:
    static bool doIt(Command & command) {
        if (!command.isValid())
            return false;
        if (command.lastWasDoIt())
            return true;
        if (reportFile.isOpen()) [[unlikely]]
            traceDo(command);
        bool const good = command.doOperation();
        command.stateDone();
        if (!good) [[unlikely]]
            fail(command, "    - qvUndo::Command: 'do' of %s returned failure.  Marking invalid.\n");
        return good;
    }

    static bool undoIt(Command & command) {
        if (!command.isValid())
            return false;
        if (command.lastWasUndoIt())
            return true;
        if (reportFile.isOpen()) [[unlikely]]
            traceUndo(command);
        bool const good = command.undoOperation();
        command.stateUndone();
        if (!good) [[unlikely]]
            fail(command, "    - qvUndo::Command: undo of %s returned failure.  Marking invalid.\n");
        return good;
    }

private:
    static void traceDo(Command & command);
    static void traceUndo(Command & command);
    static void fail(Command & command, char const * format);
};

} // namespace qvUndo

#endif
