// One run over the solutions of an expression.

#ifndef qvPlgQuery_h
#define qvPlgQuery_h

#include "Base/Logic/qvPlgEvaluator.h"
#include "Base/Logic/qvPlgExpression.h"
#include "Base/Logic/qvPlgInterpreter.h"
#include "Base/Utility/qvReference.h"
#include "Base/qvBaseConfig.h"

namespace qvPlg {

//     qvPlg::Query query(clause("parent", ann, x));
//     while (query.solve(interpreter))
//         std::cout << *x << '\n';
//
// A query runs once; a new one over the same expression starts again. Copies made behind the first `solve` share the
// run; one made earlier has a run of its own over the same variables, and the two must not run at the same time. The
// interpreter must be the same in each call, must outlive the query and all its copies, and must not be changed while
// the query runs. A query that is destroyed before it has come to its end leaves the bindings of its last solution in
// place.
//
// Everything of one query belongs to one thread at a time: values are counted and bound without locks.
class QV_EXPORT Query {
public:
    // How deep rules may stand inside one another. The depth costs memory, some 700 bytes for each goal of a rule's
    // body, and none of the thread's stack.
    static constexpr int maxRuleDepth = 250000;

    explicit Query(Expression expression);
    Query(Query const &) = default;
    Query & operator=(Query const &) = default;
    ~Query();

    // Goes to the next solution and tells whether there is one; the variables are bound then. Behind the last one it is
    // false for good and every binding is undone (qvPlgEvaluator.h tells what evaluators of other modules have to do
    // for that). Throws Error number 1 when rules are nested deeper than `maxRuleDepth`, and whatever a rule throws;
    // that ends the query too. False when it is called by a rule of the query itself.
    bool solve(Interpreter const & interpreter);

private:
    Expression expression_;
    qv::Reference<Evaluator> evaluator_; // null until the first `solve`
};

} // namespace qvPlg

#endif
