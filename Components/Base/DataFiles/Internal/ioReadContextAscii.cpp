#include "Base/DataFiles/Internal/ioReadContextAscii.h"

#include "Base/DataFiles/Internal/ioNumberText.h"

#include <algorithm>
#include <memory>
#include <string>

ioReadContextAscii::ioReadContextAscii(ioBufferedStreamInput & stream, ioReadMethod method)
    : ioReadContext(stream, method), buffer_(&outside_) {}

ioPacketFileBuffer * ioReadContextAscii::newBuffer() {
    auto created = std::make_unique<ioPacketFileAsciiBuffer>();
    created->allocate();
    return created.release();
}

void ioReadContextAscii::setBuffer(ioPacketFileBuffer * buffer) {
    buffer_ = buffer ? static_cast<ioPacketFileAsciiBuffer *>(buffer) : &outside_;
}

bool ioReadContextAscii::chunkHasData() { return buffer_->readChunkValid(); }

void ioReadContextAscii::missingField() {
    if (!buffer_->isRegularEnd()) {
        badPacket();
    }
}

// The position moves behind the blank that follows the number, or what stands in a number's place.
template <auto parse>
auto ioReadContextAscii::takeNumber() {
    char const * const begin = buffer_->at();
    char const * at = begin;
    decltype(parse(at, at, &at)) value = 0;
    if (buffer_->atFieldEnd()) [[unlikely]] {
        missingField();
        return value;
    }
    value = parse(begin, buffer_->end(), &at);
    if (at == begin) [[unlikely]] {
        at = std::find_if_not(begin, buffer_->end(), ioNumberText::isWhite);
    }
    buffer_->moveTo(at);
    buffer_->skipBehindBlank();
    return value;
}

bool ioReadContextAscii::readBool() { return takeNumber<ioNumberText::parseInt>() != 0; }
char ioReadContextAscii::readChar() { return static_cast<char>(takeNumber<ioNumberText::parseInt>()); }
unsigned char ioReadContextAscii::readUChar() {
    return static_cast<unsigned char>(takeNumber<ioNumberText::parseInt>());
}
short ioReadContextAscii::readShort() { return static_cast<short>(takeNumber<ioNumberText::parseInt>()); }
unsigned short ioReadContextAscii::readUShort() {
    return static_cast<unsigned short>(takeNumber<ioNumberText::parseInt>());
}
int ioReadContextAscii::readInt() { return takeNumber<ioNumberText::parseInt>(); }
unsigned ioReadContextAscii::readUInt() { return takeNumber<ioNumberText::parseUInt>(); }
std::int64_t ioReadContextAscii::readInt64() { return takeNumber<ioNumberText::parseInt64>(); }
std::uint64_t ioReadContextAscii::readUInt64() { return takeNumber<ioNumberText::parseUInt64>(); }
float ioReadContextAscii::readFloat() { return static_cast<float>(takeNumber<ioNumberText::parseDouble>()); }
double ioReadContextAscii::readDouble() { return takeNumber<ioNumberText::parseDouble>(); }

// Through the virtual readers of the elements, whose debug form takes a tag from each.
#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    void ioReadContextAscii::read##name##Array(type * values, int count) {                                             \
        for (int i = 0; i < count; ++i) {                                                                              \
            values[i] = read##name();                                                                                  \
        }                                                                                                              \
    }
IO_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE

char ioReadContextAscii::readRawChar() {
    if (buffer_->atFieldEnd()) {
        missingField();
        return 0;
    }
    char const * at = buffer_->at();
    if (*at == '\\' && at + 1 != buffer_->end()) {
        ++at;
    }
    buffer_->moveTo(at + 1);
    return *at;
}

// Goes behind the opening quote of the string at the position.
bool ioReadContextAscii::findQuote() {
    while (!buffer_->atFieldEnd()) {
        char const * const at = buffer_->at();
        buffer_->moveTo(at + 1);
        if (*at == '"') {
            return true;
        }
    }
    missingField();
    return false;
}

char const * ioReadContextAscii::readCString() {
    static std::string text;
    if (!findQuote()) {
        return nullptr;
    }
    text.clear();
    char const * const end = buffer_->end();
    for (char const * begin = buffer_->at();;) {
        char const * const stop = std::find_if(begin, end, [](char c) { return c == '"' || c == '\\'; });
        text.append(begin, stop);
        if (stop == end || (*stop == '\\' && stop + 1 == end)) {
            buffer_->moveTo(end);
            badPacket();
            return nullptr;
        }
        if (*stop == '"') {
            bool const blank = stop + 1 != end && stop[1] == ' ';
            buffer_->moveTo(stop + (blank ? 2 : 1));
            return text.c_str();
        }
        text.push_back(stop[1]);
        begin = stop + 2;
    }
}
