#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

Vector Vector::orthogonalVector() const {
    double const w = x_ * y_ > 0 && y_ * z_ > 0 ? -z_ : z_;
    return cross(Vector(w, x_, y_), *this);
}

} // namespace qvLinear
