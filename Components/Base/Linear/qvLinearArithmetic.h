// The arithmetic of vectors, points and tuples, and the functions that go for all types of one kind.

#ifndef qvLinearArithmetic_h
#define qvLinearArithmetic_h

#include <cmath>
#include <concepts>

#include "Base/Linear/qvLinearComponents.h"

namespace qvLinear {

namespace detail {

// Division by a number is multiplication by its reciprocal, so that v / s is v * (1 / s) to the last bit.
template <class V, class T, int N>
class VectorArithmetic : public Components<V, T, N> {
public:
    constexpr V & operator+=(V const & v) { return self() = self() + v; }
    constexpr V & operator-=(V const & v) { return self() = self() - v; }
    constexpr V & operator*=(T s) { return self() = self() * s; }
    constexpr V & operator/=(T s) { return self() = self() / s; }

    friend constexpr V operator+(V const & a, V const & b) {
        return generate<V>([&](int i) { return a[i] + b[i]; });
    }
    friend constexpr V operator-(V const & a, V const & b) {
        return generate<V>([&](int i) { return a[i] - b[i]; });
    }
    friend constexpr V operator-(V const & v) {
        return generate<V>([&](int i) { return -v[i]; });
    }
    friend constexpr V operator*(V const & v, T s) {
        return generate<V>([&](int i) { return v[i] * s; });
    }
    friend constexpr V operator*(T s, V const & v) { return v * s; }
    friend constexpr V operator/(V const & v, T s) { return v * (T(1) / s); }

    T length() const { return std::sqrt(length2()); }
    // The square of the length.
    constexpr T length2() const { return sumOfProducts<N>(self(), self()); }
    constexpr void reverse() {
        self() = generate<V>([&](int i) { return self()[i] * T(-1); });
    }

protected:
    // Scales to length 1, or gives zero and false when the squared length is not above the tolerance.
    bool normalizeWith(T tol2) {
        T const square = length2();
        if (square > tol2) {
            self() *= 1 / std::sqrt(square);
            return true;
        }
        self() = generate<V>([](int) { return T(0); });
        return false;
    }

private:
    constexpr V & self() { return static_cast<V &>(*this); }
    constexpr V const & self() const { return static_cast<V const &>(*this); }
};

// Points, of which the differences are of type V. There is no sum of points: see combine.
template <class P, class T, int N, class V>
class PointArithmetic : public Components<P, T, N> {
public:
    using Difference = V;

    constexpr P & operator+=(V const & v) { return self() = self() + v; }
    constexpr P & operator-=(V const & v) { return self() = self() - v; }

    friend constexpr P operator+(P const & p, V const & v) {
        return generate<P>([&](int i) { return p[i] + v[i]; });
    }
    friend constexpr P operator-(P const & p, V const & v) {
        return generate<P>([&](int i) { return p[i] - v[i]; });
    }
    friend constexpr V operator-(P const & a, P const & b) {
        return generate<V>([&](int i) { return a[i] - b[i]; });
    }

private:
    constexpr P & self() { return static_cast<P &>(*this); }
};

// The only kind whose components are multiplied and divided one by one, and written by their index.
template <class V, int N>
class TupleArithmetic : public Components<V, double, N> {
public:
    using Components<V, double, N>::operator[];
    template <std::integral I>
    constexpr double & operator[](I i) {
        return self().component(static_cast<int>(i));
    }

    constexpr V & operator+=(V const & v) { return self() = self() + v; }
    constexpr V & operator-=(V const & v) { return self() = self() - v; }
    constexpr V & operator*=(V const & v) { return self() = self() * v; }
    constexpr V & operator/=(V const & v) { return self() = self() / v; }
    constexpr V & operator*=(double s) { return self() = self() * s; }
    constexpr V & operator/=(double s) { return self() = self() / s; }

