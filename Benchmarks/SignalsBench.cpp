// Signals beside a signal library for the same purpose.

#include "Base/Signals/qvRTBSignal.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#ifdef QV_BENCH_SIGC
#include <sigc++/sigc++.h>
#endif

namespace {

struct Receiver : qvRTB::SignalClient {
    long sum = 0;
    void add(int value) { sum += value; }
};

struct Qv {
    using Signal = qvRTB::SignalArg<int>;
    using Object = Receiver;
    using Connection = qvRTB::Connection *;

    static Connection connectMember(Signal & signal, Object & object) {
        return signal.addCallback(&object, &Receiver::add);
    }
    static Connection connectLambda(Signal & signal, Object & object) {
        return signal.addCallback([sum = &object.sum](int value) { *sum += value; });
    }
    static void disconnect(Signal & signal, Connection & connection) { signal.disconnect(connection); }
};

#ifdef QV_BENCH_SIGC
struct TrackedReceiver : sigc::trackable {
    long sum = 0;
    void add(int value) { sum += value; }
};

struct Sigc {
    using Signal = sigc::signal<void(int)>;
    using Object = TrackedReceiver;
    using Connection = sigc::connection;

    static Connection connectMember(Signal & signal, Object & object) {
        return signal.connect(sigc::mem_fun(object, &TrackedReceiver::add));
    }
    static Connection connectLambda(Signal & signal, Object & object) {
        return signal.connect([sum = &object.sum](int value) { *sum += value; });
    }
    static void disconnect(Signal &, Connection & connection) { connection.disconnect(); }
};
#endif

template <class Library>
void emitToMembers(benchmark::State & state, int slots) {
    typename Library::Signal signal;
    std::vector<typename Library::Object> objects(static_cast<std::size_t>(slots));
    for (auto & object : objects)
        Library::connectMember(signal, object);
    for (auto _ : state) {
        signal.emit(1);
        benchmark::ClobberMemory();
    }
}

template <class Library>
void emitToLambdas(benchmark::State & state, int slots) {
    typename Library::Signal signal;
    typename Library::Object object;
    for (int i = 0; i < slots; ++i)
        Library::connectLambda(signal, object);
    for (auto _ : state) {
        signal.emit(1);
        benchmark::ClobberMemory();
    }
}

// With `slots` connections there already. The receiver lives on, so the connection is cut by hand.
template <class Library>
void connectAndDisconnect(benchmark::State & state, int slots) {
    typename Library::Signal signal;
    typename Library::Object object;
    for (int i = 0; i < slots; ++i)
        Library::connectMember(signal, object);
    for (auto _ : state) {
        auto connection = Library::connectMember(signal, object);
        benchmark::DoNotOptimize(connection);
        Library::disconnect(signal, connection);
    }
}

template <class Library>
void connectAndDisconnectLambda(benchmark::State & state, int slots) {
    typename Library::Signal signal;
    typename Library::Object object;
    for (int i = 0; i < slots; ++i)
        Library::connectLambda(signal, object);
    for (auto _ : state) {
        auto connection = Library::connectLambda(signal, object);
        benchmark::DoNotOptimize(connection);
        Library::disconnect(signal, connection);
    }
}

// All connected, then all disconnected in the order in which they were made, the worst one for a search.
template <class Library>
void connectAllThenDisconnectAll(benchmark::State & state, int slots) {
    typename Library::Signal signal;
    typename Library::Object object;
    std::vector<typename Library::Connection> connections(static_cast<std::size_t>(slots));
    for (auto _ : state) {
        for (auto & connection : connections)
            connection = Library::connectMember(signal, object);
        for (auto & connection : connections)
            Library::disconnect(signal, connection);
    }
}

// A receiver that is born, connected and dies.
template <class Library>
void clientDies(benchmark::State & state) {
    typename Library::Signal signal;
    for (auto _ : state) {
        typename Library::Object object;
        Library::connectMember(signal, object);
    }
}

template <class Library>
long sumAfter(int slots) {
    typename Library::Signal signal;
    typename Library::Object object;
    std::vector<typename Library::Connection> connections;
    for (int i = 0; i < slots; ++i) {
        connections.push_back(Library::connectMember(signal, object));
        connections.push_back(Library::connectLambda(signal, object));
    }
    signal.emit(3);
    for (std::size_t i = 0; i < connections.size(); i += 3)
        Library::disconnect(signal, connections[i]);
    signal.emit(1000);
    return object.sum;
}

template <class Library>
void add(std::string const & who) {
    auto const name = [&](char const * row, std::string const & wanted) { return row + wanted + "|" + who; };
    for (int slots : {1, 10, 100}) {
        std::string const suffix = std::to_string(slots) + (slots == 1 ? " slot" : " slots");
        benchmark::RegisterBenchmark(name("emission|", suffix).c_str(), emitToMembers<Library>, slots);
        benchmark::RegisterBenchmark(name("emission to lambdas|", suffix).c_str(), emitToLambdas<Library>, slots);
    }
    for (int slots : {0, 10}) {
        std::string const suffix = "beside " + std::to_string(slots);
        benchmark::RegisterBenchmark(name("connect and disconnect|", suffix).c_str(), connectAndDisconnect<Library>,
                                     slots);
        benchmark::RegisterBenchmark(name("connect and disconnect|lambda ", suffix).c_str(),
                                     connectAndDisconnectLambda<Library>, slots);
    }
    for (int slots : {10, 100, 1000})
        benchmark::RegisterBenchmark(name("connect all, disconnect all|", std::to_string(slots)).c_str(),
                                     connectAllThenDisconnectAll<Library>, slots);
    benchmark::RegisterBenchmark(name("client dies|", "1 slot").c_str(), clientDies<Library>);
}

} // namespace

int main(int argc, char ** argv) {
    add<Qv>("qv");
#ifdef QV_BENCH_SIGC
    for (int slots : {1, 10, 100})
        if (sumAfter<Qv>(slots) != sumAfter<Sigc>(slots) || sumAfter<Qv>(slots) == 0) {
            std::fprintf(stderr, "the signals call different receivers\n");
            std::abort();
        }
    add<Sigc>("sigc++");
#else
    std::printf("sigc++ was not found: its rows are left out\n");
#endif
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
