// The pointer that holds one count of a counted object.

#ifndef qvReference_h
#define qvReference_h

#include "Base/qvBaseConfig.h"

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace qv {

namespace detail {

// Classes whose references are operands of an expression of their own: == on them is theirs, and no test of addresses.
template <class T>
concept ComparedAsOperand = requires {
    typename T::isComparedAsOperand;
};

} // namespace detail

// Holds a count on an object of any class with `ref()` and `unref()`, for as long as the reference lives; it may be
// null. It is one pointer large. It is passed and returned by value: the callee then holds a count of its own during
// the call, and a returned reference hands its count over.
//
// A raw pointer converts to a reference, so that a new object can be given away in one expression. Since the count is
// in the object, two references made from the same raw pointer share it.
template <class T>
class Reference {
public:
    // A qv::vector may move it by its bytes.
    using isBitwiseMovable = Reference;

    Reference() noexcept = default;
    Reference(std::nullptr_t) noexcept {}
    Reference(T * object) : object_(object) { retain(); }
    Reference(Reference const & other) : object_(other.object_) { retain(); }
    Reference(Reference && other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

    template <class U>
    requires std::convertible_to<U *, T *> Reference(Reference<U> const & other) : object_(other.get()) { retain(); }

    template <class U>
    requires std::convertible_to<U *, T *> Reference(Reference<U> && other)
    noexcept : object_(other.release()) {}

    ~Reference() {
        if (object_)
            object_->unref();
    }

    // The new object is counted before the old one is released, and the old one is released last: its destructor may
    // come back to this reference and finds the new object in it.
    Reference & operator=(Reference other) noexcept {
        swap(other);
        return *this;
    }

    T * operator->() const noexcept { return object_; }
    std::add_lvalue_reference_t<T> operator*() const noexcept { return *object_; }
    T * get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    void swap(Reference & other) noexcept { std::swap(object_, other.object_); }
    friend void swap(Reference & left, Reference & right) noexcept { left.swap(right); }

    // Gives the object up together with its count, which the caller has to lower; the reference is null afterwards.
    [[nodiscard]] T * release() noexcept { return std::exchange(object_, nullptr); }

    template <class U>
    requires(!detail::ComparedAsOperand<T>) bool operator==(Reference<U> const & other) const noexcept {
        return object_ == other.get();
    }
    template <class U>
    requires std::equality_comparable_with<T *, U *>
    bool operator==(U * other) const noexcept { return object_ == other; }
    bool operator==(std::nullptr_t) const noexcept { return object_ == nullptr; }

    // An order of addresses, for sets and maps.
    std::strong_ordering operator<=>(Reference const & other) const noexcept {
        return std::compare_three_way()(object_, other.object_);
    }

private:
    void retain() const {
        if (object_)
            object_->ref();
    }

    T * object_ = nullptr;
};

// Null when the object is no U.
template <class U, class T>
Reference<U> dynamicReference(Reference<T> const & reference) {
    return Reference<U>(dynamic_cast<U *>(reference.get()));
}

// The caller knows that the object is a U.
template <class U, class T>
Reference<U> staticReference(Reference<T> const & reference) {
    return Reference<U>(static_cast<U *>(reference.get()));
}

} // namespace qv

template <class T>
struct std::hash<qv::Reference<T>> {
    std::size_t operator()(qv::Reference<T> const & reference) const noexcept {
        return std::hash<T *>()(reference.get());
    }
};

#endif
