#include "UndoSupport.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace {

using namespace qvTest;

using Log = std::vector<std::string>;

// Writes down what happens to it, under its name.
struct Probe : qvUndo::Command {
    Log & log;
    std::string const name;
    std::function<bool()> doing = [] { return true; };
    std::function<void(std::string const &)> meanwhile = [](std::string const &) {};
    int asked = 0;
    Probe(Log & l, qvUndo::Group * group, std::string const & n = "") : Command(group, nullptr), log(l), name(n) {}
    ~Probe() override { happen("end"); }
    bool happen(std::string const & what) {
        log.push_back(what + name);
        meanwhile(what);
        return true;
    }
    bool doOperation() override { return happen("do") && doing(); }
    bool undoOperation() override { return happen("undo"); }
    int getNumBytesUsed() override {
        ++asked;
        return Command::getNumBytesUsed();
    }
    void commit() override { happen("commit"); }
};

TEST(UndoCommand, IsAStateMachine) {
    Trace trace;
    Log log;
    {
        Probe command(log, nullptr);
        EXPECT_TRUE(command.isValid() && !command.hasBeenDone() && !command.hasBeenUndone());
        EXPECT_TRUE(command.doIt() && command.doIt() && command.undoIt() && command.undoIt() && command.doIt());
        EXPECT_EQ(log, (Log{"do", "undo", "do"}));
        EXPECT_TRUE(command.hasBeenDone() && command.hasBeenUndone() && command.lastWasDoIt());
        EXPECT_TRUE(command.undoIt());
        command.doing = [] { return false; };
        EXPECT_FALSE(command.doIt());
        EXPECT_TRUE(command.lastWasDoIt() && !command.lastWasUndoIt() && !command.isValid());
        log.clear();
        EXPECT_FALSE(command.doIt() || command.undoIt());
        EXPECT_EQ(log, Log());
        EXPECT_EQ(command.getID(), 0);
        EXPECT_STREQ(command.getName(), "noname");
        EXPECT_EQ(command.getNumBytesUsed(), 1024);
        trace.news();
    }
    EXPECT_EQ(trace.news(), "") << "a free command ends without a line";
    Probe backwards(log, nullptr);
    EXPECT_TRUE(backwards.undoIt() && backwards.lastWasUndoIt() && !backwards.hasBeenDone());
}

TEST(UndoTrace, LinesAreCutAndFilesAppended) {
    std::string path;
    {
        Trace trace;
        path = trace.path();
        for (std::size_t length : {1022U, 1023U, 1024U, 5000U}) {
            qvUndoReport("%s", std::string(length, 'x').c_str());
            EXPECT_EQ(trace.news(), std::string(std::min<std::size_t>(length, 1023), 'x'));
        }
        qvUndoReportInit(path.c_str());
        EXPECT_EQ(trace.news(), "\n------------------------------\n\n");
        qvUndoReportInit((path + "/no/such").c_str());
        qvUndoReport("lost\n");
        EXPECT_EQ(trace.news(), "");
    }
    Log log;
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    EXPECT_EQ(manager->getMaxBytes(), 10000000);
    EXPECT_EQ(manager->getMaxGroups(), 0);
    manager->setMaxBytes(0);
    auto * const silent = new Probe(log, manager->newGroup("A", false));
    EXPECT_TRUE(silent->doIt() && manager->undoIt() && manager->doIt());
    EXPECT_EQ(silent->asked, 0) << "no argument of a line is computed without a trace";
}

// What an operation may do to its own manager, group and command.
TEST(UndoManager, OperationsThatComeBack) {
    Log log;
    qvUndo::Manager * const first = qvUndo::newManager();
    qvUndo::installManager(first);
    EXPECT_EQ(qvUndo::getInstalledManager(), first);
    first->setMaxGroups(1);
    qvUndo::Group * const group = first->newGroup(nullptr, false);
    EXPECT_STREQ(group->getName(), "");
    auto * const command = new Probe(log, group);
    auto * later = command;
    command->doing = [&] {
        first->clearAllGroups();
        EXPECT_EQ(first->newGroup("would drop this step", false), nullptr);
        if (later == command)
            later = new Probe(log, group);
        return true;
    };
    EXPECT_TRUE(command->doIt()) << "also when it is called directly";
    EXPECT_FALSE(first->isBusy());
    EXPECT_TRUE(later->doIt() && first->undoIt());
    EXPECT_EQ(group->getNumCommands(), 2);

    // The manager is replaced while it works: it ends its work first.
    log.clear();
    command->doing = [] {
        qvUndo::installManager(nullptr);
        return true;
    };
    EXPECT_TRUE(first->doIt());
    EXPECT_EQ(log, (Log{"do", "do", "commit", "commit", "end", "end"}));
    EXPECT_EQ(qvUndo::getInstalledManager(), nullptr);
}

// A listener that throws when it hears of the beginning.
TEST(UndoManager, EveryBeginningHasItsEnd) {
    std::vector<bool> busy; // outlives the manager, which emits to its end
    bool throws = true;
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    manager->newGroup("A", false);
    manager->getBusySignal().addCallback([&](bool on) {
        if (on && throws)
            throw std::runtime_error("no");
    });
    manager->getBusySignal().addCallback([&](bool on) { busy.push_back(on); }); // is called first
    EXPECT_THROW(manager->undoIt(), std::runtime_error);
    EXPECT_EQ(busy, (std::vector<bool>{true, false}));
    EXPECT_TRUE(!manager->isBusy() && manager->canUndo()) << "and nothing is undone or dropped";
    throws = false;
}

