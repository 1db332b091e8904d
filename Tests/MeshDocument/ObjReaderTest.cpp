#include "MeshDocument/MeshSupport.h"

#include <string>

namespace {

using mesh::Document;
using namespace std::string_literals;

TEST(ObjReader, BuildsTheGraph) {
    Document d;
    meshTest::expectObj(meshTest::smallObj, d);
    EXPECT_EQ(d.positions, (qv::vector<qvLinear::Point>{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}}));
    EXPECT_EQ(d.weights, (qv::vector<double>{1, 0.5, 1, 1}));
    EXPECT_EQ(d.materialLibraries, (qv::list<qvString::CString>{"a.mtl"}));
    ASSERT_EQ(d.meshes.size(), 2);
    mesh::Mesh const & first = *d.firstMesh;
    EXPECT_EQ(first.name, "first");
    EXPECT_EQ(first.next->name, "second");
    mesh::Group const & front = *first.firstGroup;
    EXPECT_EQ(front.name, "front");
    EXPECT_EQ(front.next->name, "back side");
    EXPECT_EQ(front.next, first.lastGroup);
    EXPECT_EQ(first.next->firstGroup->name, "default");
    EXPECT_EQ(front.faceSizes, (qv::vector<int>{4, 3, 3, 3}));
    EXPECT_EQ(front.corners, (qv::vector<int>{0, -1, -1, 1, -1, -1, 2, -1, -1, 3, -1, -1, // v
                                              0, 0,  -1, 1, 1,  -1, 2, 2,  -1,            // v/vt
                                              0, -1, 0,  1, -1, 0,  2, -1, 0,             // v//vn
                                              0, -1, -1, 1, -1, -1, 2, -1, -1}));         // from the latest
    ASSERT_EQ(front.uses.size(), 3);
    EXPECT_EQ(front.uses[1].material->name, "wood");
    EXPECT_EQ(front.uses[2].material, d.firstMaterial);
    EXPECT_EQ(d.firstMaterial->users, (qv::vector<mesh::Group *>{first.firstGroup, first.next->firstGroup}));
    EXPECT_EQ(d.materials.back().name, "glass");
    EXPECT_TRUE(d.materials.back().users.empty());
}

// Layout of the text changes nothing: ends of lines, blanks, comments, statements over several lines, the place of the
// file's blocks, statements that are skipped, an end without a line feed.
TEST(ObjReader, LayoutDoesNotMatter) {
    Document expected;
    std::string const plain = "v 0 0 1e-1\nv 1 .5 -2\nv 1 1 0\no name with blanks\nf 1 2 3\nf -3 -2 -1\n";
    meshTest::expectObj(plain, expected);
    std::string const spread =
        "v +0\t0 0.10  \r\n# a comment ends here \\\nv 1 \\\r\n .5 \\\n -2 # text\n\n   \nv 1 1 0\r\n"
        "s 1\np 1\no   name with blanks \nvp 1 2\nf 1 \\\n\\\n 2 3\nf\t-3 -2 -1";
    for (std::size_t padding = 0; padding < 150; ++padding) {
        Document document;
        std::string text(16384 - 100 + padding, '.');
        text.insert(0, padding % 2 == 0 ? "#" : "\xEF\xBB\xBF#").append("\n").append(spread);
        meshTest::expectObj(text, document);
        ASSERT_EQ(compareDocuments(expected, document, mesh::Exactness::bits), "") << padding;
    }
    Document colours;
    meshTest::expectObj("v 1 2 3 0.1 0.2 0.3\n", colours);
    EXPECT_TRUE(colours.weights.empty());
    Document empty;
    meshTest::expectObj("", empty);
    EXPECT_EQ(empty.firstMesh, nullptr);
}

