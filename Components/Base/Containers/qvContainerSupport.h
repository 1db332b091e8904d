// What the container templates share. Clients include the containers themselves.

#ifndef qvContainerSupport_h
#define qvContainerSupport_h

#include <compare>
#include <concepts>
#include <cstddef>
#include <iterator>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <utility>

#include "Base/qvBaseConfig.h"

namespace qv::detail {

template <typename I>
concept InputIterator = std::input_iterator<I>;

// Iterators over plain memory that holds objects of type T.
template <typename I, typename T>
concept PlainMemoryOf = std::contiguous_iterator<I> && std::same_as<std::iter_value_t<I>, T>;

[[noreturn]] inline void throwTooLong() { throw std::length_error("qv: container too long"); }
[[noreturn]] inline void throwOutOfRange() { throw std::out_of_range("qv: no such element"); }

// Counts are 32-bit.
template <std::integral N>
constexpr int countOf(N n) {
    if (!std::in_range<int>(n))
        throwTooLong();
    return int(n);
}

// What the cores have to be told of an element's alignment: nothing as long as malloc gives it anyway.
template <typename T>
inline constexpr std::size_t alignmentBeyondMalloc = alignof(T) > alignof(std::max_align_t) ? alignof(T) : 0;

constexpr std::size_t offsetBehind(std::size_t size, std::size_t alignment) {
    return (size + alignment - 1) / alignment * alignment;
}

template <typename T>
concept Ordered = requires(T const & a, T const & b) {
    { a < b } -> std::convertible_to<bool>;
};

// The three-way comparison of elements that may have no more than operator<.
struct ThreeWay {
    template <typename T>
    constexpr auto operator()(T const & a, T const & b) const {
        if constexpr (std::three_way_comparable<T>) {
            return a <=> b;
        } else {
            if (a < b)
                return std::weak_ordering::less;
            return b < a ? std::weak_ordering::greater : std::weak_ordering::equivalent;
        }
    }
};

// Runs its action at the end of the scope unless it was released.
template <typename Action>
class [[nodiscard]] OnFailure {
public:
    explicit OnFailure(Action action) : action_(action) {}
    OnFailure(OnFailure const &) = delete;
    OnFailure & operator=(OnFailure const &) = delete;
    ~OnFailure() {
        if (armed_)
            action_();
    }
    void release() { armed_ = false; }

private:
    Action action_;
    bool armed_ = true;
};

enum class Keys { areUnique, mayRepeat };

template <typename P>
concept PairLike = requires(P & p) {
    p.first;
    p.second;
};

// Whether arguments for an element of a set or a map contain its key, so that it can be looked up before the element is
// built: the key itself, the key and a value, or a pair.
template <typename K, bool isSet, typename First = void, typename... Rest>
consteval bool argumentsTellKey() {
    if constexpr (std::is_void_v<First> || sizeof...(Rest) > (isSet ? 0 : 1))
        return false;
    else if constexpr (isSet || sizeof...(Rest) == 1)
        return std::is_same_v<std::remove_cvref_t<First>, K>;
    else if constexpr (PairLike<std::remove_reference_t<First>>)
        return std::is_same_v<std::remove_cvref_t<decltype(std::declval<First &>().first)>, K>;
    else
        return false;
}
template <bool isSet, typename First, typename... Rest>
auto const & toldKey(First const & first, Rest const &...) {
    if constexpr (isSet || sizeof...(Rest) == 1)
        return first;
    else
        return first.first;
}

// Functions for the cores' tables. Those that do nothing are null, and the cores then skip the call.
template <typename T>
struct ElementFunctions {
    static void copyConstruct(void * dst, void const * src) { ::new (dst) T(*static_cast<T const *>(src)); }
    static void copyConstructRange(void * dst, void const * src, int n) {
        std::uninitialized_copy_n(static_cast<T const *>(src), n, static_cast<T *>(dst));
    }
    static void moveConstruct(void * dst, void * src) { ::new (dst) T(std::move(*static_cast<T *>(src))); }
    static void valueConstruct(void * dst) { ::new (dst) T(); }
    static void valueConstructRange(void * dst, int n) {
        std::uninitialized_value_construct_n(static_cast<T *>(dst), n);
    }
    static void destructObject(void * p) { std::destroy_at(static_cast<T *>(p)); }
    static void destructObjects(void * p, int n) { std::destroy_n(static_cast<T *>(p), n); }
    static int distance(void const * last, void const * first) {
        return countOf(static_cast<T const *>(last) - static_cast<T const *>(first));
    }

    static constexpr bool isTrivial = std::is_trivially_destructible_v<T>;
    static constexpr void (*destruct)(void *) = isTrivial ? nullptr : &destructObject;
    static constexpr void (*destructRange)(void *, int) = isTrivial ? nullptr : &destructObjects;
};

} // namespace qv::detail

#endif
