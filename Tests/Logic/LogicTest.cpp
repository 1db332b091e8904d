#include "Base/Logic/qvPlgClause.h"
#include "Base/Logic/qvPlgIntegerValue.h"
#include "Base/Logic/qvPlgQuery.h"
#include "Base/Logic/qvPlgStringValue.h"
#include "Support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <functional>
#include <pthread.h>
#include <sstream>
#include <string>

namespace {

using namespace qvPlg;
using Values = qv::vector<qv::Reference<Value>>;
using Number = qv::Reference<IntegerValue>;
using qvTest::ThrowsError;

Number number(int value) { return new IntegerValue(value); }
Number variable() { return new IntegerValue; }
qv::Reference<Value> text(char const * value) { return new StringValue(value); }

template <class T>
std::string shown(T const & value) {
    std::ostringstream stream;
    stream << value;
    return stream.str();
}

// The solutions of a query, as the values of the variables: "1 2, 3 4".
std::string solve(Interpreter const & interpreter, Expression const & expression, std::vector<Number> variables) {
    Query query(expression);
    std::string result;
    while (query.solve(interpreter)) {
        std::ostringstream solution;
        for (Number const & x : variables)
            solution << ' ' << *x;
        result += result.empty() ? solution.str().substr(1) : ',' + solution.str();
        if (result.size() > 1000)
            return "endless";
    }
    EXPECT_FALSE(query.solve(interpreter));
    return result;
}

// Runs a body on a thread with next to no stack.
void runOnSmallStack(std::function<void()> const & body) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, 128 * 1024);
    pthread_t thread;
    auto const call = [](void * argument) -> void * {
        (*static_cast<std::function<void()> const *>(argument))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, call, const_cast<std::function<void()> *>(&body)), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

TEST(LogicFact, OrderOfValuesAndFacts) {
    Number const null = number(5);
    null->setNull();
    Fact low("p", null), high("p", null), exact("p", null);
    low.setCompare(Fact::CompareLow);
    high.setCompare(Fact::CompareHigh);
    Fact const three("p", number(3)), five("p", number(5)), other("p", number(0), number(0)), q("q", number(0));
    struct {
        Fact a, b;
        int order;
    } const rows[] = {{low, three, -1},
                      {high, three, 1},
                      {exact, three, 1},
                      {exact, five, 0},
                      {three, five, -1},
                      {low, high, 0},
                      {low, other, -1},
                      {high, q, -1},
                      {other, five, 1},
                      {low, exact, 0},
                      {Fact("p", text("")), five, 1}};
    auto const sign = [](int order) { return (order > 0) - (order < 0); };
    for (auto const & row : rows) {
        EXPECT_EQ(sign(compare(row.a, row.b)), row.order) << row.a << row.b;
        EXPECT_EQ(sign(compare(row.b, row.a)), -row.order) << row.a << row.b;
    }
    EXPECT_EQ(compare(IntegerValue(9), StringValue("a")), -1);
    EXPECT_EQ(compare(StringValue("a"), IntegerValue(9)), 1);
    EXPECT_TRUE(Fact("p", Values()).allValuesBound());
    EXPECT_THAT([] { Fact("p", number(1), qv::Reference<Value>()); },
                ThrowsError(1, "qvPlg::Fact: argument 2 of p is missing"));
    EXPECT_THAT([] { equal(variable(), Number()); }, ThrowsError(1, "qvPlg: an operand of == is missing"));
}

TEST(LogicDatabase, SetsPrintsAndCutsOutRanges) {
    Interpreter interpreter;
    Database & database = interpreter.getDB();
    for (int i : {3, 1, 2, 1})
        database.addFact("p", number(i));
    database.addFact("p", number(1), text("a\"b"));
    Fact sideways("q", variable());
    sideways.setCompare(Fact::CompareHigh);
    database.addFact(sideways);
    EXPECT_EQ(shown(database), "{\n    {{ \"p\", \"1\" }},\n    {{ \"p\", \"2\" }},\n    {{ \"p\", \"3\" }},\n"
                               "    {{ \"p\", \"1\", \"a\"b\" }},\n    {{ \"q\", \"(null)\" }},\n    {{ 0 }}\n}\n");
    auto const & facts = database.getFacts();
    EXPECT_FALSE(std::prev(facts.end())->compareHigh());
    Fact key("p", variable());
    key.setCompare(Fact::CompareLow);
    EXPECT_EQ(facts.lower_bound(key), facts.begin());
    key.setCompare(Fact::CompareHigh);
    EXPECT_EQ(facts.upper_bound(key), std::next(facts.begin(), 3));
    Database const copy(database);
    EXPECT_EQ(shown(copy), shown(database));
}

