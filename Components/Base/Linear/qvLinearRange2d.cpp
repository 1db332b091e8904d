#include "Base/Linear/qvLinearRange2d.h"

#include <ostream>

namespace qvLinear {

std::ostream & operator<<(std::ostream & out, Range2d const & range) {
    return out << "Range2d(" << range.min() << "," << range.max() << ")";
}

} // namespace qvLinear
