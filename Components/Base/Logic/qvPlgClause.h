// A node of an expression.

#ifndef qvPlgClause_h
#define qvPlgClause_h

#include "Base/Logic/qvPlgEvaluator.h"
#include "Base/Utility/qvReference.h"
#include "Base/Utility/qvReferenceCount.h"
#include "Base/qvBaseConfig.h"

namespace qvPlg {

class Interpreter;

// Tells what is to be solved and holds nothing of the solving, so that any number of queries may share it. The clauses
// of the library come from the functions of qvPlgExpression.h; a program may add classes of its own.
//
// The library's evaluators use no more of the stack for a deep expression or a deep recursion of rules than for a flat
// one. Evaluators of other classes are called like any function: one that drives evaluators by itself takes stack for
// each of its kind that stands inside another.
class QV_EXPORT Clause : public qv::ReferenceCount {
public:
    Clause() = default;
    Clause(Clause const &) = delete;
    Clause & operator=(Clause const &) = delete;
    ~Clause() override;

    // A new evaluator, which has not been started. The clause must outlive it.
    virtual qv::Reference<Evaluator> createEvaluator(Interpreter const & interpreter) = 0;

private:
    friend class BuiltInClause;

    bool isBuiltIn_ = false;
};

} // namespace qvPlg

#endif
