#include "Base/Logic/qvPlgExpression.h"

#include "Base/Containers/qvVector.h"
#include "Base/Logic/Internal/qvPlgBuiltInClause.h"
#include "Base/Utility/qvUtilError.h"

namespace qvPlg {

namespace {

using Values = qv::vector<qv::Reference<Value>>;

Expression match(qvString::CString const & predicate, Values const & values) {
    return invokeMatch(Fact(predicate, values));
}

} // namespace

Expression invokeAnd(Expression left, Expression right) { return Expression(new ClauseAnd(left, right)); }

Expression invokeOr(Expression left, Expression right) { return Expression(new ClauseOr(left, right)); }

Expression invokeNot(Expression expression) { return Expression(new ClauseNot(expression)); }

Expression invokeEqual(Argument left, Argument right) {
    if (!left.value() || !right.value())
        throw qvUtil::Error(1, "qvPlg: an operand of == is missing");
    return Expression(new ClauseEqual(left.value(), right.value()));
}

Expression invokeMatch(Fact const & goal) { return Expression(new MatchClause(goal)); }

Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1) { return match(predicate, Values{v1}); }

Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2) {
    return match(predicate, Values{v1, v2});
}

Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                  qv::Reference<Value> v3) {
    return match(predicate, Values{v1, v2, v3});
}

Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                  qv::Reference<Value> v3, qv::Reference<Value> v4) {
    return match(predicate, Values{v1, v2, v3, v4});
}

Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                  qv::Reference<Value> v3, qv::Reference<Value> v4, qv::Reference<Value> v5) {
    return match(predicate, Values{v1, v2, v3, v4, v5});
}

Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                  qv::Reference<Value> v3, qv::Reference<Value> v4, qv::Reference<Value> v5, qv::Reference<Value> v6) {
    return match(predicate, Values{v1, v2, v3, v4, v5, v6});
}

} // namespace qvPlg
