// The trait that says whether an object may be moved by copying its bytes and forgetting the original, as qv::vector
// does when it grows or shifts its elements.

#ifndef qvBitwiseMovable_h
#define qvBitwiseMovable_h

#include <array>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "Base/qvBaseConfig.h"

namespace qv {

namespace detail {

// The alias has to name the class itself: a derived class inherits the alias, but not the promise.
template <typename T>
concept OptsIntoBitwiseMove = requires {
    typename T::isBitwiseMovable;
}
&&std::is_same_v<typename T::isBitwiseMovable, T>;

} // namespace detail

/*
 * Holds for types whose objects survive a bitwise move: the bytes are copied to another place, the object lives on
 * there, and neither a constructor nor a destructor runs for the old place. A type that keeps a pointer into itself, or
 * whose address somebody else keeps, must not be moved that way.
 *
 * It is true for trivially copyable types and false for all others that do not opt in, which they do in one of two
 * ways:
 *
 *     class Handle {
 *     public:
 *         using isBitwiseMovable = Handle; // the class itself; derived classes opt in by themselves
 *         ...
 *     };
 *
 *     template <>
 *     struct qv::isBitwiseMovable<Foreign> : std::true_type {};
 */
template <typename T>
struct isBitwiseMovable : std::bool_constant<std::is_trivially_copyable_v<T> || detail::OptsIntoBitwiseMove<T>> {};

template <typename T>
struct isBitwiseMovable<T const> : isBitwiseMovable<T> {};

template <typename A, typename B>
struct isBitwiseMovable<std::pair<A, B>>
    : std::bool_constant<isBitwiseMovable<A>::value && isBitwiseMovable<B>::value> {};

template <typename T, std::size_t n>
struct isBitwiseMovable<std::array<T, n>> : isBitwiseMovable<T> {};

template <typename T>
struct isBitwiseMovable<std::optional<T>> : isBitwiseMovable<T> {};

template <typename T>
struct isBitwiseMovable<std::unique_ptr<T>> : std::true_type {};

template <typename T>
struct isBitwiseMovable<std::shared_ptr<T>> : std::true_type {};

template <typename T>
inline constexpr bool isBitwiseMovable_v = isBitwiseMovable<T>::value;

} // namespace qv

#endif
