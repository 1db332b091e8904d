#include "Base/Linear/qvLinearMatrixComponents.h"

#include <ostream>

namespace qvLinear::detail {

namespace {

template <class T>
std::ostream & printTable(std::ostream & out, char const * beginning, T const * numbers, int rows, int columns) {
    out << beginning << "\n";
    for (int i = 0; i < rows * columns; ++i)
        out << numbers[i] << (i % columns == columns - 1 ? "\n" : ",");
    return out << ")";
}

} // namespace

std::ostream & printRows(std::ostream & out, char const * beginning, double const * numbers, int rows, int columns) {
    return printTable(out, beginning, numbers, rows, columns);
}

std::ostream & printRows(std::ostream & out, char const * beginning, float const * numbers, int rows, int columns) {
    return printTable(out, beginning, numbers, rows, columns);
}

} // namespace qvLinear::detail
