#include "Base/Logic/qvPlgInterpreter.h"

namespace qvPlg {

Interpreter::Interpreter() = default;

} // namespace qvPlg
