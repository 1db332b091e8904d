// Roots and minima of a function of one variable, and the quadratic equation. (erf, erfc and nextafterf are those of
// the C library.)

#ifndef qvLinearNumeric_h
#define qvLinearNumeric_h

#include "Base/qvBaseConfig.h"

namespace qvLinear {

/*
 * The function that the routines below evaluate. Whoever derives from it keeps the function's parameters in fields. An
 * exception that it throws goes through to the caller.
 *
 *     struct Cubic : qvLinear::evalFunction {
 *         double operator()(double x) override { return x * x * x - 2; }
 *     } f;
 *     int status;
 *     double root = qvLinear::brentsIteration(f, 0, 2, 1e-12, status);
 */
class QV_EXPORT evalFunction {
public:
    evalFunction() = default;
    evalFunction(evalFunction const &) = default;
    evalFunction & operator=(evalFunction const &) = default;
    virtual ~evalFunction();
    virtual double operator()(double x) = 0;
};

// Three places a < b < c, of which the function is least at b: a minimum lies between a and c.
struct minimumBracket {
    minimumBracket() = default;
    constexpr minimumBracket(double newA, double newB, double newC) : a(newA), b(newB), c(newC) {}

    double a, b, c;
};

/*
 * The root of f between a and b, where f has opposite signs, to within tol. The status is
 *
 *      0   found;
 *      1   f has the same sign at both ends: the result is b;
 *      2   not found within 100 iterations: the result is the place reached.
 *
 * An end where |f| is below tol is taken as the root at once.
 */
QV_EXPORT double brentsIteration(evalFunction & f, double a, double b, double tol, int & status);

// Looks for a bracket of a minimum of f in [a, b], in intervals down to the width tol. False when there is none, and in
// any case for a tol that is not above 0, with an end that is not a number, and when a million evaluations were not
// enough. An interval at whose end f is not a number has none.
QV_EXPORT bool bracketMinimum(double a, double b, double tol, evalFunction & f, minimumBracket & out);

// The minimum of f in the bracket, to within the fraction tol of its place. The bracket shrinks around it. False when
// 100 iterations were not enough; the place and the value reached are given in both cases.
QV_EXPORT bool brentMinimize(evalFunction & f, double tol, minimumBracket & bracket, double & xmin, double & fmin);

// Solves a x^2 + b x + c = 0 and gives the number of real roots, 0 to 2. Two are written in ascending order, and a
// double root is written twice. Coefficients below epsilonTol count as 0. `roots` has room for two.
QV_EXPORT int solveQuadratic(double a, double b, double c, double * roots);

} // namespace qvLinear

#endif
