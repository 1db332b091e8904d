// qv::pair<A, B>: two values that go together.

#ifndef qvPair_h
#define qvPair_h

#include <compare>
#include <type_traits>
#include <utility>

#include "Base/Containers/qvBitwiseMovable.h"
#include "Base/Containers/qvContainerSupport.h"

namespace qv {

/*
 * Two values, first and second: the element of the maps, and what operations return that have two results. It takes
 * values from any pair whose parts convert.
 *
 *     auto [position, isNew] = names.insert(name);
 */
template <typename A, typename B>
struct pair {
    using first_type = A;
    using second_type = B;

    A first;
    B second;

    constexpr pair() requires std::is_default_constructible_v<A> && std::is_default_constructible_v<B> : first(),
                                                                                                         second() {}
    constexpr pair(A const & a, B const & b) requires std::is_copy_constructible_v<A> && std::is_copy_constructible_v<B>
        : first(a), second(b) {}
    template <typename A2 = A, typename B2 = B>
    requires std::is_constructible_v<A, A2> && std::is_constructible_v<B, B2>
    constexpr explicit(!std::is_convertible_v<A2, A> || !std::is_convertible_v<B2, B>) pair(A2 && a, B2 && b)
        : first(static_cast<A>(std::forward<A2>(a))), second(static_cast<B>(std::forward<B2>(b))) {}
    template <typename A2, typename B2>
    requires std::is_constructible_v<A, A2 const &> && std::is_constructible_v<B, B2 const &>
    constexpr explicit(!std::is_convertible_v<A2 const &, A> || !std::is_convertible_v<B2 const &, B>)
        pair(pair<A2, B2> const & other)
        : first(static_cast<A>(other.first)), second(static_cast<B>(other.second)) {}
    template <typename A2, typename B2>
    requires std::is_constructible_v<A, A2> && std::is_constructible_v<B, B2>
    constexpr explicit(!std::is_convertible_v<A2, A> || !std::is_convertible_v<B2, B>) pair(pair<A2, B2> && other)
        : first(static_cast<A>(std::forward<A2>(other.first))), second(static_cast<B>(std::forward<B2>(other.second))) {
    }
    template <typename A2, typename B2>
    requires std::is_constructible_v<A, A2 const &> && std::is_constructible_v<B, B2 const &>
    constexpr explicit(!std::is_convertible_v<A2 const &, A> || !std::is_convertible_v<B2 const &, B>)
        pair(std::pair<A2, B2> const & other)
        : first(static_cast<A>(other.first)), second(static_cast<B>(other.second)) {}
    template <typename A2, typename B2>
    requires std::is_constructible_v<A, A2> && std::is_constructible_v<B, B2>
    constexpr explicit(!std::is_convertible_v<A2, A> || !std::is_convertible_v<B2, B>) pair(std::pair<A2, B2> && other)
        : first(static_cast<A>(std::forward<A2>(other.first))), second(static_cast<B>(std::forward<B2>(other.second))) {
    }

    constexpr void swap(pair & other) {
        using std::swap;
        swap(first, other.first);
        swap(second, other.second);
    }
    friend constexpr void swap(pair & a, pair & b) { a.swap(b); }
};

template <typename A, typename B>
pair(A, B) -> pair<A, B>;

template <typename A, typename B>
constexpr pair<std::decay_t<A>, std::decay_t<B>> make_pair(A && a, B && b) {
    return {std::forward<A>(a), std::forward<B>(b)};
}

template <typename A, typename B>
constexpr bool operator==(pair<A, B> const & a, pair<A, B> const & b) {
    return a.first == b.first && a.second == b.second;
}
template <detail::Ordered A, detail::Ordered B>
constexpr auto operator<=>(pair<A, B> const & a, pair<A, B> const & b) {
    detail::ThreeWay const compare;
    using Order =
        std::common_comparison_category_t<decltype(compare(a.first, b.first)), decltype(compare(a.second, b.second))>;
    if (Order const order = compare(a.first, b.first); order != 0)
        return order;
    return Order(compare(a.second, b.second));
}

template <typename A, typename B>
struct isBitwiseMovable<pair<A, B>> : std::bool_constant<isBitwiseMovable<A>::value && isBitwiseMovable<B>::value> {};

} // namespace qv

#endif
