#include "Base/DataFiles/ioContext.h"

#include "Base/DataFiles/Internal/ioPacketFileAbort.h"
#include "Base/DataFiles/Internal/ioPacketFileBuffer.h"
#include "Base/DataFiles/ioBufferedStream.h"
#include "Base/DataFiles/ioPacketFileError.h"
#include "Base/DataFiles/ioPacketRegistry.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReferenceMap.h"

#include <algorithm>
#include <cstdlib>

namespace {

constexpr int initialCapacity = 10;

} // namespace

ioContext::ioContext()
    : registry_(nullptr), buffer_(nullptr), reference_(ioPacketFileNewReferenceMap()),
      buffers_(new ioPacketFileBuffer *[initialCapacity]()), capacity_(initialCapacity), depth_(-1), status_(ioGood) {}

ioContext::~ioContext() {
    std::for_each(buffers_, buffers_ + capacity_, [](ioPacketFileBuffer * buffer) { delete buffer; });
    delete[] buffers_;
}

ioPacketType * ioContext::lookupType(int id) const { return registry_ ? registry_->lookup(id) : nullptr; }

void ioContext::invalidPacket() {
    if (buffer_) {
        buffer_->invalidate();
    }
}

ioPacketType const * ioContext::currentType() const { return buffer_ ? buffer_->type() : nullptr; }

void ioContext::setStatus(ioStatus status) {
    if (status_ == ioGood) {
        status_ = status;
    }
}

void ioContext::promoteStreamStatus(ioBufferedStream const & stream) {
    switch (stream.getStatus()) {
    case ioStreamGood:
        return;
    case ioStreamOpenFailed:
        status_ = ioOpenFailed;
        return;
    case ioStreamEOF:
    case ioStreamCompressEnd:
        status_ = ioBadData;
        return;
    case ioStreamDiskFull:
        status_ = ioDiskFull;
        return;
    case ioStreamChecksumFailed:
        status_ = ioChecksumFailed;
        return;
    case ioStreamFailed:
        status_ = ioFailed;
        return;
    }
}

// The buffers of all levels stay for reuse, so that steady writing allocates nothing.
void ioContext::pushPacket() {
    int const level = depth_ + 1;
    if (level == capacity_) {
        auto * const larger = new ioPacketFileBuffer *[static_cast<std::size_t>(capacity_) * 2]();
        std::copy(buffers_, buffers_ + capacity_, larger);
        delete[] buffers_;
        buffers_ = larger;
        capacity_ *= 2;
    }
    if (!buffers_[level]) {
        buffers_[level] = newBuffer();
    }
    depth_ = level;
    buffer_ = buffers_[level];
    setBuffer(buffer_);
}

void ioContext::popPacket() {
    --depth_;
    buffer_ = depth_ >= 0 ? buffers_[depth_] : nullptr;
    setBuffer(buffer_);
}

int ioContext::getReference(void const * pointer) const { return reference_->getReference(pointer); }

bool ioContext::isReferenceDefined(int reference) const { return reference_->isDefined(reference); }

bool ioContext::isReferenceDefined(void const * pointer) const { return isReferenceDefined(getReference(pointer)); }

void * ioContext::getReferenceDefinition(int reference) const { return reference_->getDefinition(reference); }

void ioContext::undefineReference(int reference) { reference_->undefine(reference); }

void ioContext::undefineReference(void * pointer) { reference_->undefine(pointer); }

void ioContext::reportUnresolvedPtrs(ioPacketType * type, void (*function)(void *, int)) {
    reference_->reportUnresolved(type, function);
}

void ioContext::associateReferenceMap(ioReferenceMap * map) {
    if (map) {
        reference_ = qv::Reference<ioReferenceMap>(map);
    }
}

ioReferenceMap * ioContext::getReferenceMap() const { return &*reference_; }

void ioContext::fatalError() {
    ioPacketFileError("ioPacketFile: Fatal error.  Aborting.\n");
    for (int level = 0; level < depth_; ++level) {
        ioPacketType const * const type = buffers_[level]->type();
        ioPacketFileError("  %d: %d\n", level, type ? type->getId() : -1);
    }
    ioPacketFileRunAbortHook();
    std::abort();
}
