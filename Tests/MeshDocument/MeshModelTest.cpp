#include "MeshDocument/MeshSupport.h"

#include <cmath>
#include <functional>
#include <utility>
#include <vector>

namespace {

using mesh::Document;
using mesh::Exactness;

struct Change {
    char const * result;
    std::function<void(Document &)> apply;
};

// A document with one change is another one, and the comparison says where it begins to differ, in both directions.
TEST(MeshModel, EveryDifferenceIsFound) {
    std::vector<Change> const changes = {
        {"difference in the document's name", [](Document & d) { d.name.append('x'); }},
        {"difference in a material library", [](Document & d) { d.materialLibraries.front().append('x'); }},
        {"difference in the number of material libraries", [](Document & d) { d.materialLibraries.append("x"); }},
        {"difference in positions", [](Document & d) { d.positions[0].x = -0.0; }},
        {"difference in weights", [](Document & d) { d.weights[1] = std::nextafter(0.5, 1.0); }},
        {"difference in texture coordinates", [](Document & d) { d.textureCoordinates[1].x = std::nextafterf(1, 0); }},
        {"difference in normals", [](Document & d) { d.normals.append(qvLinear::Vector::x); }},
        {"difference in the number of groups", [](Document & d) { d.groups.emplace_back(); }},
        {"difference in the first mesh", [](Document & d) { d.firstMesh = nullptr; }},
        {"difference in the next mesh", [](Document & d) { d.firstMesh->next = d.firstMesh; }},
        {"difference in the name of a mesh", [](Document & d) { d.firstMesh->next->name = ""; }},
        {"difference in the last group of a mesh",
         [](Document & d) { d.firstMesh->lastGroup = d.firstMesh->firstGroup; }},
        {"difference in the document of a mesh", [](Document & d) { d.firstMesh->document = nullptr; }},
        {"difference in the mesh of a group", [](Document & d) { d.groups.back().mesh = d.firstMesh; }},
        {"difference in the name of a group", [](Document & d) { d.groups.front().name = "Front"; }},
        {"difference in the corners of a group", [](Document & d) { d.groups.front().corners.back() = 0; }},
        {"difference in the faces of a group", [](Document & d) { d.groups.front().faceSizes.append(3); }},
        {"difference in a material of a group",
         [](Document & d) { std::swap(d.groups.front().uses[0].material, d.groups.front().uses[1].material); }},
        {"difference in the materials of a group", [](Document & d) { d.groups.front().uses.eraseBack(); }},
        {"difference in the faces of a material", [](Document & d) { d.groups.front().uses[1].faceCount = 2; }},
        {"difference in a user of a material",
         [](Document & d) { std::swap(d.firstMaterial->users[0], d.firstMaterial->users[1]); }},
        {"difference in the name of a material", [](Document & d) { d.materials.back().name.append('x'); }},
        {"difference in the next material", [](Document & d) { d.materials.back().next = d.firstMaterial; }},
    };
    Document original, equal;
    meshTest::expectObj(meshTest::smallObj, original);
    meshTest::expectObj(meshTest::smallObj, equal);
    EXPECT_EQ(compareDocuments(original, equal, Exactness::bits), "");
    for (Change const & change : changes) {
        Document changed;
        meshTest::expectObj(meshTest::smallObj, changed);
        change.apply(changed);
        SCOPED_TRACE(change.result);
        EXPECT_EQ(compareDocuments(original, changed, Exactness::bits), change.result);
        EXPECT_EQ(compareDocuments(changed, original, Exactness::bits), change.result);
    }
}

TEST(MeshModel, NumbersMayGoThroughTheirTexts) {
    Document original, copy;
    double const third = 1.0 / 3;
    original.positions = {{third, 0.1, -0.0}, {1e300, 0, 0}};
    original.textureCoordinates = {{1.0F / 3, 0, 0}};
    copy.positions = {{0.3333333333333333, 0.1, -0.0}, {1e300, 0, 0}};
    copy.textureCoordinates = {{0.3333333F, 0, 0}};
    EXPECT_EQ(compareDocuments(original, copy, Exactness::decimalText), "");
    EXPECT_EQ(compareDocuments(original, copy, Exactness::bits), "difference in texture coordinates");
    copy.positions[0].x = 0.333333333333333;
    EXPECT_EQ(compareDocuments(original, copy, Exactness::decimalText), "difference in positions");
}

TEST(MeshModel, EveryFaultIsFound) {
    std::vector<Change> const changes = {
        {"weights do not fit the positions", [](Document & d) { d.weights.eraseBack(); }},
        {"materials are not in one chain", [](Document & d) { d.materials.back().next = d.firstMaterial; }},
        {"materials are not in one chain", [](Document & d) { d.firstMaterial = d.firstMaterial->next; }},
        {"a material names a group twice, or none",
         [](Document & d) { d.firstMaterial->users.append(d.firstMaterial->users[0]); }},
        {"a mesh has another document", [](Document & d) { d.firstMesh->document = nullptr; }},
        {"meshes are not in one chain", [](Document & d) { d.firstMesh->next = nullptr; }},
        {"a mesh has another last group", [](Document & d) { d.firstMesh->lastGroup = nullptr; }},
        {"a mesh has another last group", [](Document & d) { d.firstMesh->lastGroup->next = d.firstMesh->firstGroup; }},
        {"a group hangs in another mesh", [](Document & d) { d.groups.front().mesh = nullptr; }},
        {"groups are not in the chains of the meshes", [](Document & d) { d.groups.emplace_back(); }},
        {"a face has less than 3 corners", [](Document & d) { d.groups.front().faceSizes[0] = 2; }},
        {"corners do not fit the faces", [](Document & d) { d.groups.front().corners.eraseBack(); }},
        {"an index of a corner is out of range", [](Document & d) { d.groups.front().corners[0] = -1; }},
        {"an index of a corner is out of range", [](Document & d) { d.groups.front().corners[1] = -2; }},
        {"an index of a corner is out of range", [](Document & d) { d.groups.front().corners[0] = 4; }},
        {"runs of materials leave a gap", [](Document & d) { d.groups.front().uses[1].firstFace = 3; }},
        {"a material does not know its user", [](Document & d) { d.firstMaterial->users.clear(); }},
        {"runs of materials do not fit the faces", [](Document & d) { d.groups.front().uses.eraseBack(); }},
    };
    for (Change const & change : changes) {
        Document changed;
        meshTest::expectObj(meshTest::smallObj, changed);
        change.apply(changed);
        EXPECT_EQ(findFault(changed), change.result);
    }
}

} // namespace