TEST(ObjReader, AWrongFileIsRefusedWithLineAndReason) {
    std::string const triangle = "v 0 0 0\nv 1 0 0\nv 1 1 0\n";
    struct {
        std::string text;
        std::string problem;
    } const cases[] = {
        {triangle + "f 1 2 4\n", "4: position index 4 is out of range, there are 3"},
        {triangle + "f 1 2 9\nf 1 2 7\nf 1 2 8\nv 1 1 1\nv 1 1 1\nv 1 1 1\nv 1 1 1\n",
         "4: position index 9 is out of range, there are 7"},
        {triangle + "f 1 2 6\nf 1 2 7\nv 1 1 1\n", "4: position index 6 is out of range, there are 4"},
        {triangle + "f 1 2 -4\n", "4: position index -4 is out of range, there are 3"},
        {triangle + "f 1 2 0\n", "4: position index 0 is out of range, there are 3"},
        {triangle + "f 1 2 4294967297\n", "4: position index 4294967297 is out of range, there are 3"},
        {triangle + "f 1 2 99999999999999999999\n",
         "4: position index 99999999999999999999 is out of range, there are 3"},
        {triangle + "f 1/1 2/1 3/1\n", "4: texture coordinate index 1 is out of range, there are 0"},
        {triangle + "f 1//1 2//1 3//1\n", "4: normal index 1 is out of range, there are 0"},
        {triangle + "f 1/ 2/ 3/\n", "4: '' is not an index"},
        {triangle + "f 1/ 2/ 3//\n", "4: '' is not an index"},
        {triangle + "f / 2 3\n", "4: '' is not an index"},
        {triangle + "f 1 2 3.5\n", "4: '3.5' is not an index"},
        {triangle + "f 1 2 \x01" + std::string(100, 'x') + "\n",
         "4: '?" + std::string(39, 'x') + "...' is not an index"},
        {triangle + "vn 0 0 1\nf 1//1 2//1 3//1/1\n", "5: a corner has more than 3 indices"},
        {triangle + "vn 0 0 1\nf 1//1 2//1 3\n", "5: the corners of a face are of different forms"},
        {triangle + "\n\nf 1 \\\n2\n", "6: a face has 2 corners, it takes 3"},
        {"f\n", "1: a face has 0 corners, it takes 3"},
        {"v 1 2\n", "1: a position has 3, 4 or 6 numbers"},
        {"v 1 2 3 4 5\n", "1: a position has 3, 4 or 6 numbers"},
        {"v 1 2 3 4 5 6 7\n", "1: a position has 3, 4 or 6 numbers"},
        {"vt\n", "1: a texture coordinate has 1 to 3 numbers"},
        {"vn 1 2\n", "1: a normal has 3 numbers"},
        {"v 1 2 x\n", "1: 'x' is not a number"},
        {"v 1 2 1e\n", "1: '1e' is not a number"},
        {"v 1 2 +-1\n", "1: '+-1' is not a number"},
        {"v 1 2 0x10\n", "1: '0x10' is not a number"},
        {"v 1 2 1e999\n", "1: the number '1e999' is out of range"},
        {"v 1 2 -1e99999\n", "1: the number '-1e99999' is out of range"},
        {"v 1 2 nan\n", "1: the number 'nan' is out of range"},
        {"v 1 2 inf\n", "1: the number 'inf' is out of range"},
        {"vt 1e39\n", "1: the number '1e39' is out of range"},
        {"usemtl  \n", "1: a material without a name"},
        {"o a\0b\n"s, "1: there is a zero byte in the text"},
    };
    for (auto const & wrong : cases) {
        Document document;
        EXPECT_EQ(meshTest::readObj(wrong.text, document), wrong.problem) << wrong.text;
    }
    // What is too small for its type is 0 and no mistake.
    Document document;
    meshTest::expectObj("v 1e-400 -1e-400 1e-320\nvt 1e-60\n", document);
    EXPECT_EQ(document.positions, (qv::vector<qvLinear::Point>{{0, 0, 1e-320}}));
    EXPECT_EQ(document.textureCoordinates[0].x, 0);
}

// One statement of many megabytes, and many statements in one line's place.
TEST(ObjReader, LongLines) {
    std::string text = "v 0 0 0\nf";
    constexpr int corners = 1'000'000;
    for (int i = 0; i < corners; ++i)
        text += i % 3 == 0 ? " \\\n 1" : " -1";
    text.append("\no ").append(3'000'000, 'n').append("\n").append("s ").append(3'000'000, '\\').append("\n");
    text.append(1'000'000, ' ').append("f 1 1 1 1\n");
    Document document;
    meshTest::expectObj(text, document);
    EXPECT_EQ(document.groups.front().faceSizes, qv::vector<int>{corners});
    EXPECT_EQ(document.firstMesh->next->name.length(), 3'000'000U);
}

} // namespace
