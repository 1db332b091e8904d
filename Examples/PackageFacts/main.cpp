// PackageFacts <status file> [package [other]]
//
// Reads the packages of a machine, from a file in the form of dpkg's status file or from the output of `dpkg --status`,
// into a knowledge base, and asks it a few questions: what the package needs, who needs it, what is missing, and over
// which packages it comes to need the other one.
//
// Exit codes: 0 when the questions were answered, 1 when something is wrong, 2 for wrong arguments.

#include "StatusReader.h"

#include "Base/Logic/qvPlgIntegerValue.h"
#include "Base/Logic/qvPlgQuery.h"
#include "Base/Logic/qvPlgStringValue.h"

#include <exception>
#include <fstream>
#include <iostream>

namespace {

using namespace qvPlg;
using Text = qv::Reference<StringValue>;
using Number = qv::Reference<IntegerValue>;
using Values = qv::vector<qv::Reference<Value>>;

Text variable() { return new StringValue; }

// chain(A, M, B, N): A needs M, and M is B or needs it in turn over less than N others. All but M are bound. The number
// keeps the rule from going round in circles, of which real packages have some.
Expression chain(Values const & values) {
    qv::Reference<Value> const & from = values[0];
    qv::Reference<Value> const & next = values[1];
    qv::Reference<Value> const & to = values[2];
    int const others = static_cast<IntegerValue &>(*values[3]).get();
    Expression const direct = clause("depends", from, next) & (next == to);
    if (others == 0)
        return direct;
    return direct || (clause("depends", from, next) &
                      clause("chain", next, variable(), to, Number(new IntegerValue(others - 1))));
}

class Knowledge {
public:
    Knowledge() { interpreter_.getRules().insert(Rule("chain", 4, &chain)); }

    Database & database() { return interpreter_.getDB(); }

    // Prints what the variable is in each solution.
    void ask(char const * question, Expression const & expression, Text const & variable) {
        constexpr int shown = 10;
        std::cout << question << ':';
        Query query(expression);
        int count = 0;
        while (query.solve(interpreter_)) {
            if (count++ < shown)
                std::cout << ' ' << *variable;
        }
        if (count > shown)
            std::cout << " and " << count - shown << " more";
        std::cout << (count == 0 ? " none\n" : "\n");
    }

    // Prints a shortest way from one package to another.
    void askForChain(Text from, Text const & to) {
        constexpr int mostOthers = 6;
        for (int others = 0; others <= mostOthers; ++others) {
            Text next = variable();
            Query query(clause("chain", from, next, to, Number(new IntegerValue(others))));
            if (!query.solve(interpreter_))
                continue;
            std::cout << *from << " needs " << *to << ':';
            for (; others > 0; --others) {
                std::cout << ' ' << *next << ',';
                from = next;
                next = variable();
                Query rest(clause("chain", from, next, to, Number(new IntegerValue(others - 1))));
                rest.solve(interpreter_);
            }
            std::cout << ' ' << *to << '\n';
            return;
        }
        std::cout << *from << " does not need " << *to << " over " << mostOthers << " others or less\n";
    }

private:
    Interpreter interpreter_;
};

int run(char const * file, char const * package, char const * other) {
    std::ifstream stream(file);
    Knowledge knowledge;
    int const count = stream ? packages::readStatus(stream, knowledge.database()) : 0;
    if (!stream.eof()) {
        std::cerr << file << ": cannot be read\n";
        return 1;
    }
    std::cout << count << " packages, " << knowledge.database().getFacts().size() << " facts\n";

    Text const name(new StringValue(package)), otherName(new StringValue(other));
    Text const x = variable(), y = variable(), section = variable();
    knowledge.ask("version", clause("package", name, x), x);
    knowledge.ask("needs", clause("depends", name, x), x);
    knowledge.ask("is needed by", clause("needed", name, x), x);
    knowledge.ask("is needed in its own section by",
                  clause("section", name, section) & clause("needed", name, x) & clause("section", x, section), x);
    knowledge.ask("needs, and it is not there", clause("depends", name, x) & !clause("package", x, variable()), x);
    knowledge.ask("needed by nobody", clause("package", x, y) & !clause("needed", x, variable()), x);
    knowledge.ask("need each other", clause("depends", x, y) & clause("depends", y, x) & (x != y), x);
    knowledge.askForChain(name, otherName);
    return 0;
}

} // namespace

int main(int argc, char ** argv) {
    if (argc < 2 || argc > 4) {
        std::cerr << "usage: PackageFacts <status file> [package [other]]\n";
        return 2;
    }
    try {
        return run(argv[1], argc > 2 ? argv[2] : "bash", argc > 3 ? argv[3] : "libc6");
    } catch (std::exception const & failure) {
        std::cerr << failure.what() << '\n';
        return 1;
    }
}
