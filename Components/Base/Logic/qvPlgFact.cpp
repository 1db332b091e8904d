#include "Base/Logic/qvPlgFact.h"

#include "Base/Utility/qvUtilError.h"

#include <ostream>
#include <string_view>

namespace qvPlg {

namespace {

// How a null value sorts against a bound one: 0 when it sorts by its data.
int orderOfNull(Fact const & fact) { return fact.compareLow() ? -1 : int(fact.compareHigh()); }

} // namespace

Fact::Fact(qvString::CString const & predicate, qv::vector<qv::Reference<Value>> const & values)
    : name_(new Name(predicate)), values_(values) {
    checkValues();
}

Fact::Fact(qvString::CString const & predicate, qv::Reference<Value> value)
    : name_(new Name(predicate)), values_({value}) {
    checkValues();
}

Fact::Fact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second)
    : name_(new Name(predicate)), values_({first, second}) {
    checkValues();
}

Fact::Fact(qvString::CString const & predicate, qv::Reference<Value> first, qv::Reference<Value> second,
           qv::Reference<Value> third)
    : name_(new Name(predicate)), values_({first, second, third}) {
    checkValues();
}

void Fact::checkValues() const {
    for (int i = 0; i < values_.size(); ++i) {
        if (!values_[i])
            throw qvUtil::Error(1, "qvPlg::Fact: argument %d of %s is missing", i + 1, predicate().asChar());
    }
}

bool Fact::allValuesBound() const {
    for (qv::Reference<Value> const & value : values_) {
        if (value->isNull())
            return false;
    }
    return true;
}

int compare(Fact const & a, Fact const & b) {
    if (&a.predicate() != &b.predicate()) {
        if (int const order = a.predicate().compare(b.predicate()))
            return order;
    }
    if (a.arity() != b.arity())
        return a.arity() - b.arity();
    for (int i = 0; i < a.arity(); ++i) {
        Value const & left = *a.values()[i];
        Value const & right = *b.values()[i];
        bool const leftIsNull = left.isNull();
        int order = 0;
        if (leftIsNull != right.isNull())
            order = leftIsNull ? orderOfNull(a) : -orderOfNull(b);
        if (order == 0)
            order = compare(left, right);
        if (order != 0)
            return order;
    }
    return 0;
}

std::ostream & operator<<(std::ostream & stream, Fact const & fact) {
    stream << "{ \"" << std::string_view(fact.predicate()) << '"';
    for (qv::Reference<Value> const & value : fact.values())
        stream << ", \"" << *value << '"';
    return stream << " }";
}

} // namespace qvPlg
