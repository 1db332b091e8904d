// makeSample > sample.obj
//
// Writes the sample that stands beside this program: shapes as several objects, with groups, materials, all forms of
// corners, indices that count back, polygons of many sizes and a statement over several lines.

#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <numbers>

namespace {

constexpr double pi = std::numbers::pi;

void position(double x, double y, double z) { std::printf("v %.5f %.5f %.5f\n", x, y, z); }

// A ring of quads; all corners with texture coordinates and normals, counted from the start of the file.
int torus(int base, int around, int across) {
    std::printf("o torus\nusemtl rubber\n");
    for (int i = 0; i < around; ++i)
        for (int j = 0; j < across; ++j) {
            double const a = 2 * pi * i / around;
            double const b = 2 * pi * j / across;
            position((2 + 0.6 * std::cos(b)) * std::cos(a), 0.6 * std::sin(b), (2 + 0.6 * std::cos(b)) * std::sin(a));
            std::printf("vt %.4f %.4f\n", double(i) / around, double(j) / across);
            std::printf("vn %.5f %.5f %.5f\n", std::cos(b) * std::cos(a), std::sin(b), std::cos(b) * std::sin(a));
        }
    for (int i = 0; i < around; ++i) {
        if (i % (around / 4) == 0)
            std::printf("g torus quarter%d\nusemtl %s\n", i / (around / 4), i % 2 == 0 ? "rubber" : "tape");
        if (i % 5 == 0)
            std::printf("usemtl %s\n", i % 2 == 0 ? "tape" : "rubber");
        for (int j = 0; j < across; ++j) {
            int const next = (i + 1) % around;
            int const right = (j + 1) % across;
            std::printf("f");
            for (int corner : {i * across + j, i * across + right, next * across + right, next * across + j})
                std::printf(" %d/%d/%d", base + corner, corner + 1, corner + 1);
            std::printf("\n");
        }
    }
    return base + around * across;
}

// Positions only. Caps of triangles, counted back from the latest position, and quads in between.
int sphere(int base, int rings, int segments) {
    std::printf("o sphere\ng cap.north\nusemtl marble\n");
    for (int i = 1; i < rings; ++i)
        for (int j = 0; j < segments; ++j) {
            double const polar = pi * i / rings;
            double const turn = 2 * pi * j / segments;
            position(5 + std::sin(polar) * std::cos(turn), std::cos(polar), std::sin(polar) * std::sin(turn));
        }
    position(5, 1, 0);
    position(5, -1, 0);
    int const count = (rings - 1) * segments;
    for (int j = 0; j < segments; ++j)
        std::printf("f -2 %d %d\n", (j + 1) % segments - count - 2, j - count - 2);
    std::printf("g belt\n");
    for (int i = 0; i + 2 < rings; ++i)
        for (int j = 0; j < segments; ++j) {
            int const upper = base + i * segments;
            int const right = (j + 1) % segments;
            std::printf("f %d %d %d %d\n", upper + j, upper + right, upper + segments + right, upper + segments + j);
        }
    std::printf("g cap.south\nusemtl\tmarble dark\n");
    for (int j = 0; j < segments; ++j)
        std::printf("f -1 %d %d\n", j - segments - 2, (j + 1) % segments - segments - 2);
    std::printf("g cap.north\n# one more face for a group that was left\nf -2 -1 -3\n");
    return base + count + 2;
}

// Prisms of 3 to 14 sides with polygons as caps, in the form with normals but no texture coordinates.
int prisms(int base) {
    std::printf("o prisms\nvn 0 1 0\nvn 0 -1 0\n");
    for (int sides = 3; sides <= 14; ++sides) {
        std::printf("g prism %d\ns off\nusemtl brass\n", sides);
        for (int level = 0; level < 2; ++level)
            for (int j = 0; j < sides; ++j) {
                double const turn = 2 * pi * j / sides;
                position(sides * 2.5 + std::cos(turn), level, 5 + std::sin(turn));
            }
        for (int level = 0; level < 2; ++level) {
            std::printf("f");
            for (int j = 0; j < sides; ++j)
                std::printf("%s %d//%d", j % 5 == 4 ? " \\\n  " : "", base + level * sides + j, -2 + level);
            std::printf("\n");
        }
        std::printf("s 1\nusemtl steel\n");
        for (int j = 0; j < sides; ++j)
            std::printf("f %d %d %d %d\n", base + j, base + (j + 1) % sides, base + sides + (j + 1) % sides,
                        base + sides + j);
        base += 2 * sides;
    }
    return base;
}

// A field of triangles with texture coordinates, and some weights.
int field(int base, int width, int depth) {
    std::printf("o field\r\ng\r\nusemtl grass\r\n");
    for (int i = 0; i < depth; ++i)
        for (int j = 0; j < width; ++j) {
            double const height = 0.3 * std::sin(i * 0.7) * std::cos(j * 0.4);
            std::printf("v %.4f %.4f %.4f%s\n", j * 0.5, height - 2, i * 0.5, (i + j) % 11 == 0 ? " 0.75" : "");
            std::printf("vt %g %g %g\n", j * 0.125, i * 0.125, height > 0 ? 1.0 : 0.0);
        }
    int const count = width * depth;
    for (int i = 0; i + 1 < depth; ++i)
        for (int j = 0; j + 1 < width; ++j) {
            int const corner = i * width + j;
            std::printf("f %d/%d %d/%d %d/%d\n", base + corner, corner - count, base + corner + 1, corner + 1 - count,
                        base + corner + width, corner + width - count);
            std::printf("f %d/%d %d/%d %d/%d\n", base + corner + 1, corner + 1 - count, base + corner + width + 1,
                        corner + width + 1 - count, base + corner + width, corner + width - count);
        }
    return base + count;
}

} // namespace

int main() {
    std::printf("# Shapes of all kinds.\nmtllib sample.mtl\n");
    int base = 1;
    base = torus(base, 48, 24);
    base = sphere(base, 20, 32);
    base = prisms(base);
    base = field(base, 32, 24);
    std::printf("o marks without faces\ng points\np %d %d\nl %d %d %d\n", base - 1, base - 2, base - 1, base - 2,
                base - 3);
    std::printf("usemtl unused\n# the last line has no end");
}
