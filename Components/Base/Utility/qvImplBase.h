// The root of the private implementations behind public handles.

#ifndef qvImplBase_h
#define qvImplBase_h

#include "Base/qvBaseConfig.h"

namespace qv {

// A public class that hides its state holds nothing but a pointer to its implementation, whose class derives from this
// one. The public constructor makes it with `new`, and the public destructor deletes it through this class, so that it
// need not know the implementation's type.
class QV_EXPORT ImplBase {
public:
    virtual ~ImplBase() = default;
};

} // namespace qv

#endif
