#include "Base/Logic/Internal/qvPlgFactRange.h"

#include "Base/Logic/qvPlgIntegerValue.h"
#include "Base/Logic/qvPlgStringValue.h"

#include <string_view>
#include <typeinfo>

namespace qvPlg {

namespace {

constexpr std::uint64_t integerMark = std::uint64_t{1} << 62;
constexpr std::uint64_t textMark = std::uint64_t{1} << 63; // "string" sorts behind "integer"

} // namespace

// Subclasses may sort otherwise, so the class has to be these exactly.
std::uint64_t FactRange::keyOf(Value const & value) {
    if (typeid(value) == typeid(IntegerValue)) {
        int const number = static_cast<IntegerValue const &>(value).get();
        return integerMark | (static_cast<std::uint32_t>(number) ^ 0x80000000U);
    }
    if (typeid(value) == typeid(StringValue)) {
        std::string_view const text(static_cast<StringValue const &>(value).get());
        std::uint64_t key = 0;
        for (std::size_t i = 0; i < 7; ++i)
            key = key << 8 | (i < text.size() ? static_cast<unsigned char>(text[i]) : 0U);
        return textMark | key;
    }
    return 0;
}

std::uint64_t FactRange::startOf(Value const & value) {
    std::uint64_t const key = keyOf(value);
    return key < textMark ? key : textMark | qvString::hashfunction(static_cast<StringValue const &>(value).get());
}

FactRange::FactRange(Fact const & goal, Database const & database) : goal_(&goal), database_(&database) {
    auto const name = database.names_.find(goal.predicate());
    if (name != database.names_.end())
        name_ = name->second.get();
    while (leading_ < goal.arity() && !goal.values()[leading_]->isNull())
        ++leading_;
    if (leading_ > 0)
        key_ = keyOf(*goal.values()[0]);
}

qv::set<Fact>::const_iterator FactRange::first() const {
    qv::set<Fact> const & facts = database_->getFacts();
    if (!name_)
        return facts.end();
    if (key_ != 0) {
        auto const start = database_->starts_.find({name_, goal_->arity(), startOf(*goal_->values()[0])});
        if (start == database_->starts_.end())
            return facts.end();
        if (leading_ == 1 && contains(*start->second))
            return start->second;
    }
    return facts.lower_bound(*this);
}

int FactRange::order(Fact const & fact) const {
    if (fact.name_.get() != name_)
        return fact.predicate().compare(goal_->predicate());
    if (fact.arity() != goal_->arity())
        return fact.arity() < goal_->arity() ? -1 : 1;
    if (key_ == 0 || fact.firstKey_ == 0)
        return orderOfValues(fact, 0);
    if (fact.firstKey_ != key_)
        return fact.firstKey_ < key_ ? -1 : 1;
    return orderOfValues(fact, key_ < textMark ? 1 : 0);
}

int FactRange::orderOfValues(Fact const & fact, int from) const {
    for (int i = from; i < leading_; ++i) {
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
