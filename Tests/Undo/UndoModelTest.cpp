// Random histories beside a model that does everything step by step and knows the whole trace: the lines of the
// library, and between them those that commands and listeners of signals write themselves.

#include "Support/SeededRandom.h"
#include "UndoSupport.h"

#include <algorithm>
#include <climits>
#include <set>
#include <vector>

namespace {

using namespace qvTest;

enum Last { neither, aDo, anUndo };

struct World;

struct TestCommand : qvUndo::Command {
    World & world;
    int number;
    int bytes;
    TestCommand(World & w, qvUndo::Group * group, int n, int b);
    ~TestCommand() override;
    bool doOperation() override;
    bool undoOperation() override;
    int getNumBytesUsed() override { return bytes; }
    void commit() override;
};

struct World : qvRTB::SignalClient {
    SeededRandom random;
    Trace trace;
    qvUndo::Manager * manager = qvUndo::newManager();
    int alive = 0;
    int operationsUntilFailure = 0; // 0: none fails

    bool operate(char const * what, int number) {
        qvUndoReport("%s %d\n", what, number);
        probe();
        return --operationsUntilFailure != 0;
    }

    // At work the manager keeps its history: none of these may do or trace anything.
    void probe() {
        if (!random.oneIn(8))
            return;
        EXPECT_EQ(manager->newGroup("no", false), nullptr);
        EXPECT_FALSE(manager->doIt());
        EXPECT_FALSE(manager->undoIt());
        manager->clearAllGroups();
        manager->deleteLastGroup();
        manager->setMaxBytes(manager->getMaxBytes());
        int const limit = manager->getMaxGroups();
        manager->setMaxGroups(1);
        manager->setMaxGroups(limit);
        if (qvUndo::Group * const group = manager->getCurrentGroup()) // not one that is being destroyed
            group->getNumBytesUsed();
    }
    void busy(bool on) {
        qvUndoReport("busy %d\n", on);
        probe();
    }
    void gone(qvUndo::Group * group) {
        qvUndoReport("gone %s\n", group->getName());
        EXPECT_EQ(group->getNumCommands(), 0);
        probe();
    }
};

TestCommand::TestCommand(World & w, qvUndo::Group * group, int n, int b)
    : Command(group, formatted("c%d", n).c_str()), world(w), number(n), bytes(b) {
    ++world.alive;
}
TestCommand::~TestCommand() {
    qvUndoReport("end %d\n", number);
    --world.alive;
}
bool TestCommand::doOperation() { return world.operate("do", number); }
bool TestCommand::undoOperation() { return world.operate("undo", number); }
void TestCommand::commit() {
    qvUndoReport("commit %d\n", number);
    world.probe();
}

struct ModelCommand {
    TestCommand * real;
    int number;
    int bytes;
    Last last = neither;
    bool valid = true;
};

struct ModelGroup {
    qvUndo::Group * real;
    int id;
    std::string name;
    bool dynamic;
    bool prunable = true;
    bool valid = true;
    Last last = neither;
    std::vector<ModelCommand> commands;
    std::set<void *> pointers;

    long long bytes() const {
        long long sum = 0;
        for (ModelCommand const & command : commands)
            sum += command.bytes;
        return sum;
    }
    int shownBytes() const { return int(std::min<long long>(bytes(), INT_MAX)); }
};

class Model {
public:
    std::string expected;
    std::vector<ModelGroup> queue;
    std::size_t cursor = 0;
    int maxGroups = 0;
    int maxBytes = 10000000;
    int operationsUntilFailure = 0;

    template <class... Args>
    void line(char const * format, Args... args) {
        expected += formatted(format, args...);
    }

    bool runCommand(ModelCommand & c, Last what) {
        if (!c.valid || c.last == what)
            return c.valid;
        bool const doing = what == aDo;
        line("    %c qvUndo::Command: %s (c%d, 0x%llx), %d bytes\n", doing ? '+' : '-', doing ? "doIt" : "undoIt",
             c.number, addressOf(c.real), c.bytes);
        line(doing ? "do %d\n" : "undo %d\n", c.number);
        c.last = what;
        c.valid = --operationsUntilFailure != 0;
        if (!c.valid)
            line("    - qvUndo::Command: %s of c%d returned failure.  Marking invalid.\n", doing ? "'do'" : "undo",
                 c.number);
        return c.valid;
    }

