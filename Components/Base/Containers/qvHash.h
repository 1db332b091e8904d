// qv::hash<T> and qv::equal_to<T>: what the hash containers take for their keys when they are told nothing else.

#ifndef qvHash_h
#define qvHash_h

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include "Base/Containers/qvContainerSupport.h"
#include "Base/Containers/qvHashFunction.h"
#include "Base/Containers/qvPair.h"

namespace qv {

namespace detail {

// 64 bits in 32, without losing any of them where the number is small.
constexpr unsigned foldHash(std::uint64_t value) { return unsigned(value ^ (value >> 32)); }

template <typename T>
concept HasHashFunction = requires(T const & value) {
    { hashfunction(value) } -> std::convertible_to<unsigned>;
};

// The bucket count is prime, so that a number serves as its own hash value.
template <typename T>
concept HashesToItself = std::is_integral_v<T> && sizeof(T) <= sizeof(unsigned);

} // namespace detail

/*
 * A 32-bit hash value. Numbers, enumerations and pointers (char const * too, by its address) are their own; texts go
 * through hashfunction; pairs combine the values of their parts; a class is asked for a hashfunction(T const &) in its
 * own namespace, and what has none for std::hash. Specialise it for other types, or give a hash container a class of
 * your own: its result may be of any unsigned type.
 */
template <typename T>
struct hash {
    unsigned operator()(T const & value) const {
        if constexpr (std::is_enum_v<T>)
            return hash<std::underlying_type_t<T>>()(static_cast<std::underlying_type_t<T>>(value));
        else if constexpr (std::is_integral_v<T> && sizeof(T) <= sizeof(unsigned))
            return unsigned(value);
        else if constexpr (std::is_integral_v<T>)
            return detail::foldHash(std::uint64_t(value));
        else if constexpr (std::is_pointer_v<T>)
            return detail::foldHash(reinterpret_cast<std::uintptr_t>(value));
        else if constexpr (std::is_convertible_v<T const &, std::string_view>)
            return hashText(value);
        else if constexpr (detail::HasHashFunction<T>)
            return unsigned(hashfunction(value));
        else
            return detail::foldHash(std::hash<T>()(value));
    }

private:
    static unsigned hashText(std::string_view text) { return hashfunction(text.data(), text.data() + text.size()); }
};

template <typename A, typename B>
struct hash<pair<A, B>> {
    unsigned operator()(pair<A, B> const & value) const {
        return 31 * hash<std::remove_const_t<A>>()(value.first) + hash<std::remove_const_t<B>>()(value.second);
    }
};

template <typename A, typename B>
struct hash<std::pair<A, B>> {
    unsigned operator()(std::pair<A, B> const & value) const {
        return 31 * hash<std::remove_const_t<A>>()(value.first) + hash<std::remove_const_t<B>>()(value.second);
    }
};

// Compares by operator==.
template <typename T>
struct equal_to {
    constexpr bool operator()(T const & a, T const & b) const { return a == b; }
};

// For containers whose keys are zero-terminated texts, which their owners keep alive: qv::hash_set<char const *,
// qv::text_hash, qv::text_equal>, qv::set<char const *, qv::text_less>. Null is not allowed.
struct text_hash {
    unsigned operator()(char const * text) const { return hashfunction(text); }
};
struct text_equal {
    bool operator()(char const * a, char const * b) const { return std::strcmp(a, b) == 0; }
};
struct text_less {
    bool operator()(char const * a, char const * b) const { return std::strcmp(a, b) < 0; }
};

} // namespace qv

#endif
