// The document of the example: meshes, their groups of faces, and materials, all of which point at one another.

#ifndef MeshModel_h
#define MeshModel_h

#include "Base/Containers/qvList.h"
#include "Base/Containers/qvVector.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearPointFlt.h"
#include "Base/Linear/qvLinearVector.h"
#include "Base/Strings/qvStringCString.h"

namespace mesh {

struct Document;
struct Group;
struct Mesh;

struct Material {
    qvString::CString name;
    qv::vector<Group *> users; // the groups with faces of this material, each once
    Material * next = nullptr;
};

// A run of faces of one group that have the same material.
struct MaterialUse {
    Material * material = nullptr; // null for faces without a material
    int firstFace = 0;
    int faceCount = 0;
};

// Numbers of one corner in `Group::corners`: its place among the positions, texture coordinates and normals of the
// document, from 0; -1 where it has none.
inline constexpr int numbersPerCorner = 3;

struct Group {
    qvString::CString name;
    Mesh * mesh = nullptr;
    Group * next = nullptr;
    qv::vector<MaterialUse> uses; // together they hold all faces, in order
    qv::vector<int> faceSizes;    // corners of each face, 3 or more
    qv::vector<int> corners;      // of all faces, one behind the other
};

struct Mesh {
    qvString::CString name;
    Document * document = nullptr;
    Mesh * next = nullptr;
    Group * firstGroup = nullptr;
    Group * lastGroup = nullptr;
};

// The root. It owns everything, in lists whose elements never move; the chains from `firstMesh` and `firstMaterial`
// give the order.
struct Document {
    Document() = default;
    Document(Document const &) = delete;
    Document & operator=(Document const &) = delete;

    qvString::CString name;
    qv::list<qvString::CString> materialLibraries;
    qv::vector<qvLinear::Point> positions;
    qv::vector<double> weights; // one for each position, or none at all when they are all 1
    qv::vector<qvLinear::PointFlt> textureCoordinates;
    qv::vector<qvLinear::Vector> normals; // of the length that they were given
    Mesh * firstMesh = nullptr;
    Material * firstMaterial = nullptr;

    qv::list<Mesh> meshes;
    qv::list<Group> groups;
    qv::list<Material> materials;
};

// The numbers of points or vectors, one value behind the other, as files hold them.
inline constexpr int numbersPerValue = 3;
template <class Value>
typename Value::Element * numbersOf(qv::vector<Value> & values) {
    return reinterpret_cast<typename Value::Element *>(values.data());
}
template <class Value>
typename Value::Element const * numbersOf(qv::vector<Value> const & values) {
    return reinterpret_cast<typename Value::Element const *>(values.data());
}

// Whether the document is sound: every object hangs in exactly one chain, each points back at its owner, runs of
// materials and corners fit the faces, and indices lie in the arrays. Gives what is wrong, empty when nothing is.
// Pointers must be null or lead to objects of the document.
qvString::CString findFault(Document const & document);

enum class Exactness {
    bits,       // numbers are equal bit for bit
    decimalText // numbers of the copy are those of the original, written with 16 (float: 7) significant digits
};

// Compares two documents as graphs: walks both from their roots side by side, and requires that the same object of one
// always stands for the same object of the other. Gives the first difference, empty when there is none.
qvString::CString compareDocuments(Document const & original, Document const & copy, Exactness exactness);

} // namespace mesh

#endif
