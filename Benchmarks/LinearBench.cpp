// Geometry beside two matrix libraries, in double and in float.

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearIntersect.h"
#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearProjMatrix.h"
#include "Base/Linear/qvLinearProjMatrixFlt.h"
#include "Base/Linear/qvLinearQuaternion.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#ifdef QV_BENCH_GLM
#include <glm/glm.hpp>
#include <glm/gtc/quaternion.hpp>
#endif
#ifdef QV_BENCH_EIGEN
#include <Eigen/Dense>
#include <Eigen/Geometry>
#endif

namespace {

constexpr std::size_t many = 1'000'000;
constexpr std::size_t few = 64; // matrices and quaternions, which stay in the cache

// What all sides work on, as rows of plain numbers.
struct Data {
    std::vector<double> points;      // x, y, z of each
    std::vector<double> matrices;    // twelve of each, rows with the translation last; the linear part is sound
    std::vector<double> quaternions; // x, y, z, w of each, of length 1
};

Data const & data() {
    static Data const made = [] {
        std::mt19937 random(7);
        std::uniform_real_distribution<double> number(-10, 10);
        Data result;
        for (std::size_t i = 0; i < 3 * many; ++i)
            result.points.push_back(number(random));
        while (result.matrices.size() < 12 * few) {
            double m[12];
            for (double & element : m)
                element = number(random) / 4;
            if (std::fabs(qvLinear::AffineMatrix(m).det3x3()) > 1)
                result.matrices.insert(result.matrices.end(), m, m + 12);
        }
        for (std::size_t i = 0; i < few; ++i) {
            double q[4];
            double sum = 0;
            for (double & element : q) {
                element = number(random);
                sum += element * element;
            }
            for (double element : q)
                result.quaternions.push_back(element / std::sqrt(sum));
        }
        return result;
    }();
    return made;
}

// ---- The sides. Each has the same types and operations, so that one body measures all.

struct QvDouble {
    using Number = double;
    using Point = qvLinear::Point;
    using Vector = qvLinear::Vector;
    using Direction = qvLinear::Normal;
    using Affine = qvLinear::AffineMatrix;
    using Full = qvLinear::ProjMatrix;
    using Quaternion = qvLinear::Quaternion;

    static Point point(double const * p) { return Point(p); }
    static Vector vector(double const * p) { return Vector(p); }
    static Affine affine(double const * m) { return Affine(m); }
    static Full full(double const * m) { return Full(Affine(m)); }
    static Quaternion quaternion(double const * q) { return {q[0], q[1], q[2], q[3]}; }

    static Point transform(Point const & p, Affine const & m) { return p * m; }
    static Affine product(Affine const & a, Affine const & b) { return a * b; }
    static Full product(Full const & a, Full const & b) { return a * b; }
    static Affine inverseFast(Affine m) {
        m.invertFast();
        return m;
    }
    static Full inverseFast(Full m) {
        m.invertFast();
        return m;
    }
    static Affine inversePivoting(Affine m) {
        m.invert();
        return m;
    }
    static Full inversePivoting(Full m) {
        m.invert();
        return m;
    }
    static Quaternion slerp(Quaternion const & a, Quaternion const & b, double t) { return qvLinear::slerp(a, b, t); }
    using Turned = Affine;
    static void toMatrix(Turned & out, Quaternion const & q) { q.getMatrix(out); }
    static Direction direction(Vector const & v) { return Direction(v); }

    static double at(Affine const & m, int row, int column) { return m.m[3 * row + column]; }
    static double at(Full const & m, int row, int column) { return m.m[4 * row + column]; }
    static double at(Quaternion const & q, int i) { return (&q.x)[i]; }
    template <class V>
    static double at(V const & v, int i) {
        return v[i];
    }
};

struct QvFloat {
    using Number = float;
    using Point = qvLinear::PointFlt;
    using Vector = qvLinear::VectorFlt;
    using Direction = qvLinear::VectorFlt;
    using Affine = qvLinear::AffineMatrixFlt;
    using Full = qvLinear::ProjMatrixFlt;

