// The facts that the logic engine knows.

#ifndef qvPlgDatabase_h
#define qvPlgDatabase_h

#include "Base/Containers/qvHashMap.h"
#include "Base/Containers/qvMap.h"
#include "Base/Containers/qvSet.h"
#include "Base/Containers/qvVector.h"
#include "Base/Logic/qvPlgFact.h"
#include "Base/qvBaseConfig.h"

#include <cstdint>
#include <iosfwd>

namespace qvPlg {

// An ordered set of facts, each once. Their order is the index: a query that knows the first arguments of a goal looks
// at the facts with these only, so the argument by which facts are looked up most should come first.
//
// Adding a fact takes logarithmic time, finding the facts of a goal whose first argument is a bound IntegerValue or
// StringValue constant time on average, of any other goal logarithmic time. It does not copy the arguments: a value
// must not be changed as long as it stands in a database, or the order breaks. A copy of a database shares them too. No
// fact may be added while a query over the database runs.
class QV_EXPORT Database {
public:
    Database();
    Database(Database const & other);
    Database & operator=(Database const & other);
    ~Database() = default;

    // Adds a copy, with CompareExact. A fact that is equal to one in the database is ignored.
    void addFact(Fact const & fact);
    void addFact(qvString::CString const & predicate, qv::Reference<Value> value);
    void addFact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second);
    void addFact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second,
                 qv::Reference<Value> third);

    qv::set<Fact> const & getFacts() const { return facts_; }

private:
    friend class FactRange;

    // A predicate, an arity, and a number for the first argument.
    struct Start {
        Fact::Name const * name;
        int arity;
        std::uint64_t argument;

        bool operator==(Start const &) const = default;
    };
    struct HashStart {
        unsigned operator()(Start const & start) const;
    };
    // The arguments of a stored fact, which stay where they are. Its second one, null where there is none, stands
    // beside them, because it is often all that is wanted: with facts that are strewn over memory that saves a wait.
    struct Row {
        qv::Reference<Value> const * arguments = nullptr;
        Value * second = nullptr;
    };
    static Row rowOf(Fact const & fact) {
        auto const & values = fact.values();
        return {values.data(), fact.arity() > 1 ? values[1].get() : nullptr};
    }
    // The facts that begin alike, in order. One that grows too large to insert into, or in which two texts have met
    // that have the same number, gives up its rows; such facts are found in the set.
    struct Group {
        Row first; // with many small groups it matters that nothing else has to be read for it
        qv::vector<Row> others;
        bool hasRows = true;

        int size() const { return first.arguments ? others.size() + 1 : 0; }
        Row const & row(int index) const { return index == 0 ? first : others[index - 1]; }
    };
    static constexpr int maxGroupSize = 1000;

    void addToGroup(Fact const & fact);

    qv::set<Fact> facts_;
    qv::map<qvString::CString, qv::Reference<Fact::Name>> names_; // of all predicates
    // A look-up among many facts spends its time on waiting for memory, on the way down the tree and from node to node.
    // From here it is one step to the arguments of all facts that it wants.
    qv::hash_map<Start, Group, HashStart> groups_;
    // No stored value of a subclass passes for one of the classes that are in the groups.
    bool groupsAreWhole_ = true;
};

// Prints a brace-initialised table with a row for each fact and a zero row at its end.
QV_EXPORT std::ostream & operator<<(std::ostream & stream, Database const & database);

} // namespace qvPlg

#endif
