#include "Base/Linear/qvLinearRange1d.h"

#include <ostream>

namespace qvLinear {

std::ostream & operator<<(std::ostream & out, Range1d const & range) {
    return out << "Range1d(" << range.min() << "," << range.max() << ")";
}

} // namespace qvLinear
