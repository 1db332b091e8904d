// The tolerances of linear algebra, and small functions on plain numbers.

#ifndef qvLinearTolerance_h
#define qvLinearTolerance_h

#include "Base/qvBaseConfig.h"

namespace qvLinear {

/*
 * Every tolerant operation with a default or a built-in tolerance reads these variables when it is called. A program
 * may set them; there is no lock, so it does that before it starts threads that calculate.
 *
 * A squared tolerance does not follow the one that it is the square of: whoever sets one sets both.
 */
extern QV_EXPORT double epsilonTol;        // 1e-12
extern QV_EXPORT double epsilon2Tol;       // 1e-24, compared with squares
extern QV_EXPORT float epsilonTolFlt;      // 1e-6
extern QV_EXPORT float epsilon2TolFlt;     // 1e-12, compared with squares
extern QV_EXPORT double degreeTol;         // 1e-5 degrees
extern QV_EXPORT double perpendicularTol;  // sine of degreeTol: the most that |a . b| of perpendicular directions is
extern QV_EXPORT double perpendicular2Tol; // its square
extern QV_EXPORT double parallelTol;       // cosine of degreeTol: the least that |a . b| of parallel directions is
extern QV_EXPORT double parallel2Tol;      // its square

constexpr double toRadians(double degrees) { return degrees * 0.017453292519943295; }
constexpr double toDegrees(double radians) { return radians * 57.29577951308232; }

// The largest and the smallest of three or four numbers. A NaN in the first place stays; others are passed over.
constexpr double max(double a, double b, double c) {
    double const most = a < b ? b : a;
    return most < c ? c : most;
}
constexpr double max(double a, double b, double c, double d) {
    double const most = max(a, b, c);
    return most < d ? d : most;
}
constexpr double min(double a, double b, double c) {
    double const least = b < a ? b : a;
    return c < least ? c : least;
}
constexpr double min(double a, double b, double c, double d) {
    double const least = min(a, b, c);
    return d < least ? d : least;
}

} // namespace qvLinear

#endif
