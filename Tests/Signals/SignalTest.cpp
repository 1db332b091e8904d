#include "Base/Signals/qvRTBAsyncSignal.h"
#include "Base/Signals/qvRTBSignal.h"
#include "Support/CountingNew.h"

#include <functional>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::string calls;

struct Receiver : qvRTB::SignalClient {
    explicit Receiver(char receiverName) : name(receiverName) {}
    void called() { calls += name; }
    void calledWith(int & value) { value = value * 10 + (name - '0'); }
    char name;
};

struct SecondBase {
    int padding = 0;
};
struct Derived : SecondBase, Receiver {
    using Receiver::Receiver;
};

void freeFunction() { calls += 'f'; }
void otherFunction() { calls += 'o'; }
void quietFunction() noexcept { calls += 'q'; }

// Callback objects that are counted.
struct Counted : qvRTB::FunctionVoid {
    static inline int living = 0;
    Counted() { ++living; }
    ~Counted() override { --living; }
    void call() override { calls += 'c'; }
};

// A signal whose list can be stood on without an emission.
struct OpenSignal : qvRTB::SignalVoid {
    using Standing = Cursor;
};

TEST(Signal, TheLatestConnectionIsCalledFirst) {
    calls.clear();
    qvRTB::SignalVoid signal;
    Receiver a('a'), b('b');
    Derived d('d');
    signal.addCallback(&a, &Receiver::called);
    signal.addCallback(&d, &Receiver::called);
    signal.addCallback(&b, &Receiver::called);
    signal.addCallback(freeFunction);
    signal.emit();
    EXPECT_EQ(calls, "fbda");

    qvRTB::SignalArg<int &> byReference;
    Receiver one('1'), two('2');
    byReference.addCallback(&one, &Receiver::calledWith);
    byReference.addCallback(&two, &Receiver::calledWith);
    int value = 0;
    byReference.emit(value);
    EXPECT_EQ(value, 21);
}

TEST(Signal, EveryCallbackGetsArgumentsOfItsOwn) {
    qvRTB::Signal3Args<std::string, void *, int> signal;
    std::vector<std::string> seen;
    for (int i = 0; i < 2; ++i)
        signal.addCallback([&seen](std::string text, void *, int number) {
            seen.push_back(text + std::to_string(number));
            text.clear();
        });
    struct Tracer {
        std::string text;
        void trace(std::string t, void * p, int) { text = p ? "pointer" : t; }
    } tracer;
    qvRTB::SignalClient client;
    signal.addCallback(&tracer, &Tracer::trace, client);
    signal.emit("long enough to be on the heap", nullptr, 7);
    EXPECT_EQ(seen, std::vector<std::string>(2, "long enough to be on the heap7"));
    EXPECT_EQ(tracer.text, "long enough to be on the heap");
    signal.emit("", &tracer, 0);
    EXPECT_EQ(tracer.text, "pointer");
}

TEST(Signal, ConnectionsEndFromEitherSide) {
    calls.clear();
    qvRTB::SignalVoid other;
    auto receiver = std::make_unique<Receiver>('r');
    {
        qvRTB::SignalVoid signal;
        qvRTB::SignalClient client;
        qvRTB::Connection * const own = signal.addCallback(new Counted, client);
        signal.addCallback(new Counted, client);
        signal.addCallback(new Counted);
        other.addCallback(receiver.get(), &Receiver::called);
        other.disconnect(own);
        other.disconnect(nullptr);
        EXPECT_EQ(signal.numConnections(), 3);
        EXPECT_EQ(other.numConnections(), 1);
        signal.disconnect(own);
        EXPECT_EQ(Counted::living, 2);
        EXPECT_FALSE(signal.isConnected(own));
        signal.emit();
        EXPECT_EQ(calls, "cc");
        // The copy of a receiver is connected to nothing, and its death ends nothing.
        { Receiver const copy(*receiver); }
        Receiver assigned('s');
        assigned = *receiver;
    }
    EXPECT_EQ(Counted::living, 0);
    EXPECT_EQ(other.numConnections(), 1);
    receiver.reset();
    EXPECT_FALSE(other.isConnected());
    EXPECT_EQ(other.addCallback(static_cast<qvRTB::FunctionVoid *>(nullptr)), nullptr);
    EXPECT_EQ(other.addCallback(static_cast<void (*)()>(nullptr)), nullptr);
    qvRTB::SignalArg<int> withArgument;
    EXPECT_EQ(withArgument.addCallback(static_cast<void (*)(int)>(nullptr)), nullptr);
    EXPECT_EQ(withArgument.addCallback(std::function<void(int)>()), nullptr);
    withArgument.emit(1);
    EXPECT_FALSE(other.isConnected());
}