    bool runGroup(ModelGroup & g, Last what) {
        bool const doing = what == aDo;
        char const * const verb = doing ? "doIt" : "undoIt";
        int const count = int(g.commands.size());
        line("  %c qvUndo::Group: %s() - (%s) %d commands %d bytes.\n", doing ? '+' : '-', verb, g.name.c_str(), count,
             g.shownBytes());
        if (!g.valid) {
            line("  ! qvUndo::Group: %s() - (%s) invalid group.\n", verb, g.name.c_str());
            return false;
        }
        if (g.last == what)
            return true;
        for (int i = 0; i < count; ++i) {
            int const at = doing ? i : count - 1 - i;
            ModelCommand & c = g.commands[std::size_t(at)];
            if (runCommand(c, what))
                continue;
            line("  ! qvUndo::Group: '%s' of command %d (c%d) returnedfailure status\n", doing ? "do" : "undo", at,
                 c.number);
            line("  ! qvUndo::Group: marking group (%s) invalid.\n", g.name.c_str());
            return g.valid = false;
        }
        g.last = what;
        return true;
    }

    bool run(Last what) {
        bool const doing = what == aDo;
        char const sign = doing ? '+' : '-';
        char const * const verb = doing ? "doIt" : "undoIt";
        for (;;) {
            line("%c qvUndo::Manager: %s() - %d groups, %lld bytes used\n", sign, verb, int(queue.size()),
                 std::min<long long>(bytes(), INT_MAX));
            if (cursor == (doing ? queue.size() : 0)) {
                line("%c qvUndo::Manager: %s() - at %s of queue.\n", sign, verb, doing ? "end" : "beginning");
                return true;
            }
            line("busy 1\n");
            std::size_t commands = 0;
            bool good = true;
            for (bool more = true; more && good;) {
                std::size_t const at = doing ? cursor : --cursor;
                commands += queue[at].commands.size();
                good = runGroup(queue[at], what);
                if (good && doing)
                    more = ++cursor != queue.size() && queue[cursor].dynamic;
                else
                    more = cursor != 0 && queue[at].dynamic;
            }
            if (!good) {
                line("qvUndo::Manager: currentGroupIsInvalid()\n");
                clear();
            }
            line("busy 0\n");
            if (!good || commands)
                return good;
            line("%c qvUndo::Manager: %s() - empty group, %s again.\n", sign, verb, doing ? "doing" : "undoing");
        }
    }

    void destroy(std::size_t index) {
        ModelGroup const g = queue[index];
        line("  qvUndo::Group: delete group (%s) - %d bytes\n", g.name.c_str(), g.shownBytes());
        line("busy 1\n");
        for (ModelCommand const & c : g.commands)
            line("commit %d\n", c.number);
        for (ModelCommand const & c : g.commands) {
            line("end %d\n", c.number);
            line("    qvUndo::Command: delete (c%d, 0x%llx)\n", c.number, addressOf(c.real));
        }
        line("gone %s\nbusy 0\n", g.name.c_str());
        queue.erase(queue.begin() + std::ptrdiff_t(index));
        cursor -= cursor > index;
    }

    void clear() {
        line("qvUndo::Manager: clearAllGroups()\n");
        while (!queue.empty())
            destroy(0);
    }

    void prepareNewGroup(std::string const & name, bool dynamic) {
        line("--------------------------------------------------------\n");
        line("qvUndo::newGroup (%s, dynamic = %d)\n", name.c_str(), dynamic);
        if (cursor != queue.size())
            line("qvUndo::Manager: pruneUndoneGroups()\n");
        while (cursor != queue.size())
            destroy(cursor);
        line("qvUndo::Manager: pruneTrailingInvalidGroups()\n");
        while (!queue.empty() && !queue.back().valid && queue.back().prunable)
            destroy(queue.size() - 1);
        enforceLimits(1);
        line("  qvUndo::Group: new group (%s)\n", name.c_str());
    }

    void enforceLimits(int room) {
        while (maxGroups && !queue.empty() && steps() > maxGroups - room && queue[0].prunable)
            destroyOldestStep();
        while (maxBytes && !queue.empty() && bytes() > maxBytes && queue[0].prunable)
            destroyOldestStep();
        cursor = queue.size();
    }

