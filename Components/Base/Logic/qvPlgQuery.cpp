#include "Base/Logic/qvPlgQuery.h"

#include "Base/Logic/Internal/qvPlgStepEvaluator.h"

#include <utility>

namespace qvPlg {

Query::Query(Expression expression) : expression_(std::move(expression)) {}

Query::~Query() = default;

bool Query::solve(Interpreter const & interpreter) {
    if (evaluator_)
        return static_cast<StepEvaluator &>(*evaluator_).run(StepEvaluator::Operation::next);
    qv::Reference<StepEvaluator> const root = buildEvaluator(expression_.clause(), interpreter, nullptr, 0);
    evaluator_ = root;
    return root->run(StepEvaluator::Operation::first);
}

} // namespace qvPlg
