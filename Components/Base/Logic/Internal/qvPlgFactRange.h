// The run of stored facts that a goal can match.

#ifndef qvPlgFactRange_h
#define qvPlgFactRange_h

#include "Base/Containers/qvSet.h"
#include "Base/Logic/qvPlgDatabase.h"
#include "Base/Logic/qvPlgFact.h"

#include <cstdint>

namespace qvPlg {

// The facts with the goal's predicate and arity that agree with it in the arguments in front of its first variable.
// They stand together in a database. A goal with CompareLow would be just in front of them, one with CompareHigh just
// behind; here one search finds the first of them, and each of the others tells by itself that it still belongs to
// them.
class FactRange {
public:
    FactRange() = default;
    // The goal must outlive the range, and its bound arguments must keep their values.
    FactRange(Fact const & goal, Database const & database);

    // The first fact of the range, or one that it does not contain.
    qv::set<Fact>::const_iterator first() const;

    // For the search in a set of facts: whether the whole range comes behind the fact.
    bool liesBehind(Fact const & fact) const { return order(fact) < 0; }
    bool contains(Fact const & fact) const { return order(fact) == 0; }

    // Whether a fact of the range agrees in the other arguments too. One that is a variable now is taken to agree with
    // any value of its type.
    bool matches(Fact const & fact) const;

    // Begins to read what `matches` will look at.
    void fetch(Fact const & fact) const {
        if (leading_ < fact.arity())
            __builtin_prefetch(fact.values()[leading_].get());
    }

    // A number that sorts as the value does, as far as it goes: of two values with keys the one with the smaller key
    // sorts first. Equal keys tell that integers are equal, and nothing about texts. 0 stands for a value of any other
    // class, which has no key. A search that goes by keys reads the nodes of the tree alone, where the values lie two
    // steps further.
    static std::uint64_t keyOf(Value const & value);
    // A number that equal values have in common, 0 for those without a key.
    static std::uint64_t startOf(Value const & value);

private:
    // Where the fact stands: negative in front of the range, positive behind it.
    int order(Fact const & fact) const;
    int orderOfValues(Fact const & fact, int from) const;

    Fact const * goal_ = nullptr;
    Database const * database_ = nullptr;
    int leading_ = 0;                           // arguments in front of the first variable
    std::uint64_t key_ = 0;                     // of the first argument, if it is one of these
    Fact::Name const * name_ = nullptr; // of the predicate in this database; null when it has none
};

} // namespace qvPlg

#endif
