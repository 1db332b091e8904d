// The inverse of a small square matrix by elimination.

#ifndef qvLinearElimination_h
#define qvLinearElimination_h

#include "Base/Linear/qvLinearTolerance.h"

#include <cmath>
#include <cstddef>
#include <utility>

namespace qvLinear {

// Turns `a` into what is left of it and gives its inverse, by Gauss-Jordan elimination with partial pivoting. The first
// row of those with the largest entry is the pivot. False when a pivot is below epsilonTol.
template <std::size_t n>
bool invertByElimination(double (&a)[n][n], double (&inverse)[n][n]) {
    for (std::size_t i = 0; i < n; ++i)
        for (std::size_t j = 0; j < n; ++j)
            inverse[i][j] = i == j ? 1 : 0;
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t best = k;
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::fabs(a[i][k]) > std::fabs(a[best][k]))
                best = i;
        if (best != k) {
            std::swap(a[k], a[best]);
            std::swap(inverse[k], inverse[best]);
        }
        if (std::fabs(a[k][k]) < epsilonTol)
            return false;
        double const scale = 1 / a[k][k];
        // What stands in column k and before is not looked at again.
        for (std::size_t j = k + 1; j < n; ++j)
            a[k][j] *= scale;
        for (std::size_t j = 0; j < n; ++j)
            inverse[k][j] *= scale;
        for (std::size_t i = 0; i < n; ++i) {
            if (i == k)
                continue;
            double const multiple = a[i][k];
            for (std::size_t j = k + 1; j < n; ++j)
                a[i][j] -= multiple * a[k][j];
            for (std::size_t j = 0; j < n; ++j)
                inverse[i][j] -= multiple * inverse[k][j];
        }
    }
    return true;
}

} // namespace qvLinear

#endif