// A class that the database has no shortcut for, in its own order.
struct Backwards : IntegerValue {
    using IntegerValue::IntegerValue;
    bool lessThan(Value const & other) const override { return static_cast<Backwards const &>(other).get() < get(); }
};

struct Labelled : IntegerValue {
    using IntegerValue::IntegerValue;
};

TEST(LogicDatabase, FindsValuesOfSubclasses) {
    Interpreter interpreter;
    Number const x = variable();
    interpreter.getDB().addFact("p", number(1), number(1));
    interpreter.getDB().addFact("p", qv::Reference<Value>(new Labelled(1)), number(2));
    EXPECT_EQ(solve(interpreter, clause("p", number(1), x), {x}), "1, 2");
    EXPECT_EQ(solve(interpreter, clause("p", qv::Reference<Value>(new Labelled(1)), x), {x}), "1, 2");
}

// However many facts begin alike, in whatever order they came: they are found, in their own order.
TEST(LogicDatabase, FindsWhatBeginsAlike) {
    for (int count : {1, 2, 999, 1000, 1001, 3000}) {
        Interpreter interpreter;
        for (int i = 0; i < count; ++i) {
            Number const shuffled = number((i * 7919) % count);
            interpreter.getDB().addFact("p", number(7), shuffled, number(i % 3));
            interpreter.getDB().addFact("p", text("libboost-one"), shuffled, number(i % 3));
            interpreter.getDB().addFact("p", text("libboost-two"), shuffled, number(i % 3));
            interpreter.getDB().addFact("q", qv::Reference<Value>(new Backwards(i)), number(i));
        }
        Interpreter const copy(interpreter);
        Interpreter assigned;
        assigned.getDB().addFact("p", number(7), number(-1), number(0));
        assigned = interpreter;
        interpreter = Interpreter();
        EXPECT_EQ(interpreter.getDB().getFacts().size(), 0);
        for (qv::Reference<Value> const & first : {qv::Reference<Value>(number(7)), text("libboost-two")}) {
            Number const x = variable(), y = variable();
            for (Interpreter const * in : {&copy, static_cast<Interpreter const *>(&assigned)}) {
                Query all(clause("p", first, x, y));
                for (int i = 0; i < count; ++i) {
                    ASSERT_TRUE(all.solve(*in));
                    ASSERT_EQ(x->get(), i);
                }
                EXPECT_FALSE(all.solve(*in));
            }
            Number const last = number(count - 1);
            EXPECT_TRUE(Query(clause("p", first, last, y)).solve(copy));
            y->setNull();
            EXPECT_FALSE(Query(clause("p", first, number(count), y)).solve(copy));
            EXPECT_FALSE(Query(clause("p", text("libboost-tvo"), x, y)).solve(copy));
        }
        Number const x = variable();
        EXPECT_TRUE(Query(clause("q", qv::Reference<Value>(new Backwards(count / 2)), x)).solve(copy));
        EXPECT_EQ(x->get(), count / 2);
    }
}

TEST(LogicValue, TypesKeepApart) {
    IntegerValue three(3);
    StringValue name("x");
    three.assign(name);
    name.assign(three);
    EXPECT_FALSE(three.lessThan(name) || name.lessThan(three));
    EXPECT_EQ(shown(three) + shown(name), "3x");
    three.setNull();
    EXPECT_EQ(shown(three), "(null)");
    EXPECT_EQ(three.get(), 3);
    Number const counted(new IntegerValue(three));
    EXPECT_EQ(counted->refs(), 1);
    EXPECT_TRUE(counted->isNull());
}

Expression two(Values const & values) { return equal(values[0], values[0]) & clause("two", values[0]); }
Expression nothing(Values const &) { return {}; }

