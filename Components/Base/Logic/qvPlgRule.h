// A rule: a function of the program that says what a goal follows from.

#ifndef qvPlgRule_h
#define qvPlgRule_h

#include "Base/Containers/qvLess.h"
#include "Base/Containers/qvVector.h"
#include "Base/Logic/qvPlgExpression.h"
#include "Base/Strings/qvStringCString.h"
#include "Base/Utility/qvReference.h"
#include "Base/qvBaseConfig.h"

namespace qvPlg {

// The function gets the goal's own values, `arity` of them, some bound and some variables, and gives an expression over
// them and over variables that it makes, or an empty one to fail. It is called whenever the goal is started, so it may
// look at what is bound.
//
//     // grandparent(X, Z) follows from parent(X, Y) & parent(Y, Z)
//     Expression grandparent(qv::vector<qv::Reference<Value>> const & values) {
//         qv::Reference<StringValue> y(new StringValue);
//         return clause("parent", values[0], y) & clause("parent", y, values[1]);
//     }
//
// A rule may use its own predicate. What the function throws ends the query and goes to whoever solves it.
class QV_EXPORT Rule {
public:
    using Function = Expression (*)(qv::vector<qv::Reference<Value>> const & values);

    // A null function fails.
    Rule(qvString::CString const & predicate, int arity, Function function);

    qvString::CString const & predicate() const { return predicate_; }
    int arity() const { return arity_; }
    Expression instantiate(qv::vector<qv::Reference<Value>> const & values) const;

private:
    qvString::CString predicate_;
    int arity_;
    Function function_;
};

// By predicate, then by arity. Equal rules give 1; nobody asks for more than whether the result is below 0.
QV_EXPORT int compare(Rule const & a, Rule const & b);

} // namespace qvPlg

namespace qv {

template <>
struct less<qvPlg::Rule> {
    using is_transparent = void;

    bool operator()(qvPlg::Rule const & a, qvPlg::Rule const & b) const { return qvPlg::compare(a, b) < 0; }
    template <class Probe>
    bool operator()(qvPlg::Rule const & rule, Probe const & probe) const {
        return probe.liesBehind(rule);
    }
};

} // namespace qv

#endif