    static Point point(double const * p) { return Point(p); }
    static Vector vector(double const * p) { return Vector(p); }
    static Affine affine(double const * m) { return qvLinear::AffineMatrix(m); }
    static Full full(double const * m) { return qvLinear::AffineMatrix(m); }

    static Point transform(Point const & p, Affine const & m) { return p * m; }
    static Affine product(Affine const & a, Affine const & b) { return a * b; }
    static Full product(Full const & a, Full const & b) { return a * b; }
    static Direction direction(Vector v) {
        v.normalize();
        return v;
    }

    static double at(Affine const & m, int row, int column) { return double{m.m[3 * row + column]}; }
    static double at(Full const & m, int row, int column) { return double{m.m[4 * row + column]}; }
    template <class V>
    static double at(V const & v, int i) {
        return double{v[i]};
    }
};

#ifdef QV_BENCH_GLM
// Its matrices are the transposed ones: m[i] is the image of an axis, as a row is with us.
template <class T>
struct Glm {
    using Number = T;
    using Point = glm::vec<3, T>;
    using Vector = glm::vec<3, T>;
    using Direction = glm::vec<3, T>;
    using Full = glm::mat<4, 4, T>;
    using Affine = Full;
    using Quaternion = glm::qua<T>;

    static Point point(double const * p) { return Point(p[0], p[1], p[2]); }
    static Vector vector(double const * p) { return point(p); }
    static Full full(double const * m) {
        Full result(1);
        for (int i = 0; i < 12; ++i)
            result[i / 3][i % 3] = T(m[i]);
        return result;
    }
    static Affine affine(double const * m) { return full(m); }
    static Quaternion quaternion(double const * q) { return Quaternion(T(q[3]), T(q[0]), T(q[1]), T(q[2])); }

    static Point transform(Point const & p, Affine const & m) { return Point(m * glm::vec<4, T>(p, T(1))); }
    static Full product(Full const & a, Full const & b) { return b * a; }
    static Full inverseFast(Full const & m) { return glm::inverse(m); }
    static Quaternion slerp(Quaternion const & a, Quaternion const & b, T t) { return glm::slerp(a, b, t); }
    using Turned = glm::mat<3, 3, T>;
    static void toMatrix(Turned & out, Quaternion const & q) { out = glm::mat3_cast(q); }
    static Direction direction(Vector const & v) { return glm::normalize(v); }

    static double at(Full const & m, int row, int column) { return double(m[row][column]); }
    static double at(Turned const & m, int row, int column) { return double(m[row][column]); }
    static double at(Quaternion const & q, int i) { return double(q[i]); }
    static double at(Vector const & v, int i) { return double(v[i]); }
};
#endif

#ifdef QV_BENCH_EIGEN
// Columns again.
template <class T>
struct Eigen3 {
    using Number = T;
    using Vector = Eigen::Matrix<T, 3, 1>;
    using Point = Vector;
    using Direction = Vector;
    using Affine = Eigen::Transform<T, 3, Eigen::Affine>;
    using Full = Eigen::Matrix<T, 4, 4>;
    using Quaternion = Eigen::Quaternion<T>;

    static Point point(double const * p) { return Point(T(p[0]), T(p[1]), T(p[2])); }
    static Vector vector(double const * p) { return point(p); }
    static Affine affine(double const * m) {
        Affine result = Affine::Identity();
        for (int i = 0; i < 12; ++i)
            result.matrix()(i % 3, i / 3) = T(m[i]);
        return result;
    }
    static Full full(double const * m) { return affine(m).matrix(); }
    static Quaternion quaternion(double const * q) { return Quaternion(T(q[3]), T(q[0]), T(q[1]), T(q[2])); }

