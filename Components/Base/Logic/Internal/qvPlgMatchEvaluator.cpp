#include "Base/Logic/Internal/qvPlgMatchEvaluator.h"

#include "Base/Logic/qvPlgInterpreter.h"
#include "Base/Logic/qvPlgQuery.h"
#include "Base/Utility/qvUtilError.h"

#include <utility>

namespace qvPlg {

namespace {

// Finds the rule for a goal.
struct RuleKey {
    Fact const & goal;

    bool liesBehind(Rule const & rule) const { return order(rule) < 0; }
    int order(Rule const & rule) const {
        int const byPredicate = rule.predicate().compare(goal.predicate());
        if (byPredicate != 0 || rule.arity() == goal.arity())
            return byPredicate;
        return rule.arity() < goal.arity() ? -1 : 1;
    }
};

Rule const * findRule(Interpreter const & interpreter, Fact const & goal) {
    RuleKey const key{goal};
    auto const place = interpreter.getRules().lower_bound(key);
    return place != interpreter.getRules().end() && key.order(*place) == 0 ? &*place : nullptr;
}

} // namespace

MatchEvaluator::MatchEvaluator(Interpreter const & interpreter, StepEvaluator * parent,
                               qv::Reference<MatchClause> clause, int depth)
    : StepEvaluator(interpreter, Kind::goal, parent), clause_(std::move(clause)), depth_(depth) {}

StepEvaluator * MatchEvaluator::resume() {
    switch (phase_) {
    case Phase::first:
        endRule();
        noteVariables();
        return firstFact();
    case Phase::next:
        if (!child_[0])
            return nextFact();
        phase_ = Phase::childDone;
        return child_[0]->begin(Operation::next);
    default:
        if (child_[0]->endedOnSolution())
            return done(true);
        endRule();
        unbind();
        return done(false);
    }
}

void MatchEvaluator::noteVariables() {
    variables_.clear();
    for (qv::Reference<Value> const & value : goal().values()) {
        if (value->isNull())
            variables_.append(value.get());
    }
}

void MatchEvaluator::setVariablesNull() {
    for (Value * variable : variables_)
        variable->setNull();
}

// Forgets the variables too: without a solution they are somebody else's to bind.
void MatchEvaluator::unbind() {
    setVariablesNull();
    variables_.clear();
}

bool MatchEvaluator::isBound() { return !isLive_ || goal().allValuesBound(); }

// ---- Facts

StepEvaluator * MatchEvaluator::firstFact() {
    range_ = FactRange(goal(), interpreter().getDB());
    return range_.first() ? bindVariables() : startRule();
}

StepEvaluator * MatchEvaluator::nextFact() {
    setVariablesNull();
    if (range_.next())
        return bindVariables();
    unbind();
    return done(false);
}

// A variable that stands twice is bound by its first place.
StepEvaluator * MatchEvaluator::bindVariables() {
    if (!variables_.empty()) {
        for (int i = 0; i < goal().arity(); ++i) {
            if (Value & value = *goal().values()[i]; value.isNull())
                value.assign(range_.argument(i));
        }
    }
    return done(true);
}

// ---- The rule

StepEvaluator * MatchEvaluator::startRule() {
    Rule const * const rule = findRule(interpreter(), goal());
    if (!rule) {
        unbind();
        return done(false);
    }
    if (depth_ >= Query::maxRuleDepth)
        throw qvUtil::Error(1, "qvPlg::Query: rules are nested deeper than %d", Query::maxRuleDepth);
    body_ = rule->instantiate(goal().values());
    child_[0] = buildEvaluator(body_.clause(), interpreter(), this, depth_ + 1);
    phase_ = Phase::childDone;
    return child_[0]->begin(Operation::first);
}

void MatchEvaluator::endRule() {
    if (!child_[0])
        return;
    dropChild(0);
    body_ = Expression();
}

} // namespace qvPlg