TEST(UndoManager, WhatAnOperationThrowsDropsTheHistory) {
    Log log;
    std::vector<bool> busy; // outlives the manager, which emits to its end
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    auto * const command = new Probe(log, manager->newGroup("A", false));
    auto * const neighbour = new Probe(log, manager->getGroup(-1));
    EXPECT_TRUE(command->doIt() && neighbour->doIt() && manager->undoIt());
    neighbour->doing = []() -> bool { throw std::runtime_error("no"); };
    manager->getBusySignal().addCallback([&](bool on) { busy.push_back(on); });
    log.clear();
    EXPECT_THROW(manager->doIt(), std::runtime_error);
    EXPECT_EQ(log, (Log{"do", "do", "commit", "commit", "end", "end"}));
    EXPECT_EQ(busy, (std::vector<bool>{true, true, false, false}));
    EXPECT_FALSE(manager->isBusy());
    EXPECT_EQ(manager->getNumGroups(false), 0);
    EXPECT_NE(manager->newGroup("B", false), nullptr);
}

// The beginning of a step is told before it is known what there is to do: a listener may delete that.
TEST(UndoManager, GroupsThatGoBeforeTheyAreReached) {
    for (bool const undo : {true, false}) {
        Log log;
        std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
        qvUndo::Group * group = manager->newGroup("A", false);
        new Probe(log, group);
        EXPECT_TRUE(undo || manager->undoIt());
        manager->getBusySignal().addCallback([&](bool) { delete std::exchange(group, nullptr); });
        EXPECT_TRUE(undo ? manager->undoIt() : manager->doIt());
        EXPECT_TRUE(!manager->canUndo() && !manager->canDo());
        EXPECT_EQ(log.back(), "end");
    }
}

// The second of three commands deletes the first or the last by hand: nobody else is passed over.
TEST(UndoManager, CommandsThatGoUnderALoop) {
    for (std::string const when : {"do", "undo", "commit", "end"}) {
        for (int const victim : {1, 3}) {
            Log log, expected;
            std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
            qvUndo::Group * const group = manager->newGroup("A", false);
            Probe * commands[4] = {};
            for (int i = 1; i <= 3; ++i)
                commands[i] = new Probe(log, group, std::to_string(i));
            bool const isThere = when != "end" || victim == 3;
            commands[2]->meanwhile = [&](std::string const & what) {
                EXPECT_TRUE(what[0] == 'd' || what[0] == 'u' || !(group->doIt() || group->undoIt()));
                if (what == when && isThere)
                    delete commands[victim];
            };
            EXPECT_TRUE(group->doIt() && group->undoIt());
            manager->clearAllGroups();

            std::vector<int> alive{1, 2, 3};
            for (std::string const what : {"do", "undo", "commit", "end"}) {
                std::vector<int> order = alive;
                if (what == "undo")
                    std::reverse(order.begin(), order.end());
                for (int const number : order) {
                    if (std::find(alive.begin(), alive.end(), number) == alive.end())
                        continue;
                    expected.push_back(what + std::to_string(number));
                    if (number == 2 && what == when && isThere) {
                        expected.push_back("end" + std::to_string(victim));
                        std::erase(alive, victim);
                    }
                }
            }
            EXPECT_EQ(log, expected) << when << victim;
        }
    }
}

// A group of another module: only it knows what it owns.
struct ForeignGroup : qvUndo::Group {
    std::vector<qvUndo::Command *> commands;
    ForeignGroup() : Group(nullptr) {}
    ~ForeignGroup() override {
        for (qvUndo::Command * command : commands)
            delete command;
    }
    bool doIt() override { return false; }
    bool undoIt() override { return false; }
    void addCommand(qvUndo::Command * command) override { commands.push_back(command); }
    qvUndo::Command * getCommand(int) override { return nullptr; }
    int getNumCommands() override { return int(commands.size()); }
    int getNumBytesUsed() override { return 0; }
    char const * getName() override { return ""; }
    int getID() override { return 0; }
    int nextCommandID() override { return 1; }
    void setPrunable(bool) override {}
    bool isPrunable() override { return true; }
    bool isDynamic() override { return false; }
    void setDynamic(bool) override {}
    void declarePointer(void *) override {}
    bool declaresPointer(void *) override { return false; }
    void pointerDestroyed(void *) override {}
    void groupHook() override {}
};

// Commands deleted by hand leave their group; commands that meet a dying group stay free.
TEST(UndoManager, OwnershipIsNeverDoubled) {
    Log log;
    std::unique_ptr<Probe> late;
    std::unique_ptr<qvUndo::Manager> manager(qvUndo::newManager());
    qvUndo::Group * const a = manager->newGroup("A", false);
    qvUndo::Group * const b = manager->newGroup("B", false);
    auto * const shared = new Probe(log, a);
    delete new Probe(log, a);
    b->addCommand(shared);
    shared->addToGroup(b);
    ForeignGroup foreign;
    auto * const elsewhere = new Probe(log, &foreign);
    a->addCommand(elsewhere);
    elsewhere->addToGroup(a);
    EXPECT_EQ(foreign.getNumCommands(), 1);
    EXPECT_EQ(a->getNumCommands(), 1);
    EXPECT_EQ(b->getNumCommands(), 0);
    EXPECT_EQ(a->getCommand(-1), shared);
    EXPECT_EQ(a->getCommand(1), nullptr);
    EXPECT_EQ(a->getCommand(-2), nullptr);
    manager->groupDestroyed(a); // it is not
    EXPECT_EQ(manager->getNumGroups(false), 2);
    manager->getGroupDestroyedSignal().addCallback(
        [&](qvUndo::Group * group) { late = std::make_unique<Probe>(log, group); });
    manager->clearAllGroups();
    EXPECT_EQ(late->getID(), 0);
}

} // namespace
