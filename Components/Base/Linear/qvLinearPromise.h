// The tag by which a caller vouches for what it hands over.

#ifndef qvLinearPromise_h
#define qvLinearPromise_h

#include "Base/qvBaseConfig.h"

namespace qvLinear {

// An argument of this type is the caller's promise that the data beside it needs no checking:
//
//     Normal up(Promise(), 0, 0, 1); // taken as it is, not normalised
struct Promise {};

} // namespace qvLinear

#endif
