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
// bindings of a former run, and `next` without a solution does nothing.
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

} // namespace qvPlg

#endif
