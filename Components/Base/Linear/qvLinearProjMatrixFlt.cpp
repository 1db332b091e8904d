#include "Base/Linear/qvLinearProjMatrixFlt.h"

#include "Base/Linear/Internal/TransposeFour.h"

namespace qvLinear {

double ProjMatrixFlt::det3x3() const {
    double exact[elements];
    for (int i = 0; i < elements; ++i)
        exact[i] = double{m[i]};
    return detail::determinant3<4>(exact);
}

void ProjMatrixFlt::transpose() { transposeFour(m); }

} // namespace qvLinear
