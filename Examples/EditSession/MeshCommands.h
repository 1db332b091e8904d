// Undoable changes of a mesh document.

#ifndef MeshCommands_h
#define MeshCommands_h

#include "MeshModel.h"

#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"
#include "Base/Undo/qvUndoCommand.h"

namespace mesh {

// Moves some of the positions of a document. What they were is kept bit for bit: subtracting what was added would not
// bring it back.
class MovePositions : public qvUndo::Command {
public:
    // The positions from `first` on, as many of the `count` as there are.
    MovePositions(qvUndo::Group * group, Document & document, int first, int count, qvLinear::Vector const & offset);

    bool doOperation() override;
    bool undoOperation() override;
    int getNumBytesUsed() override;

private:
    bool fits() const;

    Document & document_;
    int first_; // number in the array
    qvLinear::Vector offset_;
    qv::vector<qvLinear::Point> before_;
};

// Gives a mesh another name.
class RenameMesh : public qvUndo::Command {
public:
    RenameMesh(qvUndo::Group * group, Mesh & mesh, qvString::CString const & name);

    bool doOperation() override;
    bool undoOperation() override { return doOperation(); }
    int getNumBytesUsed() override;

private:
    Mesh & mesh_;
    qvString::CString other_; // the name that it does not have now
};

} // namespace mesh

#endif
