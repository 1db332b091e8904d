// Random databases, rules and expressions, solved beside an enumeration that goes through all facts for every goal and
// keeps all variables in a plain store.

#include "Base/Logic/qvPlgIntegerValue.h"
#include "Base/Logic/qvPlgQuery.h"
#include "Base/Logic/qvPlgStringValue.h"
#include "Support/SeededRandom.h"

#include <algorithm>
#include <compare>
#include <memory>
#include <set>
#include <sstream>
#include <vector>

namespace {

using namespace qvPlg;
using qvString::CString;
using qvTest::SeededRandom;

constexpr int ruleCount = 3;     // rule i may use those below it
constexpr int variableCount = 5; // of the query
constexpr int localCount = 2;    // of a rule

struct Datum {
    bool isText = false;
    int number = 0; // the number, or the letter of the text
    auto operator<=>(Datum const &) const = default;
};

struct Cell : Datum {
    bool isNull = false;
};

using Store = std::vector<Cell>;

struct Node {
    enum Kind { match, conjunction, disjunction, negation, equality } kind = match;
    char predicate = 'p';
    std::vector<int> terms; // places in the frame: parameters or variables first, then constants
    std::vector<std::unique_ptr<Node>> parts;
};

// What places mean: the first `slots` are parameters and variables, those behind are constants of the world.
std::vector<Datum> const constants = {{false, 0}, {false, 1}, {false, 2}, {true, 'a'}, {true, 'b'}};

struct ModelFact {
    char predicate;
    std::vector<Datum> values;
    auto key() const { return std::tuple(predicate, values.size(), values); }
    bool operator<(ModelFact const & other) const { return key() < other.key(); }
};

qv::Reference<Value> newValue(Datum const & datum) {
    if (datum.isText)
        return new StringValue(CString(char(datum.number)));
    return new IntegerValue(datum.number);
}

struct World {
    std::set<ModelFact> facts;
    Interpreter interpreter;
    std::unique_ptr<Node> rules[ruleCount];
    bool ruleExists[ruleCount];
};
World * world; // for the functions of the rules

// The arity says which rule it is: the predicate is "r" with 1, 2 or 3 arguments.
int slotsOfRule(int rule) { return rule + 1 + localCount; }
bool isTextSlot(int slot) { return slot % 3 == 2; }

// ---- The expression for the library

Expression build(Node const & node, std::vector<qv::Reference<Value>> const & slots) {
    auto const term = [&](std::size_t i) {
        std::size_t const place = std::size_t(node.terms[i]);
        return place < slots.size() ? slots[place] : newValue(constants[place - slots.size()]);
    };
    switch (node.kind) {
    case Node::match: {
        qv::vector<qv::Reference<Value>> values;
        for (std::size_t i = 0; i < node.terms.size(); ++i)
            values.append(term(i));
        return invokeMatch(Fact(node.predicate, values));
    }
    case Node::equality:
        return term(0) == term(1);
    case Node::negation:
        return !build(*node.parts[0], slots);
    case Node::conjunction:
        return build(*node.parts[0], slots) & build(*node.parts[1], slots);
    default:
        return build(*node.parts[0], slots) || build(*node.parts[1], slots);
    }
}

Expression instantiate(qv::vector<qv::Reference<Value>> const & values) {
    std::vector<qv::Reference<Value>> slots(values.begin(), values.end());
    for (int i = values.size(); i < slotsOfRule(values.size() - 1); ++i)
        slots.push_back(isTextSlot(i) ? qv::Reference<Value>(new StringValue) : new IntegerValue);
    return build(*world->rules[values.size() - 1], slots);
}

// ---- The enumeration

std::vector<Store> solutions(Node const & node, std::vector<int> const & slots, Store const & store);

std::vector<Store> solutionsOfRule(std::vector<int> const & goal, Store const & store) {
    std::size_t const rule = goal.size() - 1;
    if (!world->ruleExists[rule])
        return {};
    Store inner = store;
    std::vector<int> slots = goal;
    for (int i = int(goal.size()); i < slotsOfRule(int(rule)); ++i) {
        slots.push_back(int(inner.size()));
        inner.push_back({{isTextSlot(i), 0}, true});
    }
    std::vector<Store> found = solutions(*world->rules[rule], slots, inner);
    for (Store & solution : found)
        solution.resize(store.size());
    return found;
}

std::vector<Store> solutionsOfGoal(char predicate, std::vector<int> const & goal, Store const & store) {
    std::vector<Store> found;
    for (ModelFact const & fact : world->facts) {
        bool matches = fact.predicate == predicate && fact.values.size() == goal.size();
        for (std::size_t i = 0; matches && i < goal.size(); ++i) {
            Cell const & cell = store[std::size_t(goal[i])];
            matches = cell.isNull ? cell.isText == fact.values[i].isText : Datum(cell) == fact.values[i];
        }
        if (!matches)
            continue;
        Store & solution = found.emplace_back(store);
        for (std::size_t i = 0; i < goal.size(); ++i) {
            if (Cell & cell = solution[std::size_t(goal[i])]; cell.isNull)
                cell = {fact.values[i], false};
        }
    }
    return !found.empty() || predicate != 'r' ? found : solutionsOfRule(goal, store);
}

std::vector<Store> solutions(Node const & node, std::vector<int> const & slots, Store const & store) {
    std::vector<int> goal;
    for (int term : node.terms)
        goal.push_back(std::size_t(term) < slots.size() ? slots[std::size_t(term)] : term - int(slots.size()));
    switch (node.kind) {
    case Node::match:
        return solutionsOfGoal(node.predicate, goal, store);
    case Node::equality:
        return std::vector<Store>(Datum(store[std::size_t(goal[0])]) == Datum(store[std::size_t(goal[1])]), store);
    case Node::negation:
        return std::vector<Store>(solutions(*node.parts[0], slots, store).empty(), store);
    case Node::disjunction: {
        std::vector<Store> const left = solutions(*node.parts[0], slots, store);
        return left.empty() ? solutions(*node.parts[1], slots, store) : left;
    }
    default:
        std::vector<Store> found;
        for (Store const & left : solutions(*node.parts[0], slots, store)) {
            for (Store const & both : solutions(*node.parts[1], slots, left))
                found.push_back(both);
        }
        return found;
    }
}

// ---- Generators

class Generator {
public:
    Generator(SeededRandom & random, int slots, int rulesBelow)
        : random_(random), slots_(slots), rulesBelow_(rulesBelow) {}

