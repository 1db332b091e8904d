// The library's own clauses.

#ifndef qvPlgBuiltInClause_h
#define qvPlgBuiltInClause_h

#include "Base/Logic/qvPlgClause.h"
#include "Base/Logic/qvPlgExpression.h"
#include "Base/Logic/qvPlgFact.h"
#include "Base/Logic/qvPlgValue.h"

namespace qvPlg {

class StepEvaluator;

class BuiltInClause : public Clause {
public:
    qv::Reference<Evaluator> createEvaluator(Interpreter const & interpreter) final;

    // The evaluator of a clause of any kind, null included, without those of its parts.
    static qv::Reference<StepEvaluator> makeEvaluator(Clause * clause, Interpreter const & interpreter,
                                                      StepEvaluator * parent, int depth);

protected:
    enum class Parts { none, some };

    explicit BuiltInClause(Parts parts) : hasParts_(parts == Parts::some) { isBuiltIn_ = true; }

    virtual StepEvaluator * newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) = 0;

    static bool hasParts(Clause const & clause) {
        return clause.isBuiltIn_ && static_cast<BuiltInClause const &>(clause).hasParts_;
    }

private:
    bool hasParts_;
};

class CompositeClause : public BuiltInClause {
public:
    ~CompositeClause() override;

    int partCount() const { return count_; }
    Clause * part(int index) const { return part_[index].get(); }

protected:
    explicit CompositeClause(Expression const & part) : BuiltInClause(Parts::some), count_(1), part_{part.clause()} {}
    CompositeClause(Expression const & left, Expression const & right)
        : BuiltInClause(Parts::some), count_(2), part_{left.clause(), right.clause()} {}

private:
    // Moves what dies with this clause into a list.
    void releaseParts(CompositeClause *& list);

    int count_;
    qv::Reference<Clause> part_[2];
    CompositeClause * link_ = nullptr;
};

class ClauseAnd final : public CompositeClause {
public:
    ClauseAnd(Expression const & left, Expression const & right) : CompositeClause(left, right) {}

protected:
    StepEvaluator * newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) override;
};

class ClauseOr final : public CompositeClause {
public:
    ClauseOr(Expression const & left, Expression const & right) : CompositeClause(left, right) {}

protected:
    StepEvaluator * newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) override;
};

class ClauseNot final : public CompositeClause {
public:
    explicit ClauseNot(Expression const & expression) : CompositeClause(expression) {}

protected:
    StepEvaluator * newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) override;
};

class ClauseEqual final : public BuiltInClause {
public:
    ClauseEqual(qv::Reference<Value> const & left, qv::Reference<Value> const & right)
        : BuiltInClause(Parts::none), left_(left), right_(right) {}

protected:
    StepEvaluator * newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) override;

private:
    qv::Reference<Value> left_;
    qv::Reference<Value> right_;
};

class MatchClause final : public BuiltInClause {
public:
    explicit MatchClause(Fact const & goal) : BuiltInClause(Parts::none), goal_(goal) {}

    Fact const & goal() const { return goal_; }

protected:
    StepEvaluator * newEvaluator(Interpreter const & interpreter, StepEvaluator * parent, int depth) override;

private:
    Fact const goal_;
};

} // namespace qvPlg

#endif
