// What commands and groups remember about being done and undone.

#ifndef qvUndoState_h
#define qvUndoState_h

#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvUndo {

// The rules for a do after a do, an undo after an undo and an object that is not valid any more rest on this one word,
// for commands and for groups alike. A new state is valid, and neither done nor undone.
class State {
public:
    // Whether there ever was a do, or an undo.
    bool hasBeenDone() const { return (flags_ & done) != 0; }
    bool hasBeenUndone() const { return (flags_ & undone) != 0; }

    // What the last transition was; both false before the first one.
    bool lastWasDoIt() const { return (flags_ & lastDone) != 0; }
    bool lastWasUndoIt() const { return (flags_ & lastUndone) != 0; }

    // Whether the object may still be done or undone.
    bool isValid() const { return (flags_ & valid) != 0; }

    // For good.
    void stateInvalid() { flags_ &= ~valid; }

protected:
    void stateDone() { flags_ = (flags_ | done | lastDone) & ~lastUndone; }
    void stateUndone() { flags_ = (flags_ | undone | lastUndone) & ~lastDone; }

private:
    static constexpr std::uint32_t done = 1;
    static constexpr std::uint32_t undone = 2;
    static constexpr std::uint32_t lastDone = 4;
    static constexpr std::uint32_t lastUndone = 8;
    static constexpr std::uint32_t valid = 16;

    std::uint32_t flags_ = valid;
};

} // namespace qvUndo

#endif