    static Point transform(Point const & p, Affine const & m) { return m * p; }
    static Affine product(Affine const & a, Affine const & b) { return b * a; }
    static Full product(Full const & a, Full const & b) { return b * a; }
    static Affine inverseFast(Affine const & m) { return m.inverse(Eigen::Affine); }
    static Full inverseFast(Full const & m) { return m.inverse(); }
    static Affine inversePivoting(Affine const & m) {
        Affine result = Affine::Identity();
        result.linear() = m.linear().partialPivLu().inverse();
        result.translation() = -(result.linear() * m.translation());
        return result;
    }
    static Full inversePivoting(Full const & m) { return m.partialPivLu().inverse(); }
    static Quaternion slerp(Quaternion const & a, Quaternion const & b, T t) { return a.slerp(t, b); }
    using Turned = Eigen::Matrix<T, 3, 3>;
    static void toMatrix(Turned & out, Quaternion const & q) { out = q.toRotationMatrix(); }
    static Direction direction(Vector const & v) { return v.normalized(); }

    static double at(Affine const & m, int row, int column) { return double(m.matrix()(column, row)); }
    template <int n>
    static double at(Eigen::Matrix<T, n, n> const & m, int row, int column) {
        return double(m(column, row));
    }
    static double at(Quaternion const & q, int i) { return double(q.coeffs()[i]); }
    static double at(Vector const & v, int i) { return double(v[i]); }
};
#endif

// ---- What is measured

template <class Side, class Make>
auto madeOf(std::vector<double> const & numbers, std::size_t each, Make make) {
    std::vector<decltype(make(numbers.data()))> result;
    for (std::size_t i = 0; i + each <= numbers.size(); i += each)
        result.push_back(make(&numbers[i]));
    return result;
}

template <class Side>
void transformPoints(benchmark::State & state, std::size_t count) {
    auto const all = madeOf<Side>(data().points, 3, [](double const * p) { return Side::point(p); });
    std::vector<typename Side::Point> out(count);
    auto const matrix = Side::affine(data().matrices.data());
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i)
            out[i] = Side::transform(all[i], matrix);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}

