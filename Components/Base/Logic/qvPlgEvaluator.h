// A cursor over the solutions of a clause.

#ifndef qvPlgEvaluator_h
#define qvPlgEvaluator_h

#include "Base/Utility/qvReferenceCount.h"
#include "Base/qvBaseConfig.h"

namespace qvPlg {

class Interpreter;

// Solutions are told by the variables of the clause, which are bound while the evaluator stands on one. Programs use
// qvPlg::Query; subclasses come with clauses of a program's own. The order of the virtual operations is what those rely
// on.
//
// A subclass keeps to this: without a solution, and before `first`, it has no binding in place; `first` undoes the
// bindings of a former run, and `next` without a solution does nothing. `hasSolution` may be asked at any time. One
// that binds variables derives from BindingEvaluator.
class QV_EXPORT Evaluator : public qv::ReferenceCount {
public:
    // The interpreter must outlive the evaluator.
    explicit Evaluator(Interpreter const & interpreter) : interpreter_(interpreter) {}
    Evaluator(Evaluator const &) = delete;
    Evaluator & operator=(Evaluator const &) = delete;
    ~Evaluator() override;

    // Whether the evaluator stands on a solution; false before the first `first`.
    virtual bool hasSolution() = 0;
    virtual void next() = 0;
    // Starts, or starts again, and goes to the first solution.
    virtual void first() = 0;
    // Whether the clause has no variable left.
    virtual bool allValuesBound() = 0;

protected:
    Interpreter const & interpreter() const { return interpreter_; }

private:
    Interpreter const & interpreter_;
};

// An evaluator that can be made to let go. Queries undo bindings while their evaluators stand on solutions: where a
// negation has its answer, where `==` does not hold any more, where something is thrown. What an evaluator has bound
// that is no BindingEvaluator stays bound there, until it is started again or comes to its end by itself. Those of the
// library are BindingEvaluators; one that drives others passes the call on.
class QV_EXPORT BindingEvaluator : public Evaluator {
public:
    using Evaluator::Evaluator;
    ~BindingEvaluator() override;

    // Sets the variables that the evaluator has bound back to null. It has no solution from then on, until `first`.
    // Also called without a solution, when it does nothing, and behind a `first` or `next` that has thrown. Must not
    // throw.
    virtual void releaseBindings() = 0;
};

} // namespace qvPlg

#endif
