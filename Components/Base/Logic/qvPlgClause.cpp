#include "Base/Logic/qvPlgClause.h"

namespace qvPlg {

Clause::~Clause() = default;

} // namespace qvPlg
