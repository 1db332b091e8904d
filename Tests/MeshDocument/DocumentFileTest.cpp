#include "DocumentReader.h"
#include "DocumentWriter.h"
#include "MeshDocument/MeshSupport.h"

#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPacketFileError.h"
#include "Support/SeededRandom.h"

#include <filesystem>
#include <string>

namespace {

using mesh::Document;

struct Stopped {};

// A debug file whose tags do not fit stops the process; here it stops the reading.
class FileTest : public ::testing::Test {
protected:
    void SetUp() override {
        ioPacketFileErrorInit([](char *) {});
        ioPacketFileAbortInit([] { throw Stopped(); });
    }
    void TearDown() override {
        ioPacketFileErrorInit(nullptr);
        ioPacketFileAbortInit(nullptr);
    }

    std::string write(Document const & document, ioWriteMethod method) {
        ioBufferedStreamOutput stream;
        stream.openFile(qvTest::wide(path_));
        qvUtil::Progress progress;
        EXPECT_TRUE(mesh::writeDocument(stream, method, document, progress));
        EXPECT_EQ(progress.get(), document.positions.empty() ? 0 : 1);
        stream.close();
        EXPECT_TRUE(stream.good());
        return qvTest::bytesOf(path_);
    }

    std::string read(std::string const & bytes, Document & document) {
        // Some file systems wait for the disk when a file is emptied and written again.
        std::filesystem::remove(path_);
        qvTest::writeBytes(path_, bytes);
        ioBufferedStreamInput stream;
        stream.openFile(qvTest::wide(path_));
        try {
            return mesh::readDocument(stream, static_cast<std::int64_t>(bytes.size()), document).problem.asChar();
        } catch (Stopped const &) {
            return "stopped";
        }
    }

    qvTest::ScratchDirectory scratch_;
    std::string path_ = scratch_.path("document.packets");
};

class DocumentFile : public FileTest, public ::testing::WithParamInterface<ioWriteMethod> {
protected:
    bool isAscii() const { return GetParam() == ioWriteAscii || GetParam() == ioWriteAsciiDebug; }
};

using DamagedFile = FileTest;

// More than one parcel of each array, numbers that use all their digits, texts with every kind of character.
std::string manyFaces() {
    qvTest::SeededRandom random;
    std::string text = "mtllib a\\{}[]<>\"b.mtl\no {name}\\\" <[\xC3\xA4]>\nusemtl a }\n";
    for (int i = 0; i < 1100; ++i) {
        text += "v " + std::to_string(random.bits()) + " " + std::to_string(random.below(1000)) + "e-" +
                std::to_string(random.below(250)) + " -" + std::to_string(1.0 / (1 + random.below(100))) + " 0.1\n";
        text += "vt 0." + std::to_string(random.bits()) + "\nvn 0 1 0\n";
    }
    for (int i = 0; i < 1200; ++i) {
        if (random.oneIn(50))
            text += "usemtl m" + std::to_string(random.below(9)) + "\n";
        if (random.oneIn(100))
            text += "g g" + std::to_string(random.below(9)) + "\n";
        text += "f";
        for (int corner = random.below(4) + 3; corner > 0; --corner) {
            std::string const index = std::to_string(1 + random.below(1100));
            text += " " + index + "/" + index + "/" + index;
        }
        text += "\n";
    }
    return text;
}

TEST_P(DocumentFile, ComesBackEqual) {
    for (std::string const & text : {std::string(), std::string(meshTest::smallObj), manyFaces()}) {
        Document document, copy;
        meshTest::expectObj(text, document);
        document.name = "name";
        std::string const bytes = write(document, GetParam());
        EXPECT_EQ(read(bytes, copy), "");
        EXPECT_EQ(compareDocuments(document, copy, isAscii() ? mesh::Exactness::decimalText : mesh::Exactness::bits),
                  "");
    }
}

TEST_P(DocumentFile, ACutFileIsDamaged) {
    Document document;
    meshTest::expectObj(meshTest::smallObj, document);
    std::string const bytes = write(document, GetParam());
    // The newline behind the last packet may be missing from an ASCII file.
    for (std::size_t size = 0; size + (isAscii() ? 1 : 0) < bytes.size(); ++size) {
        Document copy;
        std::string const problem = read(bytes.substr(0, size), copy);
        ASSERT_TRUE(problem == "this is no packet file" || problem == "the file is damaged") << size << ": " << problem;
    }
}

// Wrong bytes, exchanged and repeated pieces: whatever they make of the file, what is accepted is sound.
TEST_P(DocumentFile, NoBytesMakeAnUnsoundDocument) {
    qvTest::SeededRandom random;
    Document document;
    meshTest::expectObj(meshTest::smallObj, document);
    std::string const bytes = write(document, GetParam());
    int refused = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string changed = bytes;
        for (int n = 1 + random.below(3); n > 0; --n) {
            auto const at = [&] { return static_cast<std::size_t>(random.below(static_cast<int>(changed.size()))); };
            switch (random.below(4)) {
            case 0:
                changed[at()] = static_cast<char>(random.bits());
                break;
            case 1: // digits and small integers
                changed[at()] = static_cast<char>(isAscii() ? '0' + random.below(10) : random.below(24));
                break;
            case 2:
                changed.erase(at(), static_cast<std::size_t>(1 + random.below(40)));
                break;
            default:
                changed.insert(at(), changed.substr(at(), static_cast<std::size_t>(1 + random.below(200))));
            }
        }
        Document copy;
        std::string const problem = read(changed, copy);
        refused += !problem.empty();
        if (problem.empty()) {
            ASSERT_EQ(findFault(copy), "");
        }
    }
    EXPECT_GT(refused, 1000);
}

