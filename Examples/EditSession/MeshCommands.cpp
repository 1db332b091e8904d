#include "MeshCommands.h"

#include "Base/Undo/qvUndoGroup.h"

#include <algorithm>

namespace mesh {

// The group, if there is one, is told what its commands need: when the document dies they are void.
MovePositions::MovePositions(qvUndo::Group * group, Document & document, int first, int count,
                             qvLinear::Vector const & offset)
    : Command(group, "move positions"), document_(document), offset_(offset) {
    int const total = document.positions.size();
    first_ = std::clamp(first, 0, total);
    int const last = first_ + std::clamp(count, 0, total - first_);
    before_.assign(document.positions.begin() + first_, document.positions.begin() + last);
    if (group)
        group->declarePointer(&document);
}

bool MovePositions::fits() const { return document_.positions.size() - first_ >= before_.size(); }

bool MovePositions::doOperation() {
    if (!fits())
        return false;
    for (int i = 0; i < before_.size(); ++i)
        document_.positions[first_ + i] = before_[i] + offset_;
    return true;
}

bool MovePositions::undoOperation() {
    if (!fits())
        return false;
    std::copy(before_.begin(), before_.end(), document_.positions.begin() + first_);
    return true;
}

int MovePositions::getNumBytesUsed() { return int(sizeof(qvLinear::Point)) * before_.size(); }

RenameMesh::RenameMesh(qvUndo::Group * group, Mesh & mesh, qvString::CString const & name)
    : Command(group, "rename mesh"), mesh_(mesh), other_(name) {
    if (group)
        group->declarePointer(mesh.document);
}

bool RenameMesh::doOperation() {
    mesh_.name.swap(other_);
    return true;
}

int RenameMesh::getNumBytesUsed() { return int(other_.asCharStoreSize()); }

} // namespace mesh
