// The facts that the logic engine knows.

#ifndef qvPlgDatabase_h
#define qvPlgDatabase_h

#include "Base/Containers/qvSet.h"
#include "Base/Logic/qvPlgFact.h"
#include "Base/qvBaseConfig.h"

#include <iosfwd>

namespace qvPlg {

// An ordered set of facts, each once. Their order is the index: a query that knows the first arguments of a goal looks
// at the facts with these only, so the argument by which facts are looked up most should come first.
//
// Adding a fact takes logarithmic time. It does not copy the arguments: a value must not be changed as long as it
// stands in a database, or the order breaks. A copy of a database shares them too. No fact may be added while a query
// over the database runs.
class QV_EXPORT Database {
public:
    Database();
    Database(Database const &) = default;
    Database & operator=(Database const &) = default;
    ~Database() = default;

    // Adds a copy, with CompareExact. A fact that is equal to one in the database is ignored.
    void addFact(Fact const & fact);
    void addFact(qvString::CString const & predicate, qv::Reference<Value> value);
    void addFact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second);
    void addFact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second,
                 qv::Reference<Value> third);

    qv::set<Fact> const & getFacts() const { return facts_; }

private:
    qv::set<Fact> facts_;
};

// Prints a brace-initialised table with a row for each fact and a zero row at its end.
QV_EXPORT std::ostream & operator<<(std::ostream & stream, Database const & database);

} // namespace qvPlg

#endif
