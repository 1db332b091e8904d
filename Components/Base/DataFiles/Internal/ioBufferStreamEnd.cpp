#include "Base/DataFiles/Internal/ioBufferStreamEnd.h"

#include "Base/OS/qvOSIOStream.h"

#include <algorithm>

void ioBufferStreamEnd::setStream(qvOS::IOStream * stream) {
    stream_ = stream;
    if (!stream) {
        setStatus(ioBufferFailed);
    }
}

void ioBufferStreamEnd::close() { stream_ = nullptr; }

int ioBufferStreamEnd::readBlock(char * bytes, int count) {
    if (!stream_) {
        setStatus(ioBufferFailed);
        return 0;
    }
    auto const size = static_cast<unsigned>(count);
    unsigned delivered = 0;
    setError(stream_->read(bytes, size, &delivered));
    if (delivered == 0) {
        setStatus(statusOfEmptyRead());
    }
    return static_cast<int>(std::min(delivered, size));
}

void ioBufferStreamEnd::writeBlock(char * bytes, int count) {
    if (!stream_) {
        setStatus(ioBufferFailed);
        return;
    }
    auto left = static_cast<unsigned>(count);
    while (left > 0) {
        unsigned taken = 0;
        setError(stream_->write(bytes, left, &taken));
        if (error() || taken == 0) {
            setStatus(ioBufferFailed);
            return;
        }
        bytes += std::min(taken, left);
        left -= std::min(taken, left);
    }
}
