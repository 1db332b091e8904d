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
// An evaluator whose last operation ended on a solution is live; one that is not has no binding in place, and neither
// has anything below it. Whether there is a solution is another question, which is answered anew whenever it is asked:
// what ran since may have bound what a leaf compares. So a negation in front of the clause that binds its operands
// turns out false behind it.
class StepEvaluator : public BindingEvaluator {
public:
    enum class Operation { first, next };

    ~StepEvaluator() override;

    bool hasSolution() final { return !isOver_ && !isRunning_ && standsNow(); }
    void first() final { run(Operation::first); }
    void next() final { run(Operation::next); }
    bool allValuesBound() final;
    void releaseBindings() final;

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

    // For a parent that resumes because this evaluator is done: nothing can have changed since.
    bool endedOnSolution() const { return isLive_; }
    // Whether there is a solution at this moment. Only of what was started in this run.
    bool standsNow() { return isVolatile_ ? evaluateNow() : stands_; }

    // Releases the bindings of all that is live from here down. A solution goes with them, but `bindings` leaves the
    // answer to a negation, which has had it. `everything` is for a run that has broken off.
    enum class Undoing { solution, bindings, everything };
    void undo(Undoing what = Undoing::solution);

protected:
    enum class Kind { composite, goal, leaf };
    enum class Phase { first, next, leftDone, rightDone, childDone };

    StepEvaluator(Interpreter const & interpreter, Kind kind, StepEvaluator * parent)
        : BindingEvaluator(interpreter), kind_(kind), parent_(parent) {}

    virtual StepEvaluator * resume() = 0;
    // Whether this evaluator, without those below it, has no variable left.
    virtual bool isBound() { return true; }
    // Releases the bindings that this evaluator itself has made.
    virtual void unbind() {}
    // For `standsNow` of a volatile evaluator: gives the part that has to be asked, at first with null, and then with
    // the part that has answered. Null when `answer` is that of this evaluator.
    virtual StepEvaluator * ask(StepEvaluator const * answered, bool & answer) = 0;

    // The end of an operation. A volatile composite may have lost a solution which its parts still stand on.
    StepEvaluator * done(bool isLive) {
        isLive_ = isLive;
        stands_ = isLive;
        if (!isLive && isVolatile_)
            undo();
        return parent_;
    }

    // The answer may change while nothing below runs: there is an EvalEqual, or an evaluator of another module.
    void markVolatile();

    void dropChild(int index) { child_[index] = nullptr; }

    Kind kind_;
    Phase phase_ = Phase::first;
    bool isLive_ = false;
    bool stands_ = false; // the answer of one that is not volatile
    bool isVolatile_ = false;
    bool isRunning_ = false;
    bool isOver_ = true;     // of the root: not started, or nothing to go on from
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
    CompositeEvaluator(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : StepEvaluator(interpreter, Kind::composite, parent), clause_(clause) {}

    StepEvaluator & left() const { return *child_[0]; }
    StepEvaluator & right() const { return *child_[1]; }

private:
    CompositeClause & clause_;
};

class EvalAnd final : public CompositeEvaluator {
public:
    EvalAnd(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : CompositeEvaluator(interpreter, parent, clause) {}

protected:
    StepEvaluator * resume() override;
    StepEvaluator * ask(StepEvaluator const * answered, bool & answer) override;

private:
    StepEvaluator * startRight();

    bool rightIsStarted_ = false;
};

class EvalOr final : public CompositeEvaluator {
public:
    EvalOr(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : CompositeEvaluator(interpreter, parent, clause) {}

protected:
    StepEvaluator * resume() override;
    StepEvaluator * ask(StepEvaluator const * answered, bool & answer) override;

private:
    StepEvaluator * chosen_ = nullptr; // the side that was started last
};

class EvalNot final : public CompositeEvaluator {
public:
    EvalNot(Interpreter const & interpreter, StepEvaluator * parent, CompositeClause & clause)
        : CompositeEvaluator(interpreter, parent, clause) {}

protected:
    StepEvaluator * resume() override;
    StepEvaluator * ask(StepEvaluator const * answered, bool & answer) override;

private:
    bool isDone_ = false;
};

class EvalEqual final : public StepEvaluator {
public:
    EvalEqual(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Value> left,
              qv::Reference<Value> right);

protected:
    StepEvaluator * resume() override;
    bool isBound() override { return !left_->isNull(); }
    StepEvaluator * ask(StepEvaluator const * answered, bool & answer) override;

private:
    qv::Reference<Value> left_;
    qv::Reference<Value> right_;
    bool isDone_ = false;
};

// An evaluator of another module, or none: an empty expression.
class EvalForeign final : public StepEvaluator {
public:
    EvalForeign(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Evaluator> evaluator);

protected:
    StepEvaluator * resume() override;
    void unbind() override;
    bool isBound() override { return !evaluator_ || evaluator_->allValuesBound(); }
    StepEvaluator * ask(StepEvaluator const * answered, bool & answer) override;

private:
    qv::Reference<Evaluator> evaluator_;
    BindingEvaluator * binding_; // the same, when it is one
    bool isUnbound_ = false;     // since its last operation: it no longer knows its answer
};

// The evaluators of a clause, which may be null, not started. `depth` tells how many rules it stands in.
qv::Reference<StepEvaluator> buildEvaluator(Clause * clause, Interpreter const & interpreter, StepEvaluator * parent,
                                            int depth);

} // namespace qvPlg

#endif
