#include "Base/Logic/Internal/qvPlgFactRange.h"

namespace qvPlg {

FactRange::FactRange(Fact const & goal) : goal_(&goal), name_(goal.name_.get()) {
    while (leading_ < goal.arity() && !goal.values()[leading_]->isNull())
        ++leading_;
}

int FactRange::order(Fact const & fact) const {
    if (fact.name_.get() != name_) {
        if (int const order = fact.predicate().compare(goal_->predicate()))
            return order;
        name_ = fact.name_.get();
    }
    if (fact.arity() != goal_->arity())
        return fact.arity() < goal_->arity() ? -1 : 1;
    for (int i = 0; i < leading_; ++i) {
        if (int const order = compare(*fact.values()[i], *goal_->values()[i]))
            return order;
    }
    return 0;
}

bool FactRange::matches(Fact const & fact) const {
    for (int i = leading_; i < goal_->arity(); ++i) {
        Value const & wanted = *goal_->values()[i];
        Value const & stored = *fact.values()[i];
        if (wanted.isNull() ? !wanted.hasTypeOf(stored) : compare(wanted, stored) != 0)
            return false;
    }
    return true;
}

} // namespace qvPlg
