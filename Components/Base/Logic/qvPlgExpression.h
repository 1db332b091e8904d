// How queries and rules are written.

#ifndef qvPlgExpression_h
#define qvPlgExpression_h

#include "Base/Logic/qvPlgClause.h"
#include "Base/Logic/qvPlgFact.h"
#include "Base/Logic/qvPlgValue.h"
#include "Base/Strings/qvStringCString.h"
#include "Base/Utility/qvReference.h"
#include "Base/qvBaseConfig.h"

#include <concepts>
#include <utility>

namespace qvPlg {

// A counted reference to a clause. An empty expression is one without solutions.
//
//     qv::Reference<IntegerValue> x(new IntegerValue), y(new IntegerValue); // variables
//     Expression const older = clause("born", x, y) & (!clause("died", x)) & (y != limit);
//
// The values are shared with whatever else holds them: one variable in two clauses carries its binding from the first
// to the second, and two queries over the same variables must not run at the same time.
//
// - `clause` gives the stored facts that match, in their order, with the variables bound to their arguments. Only if
//   there is none, it gives the solutions of the rule of this predicate and arity. A variable that stands twice in one
//   clause is bound by its first place and not compared at the second.
// - `a & b` gives, for each solution of `a`, those of `b`.
// - `a || b` gives the solutions of `a`, and only if there is none, those of `b`.
// - `!a` is true once if `a` has no solution; it binds nothing.
// - `x == y` is true once if both values are equal. It binds nothing, and with a variable it compares old data: write
//   it behind the clauses that bind its operands. In front of them it is looked at again when they have bound these,
//   also inside of negations and so in `x != y`: if it does not hold then, there is no solution, and no further one.
class QV_EXPORT Expression {
public:
    Expression() = default;
    explicit Expression(qv::Reference<Clause> clause) : clause_(std::move(clause)) {}
    explicit Expression(Clause * clause) : clause_(clause) {}

    // Null when the expression is empty.
    Clause * clause() const { return clause_.get(); }

private:
    qv::Reference<Clause> clause_;
};

// An operand of `==` and `!=`: any reference to a value. It must not be null when it is used.
class Argument {
public:
    template <std::derived_from<Value> T>
    Argument(qv::Reference<T> const & value) : value_(value) {}

    qv::Reference<Value> const & value() const { return value_; }

private:
    qv::Reference<Value> value_;
};

QV_EXPORT Expression invokeAnd(Expression left, Expression right);
QV_EXPORT Expression invokeOr(Expression left, Expression right);
QV_EXPORT Expression invokeNot(Expression expression);
// Throws Error number 1 for a null reference.
QV_EXPORT Expression invokeEqual(Argument left, Argument right);
QV_EXPORT Expression invokeMatch(Fact const & goal);

inline Expression operator&(Expression left, Expression right) { return invokeAnd(std::move(left), std::move(right)); }
inline Expression operator||(Expression left, Expression right) { return invokeOr(std::move(left), std::move(right)); }
inline Expression operator!(Expression expression) { return invokeNot(std::move(expression)); }

inline Expression equal(Argument left, Argument right) { return invokeEqual(left, right); }
inline Expression equal(qv::Reference<Value> left, qv::Reference<Value> right) { return invokeEqual(left, right); }

inline Expression operator==(Argument left, Argument right) { return invokeEqual(left, right); }
inline Expression operator!=(Argument left, Argument right) { return invokeNot(invokeEqual(left, right)); }

// For references as they are: the forms above need a conversion, which would lose against an operator of the reference,
// or be one of two.
template <std::derived_from<Value> T, std::derived_from<Value> U>
Expression equal(qv::Reference<T> const & left, qv::Reference<U> const & right) {
    return invokeEqual(left, right);
}
template <std::derived_from<Value> T, std::derived_from<Value> U>
Expression operator==(qv::Reference<T> const & left, qv::Reference<U> const & right) {
    return invokeEqual(left, right);
}
template <std::derived_from<Value> T, std::derived_from<Value> U>
Expression operator!=(qv::Reference<T> const & left, qv::Reference<U> const & right) {
    return invokeNot(invokeEqual(left, right));
}

// A goal. Throws Error number 1 for a null reference.
QV_EXPORT Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1);
QV_EXPORT Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2);
QV_EXPORT Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                            qv::Reference<Value> v3);
QV_EXPORT Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                            qv::Reference<Value> v3, qv::Reference<Value> v4);
QV_EXPORT Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                            qv::Reference<Value> v3, qv::Reference<Value> v4, qv::Reference<Value> v5);
QV_EXPORT Expression clause(qvString::CString const & predicate, qv::Reference<Value> v1, qv::Reference<Value> v2,
                            qv::Reference<Value> v3, qv::Reference<Value> v4, qv::Reference<Value> v5,
                            qv::Reference<Value> v6);

} // namespace qvPlg

#endif
