// The run of stored facts that a goal can match.

#ifndef qvPlgFactRange_h
#define qvPlgFactRange_h

#include "Base/Logic/qvPlgFact.h"

namespace qvPlg {

// The facts with the goal's predicate and arity that agree with it in the arguments in front of its first variable.
// They stand together in a database. A goal with CompareLow would be just in front of them, one with CompareHigh just
// behind; here one search finds the first of them, and each of the others tells by itself that it still belongs to
// them.
class FactRange {
public:
    FactRange() = default;
    // The goal must outlive the range, and its bound arguments must keep their values.
    explicit FactRange(Fact const & goal);

    // For the search in a set of facts: whether the whole range comes behind the fact.
    bool liesBehind(Fact const & fact) const { return order(fact) < 0; }
    bool contains(Fact const & fact) const { return order(fact) == 0; }

    // Whether a fact of the range agrees in the other arguments too. One that is a variable now is taken to agree with
    // any value of its type.
    bool matches(Fact const & fact) const;

private:
    // Where the fact stands: negative in front of the range, positive behind it.
    int order(Fact const & fact) const;

    Fact const * goal_ = nullptr;
    int leading_ = 0;                           // arguments in front of the first variable
    mutable Fact::Name const * name_ = nullptr; // a text that was found equal to the predicate
};

} // namespace qvPlg

#endif
