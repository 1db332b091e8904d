#include "Base/Logic/qvPlgDatabase.h"

#include <iterator>
#include <ostream>

namespace qvPlg {

Database::Database() { facts_.setNumElementsInBlock(10); }

// Facts of one predicate stand together, so a new one finds its text at one of its neighbours.
void Database::addFact(Fact const & fact) {
    Fact copy(fact);
    copy.setCompare(Fact::CompareExact);
    auto const [place, isNew] = facts_.insert(copy);
    if (!isNew)
        return;
    auto const shareWith = [&](Fact const & neighbour) {
        if (neighbour.predicate().compare(place->predicate()) != 0)
            return false;
        place->name_ = neighbour.name_;
        return true;
    };
    if (place != facts_.begin() && shareWith(*std::prev(place)))
        return;
    if (auto const behind = std::next(place); behind != facts_.end())
        shareWith(*behind);
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
