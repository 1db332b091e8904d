// What the matrices have in common, and the formulas that they share with their single-precision twins.

#ifndef qvLinearMatrixComponents_h
#define qvLinearMatrixComponents_h

#include <cmath>
#include <concepts>
#include <iosfwd>
#include <type_traits>

#include "Base/Linear/qvLinearComponents.h"
#include "Base/Linear/qvLinearLanes.h"

namespace qvLinear {

namespace detail {

// Writes the beginning and a line end, the rows with commas between their numbers and a line end behind each, and a
// closing parenthesis.
QV_EXPORT std::ostream & printRows(std::ostream & out, char const * beginning, double const * numbers, int rows,
                                   int columns);
QV_EXPORT std::ostream & printRows(std::ostream & out, char const * beginning, float const * numbers, int rows,
                                   int columns);

/*
 * The base of the matrix M, which has one field: the array m of all its numbers that are not implied, row by row. It
 * has no fields of its own.
 */
template <class M, class T, int rowCount, int columnCount>
class MatrixComponents {
public:
    using Element = T;
    static constexpr int rows = rowCount;
    static constexpr int columns = columnCount;
    static constexpr int elements = rows * columns;

    // From and into an array of all numbers.
    template <ArrayOf<T> P>
    constexpr void set(P numbers) {
        for (int i = 0; i < elements; ++i)
            self().m[i] = numbers[i];
    }
    template <std::same_as<T *> P>
    constexpr void get(P numbers) const {
        for (int i = 0; i < elements; ++i)
            numbers[i] = self().m[i];
    }
    constexpr M & identity() { return self() = M(T(1)); }

