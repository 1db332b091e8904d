// MeshScene <file.obj> [x y z dx dy dz]
//
// Reads an OBJ file, moves everything by a matrix, takes the matrix apart, and tells which groups a ray hits: those
// whose bounding range it meets. The ray starts at x y z and goes along dx dy dz; by default it starts left of the
// scene and goes through its middle.
//
// Exit codes: 0 when the file could be read, 1 when not, 2 for wrong arguments.

#include "MeshModel.h"
#include "ObjFile.h"
#include "Support/ProgressBar.h"

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearDecompose.h"
#include "Base/Linear/qvLinearIntersect.h"
#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearParamLine.h"
#include "Base/Linear/qvLinearRange3d.h"
#include "Base/Linear/qvLinearTolerance.h"
#include "Base/Utility/qvUtilProgress.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <optional>
#include <system_error>

namespace {

using namespace qvLinear;

void readFile(char const * name, mesh::Document & document) {
    qvUtil::Progress progress;
    ProgressBar const bar(ProgressBar::Use::whereATerminalIs, progress);
    progress.setCaption("reading");
    mesh::readObjFile(name, document, progress);
}

void print(char const * name, Vector const & v) {
    std::printf("%-10s %9.3f %9.3f %9.3f\n", name, v[0] + 0.0, v[1] + 0.0, v[2] + 0.0);
}

// What the scene is moved by: a stretching, two turns and a translation, in the order in which they act from the last.
AffineMatrix sceneMatrix() {
    AffineMatrix matrix;
    matrix.identity().translate(1, 2, 3).rotateZ(toRadians(30)).rotateX(toRadians(20)).scale(2, 1, 0.5);
    return matrix;
}

void printParts(AffineMatrix const & matrix) {
    Vector translate, scale, rotate, shear;
    bool const hasRotation = orvenDecompose(matrix, translate, scale, rotate, shear);
    print("translate", translate);
    print("scale", scale);
    if (hasRotation)
        print("rotate", rotate);
    print("shear", shear);
}

// The range of all corners of the group's faces; none for a group without faces.
std::optional<Range3d> boundsOf(mesh::Group const & group, qv::vector<Point> const & positions) {
    std::optional<Range3d> bounds;
    for (int i = 0; i < group.corners.size(); i += mesh::numbersPerCorner) {
        Point const & p = positions[group.corners[i]];
        if (bounds)
            bounds->include(p);
        else
            bounds.emplace(p);
    }
    return bounds;
}

ParamLine defaultRay(qv::vector<Point> const & positions) {
    if (positions.empty())
        return ParamLine(Point::origin, Vector::x);
    Range3d scene(positions[0]);
    for (Point const & p : positions)
        scene.include(p);
    return ParamLine(scene.min(), scene.max());
}

void printHits(mesh::Document const & document, ParamLine const & ray) {
    int groups = 0;
    int hits = 0;
    for (mesh::Mesh const * mesh = document.firstMesh; mesh; mesh = mesh->next)
        for (mesh::Group const * group = mesh->firstGroup; group; group = group->next) {
            ++groups;
            std::optional<Range3d> const bounds = boundsOf(*group, document.positions);
            if (!bounds)
                continue;
            // An unbounded result is a miss; the line goes on behind the ray's start, too.
            Range1d const inside = intersect(ray, *bounds);
            if (inside.isUnbounded() || inside.max() < 0)
                continue;
            ++hits;
            std::printf("hit %s / %s from %.3f to %.3f\n", mesh->name.asChar(), group->name.asChar(),
                        std::max(0.0, inside.min()), inside.max());
        }
    std::printf("%d of %d groups hit\n", hits, groups);
}

std::optional<ParamLine> rayOf(char ** arguments) {
    double numbers[6];
    for (int i = 0; i < 6; ++i) {
        char const * const end = arguments[i] + std::strlen(arguments[i]);
        auto const [stop, error] = std::from_chars(arguments[i], end, numbers[i]);
        if (error != std::errc() || stop != end || !std::isfinite(numbers[i]))
            return std::nullopt;
    }
    if (!Normal(numbers + 3).isValid())
        return std::nullopt;
    return ParamLine(Point(numbers), Vector(numbers + 3));
}

int run(int argc, char ** argv) {
    std::optional<ParamLine> ray;
    if (argc == 8)
        ray = rayOf(argv + 2);
    if (argc != 2 && !ray) {
        std::fprintf(stderr, "usage: MeshScene <file.obj> [x y z dx dy dz]\n");
        return 2;
    }
    mesh::Document document;
    readFile(argv[1], document);
    AffineMatrix const matrix = sceneMatrix();
    printParts(matrix);
    for (Point & p : document.positions)
        p = p * matrix;
    if (!ray)
        ray = defaultRay(document.positions);
    print("ray from", ray->point.asVector());
    print("along", ray->vector);
    printHits(document, *ray);
    return 0;
}

} // namespace

int main(int argc, char ** argv) {
    try {
        return run(argc, argv);
    } catch (std::exception const & failure) {
        std::fprintf(stderr, "%s\n", failure.what());
        return 1;
    }
}
