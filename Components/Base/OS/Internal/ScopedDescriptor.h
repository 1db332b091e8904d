// A descriptor that is closed at the end of its scope.

#ifndef ScopedDescriptor_h
#define ScopedDescriptor_h

#include "Base/Platform/PlatformFile.h"

namespace qvOS {

class ScopedDescriptor {
public:
    ScopedDescriptor() = default;
    ScopedDescriptor(ScopedDescriptor const &) = delete;
    ScopedDescriptor & operator=(ScopedDescriptor const &) = delete;
    ~ScopedDescriptor() { static_cast<void>(close()); }

    qvPlatform::Descriptor & operator*() { return descriptor_; }
    // For those whom a failure matters to.
    qvPlatform::FileResult close() {
        qvPlatform::Descriptor const descriptor = descriptor_;
        descriptor_ = qvPlatform::noDescriptor;
        return descriptor == qvPlatform::noDescriptor ? qvPlatform::FileResult{}
                                                      : qvPlatform::closeDescriptor(descriptor);
    }

private:
    qvPlatform::Descriptor descriptor_ = qvPlatform::noDescriptor;
};

} // namespace qvOS

#endif