    void destroyOldestStep() {
        bool const wasDynamic = queue[0].dynamic;
        destroy(0);
        while (!wasDynamic && !queue.empty() && queue[0].dynamic)
            destroy(0);
    }

    int steps() const {
        int count = 0;
        for (std::size_t i = 0; i < queue.size(); ++i)
            count += i == 0 || !queue[i].dynamic;
        return count;
    }
    long long bytes() const {
        long long sum = 0;
        for (ModelGroup const & group : queue)
            sum += group.bytes();
        return sum;
    }
    bool isInCurrentStep(int id) const {
        for (std::size_t i = cursor; i > 0; --i) {
            if (queue[i - 1].id <= id)
                return true;
            if (!queue[i - 1].dynamic)
                return false;
        }
        return false;
    }
};

class Session {
public:
    Session() {
        world_.manager->getBusySignal().addCallback(&world_, &World::busy);
        world_.manager->getGroupDestroyedSignal().addCallback(&world_, &World::gone);
    }
    ~Session() {
        model_.clear();
        delete world_.manager;
        EXPECT_EQ(world_.trace.news(), model_.expected);
        EXPECT_EQ(world_.alive, 0);
    }

    void step() {
        int const failure = random_.oneIn(6) ? 1 + random_.below(6) : 0;
        world_.operationsUntilFailure = model_.operationsUntilFailure = failure;
        act();
        ASSERT_EQ(world_.trace.news(), model_.expected);
        model_.expected.clear();
        compareStates();
    }

private:
    void act() {
        std::size_t const any = model_.queue.empty() ? 0 : std::size_t(random_.below(int(model_.queue.size())));
        ModelGroup * const group = model_.queue.empty() ? nullptr : &model_.queue[any];
        int const choice = random_.below(100);
        if (choice < 25)
            return newGroup();
        if (choice < 45)
            return expectSame(real().undoIt(), model_.run(anUndo));
        if (choice < 62)
            return expectSame(real().doIt(), model_.run(aDo));
        if (choice < 66)
            return setLimits();
        if (choice < 70)
            return associate();
        if (choice < 72)
            return deleteLast();
        if (choice == 72) {
            real().clearAllGroups();
            return model_.clear();
        }
        if (choice < 78)
            return pointerDies(&pointers_[random_.below(4)]);
        if (group)
            changeGroup(*group, any, choice);
    }

    static void expectSame(bool is, bool shouldBe) { EXPECT_EQ(is, shouldBe); }

    void changeGroup(ModelGroup & group, std::size_t index, int choice) {
        if (choice < 80) {
            group.prunable = !group.prunable;
            group.real->setPrunable(group.prunable);
        } else if (choice < 82) {
            group.dynamic = !group.dynamic;
            group.real->setDynamic(group.dynamic);
        } else if (choice < 83) {
            group.valid = false;
            group.real->stateInvalid();
        } else if (choice < 86) {
            void * const pointer = random_.oneIn(4) ? nullptr : &pointers_[random_.below(4)];
            group.real->declarePointer(pointer);
            if (pointer)
                group.pointers.insert(pointer);
        } else if (choice < 93) {
            addCommand(group);
        } else if (choice < 96) {
            Last const what = random_.oneIn(2) ? aDo : anUndo;
            expectSame(what == aDo ? group.real->doIt() : group.real->undoIt(), model_.runGroup(group, what));
        } else if (choice < 97) {
            delete group.real;
            model_.destroy(index);
        } else {
            group.real->addCommand(model_.queue[0].real->getCommand(0)); // null, or in a group already
        }
    }

    void newGroup() {
        std::string const name = formatted("g%d", counter_++);
        bool const dynamic = random_.oneIn(3);
        qvUndo::Group * const group = real().newGroup(name.c_str(), dynamic);
        if (model_.maxGroups < 0)
            return expectSame(group == nullptr, true);
        model_.prepareNewGroup(name, dynamic);
        ASSERT_NE(group, nullptr);
        model_.queue.push_back({group, ++lastId_, name, dynamic, true, true, neither, {}, {}});
        model_.cursor = model_.queue.size();
        for (int i = random_.below(4); i > 0; --i)
            addCommand(model_.queue.back());
    }