    // `bound` are the slots that are bound for sure where the expression runs; it returns with those behind it.
    std::unique_ptr<Node> expression(int depth, std::set<int> & bound) {
        auto node = std::make_unique<Node>();
        int const choice = depth == 0 ? 9 : random_.below(10);
        if (choice < 4) {
            node->kind = Node::conjunction;
            node->parts.push_back(expression(depth - 1, bound));
            node->parts.push_back(expression(depth - 1, bound));
        } else if (choice < 6) {
            node->kind = Node::disjunction;
            std::set<int> left = bound, right = bound;
            node->parts.push_back(expression(depth - 1, left));
            node->parts.push_back(expression(depth - 1, right));
            std::set_intersection(left.begin(), left.end(), right.begin(), right.end(),
                                  std::inserter(bound, bound.end()));
        } else if (choice < 7) {
            node->kind = Node::negation;
            std::set<int> inner = bound;
            node->parts.push_back(expression(depth - 1, inner));
        } else if (choice < 8 && !bound.empty()) {
            node->kind = Node::equality;
            node->terms = {*std::next(bound.begin(), random_.below(int(bound.size()))),
                           random_.oneIn(2) ? constant() : *bound.begin()};
            if (random_.oneIn(2))
                node = negated(std::move(node));
        } else {
            goal(*node, bound);
        }
        return node;
    }

private:
    int constant() { return slots_ + random_.below(int(constants.size())); }

