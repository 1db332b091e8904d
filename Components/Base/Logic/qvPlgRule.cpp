#include "Base/Logic/qvPlgRule.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace qvPlg {

Rule::Rule(qvString::CString const & predicate, int arity, Function function)
    : predicate_(predicate), arity_(arity), function_(function) {}

Expression Rule::instantiate(qv::vector<qv::Reference<Value>> const & values) const {
    return function_ ? function_(values) : Expression();
}

int compare(Rule const & a, Rule const & b) {
    if (int const order = a.predicate().compare(b.predicate()))
        return order;
    if (a.arity() != b.arity())
        return int(std::clamp<std::int64_t>(std::int64_t{a.arity()} - b.arity(), INT_MIN, INT_MAX));
    return 1;
}

} // namespace qvPlg
