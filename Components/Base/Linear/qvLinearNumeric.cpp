#include "Base/Linear/qvLinearNumeric.h"

#include "Base/Linear/qvLinearTolerance.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace qvLinear {

namespace {

constexpr int maxIterations = 100;
constexpr double goldenRatio = 0.38196601125010515;

// Two places with opposite signs, of which b is the better guess, and the one before b.
struct RootSearch {
    double a, fa;
    double b, fb;
    double c, fc;
    double e = 0; // the step before the last one
    double d = 0;

    // Keeps the root between b and c, and b the better of the two.
    void order() {
        if (fb * fc > 0) {
            c = a;
            fc = fa;
            e = d = b - a;
        }
        if (std::fabs(fc) < std::fabs(fb)) {
            a = b;
            b = c;
            c = a;
            fa = fb;
            fb = fc;
            fc = fa;
        }
    }

    void chooseStep(double tol1, double xm) {
        if (std::fabs(e) >= tol1 && std::fabs(fa) > std::fabs(fb) && interpolate(tol1, xm))
            return;
        e = d = xm;
    }

    // By the inverse parabola through the three, or the line through two. False when that leads too far.
    bool interpolate(double tol1, double xm) {
        double const s = fb / fa;
        double p;
        double q;
        if (a == c) {
            p = 2 * xm * s;
            q = 1 - s;
        } else {
            q = fa / fc;
            double const r = fb / fc;
            p = s * (2 * xm * q * (q - r) - (b - a) * (r - 1));
            q = (q - 1) * (r - 1) * (s - 1);
        }
        if (p > 0)
            q = -q;
        p = std::fabs(p);
        if (!(2 * p < std::min(3 * xm * q - std::fabs(tol1 * q), std::fabs(e * q))))
            return false;
        e = d;
        d = p / q;
        return true;
    }
};

// An interval of bracketMinimum with the function's values at its ends.
struct Interval {
    double a, b;
    double fa, fb;

    bool isWide(double tol) const { return b - a >= tol; }

    // A place between the ends, nearer to the one with the larger value.
    double inside(double tol) const {
        double const half = tol / 2;
        double const num = std::fabs(fb) * b + std::fabs(fa) * a;
        double const den = std::fabs(fa) + std::fabs(fb);
        if (std::fabs(den) * 1e15 <= std::fabs(num))
            return (a + b) / 2;
        double const x = num / den;
        if (b - x < half)
            return b - half;
        if (x - a < half)
            return a + half;
        return x;
    }
};

// Where brentMinimize has been: the newest place first.
struct Evaluation {
    double x, f;
};

class MinimumSearch {
public:
    MinimumSearch(evalFunction & f, double tol, minimumBracket & bracket) : f_(f), tol_(tol), bracket_(bracket) {}

    bool run() {
        double const fb = f_(bracket_.b);
        for (int i = 0; i < 3; ++i)
            push({bracket_.b, fb});
        for (int i = 0; i < maxIterations; ++i) {
            double const xm = (bracket_.a + bracket_.c) * 0.5;
            double const tol1 = std::fabs(bracket_.b) * tol_ + 1e-16;
            if ((bracket_.c - bracket_.a) * 0.5 <= 2 * tol1)
                return true;
            chooseStep(xm, tol1);
            take(bracket_.b + (std::fabs(d_) < tol1 ? (d_ < 0 ? -tol1 : tol1) : d_));
        }
        return false;
    }

    Evaluation const & latest() const { return history_[0]; }

private:
    void push(Evaluation const & evaluation) {
        history_[2] = history_[1];
        history_[1] = history_[0];
        history_[0] = evaluation;
    }

    void chooseStep(double xm, double tol1) {
        if (std::fabs(e_) <= tol1 || !stepByParabola(xm, tol1)) {
            e_ = (xm > bracket_.b ? bracket_.c : bracket_.a) - bracket_.b;
            d_ = e_ * goldenRatio;
        }
    }

    // To the vertex of the parabola through the three latest places, unless that lies outside the bracket or the steps
    // do not get smaller.
    bool stepByParabola(double xm, double tol1) {
        auto const [x, fx] = history_[0];
        auto const [w, fw] = history_[1];
        auto const [v, fv] = history_[2];
        double p = (x - v) * (x - v) * (fx - fw) - (x - w) * (x - w) * (fx - fv);
        double q = 2 * ((fx - fw) * (x - v) - (fx - fv) * (x - w));
        if (q > 0)
            p = -p;
        q = std::fabs(q);
        double const before = e_;
        e_ = d_;
        if (std::fabs(0.5 * q * before) <= std::fabs(p) || p <= (bracket_.a - x) * q || (bracket_.c - x) * q <= p)
            return false;
        d_ = p / q;
        double const u = x + d_;
        double const tol2 = 2 * tol1;
        if (u - bracket_.a < tol2 || bracket_.c - u < tol2)
            d_ = xm > x ? tol1 : -tol1;
        return true;
    }

