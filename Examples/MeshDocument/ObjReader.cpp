#include "ObjReader.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdarg>
#include <iterator>
#include <limits>
#include <string>
#include <system_error>

namespace mesh {

namespace {

constexpr char const * kindNames[numbersPerCorner] = {"position", "texture coordinate", "normal"};

bool isBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\f' || c == '\v'; }

std::string_view trimmed(std::string_view text) {
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

// A word of the file as a message can show it.
std::string shown(std::string_view word) {
    constexpr std::size_t most = 40;
    std::string text;
    for (char c : word.substr(0, most))
        text += static_cast<unsigned char>(c) < ' ' || c == 127 ? '?' : c;
    return word.size() > most ? text + "..." : text;
}

} // namespace

// The statements of the stream: lines, joined where a backslash says so.
class ObjReader::Lines {
public:
    explicit Lines(ioBufferedStreamInput & stream) : stream_(stream) {}

    // False at the end of the data. `firstLine` is the number of the statement's first line.
    bool next(std::string & statement, std::int64_t & firstLine) {
        statement.clear();
        firstLine = line_ + 1;
        while (appendLine(statement)) {
            bool const goesOn = !statement.empty() && statement.back() == '\\' && !isComment(statement);
            if (!goesOn)
                return true;
            statement.back() = ' ';
        }
        return !statement.empty();
    }

private:
    static bool isComment(std::string_view statement) {
        std::string_view const text = trimmed(statement);
        return !text.empty() && text.front() == '#';
    }

    // False when there was nothing left.
    bool appendLine(std::string & statement) {
        bool anything = false;
        for (;;) {
            if (position_ == end_ && !fill())
                break;
            anything = true;
            char const * const newline = std::find(position_, end_, '\n');
            statement.append(position_, newline);
            bool const complete = newline != end_;
            position_ = complete ? newline + 1 : newline;
            if (complete)
                break;
        }
        if (anything) {
            ++line_;
            if (!statement.empty() && statement.back() == '\r')
                statement.pop_back();
        }
        return anything;
    }

    bool fill() {
        int const count = stream_.good() ? stream_.readData(block_, sizeof block_) : 0;
        position_ = block_;
        end_ = block_ + std::max(count, 0);
        constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
        if (!marked_ && std::string_view(block_, end_).starts_with(byteOrderMark))
            position_ += byteOrderMark.size();
        marked_ = true;
        return position_ != end_;
    }

    ioBufferedStreamInput & stream_;
    char block_[16384];
    char const * position_ = block_;
    char const * end_ = block_;
    std::int64_t line_ = 0;
    bool marked_ = false; // behind the place of a byte order mark
};

// The words of a statement, up to a comment.
class ObjReader::Words {
public:
    explicit Words(std::string_view text) : rest_(text) {}