    static std::unique_ptr<Node> negated(std::unique_ptr<Node> inner) {
        auto node = std::make_unique<Node>();
        node->kind = Node::negation;
        node->parts.push_back(std::move(inner));
        return node;
    }

    void goal(Node & node, std::set<int> & bound) {
        bool const isRule = rulesBelow_ > 0 && random_.oneIn(2);
        node.predicate = isRule ? 'r' : random_.oneIn(2) ? 'p' : 'q';
        for (int arity = isRule ? 1 + random_.below(rulesBelow_) : random_.below(4); arity > 0; --arity)
            node.terms.push_back(random_.oneIn(4) ? constant() : random_.below(slots_));
        if (isRule)
            return; // a rule may leave a variable alone
        for (int term : node.terms) {
            if (term < slots_)
                bound.insert(term);
        }
    }

    SeededRandom & random_;
    int slots_;
    int rulesBelow_;
};

void makeWorld(SeededRandom & random) {
    for (int i = random.below(40); i > 0; --i) {
        ModelFact fact{random.oneIn(20) ? 'r' : random.oneIn(2) ? 'p' : 'q', {}};
        qv::vector<qv::Reference<Value>> values;
        for (int arity = random.below(4); arity > 0; --arity) {
            fact.values.push_back(constants[std::size_t(random.below(int(constants.size())))]);
            values.append(newValue(fact.values.back()));
        }
        world->facts.insert(fact);
        world->interpreter.getDB().addFact(Fact(fact.predicate, values));
    }
    EXPECT_EQ(world->interpreter.getDB().getFacts().size(), int(world->facts.size()));
    for (int rule = 0; rule < ruleCount; ++rule) {
        std::set<int> bound;
        world->rules[rule] = Generator(random, slotsOfRule(rule), rule).expression(2, bound);
        world->ruleExists[rule] = !random.oneIn(4);
        if (world->ruleExists[rule])
            world->interpreter.getRules().insert(Rule("r", rule + 1, &instantiate));
    }
}

TEST(LogicModel, RandomExpressions) {
    SeededRandom random;
    int found = 0;
    for (int round = 0; round < 8000 && !::testing::Test::HasFailure(); ++round) {
        World here;
        world = &here;
        makeWorld(random);
        std::set<int> bound;
        std::vector<qv::Reference<Value>> variables;
        Store store; // the constants, then the variables
        for (Datum const & datum : constants)
            store.push_back({datum, false});
        std::vector<int> slots;
        for (int i = 0; i < variableCount; ++i) {
            bool const isBound = random.oneIn(4);
            slots.push_back(int(store.size()));
            store.push_back({{isTextSlot(i), isTextSlot(i) ? 'a' : 1}, !isBound});
            variables.push_back(newValue(store.back()));
            if (isBound)
                bound.insert(i);
            else
                variables.back()->setNull();
        }
        std::unique_ptr<Node> const node = Generator(random, variableCount, ruleCount).expression(3, bound);
        Expression const expression = build(*node, variables);

        auto const shown = [&] {
            std::ostringstream text;
            for (auto const & variable : variables)
                text << *variable << ' ';
            return text.str();
        };
        auto const expected = [&](Store const & solution) {
            std::ostringstream text;
            for (int slot : slots) {
                Cell const & cell = solution[std::size_t(slot)];
                if (cell.isNull)
                    text << "(null) ";
                else if (cell.isText)
                    text << char(cell.number) << ' ';
                else
                    text << cell.number << ' ';
            }
            return text.str();
        };
        std::string const before = shown();
        for (int run = 0; run < 2; ++run) { // an expression serves any number of queries
            Query query(expression);
            for (Store const & solution : solutions(*node, slots, store)) {
                ASSERT_TRUE(query.solve(here.interpreter));
                ASSERT_EQ(shown(), expected(solution));
                ++found;
            }
            ASSERT_FALSE(query.solve(here.interpreter));
            ASSERT_EQ(shown(), before);
            ASSERT_FALSE(query.solve(here.interpreter));
        }
    }
    EXPECT_GT(found, 4000);
}

} // namespace