TEST(Signal, ConnectionsAreFoundByFunctionAndByInstance) {
    qvRTB::SignalVoid signal;
    Receiver a('a'), b('b');
    signal.addCallback(freeFunction);
    qvRTB::Connection * const latest = signal.addCallback(freeFunction);
    qvRTB::Connection * const quiet = signal.addCallback(quietFunction);
    signal.addCallback(&a, &Receiver::called);
    qvRTB::Connection * const secondOfA = signal.addCallback(&a, &Receiver::called);
    signal.addCallback(&b, &Receiver::called);
    EXPECT_EQ(signal.findGlobalCallback(freeFunction), latest);
    EXPECT_EQ(signal.findGlobalCallback(quietFunction), quiet);
    EXPECT_EQ(signal.findGlobalCallback(otherFunction), nullptr);
    EXPECT_EQ(signal.findInstance(&a), secondOfA);
    EXPECT_EQ(signal.findInstance(&signal), nullptr);
    signal.disconnectInstance(&a);
    EXPECT_EQ(signal.findInstance(&a), nullptr);
    EXPECT_EQ(signal.numConnections(), 4);

    // One that has been ended is not found while it runs.
    struct Ender : qvRTB::SignalClient {
        qvRTB::SignalVoid signal;
        void * found = this;
        void end() {
            signal.disconnectInstance(this);
            found = signal.findInstance(this);
        }
    } ender;
    ender.signal.addCallback(&ender, &Ender::end);
    ender.signal.addCallback(&ender, &Ender::end);
    ender.signal.emit();
    EXPECT_EQ(ender.found, nullptr);
    EXPECT_FALSE(ender.signal.isConnected());
}

// Nothing is called through a list whose order of deaths is turned against it: the callback that is deleted takes its
// neighbours in the list with it, on the way of an emission and when the signal dies.
TEST(Signal, ACallbackMayTakeItsNeighboursAlong) {
    for (bool dieWithSignal : {false, true}) {
        calls.clear();
        auto signal = std::make_unique<qvRTB::SignalVoid>();
        auto before = std::make_shared<Receiver>('x'), after = std::make_shared<Receiver>('y');
        signal->addCallback(new Counted);
        signal->addCallback(after.get(), &Receiver::called);
        qvRTB::Connection * self = nullptr;
        self = signal->addCallback([&self, &signal, before, after, &dieWithSignal] {
            calls += 's';
            if (!dieWithSignal)
                signal->disconnect(self);
        });
        signal->addCallback(before.get(), &Receiver::called);
        before.reset();
        after.reset();
        signal->emit();
        EXPECT_EQ(calls, dieWithSignal ? "xsyc" : "xsc");
        EXPECT_EQ(signal->numConnections(), dieWithSignal ? 4 : 1);
        signal.reset();
        EXPECT_EQ(Counted::living, 0);
    }
}

TEST(Signal, NestingHasALimit) {
    calls.clear();
    OpenSignal signal;
    qvRTB::Connection * const connection = signal.addCallback(new Counted);
    {
        std::deque<OpenSignal::Standing> standing;
        for (int i = 0; i < 65535; ++i)
            standing.emplace_back(signal);
        try {
            signal.emit();
            FAIL() << "an emission that cannot be counted";
        } catch (std::length_error const & error) {
            EXPECT_STREQ(error.what(), "qvRTB: too many nested emissions of a signal");
        }
        signal.disconnect(connection);
        EXPECT_EQ(Counted::living, 1);
    }
    EXPECT_EQ(Counted::living, 0);
}

TEST(Signal, AllocatesAsToldAndLosesNothingWhenMemoryRunsOut) {
    calls.clear();
    calls.reserve(100);
    for (int failing = 1; failing <= 3; ++failing) {
        qvRTB::SignalVoid signal;
        qvRTB::SignalClient client;
        failingAllocation = failing;
        EXPECT_THROW(
            {
                signal.addCallback(new Counted, client);
                ADD_FAILURE();
            },
            std::bad_alloc);
        EXPECT_EQ(failingAllocation, 0);
        EXPECT_FALSE(signal.isConnected());
        EXPECT_EQ(Counted::living, 0);
    }
    qvRTB::SignalVoid signal;
    qvRTB::SignalClient client;
    long before = allocations;
    signal.addCallback(new Counted, client);
    EXPECT_EQ(allocations - before, 3);
    signal.addCallback(new Counted);
    EXPECT_EQ(allocations - before, 5);
    before = allocations;
    signal.emit();
    EXPECT_EQ(allocations - before, 0);
}

TEST(AsyncSignal, EmitsLaterWhatItWasGivenNow) {
    qvRTB::SignalArg<std::string const &> signal;
    std::string seen;
    signal.addCallback([&](std::string const & text) { seen = text; });
    std::unique_ptr<qvRTB::AsyncSignal> later;
    {
        std::string const text(100, 'x');
        later = std::make_unique<qvRTB::AsyncSignalArg<qvRTB::SignalArg<std::string const &>>>(&signal, text);
    }
    later->emit();
    EXPECT_EQ(seen, std::string(100, 'x'));

    qvRTB::SignalArg<int &> counting;
    counting.addCallback([](int & counter) { ++counter; });
    int counter = 0;
    qvRTB::AsyncSignalArg<qvRTB::SignalArg<int &>>(&counting, counter).emit();
    EXPECT_EQ(counter, 1);
}

} // namespace
