// What the geometric values have in common: values of two to four numbers of one type.

#ifndef qvLinearComponents_h
#define qvLinearComponents_h

#include <cmath>
#include <concepts>
#include <iosfwd>
#include <type_traits>

#include "Base/qvBaseConfig.h"

namespace qvLinear {

namespace detail {

// A pointer to numbers, or an array of them, and nothing that merely converts to a pointer: a value of two numbers
// must not be taken for an array of three.
template <class P, class T>
concept ArrayOf = std::same_as<P, T *> || std::same_as<P, T const *>;

template <class P>
concept ArrayOfReals = ArrayOf<P, double> || ArrayOf<P, float>;

template <class A>
concept Number = std::is_arithmetic_v<A>;

// The value with the components f(0), f(1), ...
template <class V, class F>
constexpr V generate(F const & f) {
    if constexpr (V::dimension == 2)
        return V(f(0), f(1));
    else if constexpr (V::dimension == 3)
        return V(f(0), f(1), f(2));
    else
        return V(f(0), f(1), f(2), f(3));
}

// Whether f(0), f(1), ... are all true.
template <int n, class F>
constexpr bool holdsForAll(F const & f) {
    if constexpr (n == 0)
        return true;
    else
        return holdsForAll<n - 1>(f) && f(n - 1);
}

// The sum of the products of the first n components, from the left.
template <int n, class A, class B>
constexpr auto sumOfProducts(A const & a, B const & b) {
    if constexpr (n == 1)
        return a[0] * b[0];
    else
        return sumOfProducts<n - 1>(a, b) + a[n - 1] * b[n - 1];
}

// Writes the beginning, the numbers with commas between them, and a closing parenthesis.
QV_EXPORT std::ostream & print(std::ostream & out, char const * beginning, double const * numbers, int count);
QV_EXPORT std::ostream & print(std::ostream & out, char const * beginning, float const * numbers, int count);

enum class Access { readOnly, writable };

/*
 * The base of each value type V, which has N fields of type T and a private operation component(int) that reads them.
 * It has no fields. The conversions to pointers are templates so that only a place that wants exactly such a pointer
 * takes them: neither arithmetic nor printing nor a condition ever works on the address of a value.
 */
template <class V, class T, int N, Access access = Access::writable>
class Components {
public:
    using Element = T;
    static constexpr int dimension = N;

    // Beyond the last component stands the last one again.
    constexpr T operator[](int i) const { return self().component(i); }
    template <std::integral I>
    constexpr T operator[](I i) const {
        return self().component(static_cast<int>(i));
    }

    // The components as an array. It is the value's own memory.
    template <std::same_as<T const *> P>
    operator P() const {
        return reinterpret_cast<T const *>(&self());
    }
    template <std::same_as<T *> P>
    operator P() requires(access == Access::writable) {
        return reinterpret_cast<T *>(static_cast<V *>(this));
    }

    template <std::same_as<T *> P>
    constexpr void get(P numbers) const {
        for (int i = 0; i < N; ++i)
            numbers[i] = self().component(i);
    }
    constexpr void get(T & x, T & y) const requires(N == 2) {
        x = self().component(0);
        y = self().component(1);
    }
    constexpr void get(T & x, T & y, T & z) const requires(N == 3) {
        x = self().component(0);
        y = self().component(1);
        z = self().component(2);
    }
    constexpr void get(T & x, T & y, T & z, T & w) const requires(N == 4) {
        x = self().component(0);
        y = self().component(1);
        z = self().component(2);
        w = self().component(3);
    }

    // Exact: every component is equal, so that a NaN makes them differ.
    friend constexpr bool operator==(V const & a, V const & b) {
        return holdsForAll<N>([&](int i) { return a[i] == b[i]; });
    }

private:
    constexpr V const & self() const { return static_cast<V const &>(*this); }
};

// A type with that base.
template <class V>
concept Value = requires {
    typename V::Element;
    { V::dimension } -> std::convertible_to<int>;
}
&&(std::derived_from<V, Components<V, typename V::Element, V::dimension>> ||
   std::derived_from<V, Components<V, typename V::Element, V::dimension, Access::readOnly>>);

// The type of a weight or tolerance: it is no help in finding the form that is meant.
template <class V>
using ElementOf = typename V::Element;

} // namespace detail

// Whether each component of one differs by less than the tolerance from that of the other. Never so for a tolerance of
// 0, nor with a NaN, nor between infinities.
template <detail::Value V>
constexpr bool equivalent(V const & a, V const & b, detail::ElementOf<V> tol) {
    return detail::holdsForAll<V::dimension>([&](int i) {
        auto const difference = a[i] - b[i];
        return difference < tol && -difference < tol;
    });
}

} // namespace qvLinear

#endif
