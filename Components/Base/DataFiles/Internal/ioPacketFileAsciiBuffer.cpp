#include "Base/DataFiles/Internal/ioPacketFileAsciiBuffer.h"

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioNumberText.h"
#include "Base/DataFiles/Internal/ioStreamBlock.h"
#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"
#include "Base/DataFiles/ioPacketType.h"
#include "Base/DataFiles/ioReadContext.h"

#include <algorithm>
#include <cstring>

namespace {

template <std::size_t size>
void putText(ioPacketBytes & bytes, char const (&text)[size]) {
    bytes.put(text, size - 1);
}

void putNumber(ioPacketBytes & bytes, int value) {
    char text[ioNumberText::maxLength + 1];
    char * end = ioNumberText::writeInt(text, value);
    *end++ = ' ';
    bytes.put(text, static_cast<std::size_t>(end - text));
}

// Whether the character behind the text is protected: an odd number of backslashes stands in front of it.
bool isProtected(char const * begin, char const * end) {
    char const * at = end;
    while (at != begin && at[-1] == '\\') {
        --at;
    }
    return (end - at) % 2 != 0;
}

bool skipBehind(ioBufferedStreamInput & stream, char wanted) {
    for (;;) {
        ioStreamBlock const block = ioStreamBlock::of(stream);
        if (block.begin == block.end) {
            return false;
        }
        auto const size = static_cast<std::size_t>(block.end - block.begin);
        if (void const * const found = std::memchr(block.begin, wanted, size)) {
            ioStreamBlock::consume(stream, static_cast<int>(static_cast<char const *>(found) - block.begin) + 1);
            return true;
        }
        ioStreamBlock::consume(stream, static_cast<int>(size));
    }
}

} // namespace

void ioPacketFileAsciiBuffer::beginWrite(ioWriteContext &, bool hasReference, ioPacketType const * type) {
    bytes_.rewind();
    putText(bytes_, "{ ");
    putNumber(bytes_, type ? type->getId() : -1);
    putNumber(bytes_, hasReference ? 1 : 0);
}

void ioPacketFileAsciiBuffer::endWrite(ioWriteContext &, ioBufferedStreamOutput & stream) {
    putText(bytes_, "}\n");
    if (bytes_.overflowed()) {
        fail();
    }
    if (valid()) {
        stream.writeData(bytes_.begin(), bytes_.size());
    }
}

void ioPacketFileAsciiBuffer::writeChunkStart(ioWriteContext &) { putText(bytes_, ioAsciiChunkStart); }

void ioPacketFileAsciiBuffer::writeChunkEnd(ioWriteContext &) { putText(bytes_, ioAsciiChunkEnd); }

void ioPacketFileAsciiBuffer::writeSubPacketStart(ioWriteContext &) { putText(bytes_, ioAsciiSubPacketStart); }

void ioPacketFileAsciiBuffer::writeSubPacketEnd(ioWriteContext &) { putText(bytes_, ioAsciiSubPacketEnd); }

// The text up to the first closing brace that no backslash protects, as it comes. False when the stream ends first.
bool ioPacketFileAsciiBuffer::loadText(ioBufferedStreamInput & stream) {
    bytes_.rewind();
    for (;;) {
        ioStreamBlock const block = ioStreamBlock::of(stream);
        if (block.begin == block.end) {
            return false;
        }
        void const * const brace = std::memchr(block.begin, '}', static_cast<std::size_t>(block.end - block.begin));
        char const * const stop = brace ? static_cast<char const *>(brace) : block.end;
        auto const piece = static_cast<std::size_t>(stop - block.begin);
        if (!bytes_.put(block.begin, piece)) {
            return false;
        }
        ioStreamBlock::consume(stream, static_cast<int>(piece));
        if (!brace) {
            continue;
        }
        ioStreamBlock::consume(stream, 1);
        if (!isProtected(bytes_.begin(), bytes_.cursor())) {
            return true;
        }
        bytes_.put("}", 1);
    }
}

int ioPacketFileAsciiBuffer::takeFrameNumber() {
    char const * next = nullptr;
    int const number = ioNumberText::parseInt(at_, end_, &next);
    char const * const blank = std::find(next, end_, ' ');
    at_ = blank == end_ ? end_ : blank + 1;
    return number;
}