template <class Side>
void makeDirections(benchmark::State & state, std::size_t count) {
    auto const all = madeOf<Side>(data().points, 3, [](double const * p) { return Side::vector(p); });
    std::vector<typename Side::Direction> out(count);
    for (auto _ : state) {
        for (std::size_t i = 0; i < count; ++i)
            out[i] = Side::direction(all[i]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}

// Runs op on each of a few operands, and the one behind it.
template <class Value, class Operation>
void runOnPairs(benchmark::State & state, std::vector<Value> const & values, Operation op) {
    std::vector<decltype(op(values[0], values[1]))> out;
    for (std::size_t i = 0; i < few; ++i)
        out.push_back(op(values[i], values[(i + 1) % few]));
    for (auto _ : state) {
        for (std::size_t i = 0; i < few; ++i)
            out[i] = op(values[i], values[(i + 1) % few]);
        benchmark::DoNotOptimize(out.data());
        benchmark::ClobberMemory();
    }
}

template <class Side>
auto affines() {
    return madeOf<Side>(data().matrices, 12, [](double const * m) { return Side::affine(m); });
}
template <class Side>
auto fulls() {
    return madeOf<Side>(data().matrices, 12, [](double const * m) { return Side::full(m); });
}
template <class Side>
auto quaternions() {
    return madeOf<Side>(data().quaternions, 4, [](double const * q) { return Side::quaternion(q); });
}

template <class Function>
void add(char const * row, std::string const & wanted, std::string const & who, Function function) {
    benchmark::RegisterBenchmark((std::string(row) + "|" + wanted + "|" + who).c_str(), function);
}

// What there is in both precisions.
template <class Side>
void addCommon(std::string const & who) {
    std::string const type = std::is_same_v<typename Side::Number, double> ? "double" : "float";
    for (std::size_t count : {std::size_t{1000}, many}) {
        std::string const wanted = type + ", " + std::to_string(count);
        add("transform points", wanted, who, [=](benchmark::State & s) { transformPoints<Side>(s, count); });
        add("unit vectors", wanted, who, [=](benchmark::State & s) { makeDirections<Side>(s, count); });
    }
    add("affine product", type + " x64", who, [](benchmark::State & state) {
        runOnPairs(state, affines<Side>(), [](auto const & a, auto const & b) { return Side::product(a, b); });
    });
    add("projective product", type + " x64", who, [](benchmark::State & state) {
        runOnPairs(state, fulls<Side>(), [](auto const & a, auto const & b) { return Side::product(a, b); });
    });
}

template <class Side>
void addFast(std::string const & who) {
    add("inverse by cofactors", "affine x64", who, [](benchmark::State & state) {
        runOnPairs(state, affines<Side>(), [](auto const & a, auto const &) { return Side::inverseFast(a); });
    });
    add("inverse by cofactors", "projective x64", who, [](benchmark::State & state) {
        runOnPairs(state, fulls<Side>(), [](auto const & a, auto const &) { return Side::inverseFast(a); });
    });
    add("slerp", "double x64", who, [](benchmark::State & state) {
        runOnPairs(state, quaternions<Side>(), [](auto const & a, auto const & b) { return Side::slerp(a, b, 0.3); });
    });
    add("quaternion to matrix", "double x64", who, [](benchmark::State & state) {
        auto const all = quaternions<Side>();
        std::vector<typename Side::Turned> out(few);
        for (auto _ : state) {
            for (std::size_t i = 0; i < few; ++i)
                Side::toMatrix(out[i], all[i]);
            benchmark::DoNotOptimize(out.data());
            benchmark::ClobberMemory();
        }
    });
}

template <class Side>
void addPivoting(std::string const & who) {
    add("inverse with pivoting", "affine x64", who, [](benchmark::State & state) {
        runOnPairs(state, affines<Side>(), [](auto const & a, auto const &) { return Side::inversePivoting(a); });
    });
    add("inverse with pivoting", "projective x64", who, [](benchmark::State & state) {
        runOnPairs(state, fulls<Side>(), [](auto const & a, auto const &) { return Side::inversePivoting(a); });
    });
}

// A ray against one box after the other of a million, of which it hits few.
void rayAgainstRanges(benchmark::State & state) {
    using namespace qvLinear;
    std::vector<Range3d> boxes;
    for (std::size_t i = 0; i < many; ++i) {
        Point const corner(&data().points[3 * i]);
        boxes.emplace_back(corner, corner + Vector(1, 1, 1));
    }
    ParamLine const ray(Point(-10, -9, -8), Vector(3, 2, 2.5));
    long hits = 0;
    for (Range3d const & box : boxes)
        hits += intersect(ray, box).isBounded();
    if (hits == 0)
        state.SkipWithError("the ray hits nothing");
    std::size_t at = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(intersect(ray, boxes[at]));
        at = at + 1 == many ? 0 : at + 1;
    }
}

// ---- That all sides calculate the same

[[maybe_unused]] void require(bool same, char const * what) {
    if (!same) {
        std::fprintf(stderr, "the sides differ in %s\n", what);
        std::abort();
    }
}

template <class Ours, class Other, class A, class B>
void compareMatrices(A const & ours, B const & other, char const * what, double tol, int columns = 3, int rows = 3) {
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < columns; ++j)
            require(std::fabs(Ours::at(ours, i, j) - Other::at(other, i, j)) < tol, what);
}

