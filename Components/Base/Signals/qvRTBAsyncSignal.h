// An emission that is made now and takes place later, perhaps on another thread.

#ifndef qvRTBAsyncSignal_h
#define qvRTBAsyncSignal_h

#include "Base/qvBaseConfig.h"

#include <type_traits>
#include <utility>

namespace qvRTB {

// A deferred emission as an object. Whoever carries it calls `emit` once and deletes it.
class QV_EXPORT AsyncSignal {
public:
    AsyncSignal() = default;
    AsyncSignal(AsyncSignal const &) = delete;
    AsyncSignal & operator=(AsyncSignal const &) = delete;
    virtual ~AsyncSignal() = default;

    virtual void emit() = 0;
};

// The emission of a signal with one argument; `S` is a SignalArg. The signal must live until the emission. The
// argument is kept by value, also when the signal takes it by reference to const; an object that the signal takes by
// reference to non-const must live until the emission too.
template <class S>
class AsyncSignalArg : public AsyncSignal {
public:
    using Argument = typename S::Argument;

    AsyncSignalArg(S * signal, Argument argument) : signal_(signal), argument_(std::forward<Argument>(argument)) {}

    void emit() override { signal_->emit(argument_); }

private:
    static constexpr bool isOutput =
        std::is_lvalue_reference_v<Argument> && !std::is_const_v<std::remove_reference_t<Argument>>;

    S * signal_;
    std::conditional_t<isOutput, Argument, std::remove_cvref_t<Argument>> argument_;
};

} // namespace qvRTB

#endif
