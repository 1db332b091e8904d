#include "Base/DataFiles/Internal/ioPacketFileBinaryBuffer.h"

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioReadContextBinary.h"
#include "Base/DataFiles/Internal/ioStreamBlock.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioWriteContext.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>

namespace {

// Type number, reference flag, body size. They carry no tags, in the debug form either.
struct Frame {
    std::int32_t type;
    std::int32_t hasReference;
    std::int32_t size;
};
static_assert(sizeof(Frame) == 12);

} // namespace

void ioPacketFileBinaryBuffer::beginWrite(ioWriteContext &, bool hasReference, ioPacketType const * type) {
    Frame const frame{type ? type->getId() : -1, hasReference ? 1 : 0, 0};
    bytes_.rewind();
    bytes_.put(&frame, sizeof frame);
    nesting_.clear();
    nesting_.append(Nesting{});
}

// Replaces the place holder of a size that was written through the context, as the size up to here. The debug form
// has a tag there too, so the context writes it again.
void ioPacketFileBinaryBuffer::patchSize(ioWriteContext & context, int sizePosition) {
    int const end = bytes_.size();
    bytes_.moveTo(sizePosition);
    context.writeInt(end - sizePosition);
    bytes_.moveTo(end);
}

void ioPacketFileBinaryBuffer::writeChunkStart(ioWriteContext & context) {
    bytes_.put(&ioBinaryChunkMarker, 1);
    nesting_.back().chunkSize = bytes_.size();
    context.writeInt(0);
}

void ioPacketFileBinaryBuffer::writeChunkEnd(ioWriteContext & context) {
    patchSize(context, nesting_.back().chunkSize);
}

void ioPacketFileBinaryBuffer::writeSubPacketStart(ioWriteContext & context) {
    bytes_.put(&ioBinarySubPacketMarker, 1);
    nesting_.back().subPacketSize = bytes_.size();
    context.writeInt(0);
    nesting_.append(Nesting{});
}

void ioPacketFileBinaryBuffer::writeSubPacketEnd(ioWriteContext & context) {
    nesting_.eraseBack();
    patchSize(context, nesting_.back().subPacketSize);
}

void ioPacketFileBinaryBuffer::endWrite(ioWriteContext &, ioBufferedStreamOutput & stream) {
    nesting_.clear();
    if (bytes_.overflowed()) {
        fail();
    }
    std::int32_t const size = bytes_.size() - static_cast<int>(sizeof(Frame)) + trailerSize_;
    std::memcpy(bytes_.begin() + offsetof(Frame, size), &size, sizeof size);
    if (valid()) {
        stream.writeData(bytes_.begin(), bytes_.size());
        stream.writeData(trailer_, trailerSize_);
    }
    setTrailer(nullptr, 0);
}

// Gives the number of bytes that are there. Memory is taken as they arrive, so that a size field alone costs nothing.
int ioPacketFileBinaryBuffer::loadBody(ioBufferedStreamInput & stream, int size) {
    body_ = ioStreamBlock::takeInPlace(stream, size, *this);
    if (body_) {
        lender_ = &stream;
        lentSize_ = size;
        return size;
    }
    bytes_.rewind();
    while (bytes_.size() < size) {
        bytes_.reserve(1);
        int const piece = std::min(size, bytes_.capacity()) - bytes_.size();
        int const got = stream.readData(bytes_.cursor(), piece);
        bytes_.advance(static_cast<std::size_t>(got));
        if (got < piece) {
            break;
        }
    }
    body_ = bytes_.begin();
    return bytes_.size();
}

// Somebody uses the stream while the packet is being read, or closes it.
void ioPacketFileBinaryBuffer::takeOver() {
    lender_ = nullptr;
    int const at = readPosition();
    int const limit = readLimit();
    bytes_.rewind();
    bytes_.put(body_, static_cast<std::size_t>(lentSize_));
    body_ = bytes_.begin();
    at_ = body_ + at;
    setReadLimit(limit);
}