    // Moves to u, be it better or worse than the place before.
    void take(double u) {
        double const fu = f_(u);
        push({u, fu});
        auto const [x, fx] = history_[1];
        if (fx < fu) {
            (x <= u ? bracket_.c : bracket_.a) = u;
            history_[2] = {u, fu};
        } else {
            (x <= u ? bracket_.a : bracket_.c) = x;
        }
        bracket_.b = u;
    }

    evalFunction & f_;
    double tol_;
    minimumBracket & bracket_;
    Evaluation history_[3] = {};
    double e_ = 0; // the step before the last one
    double d_ = 0;
};

} // namespace

evalFunction::~evalFunction() = default;

double brentsIteration(evalFunction & f, double a, double b, double tol, int & status) {
    double const fa = f(a);
    double const fb = f(b);
    status = 0;
    if (std::fabs(fa) < tol)
        return a;
    if (std::fabs(fb) < tol)
        return b;
    if (fa * fb > 0) {
        status = 1;
        return b;
    }
    RootSearch search{a, fa, b, fb, b, fb};
    for (int i = 0; i < maxIterations; ++i) {
        search.order();
        double const tol1 = 2e-16 * std::fabs(search.b) + 0.5 * tol;
        double const xm = 0.5 * (search.c - search.b);
        if (std::fabs(xm) <= tol1 || std::fabs(search.fb) < 1e-16)
            return search.b;
        search.chooseStep(tol1, xm);
        search.a = search.b;
        search.fa = search.fb;
        search.b += std::fabs(search.d) > tol1 ? search.d : std::copysign(tol1, xm);
        search.fb = f(search.b);
    }
    status = 2;
    return search.b;
}

bool bracketMinimum(double a, double b, double tol, evalFunction & f, minimumBracket & out) {
    constexpr int maxEvaluations = 1'000'000;
    Interval const whole{a, b, f(a), f(b)};
    if (!(tol > 0))
        return false;
    // The intervals still to be searched, the next one last; those that are too narrow are left out. A NaN is not wide.
    std::vector<Interval> open;
    auto const add = [&](Interval const & interval) {
        if (interval.isWide(tol))
            open.push_back(interval);
    };
    add(whole);
    for (int evaluations = 2; !open.empty() && evaluations < maxEvaluations; ++evaluations) {
        Interval const interval = open.back();
        open.pop_back();
        double const x = interval.inside(tol);
        double const fx = f(x);
        if (interval.fa > fx && interval.fb > fx) {
            out = minimumBracket(interval.a, x, interval.b);
            return true;
        }
        Interval const lower{interval.a, x, interval.fa, fx};
        Interval const upper{x, interval.b, fx, interval.fb};
        bool const upperFirst = std::fabs(interval.fb) <= std::fabs(interval.fa);
        add(upperFirst ? lower : upper);
        add(upperFirst ? upper : lower);
    }
    return false;
}

bool brentMinimize(evalFunction & f, double tol, minimumBracket & bracket, double & xmin, double & fmin) {
    MinimumSearch search(f, tol, bracket);
    bool const converged = search.run();
    xmin = search.latest().x;
    fmin = search.latest().f;
    return converged;
}

int solveQuadratic(double a, double b, double c, double * roots) {
    if (std::fabs(a) < epsilonTol) {
        if (std::fabs(b) < epsilonTol)
            return 0;
        roots[0] = -c / b;
        return 1;
    }
    double const h = b / (2 * a);
    double const k = h * h * a;
    if (std::fabs(k) < epsilonTol) {
        if (std::fabs(c) < epsilonTol) {
            roots[0] = roots[1] = 0;
            return 2;
        }
        if (-c / a < 0)
            return 0;
        roots[1] = std::sqrt(-c / a);
        roots[0] = -roots[1];
        return 2;
    }
    double const t = c / k;
    if (1 - t < 0)
        return 0;
    double const g = -1 - std::sqrt(1 - t);
    roots[0] = g * h;
    roots[1] = h * t / g;
    if (roots[1] < roots[0])
        std::swap(roots[0], roots[1]);
    return 2;
}

} // namespace qvLinear