TEST(LogicQuery, ClausesOneByOne) {
    Interpreter interpreter;
    for (int i : {1, 2, 3})
        interpreter.getDB().addFact("p", number(i));
    for (int i : {3, 2, 4})
        interpreter.getDB().addFact("q", number(i));
    interpreter.getDB().addFact("two", number(2));
    interpreter.getDB().addFact("t", text("1"));
    interpreter.getDB().addFact(Fact("raining", Values()));
    Expression const raining = invokeMatch(Fact("raining", Values()));
    interpreter.getRules().insert(Rule("raining", 0, &nothing));
    interpreter.getRules().insert(Rule("p", 1, &two));
    interpreter.getRules().insert(Rule("rule", 1, &two));
    interpreter.getRules().insert(Rule("rule", 1, &nothing)); // there is one already
    interpreter.getRules().insert(Rule("rule", 2, nullptr));
    EXPECT_EQ(interpreter.getRules().size(), 4);
    EXPECT_EQ(compare(Rule("a", 3, nullptr), Rule("a", 1, nullptr)), 2);
    EXPECT_EQ(compare(Rule("a", 1, nullptr), Rule("a", 1, &two)), 1);
    EXPECT_LT(compare(Rule("a", 9, nullptr), Rule("b", 1, nullptr)), 0);
    Number const x = variable(), y = variable(), one = number(1), sameOne = number(1);
    struct {
        char const * what;
        Expression expression;
        char const * solutions;
    } const rows[] = {
        {"facts hide the rule", clause("p", x), "1, 2, 3"},
        {"a rule", clause("rule", x), "2"},
        {"a rule without a function", clause("rule", x, y), ""},
        {"another type", clause("t", x), ""},
        {"no argument", raining, "(null)"},
        {"no argument, in front", raining & clause("p", x), "1, 2, 3"},
        {"no argument, negated", !raining, ""},
        {"no argument and no fact", invokeMatch(Fact("two", Values())), ""},
        {"not not binds nothing", !!clause("p", x), "(null)"},
        {"equal, by value", one == sameOne, "(null)"},
        {"equal, as a function", equal(one, sameOne) & equal(Argument(one), one), "(null)"},
        {"unequal", one != sameOne, ""},
        {"unequal to the last", clause("q", x) & (x != one), "2, 3, 4"},
        {"empty", Expression(), ""},
        {"not empty", (!Expression()) & clause("two", x), "2"},
    };
    for (auto const & row : rows)
        EXPECT_EQ(solve(interpreter, row.expression, {x}), row.solutions) << row.what;
    EXPECT_TRUE(x->isNull() && y->isNull());

    // With a variable, == compares old data, and whoever asks again behind the clause that binds it hears otherwise.
    Number const stale = variable();
    Expression const bound = clause("p", stale), isOne = stale == one, isTwo = stale == number(2);
    struct {
        int data;
        Expression expression;
        char const * solutions;
    } const staleRows[] = {
        {2, clause("two", x) & (stale == x), "(null)"},
        {2, isTwo & bound, ""}, // lost at 1, which ends it
        {1, isOne & bound, "1"},
        {9, isTwo & bound, ""},
        {9, (!isTwo) & bound, "1"}, // lost at 2
        {9, (!!!isTwo) & bound, "1"},
        {9, (!isOne) & bound, ""},
        {1, (!!isOne) & bound, "1"},
        {9, (!(isOne || isTwo)) & bound, ""},
        {9, (!(isTwo || isOne)) & bound, ""},
        {9, (!((one == one) & isOne)) & bound, "1, 2, 3"}, // one == one has had its solution
        {1, (!(isOne & clause("no", x))) & bound, "1, 2, 3"},
        {9, (!(isOne & bound)) & bound, "1, 2, 3"}, // what was never started has no solution
        {9, (!!bound) & bound, "1, 2, 3"},
        {1, (!(bound & isOne)) || (isTwo & bound), ""},
    };
    for (auto const & row : staleRows) {
        stale->assign(IntegerValue(row.data));
        stale->setNull();
        EXPECT_EQ(solve(interpreter, row.expression, {stale}), row.solutions) << &row - staleRows;
        EXPECT_TRUE(stale->isNull() && x->isNull());
    }
}

Query * running = nullptr;
Interpreter * interpreterOfRunning = nullptr;
Expression reentrant(Values const & values) {
    EXPECT_FALSE(running->solve(*interpreterOfRunning));
    return clause("p", values[0]);
}
Expression throwing(Values const &) { throw std::runtime_error("no"); }

TEST(LogicQuery, EndsWell) {
    Interpreter interpreter;
    interpreter.getDB().addFact("p", number(1));
    interpreter.getDB().addFact("p", number(2));
    interpreter.getRules().insert(Rule("again", 1, &reentrant));
    interpreter.getRules().insert(Rule("throw", 1, &throwing));
    Number const x = variable(), y = variable();
    Query again(clause("again", x));
    running = &again;
    interpreterOfRunning = &interpreter;
    EXPECT_TRUE(again.solve(interpreter));
    EXPECT_EQ(x->get(), 1);
    Query copy(again);
    EXPECT_TRUE(copy.solve(interpreter)) << "copies share the run";
    EXPECT_FALSE(again.solve(interpreter));

    Query thrower(clause("p", x) & (!clause("p", y) || clause("p", y)) & clause("throw", x));
    EXPECT_THROW(thrower.solve(interpreter), std::runtime_error);
    EXPECT_TRUE(x->isNull() && y->isNull());
    EXPECT_FALSE(thrower.solve(interpreter));
}

