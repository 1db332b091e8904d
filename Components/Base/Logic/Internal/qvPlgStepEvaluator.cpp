#include "Base/Logic/Internal/qvPlgStepEvaluator.h"

#include "Base/Logic/Internal/qvPlgBuiltInClause.h"

#include <utility>

namespace qvPlg {

// ---- Life

// Takes a tree apart from the top, so that nothing is destroyed that still has children.
class Dismantling {
public:
    void add(qv::Reference<StepEvaluator> & child) {
        if (!child || child->refs() > 1) {
            child = nullptr;
            return;
        }
        StepEvaluator * const evaluator = child.release();
        evaluator->link_ = std::exchange(list_, evaluator);
    }
    void addChildren(StepEvaluator & evaluator) {
        add(evaluator.child_[0]);
        add(evaluator.child_[1]);
    }
    void run() {
        while (list_) {
            StepEvaluator * const evaluator = std::exchange(list_, list_->link_);
            addChildren(*evaluator);
            evaluator->unref();
        }
    }

private:
    StepEvaluator * list_ = nullptr;
};

StepEvaluator::~StepEvaluator() {
    Dismantling dismantling;
    dismantling.addChildren(*this);
    dismantling.run();
}

qv::Reference<StepEvaluator> buildEvaluator(Clause * clause, Interpreter const & interpreter, StepEvaluator * parent,
                                            int depth) {
    qv::Reference<StepEvaluator> const root = BuiltInClause::makeEvaluator(clause, interpreter, parent, depth);
    auto const isComposite = [](StepEvaluator const & evaluator) {
        return evaluator.kind_ < StepEvaluator::Kind::goal;
    };
    StepEvaluator * list = isComposite(*root) ? root.get() : nullptr;
    while (list) {
        CompositeEvaluator & composite = static_cast<CompositeEvaluator &>(*std::exchange(list, list->link_));
        for (int i = 0; i < composite.clause().partCount(); ++i) {
            qv::Reference<StepEvaluator> & child = composite.child_[i];
            child = BuiltInClause::makeEvaluator(composite.clause().part(i), interpreter, &composite, depth);
            if (isComposite(*child))
                child->link_ = std::exchange(list, child.get());
        }
    }
    return root;
}

// A goal's outcome is fixed when its rule has run.
void StepEvaluator::markVolatile() {
    for (StepEvaluator * at = this; at && at->kind_ != Kind::goal && !at->isVolatile_; at = at->parent_)
        at->isVolatile_ = true;
}

// ---- Running

bool StepEvaluator::run(Operation operation) {
    if (isRunning_)
        return false;
    isRunning_ = true;
    try {
        for (StepEvaluator * at = begin(operation); at;)
            at = at->resume();
    } catch (...) {
        undo(Extent::everywhere);
        isRunning_ = false;
        throw;
    }
    isRunning_ = false;
    return hasSolution();
}

StepEvaluator * StepEvaluator::begin(Operation operation) {
    if (operation == Operation::first) {
        if (isLive_)
            undo();
        phase_ = Phase::first;
        return this;
    }
    if (!hasSolution()) {
        if (isLive_)
            undo();
        return parent_;
    }
    return proceed();
}

void StepEvaluator::undo(Extent extent) {
    link_ = nullptr;
    for (StepEvaluator * list = this; list;) {
        StepEvaluator & evaluator = *std::exchange(list, list->link_);
        evaluator.isLive_ = false;
        evaluator.releaseBindings();
        for (qv::Reference<StepEvaluator> const & child : evaluator.child_) {
            if (child && (child->isLive_ || extent == Extent::everywhere))
                child->link_ = std::exchange(list, child.get());
        }
    }
}

// Down to something that knows its outcome, and up again as far as that decides.
bool StepEvaluator::evaluateNow() {
    StepEvaluator * at = this;
    for (;;) {
        if (at->isLive_ && at->isVolatile_ && at->kind_ != Kind::leaf) {
            at = at->kind_ == Kind::disjunction ? at->chosen() : at->child_[0].get();
            continue;
        }
        bool outcome = at->isLive_ && (!at->isVolatile_ || at->testNow());
        for (;; at = at->parent_) {
            if (at == this)
                return outcome;
            StepEvaluator & parent = *at->parent_;
            if (parent.kind_ == Kind::negation)
                outcome = !outcome;
            else if (parent.kind_ == Kind::conjunction && outcome && at == parent.child_[0].get())
                break;
        }
        at = at->parent_->child_[1].get();
    }
}

bool StepEvaluator::allValuesBound() {
    link_ = nullptr;
    for (StepEvaluator * list = this; list;) {
        StepEvaluator & evaluator = *std::exchange(list, list->link_);
        if (!evaluator.isBound())
            return false;
        if (evaluator.kind_ == Kind::goal)
            continue;
        for (qv::Reference<StepEvaluator> const & child : evaluator.child_) {
            if (child)
                child->link_ = std::exchange(list, child.get());
        }
    }
    return true;
}

// ---- Composites

// A nested loop with the left side outermost. `next` without a solution does nothing, which ends the loop when the left
// side has lost its solution to a binding of the right one.
StepEvaluator * EvalAnd::resume() {
    switch (phase_) {
    case Phase::first:
        phase_ = Phase::leftDone;
        return left().begin(Operation::first);
    case Phase::next:
        phase_ = Phase::rightDone;
        return right().proceed();
    case Phase::leftDone:
        if (!left().endedOnSolution())
            return done(false);
        phase_ = Phase::rightDone;
        return right().begin(Operation::first);
    default:
        if (right().endedOnSolution())
            return done(left().hasSolution());
        phase_ = Phase::leftDone;
        return left().begin(Operation::next);
    }
}

// The side that was taken is remembered: the other one is never started.
StepEvaluator * EvalOr::resume() {
    switch (phase_) {
    case Phase::first:
        chosen_ = &left();
        phase_ = Phase::leftDone;
        return left().begin(Operation::first);
    case Phase::next:
        phase_ = Phase::childDone;
        return chosen_->proceed();
    case Phase::leftDone:
        if (left().endedOnSolution())
            return done(true);
        chosen_ = &right();
        phase_ = Phase::childDone;
        return right().begin(Operation::first);
    default:
        return done(chosen_->endedOnSolution());
    }
}

StepEvaluator * EvalNot::resume() {
    switch (phase_) {
    case Phase::first:
        phase_ = Phase::childDone;
        return left().begin(Operation::first);
    case Phase::next:
        return done(false);
    default:
        if (!left().endedOnSolution())
            return done(true);
        undo();
        return parent_;
    }
}

// ---- Leaves

EvalEqual::EvalEqual(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Value> left,
                     qv::Reference<Value> right)
    : StepEvaluator(interpreter, Kind::leaf, parent), left_(std::move(left)), right_(std::move(right)) {
    markVolatile();
}

EvalForeign::EvalForeign(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Evaluator> evaluator)
    : StepEvaluator(interpreter, Kind::leaf, parent), evaluator_(std::move(evaluator)) {
    markVolatile();
}

StepEvaluator * EvalForeign::resume() {
    if (evaluator_) {
        if (phase_ == Phase::first)
            evaluator_->first();
        else
            evaluator_->next();
    }
    return done(testNow());
}

} // namespace qvPlg
