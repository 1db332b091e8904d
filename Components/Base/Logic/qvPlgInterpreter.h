// What a query is solved with: facts and rules.

#ifndef qvPlgInterpreter_h
#define qvPlgInterpreter_h

#include "Base/Containers/qvSet.h"
#include "Base/Logic/qvPlgDatabase.h"
#include "Base/Logic/qvPlgRule.h"
#include "Base/qvBaseConfig.h"

namespace qvPlg {

// A plain value. Facts and rules are added through the accessors, while no query runs:
//
//     interpreter.getDB().addFact("parent", ann, bob);
//     interpreter.getRules().insert(Rule("grandparent", 2, &grandparent));
//
// There is one rule for a predicate and arity: inserting another has no effect.
class QV_EXPORT Interpreter {
public:
    Interpreter();

    Database & getDB() { return database_; }
    Database const & getDB() const { return database_; }
    qv::set<Rule> & getRules() { return rules_; }
    qv::set<Rule> const & getRules() const { return rules_; }

private:
    Database database_;
    qv::set<Rule> rules_;
};

} // namespace qvPlg

#endif
