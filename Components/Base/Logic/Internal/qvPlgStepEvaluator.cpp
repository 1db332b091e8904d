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
        return evaluator.kind_ == StepEvaluator::Kind::composite;
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

// A goal's answer is fixed when its rule has run.
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
        undo(Undoing::everything);
        isRunning_ = false;
        isOver_ = true;
        throw;
    }
    isRunning_ = false;
    isOver_ = operation == Operation::next && !isLive_;
    return isLive_ && standsNow();
}

void StepEvaluator::releaseBindings() {
    if (isRunning_)
        return;
    if (isLive_)
        undo();
    isOver_ = true;
}

StepEvaluator * StepEvaluator::begin(Operation operation) {
    if (operation == Operation::first) {
        if (isLive_)
            undo();
        phase_ = Phase::first;
        return this;
    }
    if (isLive_ && standsNow())
        return proceed();
    if (isLive_)
        undo();
    return parent_;
}

void StepEvaluator::undo(Undoing what) {
    link_ = nullptr;
    for (StepEvaluator * list = this; list;) {
        StepEvaluator & evaluator = *std::exchange(list, list->link_);
        evaluator.isLive_ = false;
        evaluator.stands_ = evaluator.stands_ && what == Undoing::bindings;
        evaluator.unbind();
        for (qv::Reference<StepEvaluator> const & child : evaluator.child_) {
            if (child && (child->isLive_ || what == Undoing::everything))
                child->link_ = std::exchange(list, child.get());
        }
    }
}

// Down to something that knows its answer, and up again as far as that decides.
bool StepEvaluator::evaluateNow() {
    StepEvaluator * at = this;
    StepEvaluator const * answered = nullptr;
    for (bool answer = false;;) {
        StepEvaluator * part = nullptr;
        if (at->isVolatile_)
            part = at->ask(answered, answer);
        else
            answer = at->stands_;
        if (part) {
            at = part;
            answered = nullptr;
        } else if (at == this) {
            return answer;
        } else {
            answered = std::exchange(at, at->parent_);
        }
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
        rightIsStarted_ = false;
        phase_ = Phase::leftDone;
        return left().begin(Operation::first);
    case Phase::next:
        phase_ = Phase::rightDone;
        return right().proceed();
    case Phase::leftDone:
        return left().endedOnSolution() ? startRight() : done(false);
    default:
        if (right().endedOnSolution())
            return done(left().standsNow());
        phase_ = Phase::leftDone;
        return left().begin(Operation::next);
    }
}

StepEvaluator * EvalAnd::startRight() {
    rightIsStarted_ = true;
    phase_ = Phase::rightDone;
    return right().begin(Operation::first);
}

// What was not started in this run has no solution.
StepEvaluator * EvalAnd::ask(StepEvaluator const * answered, bool & answer) {
    if (!answered)
        return &left();
    if (answered != &left() || !answer)
        return nullptr;
    answer = rightIsStarted_;
    return rightIsStarted_ ? &right() : nullptr;
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

// Where neither side had a solution, both were started and either may have one now.
StepEvaluator * EvalOr::ask(StepEvaluator const * answered, bool & answer) {
    if (!answered)
        return isLive_ ? chosen_ : &left();
    return answered == &left() && chosen_ != answered && !answer ? &right() : nullptr;
}

StepEvaluator * EvalNot::resume() {
    switch (phase_) {
    case Phase::first:
        isDone_ = false;
        phase_ = Phase::childDone;
        return left().begin(Operation::first);
    case Phase::next:
        isDone_ = true;
        return done(false);
    default:
        if (!left().endedOnSolution())
            return done(true);
        left().undo(Undoing::bindings);
        return done(false);
    }
}

StepEvaluator * EvalNot::ask(StepEvaluator const * answered, bool & answer) {
    if (!answered && !isDone_)
        return &left();
    answer = answered && !answer;
    return nullptr;
}

// ---- Leaves

EvalEqual::EvalEqual(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Value> left,
                     qv::Reference<Value> right)
    : StepEvaluator(interpreter, Kind::leaf, parent), left_(std::move(left)), right_(std::move(right)) {
    markVolatile();
}

StepEvaluator * EvalEqual::resume() {
    isDone_ = phase_ != Phase::first;
    bool answer;
    ask(nullptr, answer);
    return done(answer);
}

StepEvaluator * EvalEqual::ask(StepEvaluator const *, bool & answer) {
    answer = !isDone_ && compare(*left_, *right_) == 0;
    return nullptr;
}

EvalForeign::EvalForeign(Interpreter const & interpreter, StepEvaluator * parent, qv::Reference<Evaluator> evaluator)
    : StepEvaluator(interpreter, Kind::leaf, parent), evaluator_(std::move(evaluator)),
      binding_(dynamic_cast<BindingEvaluator *>(evaluator_.get())) {
    markVolatile();
}

StepEvaluator * EvalForeign::resume() {
    if (!evaluator_)
        return done(false);
    isUnbound_ = false;
    if (phase_ == Phase::first)
        evaluator_->first();
    else
        evaluator_->next();
    return done(evaluator_->hasSolution());
}

void EvalForeign::unbind() {
    if (!binding_)
        return;
    binding_->releaseBindings();
    isUnbound_ = true;
}

StepEvaluator * EvalForeign::ask(StepEvaluator const *, bool & answer) {
    answer = isUnbound_ || !evaluator_ ? stands_ : evaluator_->hasSolution();
    return nullptr;
}

} // namespace qvPlg