    friend constexpr V operator+(V const & a, V const & b) {
        return generate<V>([&](int i) { return a[i] + b[i]; });
    }
    friend constexpr V operator-(V const & a, V const & b) {
        return generate<V>([&](int i) { return a[i] - b[i]; });
    }
    friend constexpr V operator-(V const & v) {
        return generate<V>([&](int i) { return -v[i]; });
    }
    friend constexpr V operator*(V const & a, V const & b) {
        return generate<V>([&](int i) { return a[i] * b[i]; });
    }
    friend constexpr V operator/(V const & a, V const & b) {
        return generate<V>([&](int i) { return a[i] / b[i]; });
    }
    friend constexpr V operator*(V const & v, double s) {
        return generate<V>([&](int i) { return v[i] * s; });
    }
    friend constexpr V operator*(double s, V const & v) { return v * s; }
    friend constexpr V operator/(V const & v, double s) { return v * (1 / s); }

private:
    constexpr V & self() { return static_cast<V &>(*this); }
};

template <class V>
concept VectorValue = Value<V> && std::derived_from<V, VectorArithmetic<V, typename V::Element, V::dimension>>;

template <class P>
concept PointValue = Value<P> && requires {
    typename P::Difference;
} && std::derived_from<P, PointArithmetic<P, typename P::Element, P::dimension, typename P::Difference>>;

template <class V>
concept TupleValue = Value<V> && std::derived_from<V, TupleArithmetic<V, V::dimension>>;

// What `combine` works on; other types join by an `isCombinable` of true.
template <class V>
concept Combinable = VectorValue<V> || PointValue<V> ||(Value<V> && V::isCombinable);

} // namespace detail

// The length of a - b, and its square.
template <detail::PointValue P>
constexpr detail::ElementOf<P> distance2(P const & a, P const & b) {
    return (a - b).length2();
}
template <detail::PointValue P>
detail::ElementOf<P> distance(P const & a, P const & b) {
    return std::sqrt(distance2(a, b));
}
template <detail::TupleValue V>
double distance(V const & a, V const & b) requires(V::dimension <= 3) {
    V const difference = a - b;
    return std::sqrt(detail::sumOfProducts<V::dimension>(difference, difference));
}

// The sum of the products of the components.
template <detail::VectorValue V>
constexpr detail::ElementOf<V> dot(V const & a, V const & b) {
    return detail::sumOfProducts<V::dimension>(a, b);
}

// Half way between the two.
template <detail::Combinable V>
constexpr V combine(V const & a, V const & b) {
    return detail::generate<V>([&](int i) { return (a[i] + b[i]) * detail::ElementOf<V>(0.5); });
}

// The weighted sum of two. The weights are taken as they are: for points, they should add up to 1.
template <detail::Combinable V>
constexpr V combine(detail::ElementOf<V> weightA, V const & a, detail::ElementOf<V> weightB, V const & b) {
    return detail::generate<V>([&](int i) { return weightA * a[i] + weightB * b[i]; });
}

// The weighted sum of n, with the same advice; zero for an n below 1.
template <detail::Combinable V>
constexpr V combine(int n, detail::ElementOf<V> const * weights, V const * items) {
    using T = detail::ElementOf<V>;
    V sum = detail::generate<V>([&](int i) { return n > 0 ? weights[0] * items[0][i] : T(0); });
    for (int k = 1; k < n; ++k)
        sum = detail::generate<V>([&](int i) { return sum[i] + weights[k] * items[k][i]; });
    return sum;
}

// The average of n, which must be at least 1.
template <detail::Combinable V>
constexpr V combine(int n, V const * items) {
    V sum = items[0];
    for (int k = 1; k < n; ++k)
        sum = detail::generate<V>([&](int i) { return sum[i] + items[k][i]; });
    auto const share = 1 / static_cast<detail::ElementOf<V>>(n);
    return detail::generate<V>([&](int i) { return sum[i] * share; });
}

} // namespace qvLinear

#endif
