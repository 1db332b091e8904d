// The undo history beside the bare calls of its commands, and how its own cost grows.

#include "Base/Undo/qvUndoCommand.h"
#include "Base/Undo/qvUndoManager.h"

#include <benchmark/benchmark.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int commandsOfStep = 10;

class Add : public qvUndo::Command {
public:
    Add(qvUndo::Group * group, long & sum, int what) : Command(group, "add"), sum_(sum), what_(what) {}
    bool doOperation() override {
        sum_ += what_;
        return true;
    }
    bool undoOperation() override {
        sum_ -= what_;
        return true;
    }

private:
    long & sum_;
    int what_;
};

void appendStep(qvUndo::Manager & manager, long & sum) {
    qvUndo::Group * const group = manager.newGroup("step", false);
    for (int i = 0; i < commandsOfStep; ++i)
        (new Add(group, sum, i))->doIt();
}

// One iteration is an undo and a do.
void undoAndDo(benchmark::State & state, int groups) {
    long sum = 0;
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    manager->setMaxBytes(0);
    for (int i = 0; i < groups; ++i)
        appendStep(*manager, sum);
    for (auto _ : state) {
        manager->undoIt();
        manager->doIt();
        benchmark::ClobberMemory();
    }
}

void callOperations(benchmark::State & state) {
    long sum = 0;
    std::vector<std::unique_ptr<qvUndo::Command>> commands;
    for (int i = 0; i < commandsOfStep; ++i)
        commands.push_back(std::make_unique<Add>(nullptr, sum, i));
    for (auto _ : state) {
        bool good = true;
        for (std::size_t i = commands.size(); i-- > 0 && good;)
            good = commands[i]->undoOperation();
        for (std::size_t i = 0; i < commands.size() && good; ++i)
            good = commands[i]->doOperation();
        benchmark::DoNotOptimize(good);
        benchmark::ClobberMemory();
    }
}

// A group that is begun and deleted again behind a history of the given length.
void newGroup(benchmark::State & state, int groups, int maxGroups, int maxBytes) {
    long sum = 0;
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    manager->setMaxBytes(0);
    for (int i = 0; i < groups; ++i)
        appendStep(*manager, sum);
    manager->setMaxGroups(maxGroups);
    manager->setMaxBytes(maxBytes);
    for (auto _ : state) {
        benchmark::DoNotOptimize(manager->newGroup("group", false));
        manager->deleteLastGroup();
    }
}

// The same by hand: a vector of commands at the end of a vector of groups.
void newGroupByHand(benchmark::State & state, int groups) {
    struct Group {
        std::string name;
        std::vector<std::unique_ptr<qvUndo::Command>> commands;
    };
    long sum = 0;
    std::vector<std::unique_ptr<Group>> history;
    for (int i = 0; i < groups; ++i) {
        history.push_back(std::make_unique<Group>());
        for (int j = 0; j < commandsOfStep; ++j)
            history.back()->commands.push_back(std::make_unique<Add>(nullptr, sum, j));
    }
    for (auto _ : state) {
        history.push_back(std::make_unique<Group>());
        history.back()->name = "group";
        benchmark::DoNotOptimize(history.back().get());
        history.pop_back();
    }
}

void check() {
    long sum = 0;
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    appendStep(*manager, sum);
    bool good = sum == 45 && manager->undoIt() && sum == 0 && manager->doIt() && sum == 45;
    if (!good) {
        std::fprintf(stderr, "the history does not call its commands\n");
        std::abort();
    }
}

} // namespace

int main(int argc, char ** argv) {
    check();
    benchmark::RegisterBenchmark("undo and do a step|10 commands|qv", undoAndDo, 1);
    benchmark::RegisterBenchmark("undo and do a step|10 commands|virtual calls", callOperations);
    for (int groups : {100, 1000, 10000}) {
        std::string const behind = "behind " + std::to_string(groups) + " steps";
        auto const add = [&](std::string const & row, int maxGroups, int maxBytes) {
            benchmark::RegisterBenchmark((row + "|" + behind + "|qv").c_str(), newGroup, groups, maxGroups, maxBytes);
            benchmark::RegisterBenchmark((row + "|" + behind + "|by hand").c_str(), newGroupByHand, groups);
        };
        add("new group without limits", 0, 0);
        add("new group with a limit on steps", groups + 1, 0);
        add("new group with a limit on bytes", 0, INT_MAX);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