template <class Ours, class Other>
void compareCommon() {
    double const tol = std::is_same_v<typename Ours::Number, double> ? 1e-9 : 1e-3;
    double const * const m = data().matrices.data();
    for (std::size_t i = 0; i < 3 * few; i += 3) {
        double const * const p = &data().points[i];
        auto const ours = Ours::transform(Ours::point(p), Ours::affine(m));
        auto const other = Other::transform(Other::point(p), Other::affine(m));
        auto const ourDirection = Ours::direction(Ours::vector(p));
        auto const otherDirection = Other::direction(Other::vector(p));
        for (int k = 0; k < 3; ++k) {
            require(std::fabs(Ours::at(ours, k) - Other::at(other, k)) < tol, "transformed points");
            require(std::fabs(Ours::at(ourDirection, k) - Other::at(otherDirection, k)) < tol, "unit vectors");
        }
    }
    compareMatrices<Ours, Other>(Ours::product(Ours::affine(m), Ours::affine(m + 12)),
                                 Other::product(Other::affine(m), Other::affine(m + 12)), "products", tol, 3, 4);
    compareMatrices<Ours, Other>(Ours::product(Ours::full(m), Ours::full(m + 12)),
                                 Other::product(Other::full(m), Other::full(m + 12)), "products", tol, 4, 4);
}

template <class Ours, class Other>
void compareFast() {
    for (std::size_t i = 0; i + 1 < few; ++i) {
        double const * const m = &data().matrices[12 * i];
        double const * const q = &data().quaternions[4 * i];
        compareMatrices<Ours, Other>(Ours::inverseFast(Ours::affine(m)), Other::inverseFast(Other::affine(m)),
                                     "inverses", 1e-9, 3, 4);
        compareMatrices<Ours, Other>(Ours::inverseFast(Ours::full(m)), Other::inverseFast(Other::full(m)), "inverses",
                                     1e-9, 4, 4);
        typename Ours::Turned ourTurned;
        typename Other::Turned otherTurned;
        Ours::toMatrix(ourTurned, Ours::quaternion(q));
        Other::toMatrix(otherTurned, Other::quaternion(q));
        compareMatrices<Ours, Other>(ourTurned, otherTurned, "matrices of quaternions", 1e-12);
        auto const ours = Ours::slerp(Ours::quaternion(q), Ours::quaternion(q + 4), 0.3);
        auto const other = Other::slerp(Other::quaternion(q), Other::quaternion(q + 4), 0.3);
        double product = 0;
        for (int k = 0; k < 4; ++k)
            product += Ours::at(ours, k) * Other::at(other, k);
        require(std::fabs(std::fabs(product) - 1) < 1e-9, "slerp");
    }
}

} // namespace

int main(int argc, char ** argv) {
    addCommon<QvDouble>("qv");
    addCommon<QvFloat>("qv");
    addFast<QvDouble>("qv");
    addPivoting<QvDouble>("qv");
    add("ray against a range", "of 1000000", "qv", rayAgainstRanges);
#ifdef QV_BENCH_GLM
    compareCommon<QvDouble, Glm<double>>();
    compareCommon<QvFloat, Glm<float>>();
    compareFast<QvDouble, Glm<double>>();
    addCommon<Glm<double>>("glm");
    addCommon<Glm<float>>("glm");
    addFast<Glm<double>>("glm");
#else
    std::printf("glm was not found: its rows are left out\n");
#endif
#ifdef QV_BENCH_EIGEN
    compareCommon<QvDouble, Eigen3<double>>();
    compareCommon<QvFloat, Eigen3<float>>();
    compareFast<QvDouble, Eigen3<double>>();
    for (std::size_t i = 0; i < few; ++i) {
        double const * const m = &data().matrices[12 * i];
        compareMatrices<QvDouble, Eigen3<double>>(QvDouble::inversePivoting(QvDouble::affine(m)),
                                                  Eigen3<double>::inversePivoting(Eigen3<double>::affine(m)),
                                                  "inverses", 1e-9, 3, 4);
    }
    addCommon<Eigen3<double>>("Eigen");
    addCommon<Eigen3<float>>("Eigen");
    addFast<Eigen3<double>>("Eigen");
    addPivoting<Eigen3<double>>("Eigen");
#else
    std::printf("Eigen was not found: its rows are left out\n");
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
