// The library's own evaluators, which run step by step instead of calling one another.

#ifndef qvPlgStepEvaluator_h
#define qvPlgStepEvaluator_h

#include "Base/Logic/qvPlgEvaluator.h"
#include "Base/Logic/qvPlgValue.h"
#include "Base/Utility/qvReference.h"

namespace qvPlg {

class Clause;
class CompositeClause;

// The evaluators of a query form a tree, in which the body of a rule is the child of the goal that it was called for.
// However deep it is, no operation recurses: `run` asks one evaluator after the other to `resume`, which does a step
// and names the one that has to go on: a child that it needs a solution of, or, when it is done, its parent. What
// stands on the stack of a recursive solver stands in `phase_` here. Other walks over the tree link evaluators by
// `link_`.
//
// An evaluator that has no solution has no binding in place, and neither has anything below it.
class StepEvaluator : public Evaluator {
public:
    enum class Operation { first, next };

    ~StepEvaluator() override;

    bool hasSolution() final { return isLive_ && (!isVolatile_ || evaluateNow()); }
    void first() final { run(Operation::first); }
    void next() final { run(Operation::next); }
    bool allValuesBound() final;

    // Only on the root of a tree. Gives whether there is a solution then. What is thrown leaves no binding and no
    // solution. A call from within a run of the same tree does nothing and is false.
    bool run(Operation operation);

    // To be returned from the parent's `resume`.
    StepEvaluator * begin(Operation operation);
    // The same for `next`, where the parent has found that there is a solution.
    StepEvaluator * proceed() {
        phase_ = Phase::next;
        return this;
    }

    // `hasSolution` for a parent that resumes because this evaluator is done: nothing can have changed since.
    bool endedOnSolution() const { return isLive_; }

protected:
    enum class Kind { conjunction, disjunction, negation, goal, leaf };
    enum class Phase { first, next, leftDone, rightDone, childDone };

    StepEvaluator(Interpreter const & interpreter, Kind kind, StepEvaluator * parent)
        : Evaluator(interpreter), kind_(kind), parent_(parent) {}

    virtual StepEvaluator * resume() = 0;
    // Of this evaluator alone.
    virtual void releaseBindings() {}
    // For a leaf: whether it has a solution at this moment, and has no variable left.
    virtual bool testNow() { return true; }
    virtual bool isBound() { return true; }
    // What a solution of a disjunction was taken from.
    virtual StepEvaluator * chosen() const { return nullptr; }

    // Undoes the bindings of the tree from here down, where there are any, or everywhere when a run has broken off.
    enum class Extent { withSolution, everywhere };
    void undo(Extent extent = Extent::withSolution);

    // The end of an operation. An evaluator whose outcome depends on more than the runs below it looks again, because
    // what ran last may have bound what it compares.
    StepEvaluator * done(bool isLive) {
        isLive_ = isLive;
        if (!isLive && isVolatile_)
            undo();
        return parent_;
    }

    // The outcome may change while nothing below runs: there is an EvalEqual, or an evaluator of another module.
    void markVolatile();

    void dropChild(int index) { child_[index] = nullptr; }

    Kind kind_;
    Phase phase_ = Phase::first;
    bool isLive_ = false;
    bool isVolatile_ = false;
    bool isRunning_ = false;
    StepEvaluator * parent_; // null for the root
    StepEvaluator * link_ = nullptr;
    qv::Reference<StepEvaluator> child_[2];

private:
    friend class Dismantling;
    friend qv::Reference<StepEvaluator> buildEvaluator(Clause *, Interpreter const &, StepEvaluator *, int);

    bool evaluateNow();
};

// Has a clause with parts, whose evaluators become the children.
class CompositeEvaluator : public StepEvaluator {
public:
    CompositeClause & clause() const { return clause_; }

protected:
    CompositeEvaluator(Interpreter const & interpreter, Kind kind, StepEvaluator * parent, CompositeClause & clause)
        : StepEvaluator(interpreter, kind, parent), clause_(clause) {}

    StepEvaluator & left() const { return *child_[0]; }
    StepEvaluator & right() const { return *child_[1]; }

private:
    CompositeClause & clause_;
};

class EvalAnd final : public CompositeEvaluator {
public:
    EvalAnd(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : CompositeEvaluator(interpreter, Kind::conjunction, parent, clause) {}

protected:
    StepEvaluator * resume() override;
};

class EvalOr final : public CompositeEvaluator {
public:
    EvalOr(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : CompositeEvaluator(interpreter, Kind::disjunction, parent, clause) {}

protected:
    StepEvaluator * resume() override;
    StepEvaluator * chosen() const override { return chosen_; }

private:
    StepEvaluator * chosen_ = nullptr;
};

class EvalNot final : public CompositeEvaluator {
public:
    EvalNot(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : CompositeEvaluator(interpreter, Kind::negation, parent, clause) {}

protected:
    StepEvaluator * resume() override;
};

class EvalEqual final : public StepEvaluator {
public:
    EvalEqual(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Value> left,
              qv::Reference<Value> right);

protected:
    StepEvaluator * resume() override { return done(phase_ == Phase::first && testNow()); }
    bool testNow() override { return compare(*left_, *right_) == 0; }
    bool isBound() override { return !left_->isNull(); }

private:
    qv::Reference<Value> left_;
    qv::Reference<Value> right_;
};

// An evaluator of another module, or none: an empty expression.
class EvalForeign final : public StepEvaluator {
public:
    EvalForeign(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Evaluator> evaluator);

protected:
    StepEvaluator * resume() override;
    bool testNow() override { return evaluator_ && evaluator_->hasSolution(); }
    bool isBound() override { return !evaluator_ || evaluator_->allValuesBound(); }

private:
    qv::Reference<Evaluator> evaluator_;
};

// The evaluators of a clause, which may be null, not started. `depth` tells how many rules it stands in.
qv::Reference<StepEvaluator> buildEvaluator(Clause * clause, Interpreter const & interpreter, StepEvaluator * parent,
                                            int depth);

} // namespace qvPlg

#endif