    // Empty behind the last word.
    std::string_view next() {
        rest_ = trimmed(rest_);
        if (rest_.empty() || rest_.front() == '#')
            return {};
        auto const end = std::find_if(rest_.begin(), rest_.end(), isBlank);
        auto const word = rest_.substr(0, static_cast<std::size_t>(end - rest_.begin()));
        rest_.remove_prefix(word.size());
        return word;
    }

private:
    std::string_view rest_;
};

// The statements of the format that a document of this kind has no place for.
static bool isOtherStatement(std::string_view keyword) {
    static constexpr std::string_view keywords[] = {
        "bevel",  "bmat",  "bsp",  "bzp",       "c_interp", "call",   "cdc", "cdp",  "con",        "cstype",
        "csh",    "ctech", "curv", "curv2",     "d_interp", "deg",    "end", "hole", "l",          "lod",
        "maplib", "mg",    "p",    "param",     "parm",     "res",    "s",   "scrv", "shadow_obj", "sp",
        "step",   "stech", "surf", "trace_obj", "trim",     "usemap", "vp"};
    return std::find(std::begin(keywords), std::end(keywords), keyword) != std::end(keywords);
}

bool ObjReader::read(ioBufferedStreamInput & stream) {
    Lines lines(stream);
    std::string statement;
    while (problem_.isEmpty() && lines.next(statement, line_))
        readStatement(statement);
    if (problem_.isEmpty() && stream.getStatus() != ioStreamGood && stream.getStatus() != ioStreamEOF)
        fail("the file cannot be read");
    if (problem_.isEmpty())
        checkAheadIndexes();
    return problem_.isEmpty();
}

void ObjReader::readStatement(std::string_view text) {
    if (text.find('\0') != std::string_view::npos)
        return fail("there is a zero byte in the text");
    Words words(text);
    std::string_view const keyword = words.next();
    if (keyword.empty())
        return;
    std::string_view const name = trimmed(trimmed(text).substr(keyword.size()));
    if (keyword == "v")
        readPosition(words);
    else if (keyword == "vt")
        readTextureCoordinate(words);
    else if (keyword == "vn")
        readNormal(words);
    else if (keyword == "f")
        readFace(words);
    else if (keyword == "o")
        beginMesh(name);
    else if (keyword == "g")
        beginGroup(name);
    else if (keyword == "usemtl")
        beginMaterial(name);
    else if (keyword == "mtllib")
        document_.materialLibraries.append(qvString::CString(name));
    else if (isOtherStatement(keyword))
        ++skipped_;
    else
        fail("'%s' begins no statement of an OBJ file", shown(keyword).c_str());
}

// ---- Numbers

template <class Number>
bool ObjReader::readNumber(std::string_view word, Number & number) {
    std::string_view digits = word;
    if (digits.size() > 1 && digits.front() == '+' && digits[1] != '-')
        digits.remove_prefix(1);
    long double value = 0;
    double usual = 0;
    auto result = std::from_chars(digits.data(), digits.data() + digits.size(), usual);
    value = usual;
    // Out of range is also what is too small, and that is 0; the wider type tells the two apart.
    if (result.ec == std::errc::result_out_of_range)
        result = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    bool const complete = result.ptr == digits.data() + digits.size();
    if (result.ec == std::errc::invalid_argument || !complete) {
        fail("'%s' is not a number", shown(word).c_str());
        return false;
    }
    if (result.ec != std::errc() || !(std::abs(value) <= std::numeric_limits<Number>::max())) {
        fail("the number '%s' is out of range", shown(word).c_str());
        return false;
    }
    number = static_cast<Number>(value);
    return true;
}

// Gives how many there were, which can be more than fitted; -1 for a number that is none.
template <class Number>
int ObjReader::readNumbers(Words & words, Number * numbers, int most) {
    int count = 0;
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        Number number = 0;
        if (!readNumber(word, number))
            return -1;
        if (count < most)
            numbers[count] = number;
        count = std::min(count + 1, most + 1);
    }
    return count;
}

// A file of the document counts numbers, in an int.
template <class Value>
void ObjReader::append(qv::vector<Value> & values, Value const & value) {
    if (values.size() >= INT_MAX / numbersPerValue)
        return fail("there are too many coordinates");
    values.append(value);
}

// With a weight, or with three parts of a colour, which the document has no room for.
void ObjReader::readPosition(Words & words) {
    double numbers[6];
    int const count = readNumbers(words, numbers, 6);
    if (count < 0)
        return;
    if (count != 3 && count != 4 && count != 6)
        return fail("a position has 3, 4 or 6 numbers");
    double const weight = count == 4 ? numbers[3] : 1;
    if (weight != 1 && document_.weights.empty())
        document_.weights.setSize(document_.positions.size(), 1.0);
    if (weight != 1 || !document_.weights.empty())
        document_.weights.append(weight);
    append(document_.positions, qvLinear::Point(numbers));
}

void ObjReader::readTextureCoordinate(Words & words) {
    float numbers[3] = {0, 0, 0};
    int const count = readNumbers(words, numbers, 3);
    if (count < 0)
        return;
    if (count < 1 || count > 3)
        return fail("a texture coordinate has 1 to 3 numbers");
    append(document_.textureCoordinates, qvLinear::PointFlt(numbers));
}

void ObjReader::readNormal(Words & words) {
    double numbers[3];
    int const count = readNumbers(words, numbers, 3);
    if (count < 0)
        return;
    if (count != 3)
        return fail("a normal has 3 numbers");
    append(document_.normals, qvLinear::Vector(numbers));
}

// ---- Faces

std::int64_t ObjReader::countOf(Kind kind) const {
    switch (kind) {
    case position:
        return document_.positions.size();
    case texture:
        return document_.textureCoordinates.size();
    default:
        return document_.normals.size();
    }
}

// Indices count from 1, or back from the latest with -1. One ahead is fine when the rest of the file makes up for it.
bool ObjReader::readIndex(std::string_view digits, Kind kind, int & index) {
    std::int64_t number = 0;
    auto const result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (result.ec == std::errc::invalid_argument || result.ptr != digits.data() + digits.size()) {
        fail("'%s' is not an index", shown(digits).c_str());
        return false;
    }
    std::int64_t const count = countOf(kind);
    bool const fits = result.ec == std::errc() && number != 0 && number <= INT_MAX && number >= -count;
    if (!fits) {
        fail("%s index %s is out of range, there are %lld", kindNames[kind], shown(digits).c_str(),
             static_cast<long long>(count));
        return false;
    }
    if (number > count && (ahead_[kind].empty() || ahead_[kind].back().index < number))
        ahead_[kind].append(AheadIndex{number, line_});
    index = static_cast<int>(number > 0 ? number - 1 : count + number);
    return true;
}

bool ObjReader::readCorner(std::string_view word, int (&corner)[numbersPerCorner]) {
    std::fill(std::begin(corner), std::end(corner), -1);
    for (int kind = 0;; ++kind) {
        std::size_t const slash = word.find('/');
        std::string_view const digits = word.substr(0, slash);
        bool const leftOut = digits.empty() && kind == texture && slash != std::string_view::npos;
        if (!leftOut && !readIndex(digits, static_cast<Kind>(kind), corner[kind]))
            return false;
        if (slash == std::string_view::npos)
            return true;
        word.remove_prefix(slash + 1);
        if (kind == normal) {
            fail("a corner has more than 3 indices");
            return false;
        }
    }
}

void ObjReader::readFace(Words & words) {
    if (!group_)
        beginGroup({});
    int size = 0;
    int first[numbersPerCorner] = {};
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        int corner[numbersPerCorner];
        if (!readCorner(word, corner))
            return;
        if (size++ == 0)
            std::copy(std::begin(corner), std::end(corner), first);
        for (int kind = 0; kind < numbersPerCorner; ++kind) {
            if ((corner[kind] < 0) != (first[kind] < 0))
                return fail("the corners of a face are of different forms");
            group_->corners.append(corner[kind]);
        }
    }
    if (size < 3)
        return fail("a face has %d corners, it takes 3", size);
    noteMaterialOfNewFace();
    group_->faceSizes.append(size);
}

