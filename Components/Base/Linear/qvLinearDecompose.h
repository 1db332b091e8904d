// The parts of which an affine transformation is made.

#ifndef qvLinearDecompose_h
#define qvLinearDecompose_h

#include "Base/Linear/qvLinearAffineMatrix.h"
#include "Base/Linear/qvLinearVector.h"

namespace qvLinear {

/*
 * Takes the linear part of a matrix apart: it is S * H * R, where S scales by `scale`, H shears and R rotates. The
 * shears are those of y by x, of z by x and of z by y; `rotate` holds degrees, about the x axis first, then y and z.
 * The translation is the matrix's own.
 *
 * False, with a rotation of 0, when the axes do not span the space. A mirroring shows as a negative scale on all axes.
 * Within a hair of 90 degrees about y, put together again the parts are true to some 2e-5 only.
 */
QV_EXPORT bool orvenDecompose(AffineMatrix const & matrix, Vector & translate, Vector & scale, Vector & rotate,
                              Vector & shear);

} // namespace qvLinear

#endif