    void addCommand(ModelGroup & group) {
        int const bytes = random_.oneIn(20) ? INT_MAX : random_.below(1000);
        bool const byConstructor = random_.oneIn(2);
        auto * const command = new TestCommand(world_, byConstructor ? group.real : nullptr, ++counter_, bytes);
        if (!byConstructor)
            group.real->addCommand(command);
        model_.line("    qvUndo::Command: new (c%d, 0x%llx)\n", counter_, addressOf(command));
        group.commands.push_back({command, counter_, bytes});
        EXPECT_EQ(command->getID(), int(group.commands.size()));
        if (!random_.oneIn(3))
            expectSame(command->doIt(), model_.runCommand(group.commands.back(), aDo));
    }

    void setLimits() {
        if (random_.oneIn(2))
            real().setMaxGroups(model_.maxGroups = random_.oneIn(10) ? -1 : random_.below(8));
        else
            real().setMaxBytes(model_.maxBytes = random_.oneIn(3)   ? 0
                                                 : random_.oneIn(3) ? INT_MAX
                                                                    : 2000 + random_.below(5000));
        if (model_.cursor == model_.queue.size())
            model_.enforceLimits(0);
    }

    void associate() {
        int const first = lastId_ - random_.below(12);
        int const last = first + random_.below(5) - 1;
        real().associateGroups(first, last);
        model_.line("qvUndo::Manager: associateGroups (%d, %d)\n", first, last);
        bool dynamic = false;
        for (ModelGroup & group : model_.queue) {
            if (group.id >= first && group.id <= last)
                group.dynamic = std::exchange(dynamic, true);
        }
    }

    void deleteLast() {
        real().deleteLastGroup();
        if (model_.cursor != model_.queue.size() || model_.queue.empty())
            return;
        model_.line("qvUndo::Manager: deleteLastGroup()\n");
        if (model_.queue.back().commands.empty())
            model_.destroy(model_.queue.size() - 1);
        else
            model_.clear();
    }

    void pointerDies(void * pointer) {
        real().pointerDestroyed(pointer);
        for (ModelGroup & group : model_.queue) {
            if (!group.pointers.contains(pointer))
                continue;
            model_.line("!   qvUndo::Group: pointer 0x%llx declared by group has been destroyed\n", addressOf(pointer));
            model_.line("!   qvUndo::Group: marking group (%s) invalid.\n", group.name.c_str());
            group.valid = false;
        }
    }

    void compareStates() {
        int const size = int(model_.queue.size());
        ASSERT_EQ(real().getNumGroups(false), size);
        EXPECT_EQ(real().getNumGroups(true), model_.steps());
        EXPECT_EQ(real().canUndo(), model_.cursor != 0);
        EXPECT_EQ(real().canDo(), model_.cursor != model_.queue.size());
        EXPECT_EQ(real().getCurrentGroup(),
                  model_.cursor == model_.queue.size() ? nullptr : model_.queue[model_.cursor].real);
        int const index = random_.below(2 * size + 4) - size - 2;
        EXPECT_EQ(real().getGroup(index), index >= -size && index < size
                                              ? model_.queue[std::size_t(index + (index < 0 ? size : 0))].real
                                              : nullptr);
        int const id = lastId_ + 2 - random_.below(10);
        EXPECT_EQ(real().isInCurrentStep(id), model_.isInCurrentStep(id));
        for (ModelGroup const & group : model_.queue) {
            EXPECT_EQ(group.real->isValid(), group.valid);
            EXPECT_EQ(group.real->lastWasDoIt(), group.last == aDo);
            EXPECT_EQ(group.real->lastWasUndoIt(), group.last == anUndo);
            EXPECT_EQ(real().findGroup(group.id), group.real);
            ASSERT_EQ(group.real->getNumCommands(), int(group.commands.size()));
            for (ModelCommand const & command : group.commands)
                EXPECT_EQ(command.real->isValid(), command.valid);
        }
    }

    qvUndo::Manager & real() { return *world_.manager; }

    World world_;
    SeededRandom & random_ = world_.random;
    Model model_;
    int counter_ = 0;
    int lastId_ = 0;
    char pointers_[4];
};

TEST(UndoModel, RandomHistoriesAndTheirTraces) {
    for (int round = 0; round < 20; ++round) {
        Session session;
        for (int i = 0; i < 500 && !::testing::Test::HasFailure(); ++i)
            session.step();
    }
}

} // namespace
