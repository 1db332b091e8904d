// qv::less<T>: the default ordering of qv::set and qv::map.

#ifndef qvLess_h
#define qvLess_h

#include <functional>
#include <utility>

#include "Base/qvBaseConfig.h"

namespace qv {

/*
 * Orders by operator<, pointers by their addresses. qv::less<void> compares whatever can be compared, so that a
 * container that is ordered by it is searched with other types than its key, without a conversion.
 */
template <typename T = void>
struct less {
    constexpr bool operator()(T const & a, T const & b) const { return std::less<T>()(a, b); }
};

template <>
struct less<void> {
    using is_transparent = void;

    template <typename A, typename B>
    constexpr bool operator()(A && a, B && b) const {
        return std::less<>()(std::forward<A>(a), std::forward<B>(b));
    }
};

} // namespace qv

#endif