    // Exact.
    friend constexpr bool operator==(M const & a, M const & b) {
        for (int i = 0; i < elements; ++i)
            if (!(a.m[i] == b.m[i]))
                return false;
        return true;
    }
    friend std::ostream & operator<<(std::ostream & out, M const & matrix) {
        return printRows(out, beginning(), matrix.m, rows, columns);
    }

protected:
    // d on the diagonal, 0 elsewhere.
    constexpr void setDiagonal(T d) {
        for (int i = 0; i < elements; ++i)
            self().m[i] = i / columns == i % columns ? d : T(0);
    }
    // Each number of another matrix of the same shape, converted.
    template <class Other>
    constexpr void convert(Other const & other) {
        static_assert(Other::rows == rows && Other::columns == columns);
        for (int i = 0; i < elements; ++i)
            self().m[i] = static_cast<T>(other.m[i]);
    }

private:
    static constexpr char const * beginning() { return M::printedBeginning; }
    constexpr M & self() { return static_cast<M &>(*this); }
    constexpr M const & self() const { return static_cast<M const &>(*this); }
};

template <class M>
concept MatrixValue = requires {
    typename M::Element;
    M::rows;
    M::columns;
}
&&std::derived_from<M, MatrixComponents<M, typename M::Element, M::rows, M::columns>>;

// The row (x, y, z) times the upper three rows of a matrix, of which each row has `columns` numbers.
template <int columns, class T>
constexpr T timesColumn(T x, T y, T z, T const * m, int column) {
    return x * m[column] + y * m[columns + column] + z * m[2 * columns + column];
}

// Matrices of four rows with an implied fourth column 0, 0, 0, 1: a and then b. `out` is neither of them.
template <class T>
constexpr void multiplyAffinePlainly(T const * a, T const * b, T * out) {
    for (int i = 0; i < 12; ++i) {
        int const row = i - i % 3;
        T const linear = timesColumn<3>(a[row], a[row + 1], a[row + 2], b, i % 3);
        out[i] = row < 9 ? linear : linear + b[i];
    }
}

template <class T>
constexpr void multiplyProjectivePlainly(T const * a, T const * b, T * out) {
    for (int i = 0; i < 16; ++i) {
        int const row = i - i % 4;
        out[i] = timesColumn<4>(a[row], a[row + 1], a[row + 2], b, i % 4) + a[row + 3] * b[12 + i % 4];
    }
}

#if QV_LINEAR_LANES

// The last column in pairs of rows, then the other two row by row. What is done is stored at once: each part alone fits
// into the registers.
QV_LINEAR_INLINE void multiplyAffineLanes(double const * a, double const * b, double * out) {
    Doubles const right0 = all(b[2]);
    Doubles const right1 = all(b[5]);
    Doubles const right2 = all(b[8]);
    Doubles const upper = Doubles{a[0], a[3]} * right0 + Doubles{a[1], a[4]} * right1 + Doubles{a[2], a[5]} * right2;
    out[2] = upper[0];
    out[5] = upper[1];
    Doubles const lower = Doubles{a[6], a[9]} * right0 + Doubles{a[7], a[10]} * right1 + Doubles{a[8], a[11]} * right2;
    out[8] = lower[0];
    out[11] = lower[1] + b[11];
    Doubles const left0 = lanesAt(b);
    Doubles const left1 = lanesAt(b + 3);
    Doubles const left2 = lanesAt(b + 6);
    store(out, sumOfRows(a, left0, left1, left2));
    store(out + 3, sumOfRows(a + 3, left0, left1, left2));
    store(out + 6, sumOfRows(a + 6, left0, left1, left2));
    store(out + 9, sumOfRows(a + 9, left0, left1, left2) + lanesAt(b + 9));
}

// A row fills three of four lanes.
QV_LINEAR_INLINE void multiplyAffineLanes(float const * a, float const * b, float * out) {
    Floats const last = lanesAt(b + 8);
    Floats const b0 = lanesAt(b);
    Floats const b1 = lanesAt(b + 3);
    Floats const b2 = lanesAt(b + 6);
    Floats const r0 = sumOfRows(a, b0, b1, b2);
    Floats const r1 = sumOfRows(a + 3, b0, b1, b2);
    Floats const r2 = sumOfRows(a + 6, b0, b1, b2);
    Floats const r3 = sumOfRows(a + 9, b0, b1, b2) + __builtin_shufflevector(last, last, 1, 2, 3, 3);
    store(out, __builtin_shufflevector(r0, __builtin_shufflevector(r0, r1, 2, 2, 4, 4), 0, 1, 4, 6));
    store(out + 4, __builtin_shufflevector(r1, r2, 1, 2, 4, 5));
    store(out + 8, __builtin_shufflevector(__builtin_shufflevector(r2, r3, 2, 2, 4, 4), r3, 0, 2, 5, 6));
}

QV_LINEAR_INLINE void multiplyProjectiveLanes(float const * a, float const * b, float * out) {
    Floats const b0 = lanesAt(b);
    Floats const b1 = lanesAt(b + 4);
    Floats const b2 = lanesAt(b + 8);
    Floats const b3 = lanesAt(b + 12);
    store(out, sumOfRows(a, b0, b1, b2, b3));
    store(out + 4, sumOfRows(a + 4, b0, b1, b2, b3));
    store(out + 8, sumOfRows(a + 8, b0, b1, b2, b3));
    store(out + 12, sumOfRows(a + 12, b0, b1, b2, b3));
}

QV_LINEAR_INLINE void multiplyProjectiveLanes(double const * a, double const * b, double * out) {
    Doubles const left0 = lanesAt(b);
    Doubles const left1 = lanesAt(b + 4);
    Doubles const left2 = lanesAt(b + 8);
    Doubles const left3 = lanesAt(b + 12);
    Doubles const right0 = lanesAt(b + 2);
    Doubles const right1 = lanesAt(b + 6);
    Doubles const right2 = lanesAt(b + 10);
    Doubles const right3 = lanesAt(b + 14);
#pragma GCC unroll 4
    for (int row = 0; row < 16; row += 4) {
        store(out + row, sumOfRows(a + row, left0, left1, left2, left3));
        store(out + row + 2, sumOfRows(a + row, right0, right1, right2, right3));
    }
}

#endif

// A row of three times a matrix with an implied fourth column; a point is moved by the translation, a vector is not.
enum class Translation { no, yes };

#if QV_LINEAR_LANES

template <Translation translation, class V>
QV_LINEAR_INLINE V transformLanes(V const & v, double const * m) {
    Doubles const x = all(v[0]);
    Doubles const y = all(v[1]);
    Doubles const z = all(v[2]);
    Doubles left = x * lanesAt(m) + y * lanesAt(m + 3) + z * lanesAt(m + 6);
    Doubles right = x * all(m[2]) + y * all(m[5]) + z * all(m[8]);
    if constexpr (translation == Translation::yes) {
        left += lanesAt(m + 9);
        right += all(m[11]);
    }
    V result;
    double * const numbers = result;
    store(numbers, left);
    numbers[2] = right[0];
    return result;
}

template <Translation translation, class V>
QV_LINEAR_INLINE V transformLanes(V const & v, float const * m) {
    Floats const last = lanesAt(m + 8);
    Floats sum = all(v[0]) * lanesAt(m) + all(v[1]) * lanesAt(m + 3) + all(v[2]) * lanesAt(m + 6);
    if constexpr (translation == Translation::yes)
        sum += __builtin_shufflevector(last, last, 1, 2, 3, 3);
    return V(sum[0], sum[1], sum[2]);
}

#endif

template <Translation translation, class V, class T>
constexpr V transformAffine(V const & v, T const * m) {
#if QV_LINEAR_LANES
    if (!std::is_constant_evaluated())
        return transformLanes<translation>(v, m);
#endif
    return generate<V>([&](int i) {
        T const linear = timesColumn<3>(v[0], v[1], v[2], m, i);
        return translation == Translation::yes ? linear + m[9 + i] : linear;
    });
}

template <class T>
constexpr void multiplyAffine(T const * a, T const * b, T * out) {
#if QV_LINEAR_LANES
    if (!std::is_constant_evaluated())
        return multiplyAffineLanes(a, b, out);
#endif
    multiplyAffinePlainly(a, b, out);
}

template <class T>
constexpr void multiplyProjective(T const * a, T const * b, T * out) {
#if QV_LINEAR_LANES
    if (!std::is_constant_evaluated())
        return multiplyProjectiveLanes(a, b, out);
#endif
    multiplyProjectivePlainly(a, b, out);
}

// The determinant of the upper left three rows and columns, by cofactors along the first row.
template <int columns, class T>
constexpr T determinant3(T const * m) {
    T const * const second = m + columns;
    T const * const third = m + 2 * columns;
    return m[0] * (second[1] * third[2] - second[2] * third[1]) - m[1] * (second[0] * third[2] - second[2] * third[0]) +
           m[2] * (second[0] * third[1] - second[1] * third[0]);
}

} // namespace detail

// Whether each number differs by less than the tolerance from that of the other matrix.
template <detail::MatrixValue M>
constexpr bool equivalent(M const & a, M const & b, detail::ElementOf<M> tol) {
    for (int i = 0; i < M::elements; ++i) {
        auto const difference = a.m[i] - b.m[i];
        if (!(difference < tol && -difference < tol))
            return false;
    }
    return true;
}

// Whether any number of the matrix is a NaN, and whether all are finite.
template <detail::MatrixValue M>
bool isNaN(M const & matrix) {
    for (auto number : matrix.m)
        if (std::isnan(number))
            return true;
    return false;
}
template <detail::MatrixValue M>
bool isFinite(M const & matrix) {
    for (auto number : matrix.m)
        if (!std::isfinite(number))
            return false;
    return true;
}

} // namespace qvLinear

#endif
