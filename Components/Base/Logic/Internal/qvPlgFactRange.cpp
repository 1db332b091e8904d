#include "Base/Logic/Internal/qvPlgFactRange.h"

#include "Base/Logic/qvPlgIntegerValue.h"
#include "Base/Logic/qvPlgStringValue.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <typeinfo>

namespace qvPlg {

namespace {

constexpr int rowsAhead = 5;
constexpr int valuesAhead = 2;

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

bool FactRange::hasTypeWithKeys(Value const & value) {
    return std::strcmp(value.getType(), "integer") == 0 || std::strcmp(value.getType(), "string") == 0;
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

bool FactRange::first() {
    group_ = nullptr;
    if (!name_)
        return false;
    if (key_ != 0 && database_->groupsAreWhole_ && findGroup())
        return group_ && seekInGroup();
    place_ = database_->getFacts().lower_bound(*this);
    return seekInSet();
}

bool FactRange::next() {
    if (group_) {
        ++index_;
        return seekInGroup();
    }
    ++place_;
    return seekInSet();
}

// False when the facts have to be found in the set.
bool FactRange::findGroup() {
    auto const place = database_->groups_.find({name_, goal_->arity(), startOf(*goal_->values()[0])});
    if (place == database_->groups_.end())
        return true;
    Database::Group const & group = place->second;
    if (!group.hasRows)
        return false;
    if (key_ >= textMark && compare(*group.first.arguments[0], *goal_->values()[0]) != 0)
        return true; // another text of the same number
    group_ = &group;
    index_ = 0;
    if (leading_ > 1 && orderOfRow(group.first, 1) < 0) {
        auto const liesBefore = [](Row const & row, FactRange const * range) { return range->orderOfRow(row, 1) < 0; };
        index_ = 1 + int(std::lower_bound(group.others.begin(), group.others.end(), this, liesBefore) -
                         group.others.begin());
    }
    for (int i = index_; i < group.size() && i < index_ + rowsAhead; ++i)
        fetch(group.row(i));
    return true;
}

bool FactRange::seekInGroup() {
    for (; index_ < group_->size(); ++index_) {
        row_ = group_->row(index_);
        fetchAhead();
        if (orderOfRow(row_, 1) != 0)
            break;
        if (matches())
            return true;
    }
    return false;
}

bool FactRange::seekInSet() {
    for (auto const end = database_->getFacts().end(); place_ != end && order(*place_) == 0; ++place_) {
        row_ = Database::rowOf(*place_);
        if (matches())
            return true;
    }
    return false;
}

// What is read first of a fact.
void FactRange::fetch(Row const & row) const {
    if (goal_->arity() > 1)
        __builtin_prefetch(row.second);
    if (goal_->arity() > 2)
        __builtin_prefetch(row.arguments);
}

// Of other arguments than the second the value is two steps away, which wait for memory one after the other: they are
// taken ahead, each for another fact.
void FactRange::fetchAhead() const {
    int const left = group_->size() - index_;
    if (left > rowsAhead)
        fetch(group_->row(index_ + rowsAhead));
    if (left > valuesAhead && leading_ > 1 && leading_ < goal_->arity())
        __builtin_prefetch(group_->row(index_ + valuesAhead).arguments[leading_].get());
}

bool FactRange::matches() const {
    for (int i = leading_; i < goal_->arity(); ++i) {
        Value const & wanted = *goal_->values()[i];
        Value const & stored = argumentOf(row_, i);
        if (wanted.isNull() ? !wanted.hasTypeOf(stored) : compare(wanted, stored) != 0)
            return false;
    }
    return true;
}

int FactRange::order(Fact const & fact) const {
    if (fact.name_.get() != name_)
        return fact.predicate().compare(goal_->predicate());
    if (fact.arity() != goal_->arity())
        return fact.arity() < goal_->arity() ? -1 : 1;
    if (key_ == 0 || fact.firstKey_ == 0)
        return orderOfRow(Database::rowOf(fact), 0);
    if (fact.firstKey_ != key_)
        return fact.firstKey_ < key_ ? -1 : 1;
    int const from = key_ < textMark ? 1 : 0;
    return from < leading_ ? orderOfRow(Database::rowOf(fact), from) : 0;
}

int FactRange::orderOfRow(Row const & row, int from) const {
    for (int i = from; i < leading_; ++i) {
        if (int const order = compare(argumentOf(row, i), *goal_->values()[i]))
            return order;
    }
    return 0;
}

} // namespace qvPlg