// A sound file in which one piece of text is replaced.
TEST_F(DamagedFile, SaysWhatIsWrong) {
    Document document;
    meshTest::expectObj("o a\ng x\nv 0 0 0\nusemtl m\nf 1 1 1\ng y\n", document);
    document.name = "name";
    std::string const bytes = write(document, ioWriteAscii);
    struct {
        std::string piece;
        std::string replacement;
        char const * problem;
    } const cases[] = {
        {"^@", "@^", "this is no packet file"},
        {"", "", ""},
        {"[ 3 4 ]", "[ 4 4 ]", "a reference leads to an object of another kind"},
        {"[ 3 4 ]", "[ 2 4 ]", "a reference leads to an object of another kind"}, // a text
        {"[ 3 4 ]", "[ 3 0 ]", "materials are not in one chain"},
        {"< 4 0 1 >", "< 9 0 1 >", "a reference leads nowhere"},
        {"{ 11 0 5 0 9 0 -1 -1 0 -1 -1 0 -1 -1 }\n", "", "an array is not complete"},
        {"-1 -1 0 -1 -1 }", "-1 -1 1 -1 -1 }", "an index of a corner is out of range"},
        {"[ 3 0 0 0 ]", "[ 2000000000 0 0 0 ]", "the file is damaged"},
        {"[ 3 0 0 0 ]", "[ -3 0 0 0 ]", "the file is damaged"},
        {"{ 6 0 1 0 3", "{ 6 0 3 0 3", "the file is damaged"}, // a parcel for a mesh
        {"{ 6 0 1 0 3", "{ 6 0 1 1 3", "the file is damaged"},
        {"{ 5 1 4 7", "{ 5 1 4 3", "the file is damaged"}, // a mesh for a name
        {"{ 5 1 4 7", "{ 5 1 4 2", ""},                    // another name
        {"{ 6 0 1", "{ 2 1 8 2 [ 0 ] }\n{ 6 0 1", "the file is damaged"},
        {bytes.substr(bytes.find("{ 0 1 2"), bytes.rfind("{ 1 0 }") - bytes.find("{ 0 1 2")), "",
         "the file holds no document"},
    };
    for (auto const & wrong : cases) {
        std::string changed = bytes;
        std::size_t const place = changed.find(wrong.piece);
        ASSERT_NE(place, std::string::npos) << wrong.piece;
        changed.replace(place, wrong.piece.size(), wrong.replacement);
        Document copy;
        EXPECT_EQ(read(changed, copy), wrong.problem) << wrong.piece << " -> " << wrong.replacement;
    }
}

INSTANTIATE_TEST_SUITE_P(Forms, DocumentFile,
                         ::testing::Values(ioWriteAscii, ioWriteBinary, ioWriteAsciiDebug, ioWriteBinaryDebug));

} // namespace
