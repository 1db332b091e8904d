// A descriptor that is closed at the end of its scope.

#ifndef PlatformScopedDescriptor_h
#define PlatformScopedDescriptor_h

#include "Base/Platform/PlatformFile.h"

namespace qvPlatform {

class ScopedDescriptor {
public:
    ScopedDescriptor() = default;
    ScopedDescriptor(ScopedDescriptor const &) = delete;
    ScopedDescriptor & operator=(ScopedDescriptor const &) = delete;
    ~ScopedDescriptor() { static_cast<void>(close()); }

    Descriptor & operator*() { return descriptor_; }
    // For those whom a failure matters to.
    FileResult close() {
        Descriptor const descriptor = descriptor_;
        descriptor_ = noDescriptor;
        return descriptor == noDescriptor ? FileResult{} : closeDescriptor(descriptor);
    }

private:
    Descriptor descriptor_ = noDescriptor;
};

} // namespace qvPlatform

#endif
