// Random programs of emissions, connections and deaths from inside callbacks, checked step by step against a model that
// knows who must be called next, what is still counted, and which callbacks must be gone.

#include "Base/Signals/qvRTBSignal.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <random>
#include <vector>

namespace {

constexpr int deepest = 4;

struct Thrown {};

class World {
public:
    explicit World(unsigned seed) : random_(seed) {
        for (int i = 0; i < 3; ++i)
            addSignal();
        for (int i = 0; i < 3; ++i)
            addClient();
    }

    void run(int steps) {
        for (int i = 0; i < steps; ++i) {
            act();
            checkCounts();
        }
        while (!signals_.empty())
            destroySignal(signals_.begin()->first);
        EXPECT_TRUE(live_.empty());
    }

private:
    // Lives in a callback: its end is the end of the callback object. The one that the signal gave up in a move is
    // void.
    struct Token {
        World * world;
        int id;
        Token(World * w, int i) : world(w), id(i) {}
        Token(Token && other) noexcept : world(std::exchange(other.world, nullptr)), id(other.id) {}
        ~Token() {
            if (world)
                world->deleted(id);
        }
    };

    struct Link {
        int signal;
        int client; // -1 without one
        qvRTB::Connection * connection;
        bool ended = false;
        int standing = 0;
        int victim = -1; // the client that dies with the callback
    };

    struct Frame {
        int signal;
        std::vector<int> order; // of the links at the start, the latest first
        std::size_t next = 0;
        bool signalDied = false;
    };

    struct ModelSignal {
        std::unique_ptr<qvRTB::SignalArg<int>> real = std::make_unique<qvRTB::SignalArg<int>>();
        std::vector<int> links; // the latest last
    };

    int pick(int n) { return static_cast<int>(random_() % static_cast<unsigned>(n)); }

    template <class Map>
    int pickKey(Map const & map) {
        return std::next(map.begin(), pick(static_cast<int>(map.size())))->first;
    }

    void addSignal() { signals_.emplace(nextId_++, ModelSignal()); }
    void addClient() { clients_.emplace(nextId_++, std::make_unique<qvRTB::SignalClient>()); }

    void act() {
        int const choice = pick(16);
        if (choice < 6)
            connect();
        else if (choice < 8)
            disconnect();
        else if (choice == 8 && clients_.size() < 6)
            addClient();
        else if (choice == 9 && !clients_.empty())
            destroyClient(pickKey(clients_));
        else if (choice == 10 && signals_.size() < 5)
            addSignal();
        else if (choice == 11 && !signals_.empty() && pick(3) == 0)
            destroySignal(pickKey(signals_));
        else if (choice > 11)
            emit();
    }

    void connect() {
        if (signals_.empty())
            return;
        int const signal = pickKey(signals_);
        int const client = clients_.empty() || pick(3) == 0 ? -1 : pickKey(clients_);
        int const id = nextId_++;
        Link link{signal, client, nullptr};
        if (!clients_.empty() && pick(8) == 0)
            link.victim = pickKey(clients_);
        auto callback = [token = Token(this, id)](int argument) mutable { token.world->called(token.id, argument); };
        live_.emplace(id, link);
        auto & real = *signals_.at(signal).real;
        live_.at(id).connection = client < 0 ? real.addCallback(std::move(callback))
                                             : real.addCallback(std::move(callback), *clients_.at(client));
        signals_.at(signal).links.push_back(id);
    }

    // Any known connection at any signal: only its own may end it.
    void disconnect() {
        if (live_.empty() || signals_.empty())
            return;
        int const id = pickKey(live_);
        int const signal = pick(4) == 0 ? pickKey(signals_) : live_.at(id).signal;
        if (!signals_.contains(signal))
            return;
        qvRTB::Connection * const connection = live_.at(id).connection;
        if (signal == live_.at(id).signal)
            end(id);
        signals_.at(signal).real->disconnect(connection);
    }

