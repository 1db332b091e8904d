#include "MeshModel.h"

#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvPair.h"
#include "Base/Containers/qvSet.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <type_traits>
#include <variant>

namespace mesh {

namespace {

using qvString::CString;

// ---- Soundness

class FaultFinder {
public:
    explicit FaultFinder(Document const & document) : document_(document) {}

    CString find() {
        checkArrays();
        checkMaterials();
        checkMeshes();
        for (Group const & group : document_.groups)
            checkFaces(group);
        return fault_;
    }

private:
    using User = qv::pair<Material const *, Group const *>;

    void require(bool holds, char const * fault) {
        if (!holds && fault_.isEmpty())
            fault_ = fault;
    }

    void checkArrays() {
        require(document_.weights.empty() || document_.weights.size() == document_.positions.size(),
                "weights do not fit the positions");
    }

    // A chain is followed no further than there are objects, so one that bites its tail ends too.
    template <class T, class Visit>
    int follow(T const * first, int limit, Visit visit) {
        int count = 0;
        for (T const * item = first; item && count <= limit; item = item->next, ++count)
            visit(*item);
        return count;
    }

    void checkMaterials() {
        int const count = follow(document_.firstMaterial, document_.materials.size(), [](Material const &) {});
        require(count == document_.materials.size(), "materials are not in one chain");
        for (Material const & material : document_.materials) {
            for (Group const * user : material.users)
                require(user && users_.insert(User(&material, user)).second, "a material names a group twice, or none");
        }
    }

    void checkMeshes() {
        int groups = 0;
        int const count = follow(document_.firstMesh, document_.meshes.size(), [&](Mesh const & mesh) {
            require(mesh.document == &document_, "a mesh has another document");
            Group const * last = nullptr;
            if (groups <= document_.groups.size())
                groups += follow(mesh.firstGroup, document_.groups.size(), [&](Group const & group) {
                    require(group.mesh == &mesh, "a group hangs in another mesh");
                    last = &group;
                });
            require(last == mesh.lastGroup, "a mesh has another last group");
        });
        require(count == document_.meshes.size(), "meshes are not in one chain");
        require(groups == document_.groups.size(), "groups are not in the chains of the meshes");
    }

    void checkFaces(Group const & group) {
        std::int64_t corners = 0;
        for (int size : group.faceSizes) {
            require(size >= 3, "a face has less than 3 corners");
            corners += size;
        }
        require(corners * numbersPerCorner == group.corners.size(), "corners do not fit the faces");
        int const limits[numbersPerCorner] = {document_.positions.size(), document_.textureCoordinates.size(),
                                              document_.normals.size()};
        for (int i = 0; i < group.corners.size(); ++i) {
            int const kind = i % numbersPerCorner;
            int const index = group.corners[i];
            require(index >= (kind == 0 ? 0 : -1) && index < limits[kind], "an index of a corner is out of range");
        }
        checkUses(group);
    }

    void checkUses(Group const & group) {
        std::int64_t faces = 0;
        for (MaterialUse const & use : group.uses) {
            require(use.firstFace == faces && use.faceCount > 0, "runs of materials leave a gap");
            faces += use.faceCount;
            require(!use.material || users_.contains(User(use.material, &group)), "a material does not know its user");
        }
        require(faces == group.faceSizes.size(), "runs of materials do not fit the faces");
    }

    Document const & document_;
    qv::set<User> users_; // as the materials name them
    CString fault_;
};

// ---- Comparison

template <class T>
struct Pair {
    T const * original;
    T const * copy;
};

// The number that comes back from a text of that many significant digits.
template <class T>
T throughText(T value, int digits) {
    char text[64];
    char * const end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, digits).ptr;
    T result{};
    std::from_chars(text, end, result);
    return result;
}

class Comparison {
public:
    explicit Comparison(Exactness exactness) : exactness_(exactness) {}

    CString run(Document const & original, Document const & copy) {
        match(&original, &copy, "document");
        while (!queue_.empty() && difference_.isEmpty()) {
            auto const next = queue_.front();
            queue_.pop_front();
            std::visit([this](auto const & pair) { compare(*pair.original, *pair.copy); }, next);
        }
        return difference_;
    }

private:
    // The first sight of two objects pairs them; every later one must find the same pair.
    template <class T>
    void match(T const * original, T const * copy, char const * what) {
        if (!original || !copy)
            return require(!original && !copy, what);
        auto const [there, isNew] = copies_.try_emplace(original, copy);
        auto const [back, isNewBack] = originals_.try_emplace(copy, original);
        require(there->second == copy && back->second == original, what);
        if (isNew && isNewBack)
            queue_.push_back(Pair<T>{original, copy});
    }

