// Documents from texts, for the tests of the example.

#ifndef MeshSupport_h
#define MeshSupport_h

#include "MeshModel.h"
#include "ObjReader.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Support/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <string>

namespace meshTest {

// "" or "line: problem".
inline std::string readObj(std::string const & text, mesh::Document & document) {
    static qvTest::ScratchDirectory const scratch;
    std::string const path = scratch.path("file.obj");
    std::filesystem::remove(path); // emptying a file can wait for the disk
    qvTest::writeBytes(path, text);
    ioBufferedStreamInput stream;
    stream.openFile(qvTest::wide(path));
    mesh::ObjReader reader(document);
    bool const isRead = reader.read(stream);
    stream.close();
    return isRead ? std::string() : std::to_string(reader.line()) + ": " + reader.problem().asChar();
}

inline void expectObj(std::string const & text, mesh::Document & document) {
    ASSERT_EQ(readObj(text, document), "");
    ASSERT_EQ(mesh::findFault(document), "");
}

// Two objects, groups that are left and come back, materials in turns, all forms of corners.
inline char const * const smallObj = "mtllib a.mtl\n"
                                     "usemtl stone\n"
                                     "v 0 0 0\nv 1 0 0 0.5\nv 1 1 0\nv 0 1 0\n"
                                     "vt 0 0\nvt 1 0\nvt 1 1\nvn 0 0 1\n"
                                     "o first\n"
                                     "g front\nf 1 2 3 4\nf 1/1 2/2 3/3\n"
                                     "usemtl wood\nf 1//1 2//1 3//1\n"
                                     "g back side\nf 1/1/1 2/2/1 3/3/1\n"
                                     "g front\nusemtl stone\nf -4 -3 -2\n"
                                     "o second\n"
                                     "f 4 3 2 1\n"
                                     "usemtl glass\n";

} // namespace meshTest

#endif