    void destroyClient(int client) {
        auto const node = clients_.extract(client);
        for (auto & [id, link] : live_)
            if (link.client == client)
                end(id);
    }

    void destroySignal(int signal) {
        auto node = signals_.extract(signal);
        for (int id : node.mapped().links)
            if (live_.contains(id))
                end(id);
        for (Frame * frame : frames_)
            if (frame->signal == signal)
                frame->signalDied = true;
        node.mapped().real.reset();
    }

    void end(int id) { live_.at(id).ended = true; }

    void deleted(int id) {
        Link const link = live_.at(id);
        EXPECT_TRUE(link.ended) << "callback " << id << " was deleted while connected";
        EXPECT_EQ(link.standing, 0) << "callback " << id << " was deleted while it ran";
        live_.erase(id);
        if (link.victim >= 0 && clients_.contains(link.victim))
            destroyClient(link.victim);
    }

    void emit() {
        if (signals_.empty() || frames_.size() >= deepest)
            return;
        int const signal = pickKey(signals_);
        Frame frame{signal, {}};
        auto const & links = signals_.at(signal).links;
        std::copy_if(links.rbegin(), links.rend(), std::back_inserter(frame.order),
                     [&](int id) { return live_.contains(id); });
        frames_.push_back(&frame);
        bool thrown = false;
        try {
            signals_.at(signal).real->emit(signal);
        } catch (Thrown const &) {
            thrown = true;
        }
        ASSERT_EQ(frames_.back(), &frame);
        frames_.pop_back();
        if (!thrown && !frame.signalDied) {
            EXPECT_TRUE(std::all_of(frame.order.begin() + static_cast<std::ptrdiff_t>(frame.next), frame.order.end(),
                                    [&](int id) { return isEnded(id); }))
                << "a callback was left out";
        }
        if (thrown && !frames_.empty() && pick(2) == 0)
            throw Thrown();
    }

    bool isEnded(int id) const { return !live_.contains(id) || live_.at(id).ended; }

    void called(int id, int argument) {
        ASSERT_FALSE(frames_.empty());
        Frame & frame = *frames_.back();
        EXPECT_EQ(argument, frame.signal);
        EXPECT_FALSE(frame.signalDied);
        while (frame.next < frame.order.size() && isEnded(frame.order[frame.next]))
            ++frame.next;
        ASSERT_LT(frame.next, frame.order.size());
        EXPECT_EQ(frame.order[frame.next++], id);
        struct Standing {
            int & count;
            explicit Standing(int & c) : count(c) { ++count; }
            ~Standing() { --count; }
        } const standing(live_.at(id).standing);
        for (int i = pick(4); i > 0; --i) {
            act();
            checkCounts();
        }
        if (pick(10) == 0)
            throw Thrown();
    }

    // Ended links are counted by their signal for as long as an emission stands on them.
    void checkCounts() {
        for (auto const & [signal, model] : signals_) {
            int expected = 0;
            for (int id : model.links)
                expected += live_.contains(id) && (!live_.at(id).ended || live_.at(id).standing > 0);
            EXPECT_EQ(model.real->numConnections(), expected);
            EXPECT_EQ(model.real->isConnected(), expected > 0);
        }
        for (auto const & [id, link] : live_) {
            EXPECT_TRUE(!link.ended || link.standing > 0) << "callback " << id << " outlived its connection";
            if (signals_.contains(link.signal)) {
                EXPECT_EQ(signals_.at(link.signal).real->isConnected(link.connection), !link.ended);
            }
        }
    }

    std::mt19937 random_;
    int nextId_ = 0;
    std::map<int, Link> live_; // links whose callback object exists
    std::map<int, ModelSignal> signals_;
    std::map<int, std::unique_ptr<qvRTB::SignalClient>> clients_;
    std::vector<Frame *> frames_;
};

TEST(SignalModel, RandomDeathsDuringNestedEmissions) {
    for (unsigned seed = 1; seed <= 400 && !::testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE(seed);
        World(seed).run(120);
    }
}

} // namespace
