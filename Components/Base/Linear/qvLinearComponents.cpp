#include "Base/Linear/qvLinearComponents.h"

#include <ostream>

namespace qvLinear::detail {

namespace {

template <class T>
std::ostream & printNumbers(std::ostream & out, char const * beginning, T const * numbers, int count) {
    out << beginning;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            out << ",";
        out << numbers[i];
    }
    return out << ")";
}

} // namespace

std::ostream & print(std::ostream & out, char const * beginning, double const * numbers, int count) {
    return printNumbers(out, beginning, numbers, count);
}

std::ostream & print(std::ostream & out, char const * beginning, float const * numbers, int count) {
    return printNumbers(out, beginning, numbers, count);
}

} // namespace qvLinear::detail
