// Reads a Wavefront OBJ file into a document.

#ifndef ObjReader_h
#define ObjReader_h

#include "MeshModel.h"

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvPair.h"
#include "Base/Containers/qvSet.h"

#include <cstdint>
#include <string_view>

class ioBufferedStreamInput;

namespace mesh {

// Takes `v`, `vt`, `vn`, `f`, `o`, `g`, `usemtl` and `mtllib`; the format's other statements are counted and skipped,
// and anything else is wrong. Each `o` begins a mesh. A group is all faces of one mesh under the same names behind `g`;
// faces in front of the first `o` or `g` are in a mesh without a name, or a group named "default". Objects and groups
// without faces are kept when the file names them.
//
// A line ends with a line feed, in front of which a carriage return may stand; a backslash at its end joins the next
// one to it, except in a comment. Whatever the file holds, memory stays in proportion to it.
class ObjReader {
public:
    explicit ObjReader(Document & document) : document_(document) {}

    // Reads the stream to its end. False when something is wrong: `line()` and `problem()` then tell what, and the
    // document is of no use.
    bool read(ioBufferedStreamInput & stream);

    std::int64_t line() const { return line_; }
    qvString::CString const & problem() const { return problem_; }
    std::int64_t skippedStatements() const { return skipped_; }

private:
    class Lines;
    class Words;

    // The kinds of indices of a corner.
    enum Kind { position, texture, normal };

    // An index that was ahead of its array when it was met.
    struct AheadIndex {
        std::int64_t index;
        std::int64_t line;
    };

    void readStatement(std::string_view text);
    void readPosition(Words & words);
    void readTextureCoordinate(Words & words);
    void readNormal(Words & words);
    void readFace(Words & words);
    bool readCorner(std::string_view word, int (&corner)[numbersPerCorner]);
    bool readIndex(std::string_view digits, Kind kind, int & index);
    template <class Number>
    int readNumbers(Words & words, Number * numbers, int most);
    template <class Number>
    bool readNumber(std::string_view word, Number & number);
    template <class Value>
    void append(qv::vector<Value> & values, Value const & value);
    void checkAheadIndexes();

    void beginMesh(std::string_view name);
    void beginGroup(std::string_view name);
    void beginMaterial(std::string_view name);
    void noteMaterialOfNewFace();

    std::int64_t countOf(Kind kind) const;
    // Keeps the first problem.
    void fail(char const * format, ...);

    Document & document_;
    Mesh * mesh_ = nullptr;
    Mesh * lastMesh_ = nullptr;
    Group * group_ = nullptr;
    Material * material_ = nullptr;
    Material * lastMaterial_ = nullptr;
    qv::map<qvString::CString, Group *> groupsOfMesh_;
    qv::map<qvString::CString, Material *> materials_;
    qv::set<qv::pair<Material *, Group *>> knownUsers_;
    qv::vector<AheadIndex> ahead_[numbersPerCorner]; // rising
    std::int64_t line_ = 0;
    std::int64_t skipped_ = 0;
    qvString::CString problem_;
};

} // namespace mesh

#endif
