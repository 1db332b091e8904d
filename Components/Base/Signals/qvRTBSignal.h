// The signals that programs declare and emit.

#ifndef qvRTBSignal_h
#define qvRTBSignal_h

#include "Base/Signals/qvRTBFunction.h"
#include "Base/Signals/qvRTBSignalBase.h"
#include "Base/Signals/qvRTBSignalClient.h"

#include <concepts>
#include <type_traits>
#include <utility>

namespace qvRTB {

// What the typed signals share. `Function` is the class of callbacks that the signal calls with `Args`.
//
//     struct Button { qvRTB::SignalArg<Button *> sigPressed; };
//     struct Panel : qvRTB::SignalClient { void pressed(Button * button); };
//
//     button.sigPressed.addCallback(&panel, &Panel::pressed); // ends with the button or with the panel
//     button.sigPressed.emit(&button);                        // calls panel.pressed(&button)
//
// Every `addCallback` gives the connection, for `disconnect`. A receiver is not owned by the signal.
template <class Function, class... Args>
class TypedSignal : public SignalBase {
    static_assert((!std::is_rvalue_reference_v<Args> && ...), "every callback gets the same arguments");

public:
    // Calls the callbacks one after the other on this thread, the latest connection first, and allocates nothing.
    // A callback that is connected meanwhile is not called by this emission, one that is disconnected meanwhile is
    // called no more, and when the signal dies meanwhile the emission ends with the running callback. What a
    // callback throws ends the emission and goes to the caller.
    void emit(Args... args) {
        for (Cursor cursor(*this); cursor.isOnItem(); cursor.advance())
            if (!cursor.item().destroyPending)
                static_cast<Function *>(cursor.item().function)->call(args...);
    }

    // Takes ownership of a callback object. The connection ends with the signal and, in the second form, with the
    // client.
    Connection * addCallback(Function * function) { return SignalBase::addCallback(function); }
    Connection * addCallback(Function * function, SignalClient & client) {
        return SignalBase::addCallback(function, client);
    }

    // Connects a member function of an object that is a SignalClient; the connection ends with the object.
    template <class C, class Base>
    Connection * addCallback(C * instance, void (Base::*method)(Args...)) {
        static_assert(std::is_convertible_v<C *, SignalClient *>,
                      "the object is no SignalClient: give the client that ends the connection as the third argument");
        return addCallback(instance, method, *instance);
    }

    // Connects a member function of any object; the connection ends with `client`, which should not outlive it.
    template <class C, class Base>
    Connection * addCallback(C * instance, void (Base::*method)(Args...), SignalClient & client) {
        return SignalBase::addCallback(new typename Function::template Member<C>(instance, method), client);
    }

    // Connects a copy of anything that can be called with the arguments of the signal. A null pointer to a function,
    // and an empty function object that compares equal to null, connects nothing and gives null.
    template <class Callable>
    requires std::invocable<Callable &, Args...> Connection * addCallback(Callable callable) {
        if (detail::isNull(callable))
            return nullptr;
        return SignalBase::addCallback(new typename Function::template Adapter<Callable>(std::move(callable)));
    }
    template <class Callable>
    requires std::invocable<Callable &, Args...> Connection * addCallback(Callable callable, SignalClient & client) {
        if (detail::isNull(callable))
            return nullptr;
        return SignalBase::addCallback(new typename Function::template Adapter<Callable>(std::move(callable)), client);
    }

    using SignalBase::disconnectInstance;
    using SignalBase::findInstance;

    // The latest connection to this free function, null if there is none.
    Connection * findGlobalCallback(void (*function)(Args...)) const {
        return SignalBase::findGlobalCallback(reinterpret_cast<void *>(function));
    }
};

// A signal without an argument.
class SignalVoid : public TypedSignal<FunctionVoid> {
public:
    using TypedSignal::addCallback;

    // Connects a free function; null connects nothing and gives null.
    Connection * addCallback(void (*function)()) {
        return function ? TypedSignal::addCallback(new FunctionVoidGlobal(function)) : nullptr;
    }
    Connection * addCallback(void (*function)(), SignalClient & client) {
        return function ? TypedSignal::addCallback(new FunctionVoidGlobal(function), client) : nullptr;
    }
};

// A signal with one argument, which may be a reference. A value is copied for each callback.
template <class T>
class SignalArg : public TypedSignal<FunctionArg<T>, T> {
public:
    using Argument = T;
};

// A signal with three arguments.
template <class A, class B, class C>
class Signal3Args : public TypedSignal<Function3Args<A, B, C>, A, B, C> {};

} // namespace qvRTB

#endif
