#include "Base/Linear/qvLinearRange3d.h"

#include <ostream>

namespace qvLinear {

std::ostream & operator<<(std::ostream & out, Range3d const & range) {
    return out << "Range3d(" << range.min() << "," << range.max() << ")";
}

} // namespace qvLinear