    void require(bool same, char const * what) {
        if (!same && difference_.isEmpty())
            difference_.format("difference in %s", what);
    }

    void compare(Document const & a, Document const & b) {
        require(a.name == b.name, "the document's name");
        require(a.materialLibraries.size() == b.materialLibraries.size(), "the number of material libraries");
        for (auto i = a.materialLibraries.begin(), j = b.materialLibraries.begin();
             i != a.materialLibraries.end() && j != b.materialLibraries.end(); ++i, ++j)
            require(*i == *j, "a material library");
        compareValues(a.positions, b.positions, 16, "positions");
        require(a.weights.size() == b.weights.size(), "weights");
        compareNumbers(a.weights.data(), b.weights.data(), std::min(a.weights.size(), b.weights.size()), 16, "weights");
        compareValues(a.textureCoordinates, b.textureCoordinates, 7, "texture coordinates");
        compareValues(a.normals, b.normals, 16, "normals");
        require(a.meshes.size() == b.meshes.size(), "the number of meshes");
        require(a.groups.size() == b.groups.size(), "the number of groups");
        require(a.materials.size() == b.materials.size(), "the number of materials");
        match(a.firstMesh, b.firstMesh, "the first mesh");
        match(a.firstMaterial, b.firstMaterial, "the first material");
    }

    void compare(Mesh const & a, Mesh const & b) {
        require(a.name == b.name, "the name of a mesh");
        match(a.document, b.document, "the document of a mesh");
        match(a.next, b.next, "the next mesh");
        match(a.firstGroup, b.firstGroup, "the first group of a mesh");
        match(a.lastGroup, b.lastGroup, "the last group of a mesh");
    }

    void compare(Group const & a, Group const & b) {
        require(a.name == b.name, "the name of a group");
        match(a.mesh, b.mesh, "the mesh of a group");
        match(a.next, b.next, "the next group");
        require(a.faceSizes == b.faceSizes, "the faces of a group");
        require(a.corners == b.corners, "the corners of a group");
        require(a.uses.size() == b.uses.size(), "the materials of a group");
        for (int i = 0; i < a.uses.size() && i < b.uses.size(); ++i) {
            match(a.uses[i].material, b.uses[i].material, "a material of a group");
            require(a.uses[i].firstFace == b.uses[i].firstFace, "the faces of a material");
            require(a.uses[i].faceCount == b.uses[i].faceCount, "the faces of a material");
        }
    }

    void compare(Material const & a, Material const & b) {
        require(a.name == b.name, "the name of a material");
        match(a.next, b.next, "the next material");
        require(a.users.size() == b.users.size(), "the users of a material");
        for (int i = 0; i < a.users.size() && i < b.users.size(); ++i)
            match(a.users[i], b.users[i], "a user of a material");
    }

    template <class Value>
    void compareValues(qv::vector<Value> const & a, qv::vector<Value> const & b, int digits, char const * what) {
        require(a.size() == b.size(), what);
        std::int64_t const count = numbersPerValue * std::int64_t{std::min(a.size(), b.size())};
        compareNumbers(numbersOf(a), numbersOf(b), count, digits, what);
    }

    template <class T>
    void compareNumbers(T const * a, T const * b, std::int64_t count, int digits, char const * what) {
        using Bits = std::conditional_t<sizeof(T) == 8, std::uint64_t, std::uint32_t>;
        for (std::int64_t i = 0; i < count; ++i) {
            T const expected = exactness_ == Exactness::bits ? a[i] : throughText(a[i], digits);
            if (std::bit_cast<Bits>(expected) != std::bit_cast<Bits>(b[i]))
                return require(false, what);
        }
    }

    Exactness exactness_;
    qv::map<void const *, void const *> copies_;
    qv::map<void const *, void const *> originals_;
    qv::list<std::variant<Pair<Document>, Pair<Mesh>, Pair<Group>, Pair<Material>>> queue_;
    CString difference_;
};

} // namespace

CString findFault(Document const & document) { return FaultFinder(document).find(); }

CString compareDocuments(Document const & original, Document const & copy, Exactness exactness) {
    return Comparison(exactness).run(original, copy);
}

} // namespace mesh
