#include "Base/Utility/qvUtilInitializer.h"

#include "Base/Containers/qvList.h"
#include "Base/Containers/qvVector.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qvUtil {

namespace {

using InitializerVector = qv::vector<Initializer *>;

struct Dependency {
    Initializer * dependent;
    Initializer * dependency;
};

// Objects of other source files and modules register while they are constructed, which may be before any object of
// this file is: plain pointers are there from the start.
constinit InitializerVector * pendingInitializers = nullptr;
constinit qv::list<Dependency> * dependencyPairs = nullptr;
constinit InitializerVector * initializedList = nullptr; // the latest first

template <class Container>
Container & existing(Container *& container) {
    if (!container)
        container = new Container;
    return *container;
}

int saturatingSum(int a, int b) {
    return a > std::numeric_limits<int>::max() - b ? std::numeric_limits<int>::max() : a + b;
}

} // namespace

// The weight of an initializer is the number of ways that lead to it from registered ones along the dependencies. They
// are not walked one by one, since their number doubles with each layer of diamonds: a depth-first search finds an
// order in which dependencies stand in front, and the weights are passed on in the opposite order.
class Initializer::Weights {
public:
    Weights(InitializerVector const & pending, qv::list<Dependency> const & pairs) {
        for (Initializer * initializer : pending)
            ++nodes_[indexOf(initializer)].weight;
        for (Dependency const & pair : pairs) {
            std::size_t const dependent = indexOf(pair.dependent);
            std::size_t const dependency = indexOf(pair.dependency);
            nodes_[dependent].dependencies.push_back(dependency);
        }
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            if (nodes_[i].weight > 0)
                rankFrom(i);
    }

    // Adds the weights to the counts.
    void pass() {
        for (auto i = order_.rbegin(); i != order_.rend(); ++i) {
            Node const & node = nodes_[*i];
            node.initializer->count_ = saturatingSum(node.initializer->count_, node.weight);
            for (std::size_t dependency : node.dependencies)
                if (nodes_[dependency].rank < node.rank)
                    nodes_[dependency].weight = saturatingSum(nodes_[dependency].weight, node.weight);
        }
    }

    // The highest count first. Counts that are too large for their type are equal, and then the order decides.
    void sort(InitializerVector & pending) const {
        std::sort(pending.begin(), pending.end(), [this](Initializer const * a, Initializer const * b) {
            return a->count_ != b->count_ ? a->count_ > b->count_ : rankOf(a) < rankOf(b);
        });
    }

    bool hasCycle() const { return hasCycle_; }

private:
    static constexpr std::size_t unranked = std::numeric_limits<std::size_t>::max();
    static constexpr std::size_t open = unranked - 1; // its dependencies are being ranked

    struct Node {
        Initializer * initializer;
        int weight = 0;
        std::size_t rank = unranked;
        std::vector<std::size_t> dependencies = {};
    };

    std::size_t indexOf(Initializer * initializer) {
        auto const [place, isNew] = indexes_.try_emplace(initializer, nodes_.size());
        if (isNew)
            nodes_.push_back({initializer});
        return place->second;
    }

    std::size_t rankOf(Initializer const * initializer) const { return nodes_[indexes_.at(initializer)].rank; }

    // A dependency that is still open leads back to itself. Its pair takes no part in the weights.
    void rankFrom(std::size_t root) {
        struct Step {
            std::size_t node;
            std::size_t next = 0;
        };
        if (nodes_[root].rank != unranked)
            return;
        std::vector<Step> path{{root}};
        nodes_[root].rank = open;
        while (!path.empty()) {
            Step & step = path.back();
            Node & node = nodes_[step.node];
            if (step.next == node.dependencies.size()) {
                node.rank = order_.size();
                order_.push_back(step.node);
                path.pop_back();
                continue;
            }
            std::size_t const dependency = node.dependencies[step.next++];
            if (nodes_[dependency].rank == open)
                hasCycle_ = true;
            if (nodes_[dependency].rank != unranked)
                continue;
            nodes_[dependency].rank = open;
            path.push_back({dependency});
        }
    }

    std::vector<Node> nodes_;
    std::unordered_map<Initializer const *, std::size_t> indexes_;
    std::vector<std::size_t> order_; // of those that the search has met, dependencies in front
    bool hasCycle_ = false;
};

Initializer::Initializer() : file_("Components/Base/Utility/qvUtilInitializer"), count_(0) { addInit(); }

Initializer::~Initializer() = default;

void Initializer::finalize() {}

void Initializer::addInit() { existing(pendingInitializers).append(this); }

void Initializer::dependsOn(Initializer * other) {
    if (other)
        existing(dependencyPairs).append(Dependency{this, other});
}

Error Initializer::initializeAll() {
    if (!pendingInitializers)
        return Error();
    // Taken off first: an initializer that loads a module registers new ones while this run goes on.
    std::unique_ptr<InitializerVector> const pending(std::exchange(pendingInitializers, nullptr));
    std::unique_ptr<qv::list<Dependency>> const pairs(std::exchange(dependencyPairs, nullptr));
    bool hasCycle = false;
    if (pairs) {
        Weights weights(*pending, *pairs);
        weights.pass();
        weights.sort(*pending);
        hasCycle = weights.hasCycle();
    }
    if (!initializedList)
        existing(initializedList).reserve(pending->size());
    Error result;
    for (Initializer * initializer : *pending) {
        Error const outcome = initializer->initialize();
        InitializerVector & initialized = existing(initializedList);
        initialized.insert(initialized.begin(), initializer);
        if (outcome)
            result = outcome;
    }
    return hasCycle ? Error(1, "The dependencies of the initializers form a cycle.") : result;
}

void Initializer::finalizeAll() {
    std::unique_ptr<InitializerVector> const initialized(std::exchange(initializedList, nullptr));
    if (!initialized)
        return;
    for (Initializer * initializer : *initialized)
        initializer->finalize();
}

} // namespace qvUtil
