#include "Base/Logic/qvPlgEvaluator.h"

namespace qvPlg {

Evaluator::~Evaluator() = default;

} // namespace qvPlg
