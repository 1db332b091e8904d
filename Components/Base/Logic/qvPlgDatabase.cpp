#include "Base/Logic/qvPlgDatabase.h"

#include "Base/Logic/Internal/qvPlgFactRange.h"

#include <iterator>
#include <ostream>

namespace qvPlg {

Database::Database() { facts_.setNumElementsInBlock(10); }

Database::Database(Database const & other) : facts_(other.facts_), names_(other.names_) {
    for (auto place = facts_.cbegin(); place != facts_.cend(); ++place)
        noteStart(place);
}

// Places of facts stay good when sets change over.
Database & Database::operator=(Database const & other) {
    Database copy(other);
    facts_.swap(copy.facts_);
    names_.swap(copy.names_);
    starts_.swap(copy.starts_);
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
    noteStart(place);
    eraseAgain.release();
}

// Of facts that begin alike the first one stands directly in front of the one that was it before.
void Database::noteStart(qv::set<Fact>::const_iterator place) {
    if (place->arity() == 0)
        return;
    std::uint64_t const argument = FactRange::startOf(*place->values()[0]);
    if (argument == 0)
        return;
    auto const [start, isNew] = starts_.try_emplace(Start{place->name_.get(), place->arity(), argument}, place);
    if (!isNew && std::next(place) == start->second)
        start->second = place;
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
