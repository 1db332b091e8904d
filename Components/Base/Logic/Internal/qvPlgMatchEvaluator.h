// The evaluator of a goal.

#ifndef qvPlgMatchEvaluator_h
#define qvPlgMatchEvaluator_h

#include "Base/Containers/qvVector.h"
#include "Base/Logic/Internal/qvPlgBuiltInClause.h"
#include "Base/Logic/Internal/qvPlgFactRange.h"
#include "Base/Logic/Internal/qvPlgStepEvaluator.h"
#include "Base/Logic/qvPlgExpression.h"

namespace qvPlg {

// A goal has two alternatives, the stored facts and the rule, and keeps to the first that has a solution. Only one of
// them is alive at a time, so one object serves both: nothing but this is allocated for a goal that meets facts.
class MatchEvaluator final : public StepEvaluator {
public:
    MatchEvaluator(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<MatchClause> clause,
                   int depth);

protected:
    StepEvaluator * resume() override;
    void unbind() override;
    bool isBound() override;
    StepEvaluator * ask(StepEvaluator const *, bool &) override { return nullptr; } // never volatile

private:
    Fact const & goal() const { return clause_->goal(); }
    void noteVariables();
    void setVariablesNull();
    StepEvaluator * firstFact();
    StepEvaluator * nextFact();
    StepEvaluator * bindVariables();
    StepEvaluator * startRule();
    void endRule();

    qv::Reference<MatchClause> clause_;
    qv::vector<Value *> variables_; // those of the goal that were null at its start; empty without a solution
    FactRange range_;
    Expression body_; // of the rule; its evaluator is the child
    int depth_;       // of rules around the goal
};

} // namespace qvPlg

#endif
