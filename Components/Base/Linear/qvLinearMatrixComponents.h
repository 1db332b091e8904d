// What the matrices have in common, and the formulas that they share with their single-precision twins.

#ifndef qvLinearMatrixComponents_h
#define qvLinearMatrixComponents_h

#include <cmath>
#include <concepts>
#include <iosfwd>

#include "Base/Linear/qvLinearComponents.h"

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
    constexpr void set(T const * numbers) {
        for (int i = 0; i < elements; ++i)
            self().m[i] = numbers[i];
    }
    constexpr void get(T * numbers) const {
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

// Matrices of four rows with an implied fourth column 0, 0, 0, 1: a and then b.
template <class T>
constexpr void multiplyAffine(T const * a, T const * b, T * out) {
    for (int row = 0; row < 12; row += 3) {
        T const x = a[row];
        T const y = a[row + 1];
        T const z = a[row + 2];
        T const t0 = timesColumn<3>(x, y, z, b, 0);
        T const t1 = timesColumn<3>(x, y, z, b, 1);
        T const t2 = timesColumn<3>(x, y, z, b, 2);
        out[row] = row < 9 ? t0 : t0 + b[9];
        out[row + 1] = row < 9 ? t1 : t1 + b[10];
        out[row + 2] = row < 9 ? t2 : t2 + b[11];
    }
}

template <class T>
constexpr void multiplyProjective(T const * a, T const * b, T * out) {
    for (int row = 0; row < 16; row += 4)
        for (int column = 0; column < 4; ++column)
            out[row + column] = timesColumn<4>(a[row], a[row + 1], a[row + 2], b, column) + a[row + 3] * b[12 + column];
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
