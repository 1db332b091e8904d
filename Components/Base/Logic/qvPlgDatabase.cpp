#include "Base/Logic/qvPlgDatabase.h"

#include "Base/Logic/Internal/qvPlgFactRange.h"

#include <algorithm>
#include <ostream>

namespace qvPlg {

Database::Database() { facts_.setNumElementsInBlock(10); }

Database::Database(Database const & other) : facts_(other.facts_), names_(other.names_) {
    for (Fact const & fact : facts_)
        addToGroup(fact);
}

// Facts stay where they are when sets change over.
Database & Database::operator=(Database const & other) {
    Database copy(other);
    facts_.swap(copy.facts_);
    names_.swap(copy.names_);
    groups_.swap(copy.groups_);
    groupsAreWhole_ = copy.groupsAreWhole_;
    return *this;
}

unsigned Database::HashStart::operator()(Start const & start) const {
    return qv::hash<std::uint64_t>()(start.argument * 0x9E3779B97F4A7C15U + std::uint64_t(start.arity)) ^
           qv::hash<Fact::Name const *>()(start.name);
}

void Database::addFact(Fact const & fact) {
    Fact copy(fact);
    copy.setCompare(Fact::CompareExact);
    copy.name_ = names_.try_emplace(fact.predicate(), fact.name_).first->second;
    copy.firstKey_ = copy.arity() > 0 ? FactRange::keyOf(*copy.values()[0]) : 0;
    auto const [place, isNew] = facts_.insert(copy);
    if (!isNew)
        return;
    qv::detail::OnFailure eraseAgain([&, at = place] { facts_.erase(at); });
    addToGroup(*place);
    eraseAgain.release();
}

void Database::addToGroup(Fact const & fact) {
    if (fact.firstKey_ == 0) {
        if (fact.arity() > 0 && FactRange::hasTypeWithKeys(*fact.values()[0]))
            groupsAreWhole_ = false;
        return;
    }
    Row const row = rowOf(fact);
    Group & group = groups_[Start{fact.name_.get(), fact.arity(), FactRange::startOf(*row.arguments[0])}];
    if (!group.hasRows)
        return;
    if (!group.first.arguments) {
        group.first = row;
        return;
    }
    if (group.size() == maxGroupSize || compare(*group.first.arguments[0], *row.arguments[0]) != 0) {
        group = Group{{}, {}, false};
        return;
    }
    auto const isBefore = [&fact](Row const & a, Row const & b) {
        int order = 0;
        for (int i = 1; i < fact.arity() && order == 0; ++i)
            order = compare(*a.arguments[i], *b.arguments[i]);
        return order < 0;
    };
    if (isBefore(row, group.first)) {
        group.others.insert(group.others.begin(), group.first);
        group.first = row;
    } else {
        group.others.insert(std::lower_bound(group.others.begin(), group.others.end(), row, isBefore), row);
    }
}

void Database::addFact(qvString::CString const & predicate, qv::Reference<Value> value) {
    addFact(Fact(predicate, value));
}

void Database::addFact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second) {
    addFact(Fact(predicate, first, second));
}

void Database::addFact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second,
                       qv::Reference<Value> third) {
    addFact(Fact(predicate, first, second, third));
}

std::ostream & operator<<(std::ostream & stream, Database const & database) {
    stream << "{\n";
    for (Fact const & fact : database.getFacts())
        stream << "    {" << fact << "},\n";
    return stream << "    {{ 0 }}\n}\n";
}

} // namespace qvPlg
