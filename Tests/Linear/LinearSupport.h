// Random values for the tests of geometry, and comparison of bits.

#ifndef qvTestLinearSupport_h
#define qvTestLinearSupport_h

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearNormal.h"
#include "Base/Linear/qvLinearPoint.h"
#include "Base/Linear/qvLinearVector.h"
#include "Support/SeededRandom.h"

#include <cmath>
#include <concepts>
#include <cstring>
#include <limits>
#include <sstream>
#include <string>

namespace qvTest {

inline constexpr double pi = 3.14159265358979323846;
inline constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
inline constexpr double infinity = std::numeric_limits<double>::infinity();

class RandomNumbers : public SeededRandom {
public:
    // From -10 to 10.
    double real() { return bits() * (20.0 / 4294967295.0) - 10; }
    // Now and then one of those at which formulas part.
    double any() {
        static constexpr double special[] = {0,      -0.0,  notANumber, infinity, -infinity,
                                             5e-324, 1e-13, 1e200,      -1e-200,  1};
        return oneIn(8) ? special[below(10)] : real();
    }
    qvLinear::Vector vector() { return {real(), real(), real()}; }
    qvLinear::Point point() { return {real(), real(), real()}; }
    qvLinear::Normal normal() {
        qvLinear::Normal n(vector());
        return n.isValid() ? n : qvLinear::Normal::x;
    }
    // Far enough from singular for a test of its inverse.
    qvLinear::AffineMatrix matrix() {
        qvLinear::AffineMatrix matrix;
        do
            for (double & number : matrix.m)
                number = real();
        while (std::fabs(matrix.det3x3()) < 5);
        return matrix;
    }
};

// The same number to the last bit; all NaNs are one.
template <std::floating_point T>
bool isSame(T const & a, T const & b) {
    return std::memcmp(&a, &b, sizeof a) == 0 || (std::isnan(a) && std::isnan(b));
}
template <class V>
bool isSame(V const & a, V const & b) {
    for (int i = 0; i < V::dimension; ++i)
        if (!isSame(a[i], b[i]))
            return false;
    return true;
}

template <class T>
std::string textOf(T const & value) {
    std::ostringstream out;
    out << value;
    return out.str();
}

} // namespace qvTest

#endif