void ioPacketFileBinaryBuffer::giveBackAndCopy() {
    giveBack();
    takeOver();
}

void ioPacketFileBinaryBuffer::giveBack() {
    if (lender_) {
        ioStreamBlock::giveBack(*lender_);
        lender_ = nullptr;
    }
}

int ioPacketFileBinaryBuffer::readFromStream(ioReadContext & context, ioBufferedStreamInput & stream) {
    giveBack();
    auto & binary = static_cast<ioReadContextBinary &>(context);
    std::int32_t fields[sizeof(Frame) / sizeof(std::int32_t)];
    binary.readStreamInts(stream, fields, std::size(fields));
    Frame const frame{fields[0], fields[1], fields[2]};
    setType(nullptr);
    readingFrame_ = false;
    at_ = limit_ = body_ = bytes_.begin();
    if (frame.type < 0 || frame.size < 0) {
        return 0;
    }
    setType(context.lookupType(frame.type));
    int const loaded = loadBody(stream, frame.size);
    at_ = body_;
    setReadLimit(loaded);
    nesting_.clear();
    nesting_.append(Nesting{});
    nesting_.back().containerEnd = loaded;
    return frame.hasReference;
}

void ioPacketFileBinaryBuffer::endRead(ioReadContext &) {
    nesting_.clear();
    at_ = limit_;
}

bool ioPacketFileBinaryBuffer::endOfFields() {
    at_ = limit_;
    return !readingFrame_ && (level() > 0 || chunkOpen());
}

// The size field at the position, as the place where that chunk or sub-packet ends. One that reaches out of its
// container ends with it.
int ioPacketFileBinaryBuffer::readFrameSize(ioReadContext & context, int containerEnd) {
    ++at_; // the marker
    int const start = readPosition();
    readingFrame_ = true;
    int const size = context.readInt();
    readingFrame_ = false;
    if (size < 0 || size > containerEnd - start) {
        context.badPacket();
        return containerEnd;
    }
    return start + size;
}

void ioPacketFileBinaryBuffer::readChunkStart(ioReadContext & context) {
    Nesting & nesting = nesting_.back();
    nesting.chunkHasData = false;
    if (readPosition() >= nesting.containerEnd) {
        return;
    }
    nesting.chunkEnd = readFrameSize(context, nesting.containerEnd);
    nesting.chunkHasData = readPosition() < nesting.chunkEnd;
    setReadLimit(std::max(nesting.chunkEnd, readPosition()));
    nesting.inChunk = true;
    setChunkOpen(true);
}

bool ioPacketFileBinaryBuffer::readChunkValid() { return !nesting_.empty() && nesting_.back().chunkHasData; }

void ioPacketFileBinaryBuffer::readChunkEnd(ioReadContext &) {
    Nesting & nesting = nesting_.back();
    if (nesting.chunkHasData) {
        at_ = body_ + nesting.chunkEnd;
    }
    nesting.inChunk = false;
    nesting.chunkHasData = false;
    setReadLimit(nesting.containerEnd);
}

void ioPacketFileBinaryBuffer::readSubPacketStart(ioReadContext & context) {
    int const outerLimit = readLimit();
    int end = outerLimit;
    if (at_ < limit_) {
        end = readFrameSize(context, outerLimit);
    } else if (nesting_.size() == 1 && !nesting_.back().inChunk) {
        context.badPacket();
    }
    Nesting inner;
    inner.containerEnd = std::max(end, readPosition());
    inner.outerLimit = outerLimit;
    nesting_.append(inner);
    setReadLimit(inner.containerEnd);
}

void ioPacketFileBinaryBuffer::readSubPacketEnd(ioReadContext &) {
    setReadLimit(nesting_.back().outerLimit);
    at_ = body_ + nesting_.back().containerEnd;
    nesting_.eraseBack();
}
