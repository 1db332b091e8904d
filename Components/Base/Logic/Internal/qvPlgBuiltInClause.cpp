#include "Base/Logic/Internal/qvPlgBuiltInClause.h"

#include "Base/Logic/Internal/qvPlgMatchEvaluator.h"
#include "Base/Logic/Internal/qvPlgStepEvaluator.h"

#include <utility>

namespace qvPlg {

qv::Reference<Evaluator> BuiltInClause::createEvaluator(Interpreter const & interpreter) {
    return buildEvaluator(this, interpreter, nullptr, 0);
}

qv::Reference<StepEvaluator> BuiltInClause::makeEvaluator(Clause * clause, Interpreter const & interpreter,
                                                          StepEvaluator * parent, int depth) {
    if (clause && clause->isBuiltIn_)
        return static_cast<BuiltInClause *>(clause)->newEvaluator(interpreter, parent, depth);
    return new EvalForeign(interpreter, parent,
                           clause ? clause->createEvaluator(interpreter) : qv::Reference<Evaluator>());
}

// An expression is taken apart from the top, so that its depth costs no stack.
CompositeClause::~CompositeClause() {
    CompositeClause * list = nullptr;
    releaseParts(list);
    while (list) {
        CompositeClause * const clause = std::exchange(list, list->link_);
        clause->releaseParts(list);
        clause->unref();
    }
}

void CompositeClause::releaseParts(CompositeClause *& list) {
    for (qv::Reference<Clause> & part : part_) {
        if (!part || part->refs() > 1 || !hasParts(*part)) {
            part = nullptr;
            continue;
        }
        CompositeClause * const clause = static_cast<CompositeClause *>(part.release());
        clause->link_ = std::exchange(list, clause);
    }
}

StepEvaluator * ClauseAnd::newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int) {
    return new EvalAnd(interpreter, parent, *this);
}

StepEvaluator * ClauseOr::newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int) {
    return new EvalOr(interpreter, parent, *this);
}

StepEvaluator * ClauseNot::newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int) {
    return new EvalNot(interpreter, parent, *this);
}

StepEvaluator * ClauseEqual::newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int) {
    return new EvalEqual(interpreter, parent, left_, right_);
}

StepEvaluator * MatchClause::newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) {
    return new MatchEvaluator(interpreter, parent, this, depth);
}

} // namespace qvPlg
