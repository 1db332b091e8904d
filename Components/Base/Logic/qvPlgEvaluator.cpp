#include "Base/Logic/qvPlgEvaluator.h"

namespace qvPlg {

Evaluator::~Evaluator() = default;

BindingEvaluator::~BindingEvaluator() = default;

} // namespace qvPlg
