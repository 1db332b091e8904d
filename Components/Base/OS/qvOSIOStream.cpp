#include "Base/OS/qvOSIOStream.h"

namespace qvOS {

IOStream::~IOStream() = default;

} // namespace qvOS
