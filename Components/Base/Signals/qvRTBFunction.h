// The callback objects that signals call: a base for each list of arguments, and adapters for free functions, member
// functions and callables.

#ifndef qvRTBFunction_h
#define qvRTBFunction_h

#include "Base/qvBaseConfig.h"

#include <type_traits>
#include <utility>

namespace qvRTB {

// What all callback objects have in common. A callback object belongs to the signal that it is connected to, which
// deletes it when the connection ends.
//
// The order of the virtual operations, here and in the classes below, is what subclasses in other modules rely on.
class QV_EXPORT FunctionBase {
public:
    FunctionBase() = default;
    FunctionBase(FunctionBase const &) = delete;
    FunctionBase & operator=(FunctionBase const &) = delete;
    virtual ~FunctionBase() = default;

    // Whether the callback calls this free function; false unless a subclass knows better.
    virtual bool isGlobalFunction(void * function);

    // Whether the callback calls a member function of this object; false unless a subclass knows better. The pointer is
    // compared with the one that the callback was made from: of an object with several bases that must be a pointer to
    // the same base.
    virtual bool isInstance(void * instance);
};

namespace detail {

// Whether there is nothing to call: for what can be compared with null.
template <class Callable>
bool isNull(Callable const & callable) {
    if constexpr (requires { callable == nullptr; })
        return callable == nullptr;
    else
        return false;
}

// Answers for a callable: a pointer to a function is a free function, anything else is none.
template <class Callable>
bool isFunctionAt(Callable const & callable, void * function) noexcept {
    if constexpr (std::is_pointer_v<Callable> && std::is_function_v<std::remove_pointer_t<Callable>>)
        return reinterpret_cast<void *>(callable) == function;
    else
        return false;
}

} // namespace detail

// ---- Without an argument

template <class C>
class FunctionVoidMember;
template <class Callable>
class FunctionVoidCallable;

class QV_EXPORT FunctionVoid : public FunctionBase {
public:
    template <class C>
    using Member = FunctionVoidMember<C>;
    template <class Callable>
    using Adapter = FunctionVoidCallable<Callable>;

    virtual void call() = 0;
};

class QV_EXPORT FunctionVoidGlobal : public FunctionVoid {
public:
    explicit FunctionVoidGlobal(void (*function)()) noexcept : function_(function) {}

    void call() override { function_(); }
    bool isGlobalFunction(void * function) override { return detail::isFunctionAt(function_, function); }

private:
    void (*function_)();
};

template <class C>
class FunctionVoidMember : public FunctionVoid {
public:
    using Method = void (C::*)();

    FunctionVoidMember(C * instance, Method method) noexcept : instance_(instance), method_(method) {}

    void call() override { (instance_->*method_)(); }
    bool isInstance(void * instance) override { return instance_ == instance; }

private:
    C * instance_;
    Method method_;
};

// Any callable object, for instance a lambda, which it holds by value. A result is dropped.
template <class Callable>
class FunctionVoidCallable : public FunctionVoid {
public:
    explicit FunctionVoidCallable(Callable callable) : callable_(std::move(callable)) {}

    void call() override { static_cast<void>(callable_()); }
    bool isGlobalFunction(void * function) override { return detail::isFunctionAt(callable_, function); }

private:
    Callable callable_;
};

// ---- With one argument

template <class T, class C>
class FunctionArgMember;
template <class T, class Callable>
class FunctionArgCallable;

template <class T>
class QV_EXPORT FunctionArg : public FunctionBase {
public:
    template <class C>
    using Member = FunctionArgMember<T, C>;
    template <class Callable>
    using Adapter = FunctionArgCallable<T, Callable>;

    virtual void call(T argument) = 0;
};

template <class T, class C>
class FunctionArgMember : public FunctionArg<T> {
public:
    using Method = void (C::*)(T);

    FunctionArgMember(C * instance, Method method) noexcept : instance_(instance), method_(method) {}

    void call(T argument) override { (instance_->*method_)(std::forward<T>(argument)); }
    bool isInstance(void * instance) override { return instance_ == instance; }

private:
    C * instance_;
    Method method_;
};

template <class T, class Callable>
class FunctionArgCallable : public FunctionArg<T> {
public:
    explicit FunctionArgCallable(Callable callable) : callable_(std::move(callable)) {}

    void call(T argument) override { static_cast<void>(callable_(std::forward<T>(argument))); }
    bool isGlobalFunction(void * function) override { return detail::isFunctionAt(callable_, function); }

private:
    Callable callable_;
};

// ---- With three arguments

template <class A, class B, class C, class Receiver>
class Function3ArgsMember;
template <class A, class B, class C, class Callable>
class Function3ArgsCallable;

template <class A, class B, class C>
class QV_EXPORT Function3Args : public FunctionBase {
public:
    template <class Receiver>
    using Member = Function3ArgsMember<A, B, C, Receiver>;
    template <class Callable>
    using Adapter = Function3ArgsCallable<A, B, C, Callable>;

    virtual void call(A first, B second, C third) = 0;
};

template <class A, class B, class C, class Receiver>
class Function3ArgsMember : public Function3Args<A, B, C> {
public:
    using Method = void (Receiver::*)(A, B, C);

    Function3ArgsMember(Receiver * instance, Method method) noexcept : instance_(instance), method_(method) {}

    void call(A first, B second, C third) override {
        (instance_->*method_)(std::forward<A>(first), std::forward<B>(second), std::forward<C>(third));
    }
    bool isInstance(void * instance) override { return instance_ == instance; }

private:
    Receiver * instance_;
    Method method_;
};

template <class A, class B, class C, class Callable>
class Function3ArgsCallable : public Function3Args<A, B, C> {
public:
    explicit Function3ArgsCallable(Callable callable) : callable_(std::move(callable)) {}

    void call(A first, B second, C third) override {
        static_cast<void>(callable_(std::forward<A>(first), std::forward<B>(second), std::forward<C>(third)));
    }
    bool isGlobalFunction(void * function) override { return detail::isFunctionAt(callable_, function); }

private:
    Callable callable_;
};

} // namespace qvRTB

#endif