// An evaluator of the program's own: the numbers up to 3.
struct Count : Clause {
    Number to;
    explicit Count(Number variable) : to(variable) {}
    struct Run : BindingEvaluator {
        Number to;
        int at = 4;
        Run(Interpreter const & interpreter, Number variable) : BindingEvaluator(interpreter), to(variable) {}
        bool hasSolution() override { return at <= 3; }
        void first() override { go(1); }
        void next() override { go(at + 1); }
        bool allValuesBound() override { return !to->isNull(); }
        void releaseBindings() override { go(4); }
        void go(int place) {
            at = place;
            to->assign(hasSolution() ? IntegerValue(at) : IntegerValue());
        }
    };
    qv::Reference<Evaluator> createEvaluator(Interpreter const & interpreter) override {
        return new Run(interpreter, to);
    }
};

TEST(LogicClause, OfAProgramsOwn) {
    Interpreter interpreter;
    interpreter.getDB().addFact("p", number(2), number(7));
    interpreter.getDB().addFact("p", number(3), number(8));
    Number const x = variable(), y = variable();
    Expression const count(new Count(x));
    EXPECT_EQ(solve(interpreter, count & clause("p", x, y), {x, y}), "2 7, 3 8");
    EXPECT_EQ(solve(interpreter, clause("p", x, y) & (Expression(new Count(variable())) || count), {x}),
              "2, 2, 2, 3, 3, 3");
    // Its bindings are undone like any other.
    interpreter.getRules().insert(Rule("throw", 1, &throwing));
    EXPECT_EQ(solve(interpreter, !count, {x}), "");
    EXPECT_EQ(solve(interpreter, (!!count) & clause("p", y, x), {x}), "7, 8");
    EXPECT_EQ(solve(interpreter, (x == variable()) & count, {x}), "");
    Query thrower(count & clause("throw", x));
    EXPECT_THROW(thrower.solve(interpreter), std::runtime_error);
    EXPECT_TRUE(x->isNull() && y->isNull());
    // And the library's evaluators for such a program.
    Expression const both = clause("p", x, y) & !clause("p", y, x);
    qv::Reference<Evaluator> const evaluator = both.clause()->createEvaluator(interpreter);
    EXPECT_FALSE(evaluator->hasSolution());
    for (int run = 0; run < 2; ++run) {
        evaluator->first();
        EXPECT_TRUE(evaluator->hasSolution() && !x->isNull());
        EXPECT_EQ(y->get(), 7);
        EXPECT_FALSE(!evaluator->allValuesBound());
    }
    dynamic_cast<BindingEvaluator &>(*evaluator).releaseBindings();
    EXPECT_TRUE(x->isNull() && y->isNull() && !evaluator->hasSolution());
    evaluator->first();
    EXPECT_EQ(y->get(), 7);
    evaluator->next();
    evaluator->next();
    EXPECT_FALSE(evaluator->hasSolution());
}

Expression deep(Values const & values) {
    int const level = static_cast<IntegerValue &>(*values[0]).get();
    if (level == 0)
        return clause("ground", values[1]);
    Number const inner = variable();
    return clause("ground", inner) & clause("deep", number(level - 1), values[1]) & (inner != values[1]);
}
Expression endless(Values const & values) { return clause("ground", variable()) & clause("endless", values[0]); }

TEST(LogicQuery, DepthCostsNoStack) {
    runOnSmallStack([] {
        Interpreter interpreter;
        interpreter.getDB().addFact("ground", number(1));
        interpreter.getDB().addFact("ground", number(2));
        interpreter.getRules().insert(Rule("deep", 2, &deep));
        interpreter.getRules().insert(Rule("endless", 1, &endless));
        Number const x = variable();
        {
            Query query(clause("deep", number(100000), x));
            EXPECT_TRUE(query.solve(interpreter)); // and is destroyed in the middle
            EXPECT_FALSE(x->isNull());
        }
        x->setNull();
        Query query(clause("ground", x) & clause("endless", x));
        EXPECT_THAT([&] { static_cast<void>(query.solve(interpreter)); },
                    ThrowsError(1, "qvPlg::Query: rules are nested deeper than 250000"));
        EXPECT_TRUE(x->isNull());
        EXPECT_FALSE(query.solve(interpreter));

        // Expressions, deep on either side and in negations.
        Expression left = clause("ground", x), right = left, negated = left;
        for (int i = 0; i < 100000; ++i) {
            left = left & clause("ground", x);
            right = clause("ground", x) & right;
            negated = !negated;
        }
        EXPECT_EQ(solve(interpreter, left || right, {x}), "1, 2");
        EXPECT_EQ(solve(interpreter, negated & right, {x}), "1, 2");
        qv::Reference<Evaluator> const evaluator = negated.clause()->createEvaluator(interpreter);
        EXPECT_TRUE(evaluator->allValuesBound());
    });
}

} // namespace