void ObjReader::noteMaterialOfNewFace() {
    if (group_->uses.empty() || group_->uses.back().material != material_) {
        group_->uses.append(MaterialUse{material_, group_->faceSizes.size(), 0});
        if (material_ && knownUsers_.emplace(material_, group_).second)
            material_->users.append(group_);
    }
    ++group_->uses.back().faceCount;
}

void ObjReader::checkAheadIndexes() {
    for (Kind kind : {position, texture, normal}) {
        std::int64_t const count = countOf(kind);
        auto const wrong = std::find_if(ahead_[kind].begin(), ahead_[kind].end(),
                                        [count](AheadIndex const & ahead) { return ahead.index > count; });
        if (wrong == ahead_[kind].end())
            continue;
        line_ = wrong->line;
        return fail("%s index %lld is out of range, there are %lld", kindNames[kind],
                    static_cast<long long>(wrong->index), static_cast<long long>(count));
    }
}

// ---- Objects, groups, materials

void ObjReader::beginMesh(std::string_view name) {
    mesh_ = &document_.meshes.emplace_back();
    mesh_->name = qvString::CString(name);
    mesh_->document = &document_;
    (lastMesh_ ? lastMesh_->next : document_.firstMesh) = mesh_;
    lastMesh_ = mesh_;
    group_ = nullptr;
    groupsOfMesh_.clear();
}

void ObjReader::beginGroup(std::string_view names) {
    if (!mesh_)
        beginMesh({});
    std::string joined;
    Words words(names);
    for (std::string_view word = words.next(); !word.empty(); word = words.next()) {
        if (!joined.empty())
            joined += ' ';
        joined += word;
    }
    qvString::CString const name(joined.empty() ? std::string_view("default") : joined);
    auto const [place, isNew] = groupsOfMesh_.try_emplace(name, nullptr);
    if (isNew) {
        Group * const group = place->second = &document_.groups.emplace_back();
        group->name = name;
        group->mesh = mesh_;
        (mesh_->lastGroup ? mesh_->lastGroup->next : mesh_->firstGroup) = group;
        mesh_->lastGroup = group;
    }
    group_ = place->second;
}

void ObjReader::beginMaterial(std::string_view text) {
    qvString::CString const name(text);
    if (name.isEmpty())
        return fail("a material without a name");
    auto const [place, isNew] = materials_.try_emplace(name, nullptr);
    if (isNew) {
        place->second = &document_.materials.emplace_back();
        place->second->name = name;
        (lastMaterial_ ? lastMaterial_->next : document_.firstMaterial) = place->second;
        lastMaterial_ = place->second;
    }
    material_ = place->second;
}

void ObjReader::fail(char const * format, ...) {
    if (!problem_.isEmpty())
        return;
    std::va_list args;
    va_start(args, format);
    problem_.vformat(format, args);
    va_end(args);
}

} // namespace mesh
