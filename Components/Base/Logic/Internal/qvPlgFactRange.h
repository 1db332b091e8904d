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

    // For the search in a set of facts: whether the whole range comes behind the fact.
    bool liesBehind(Fact const & fact) const { return order(fact) < 0; }

    // Go to the first fact of the range that agrees with the goal in the other arguments too, and to the one behind
    // that; false when there is none. An argument of the goal that is a variable agrees with any value of its type.
    bool first();
    bool next();
    // Of the fact that was found; for an argument that the goal has as a variable.
    Value const & argument(int index) const { return argumentOf(row_, index); }

    // A number that sorts as the value does, as far as it goes: of two values with keys the one with the smaller key
    // sorts first. Equal keys tell that integers are equal, and nothing about texts. 0 stands for a value of any other
    // class, which has no key. A search that goes by keys reads the nodes of the tree alone, where the values lie two
    // steps further.
    static std::uint64_t keyOf(Value const & value);
    // Whether the value can be equal to one with a key.
    static bool hasTypeWithKeys(Value const & value);
    // A number that equal values have in common, 0 for those without a key.
    static std::uint64_t startOf(Value const & value);

private:
    bool findGroup();
    bool seekInGroup();
    bool seekInSet();
    void fetch(Database::Row const & row) const;
    void fetchAhead() const;
    bool matches() const;

    // Where a fact stands: negative in front of the range, positive behind it.
    int order(Fact const & fact) const;
    using Row = Database::Row;
    static Value const & argumentOf(Row const & row, int index) {
        return index == 1 ? *row.second : *row.arguments[index];
    }
    int orderOfRow(Row const & row, int from) const;

    Fact const * goal_ = nullptr;
    Database const * database_ = nullptr;
    int leading_ = 0;       // arguments in front of the first variable
    std::uint64_t key_ = 0; // of the first argument, if it is one of these
    Row row_;
    // What is still to come: in a group of the database, or else in its set.
    Database::Group const * group_ = nullptr;
    int index_ = 0;
    qv::set<Fact>::const_iterator place_;
    Fact::Name const * name_ = nullptr; // of the predicate in this database; null when it has none
};

} // namespace qvPlg

#endif