int ioPacketFileAsciiBuffer::readFromStream(ioReadContext & context, ioBufferedStreamInput & stream) {
    setType(nullptr);
    chunkHasData_.clear();
    chunkHasData_.append(false);
    absentLevels_ = 0;
    bool const whole = skipBehind(stream, '{') && loadText(stream);
    at_ = bytes_.begin();
    end_ = bytes_.cursor();
    if (!whole) {
        return 0;
    }
    ioStreamBlock::skipIfNext(stream, '\n');
    while (at_ != end_ && (*at_ == ' ' || *at_ == '\n')) {
        ++at_;
    }
    int const id = takeFrameNumber();
    int const flag = takeFrameNumber();
    setType(context.lookupType(id));
    return flag;
}

void ioPacketFileAsciiBuffer::endRead(ioReadContext &) { at_ = end_; }

template <std::size_t size>
bool ioPacketFileAsciiBuffer::startsWith(char const (&text)[size]) const {
    return static_cast<std::size_t>(end_ - at_) >= size - 1 && std::memcmp(at_, text, size - 1) == 0;
}

// A newline is how the frames of chunks and sub-packets begin; a field never does.
bool ioPacketFileAsciiBuffer::atFieldEnd() const {
    if (absentLevels_ > 0 || at_ == end_ || *at_ == ']' || *at_ == '>') {
        return true;
    }
    return *at_ == '\n' && (startsWith(ioAsciiChunkStart) || startsWith(ioAsciiSubPacketStart));
}

bool ioPacketFileAsciiBuffer::isRegularEndAt(int level) const {
    if (absentLevels_ > 0) {
        return true;
    }
    if (at_ == end_) {
        return false;
    }
    return *at_ == ']' ? chunkOpenAt(level) : *at_ != '>' || level > 0;
}

void ioPacketFileAsciiBuffer::skipBehindBlank() {
    while (at_ != end_ && *at_ != ']' && *at_ != '>') {
        if (*at_ == ' ') {
            ++at_;
            return;
        }
        stepOver(*at_ == '\\' ? 2 : 1);
    }
}

void ioPacketFileAsciiBuffer::stepOver(int count) { at_ += std::min<std::ptrdiff_t>(count, end_ - at_); }

void ioPacketFileAsciiBuffer::readChunkStart(ioReadContext &) {
    chunkHasData_.back() = false;
    if (absentLevels_ == 0 && startsWith(ioAsciiChunkStart)) {
        stepOver(sizeof ioAsciiChunkStart - 1);
        chunkHasData_.back() = at_ != end_ && *at_ != ']';
        setChunkOpen(true);
    }
}

bool ioPacketFileAsciiBuffer::readChunkValid() { return !chunkHasData_.empty() && chunkHasData_.back(); }

void ioPacketFileAsciiBuffer::readChunkEnd(ioReadContext & context) {
    chunkHasData_.back() = false;
    int depth = 0;
    while (at_ != end_) {
        switch (*at_) {
        case '\\':
            stepOver(2);
            continue;
        case '<':
            ++depth;
            break;
        case '>':
            if (depth == 0) {
                if (level() == 0) {
                    context.badPacket();
                }
                return;
            }
            --depth;
            break;
        case ']':
            stepOver(2);
            if (depth == 0) {
                return;
            }
            continue;
        default:
            break;
        }
        ++at_;
    }
    context.badPacket();
}

void ioPacketFileAsciiBuffer::readSubPacketStart(ioReadContext & context) {
    chunkHasData_.append(false);
    if (absentLevels_ == 0 && startsWith(ioAsciiSubPacketStart)) {
        stepOver(sizeof ioAsciiSubPacketStart - 1);
        return;
    }
    bool const endsHere = at_ != end_ && (*at_ == ']' || *at_ == '>');
    if (absentLevels_ == 0 && !(endsHere && isRegularEndAt(level() - 1))) {
        context.badPacket();
    }
    ++absentLevels_;
}

void ioPacketFileAsciiBuffer::readSubPacketEnd(ioReadContext & context) {
    chunkHasData_.eraseBack();
    if (absentLevels_ > 0) {
        --absentLevels_;
        return;
    }
    int subPackets = 0;
    int chunks = 0;
    while (at_ != end_) {
        switch (*at_) {
        case '\\':
            stepOver(2);
            continue;
        case '<':
            ++subPackets;
            break;
        case '[':
            ++chunks;
            break;
        case ']':
            --chunks;
            break;
        case '>':
            if (subPackets == 0 && chunks == 0) {
                stepOver(2);
                return;
            }
            --subPackets;
            break;
        default:
            break;
        }
        ++at_;
    }
    context.badPacket();
}
