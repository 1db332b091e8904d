#include "Base/DataFiles/Internal/ioWriteContextAscii.h"

#include "Base/DataFiles/Internal/ioNumberText.h"

#include <memory>

ioWriteContextAscii::ioWriteContextAscii(ioBufferedStreamOutput & stream)
    : ioWriteContext(stream), buffer_(&outside_) {}

ioPacketFileBuffer * ioWriteContextAscii::newBuffer() {
    auto created = std::make_unique<ioPacketFileAsciiBuffer>();
    created->allocate();
    return created.release();
}

void ioWriteContextAscii::setBuffer(ioPacketFileBuffer * buffer) {
    buffer_ = buffer ? static_cast<ioPacketFileAsciiBuffer *>(buffer) : &outside_;
}

ioHeader ioWriteContextAscii::getHeader() const { return ioHeader(ioWriteAscii); }

void ioWriteContextAscii::refuse() {
    buffer_->fail();
    setStatus(ioFailed);
}

void ioWriteContextAscii::put(char const * text, std::size_t length) {
    if (!buffer_->bytes().put(text, length)) [[unlikely]] {
        refuse();
    }
}

template <auto write, typename T>
void ioWriteContextAscii::putNumber(T value) {
    ioPacketBytes & bytes = buffer_->bytes();
    if (!bytes.reserve(ioNumberText::maxLength + 1)) [[unlikely]] {
        refuse();
        return;
    }
    char * const begin = bytes.cursor();
    char * end = write(begin, value);
    *end++ = ' ';
    bytes.advance(static_cast<std::size_t>(end - begin));
}

void ioWriteContextAscii::writeBool(bool value) { put(value ? "1 " : "0 ", 2); }
void ioWriteContextAscii::writeChar(char value) {
    putNumber<ioNumberText::writeInt>(int{static_cast<signed char>(value)});
}
void ioWriteContextAscii::writeUChar(unsigned char value) { putNumber<ioNumberText::writeInt>(int{value}); }
void ioWriteContextAscii::writeShort(short value) { putNumber<ioNumberText::writeInt>(int{value}); }
void ioWriteContextAscii::writeUShort(unsigned short value) { putNumber<ioNumberText::writeInt>(int{value}); }
void ioWriteContextAscii::writeInt(int value) { putNumber<ioNumberText::writeInt>(value); }
void ioWriteContextAscii::writeUInt(unsigned value) { putNumber<ioNumberText::writeUInt>(value); }
void ioWriteContextAscii::writeInt64(std::int64_t value) { putNumber<ioNumberText::writeInt64>(value); }
void ioWriteContextAscii::writeUInt64(std::uint64_t value) { putNumber<ioNumberText::writeUInt64>(value); }
void ioWriteContextAscii::writeFloat(float value) { putNumber<ioNumberText::writeFloat>(value); }
void ioWriteContextAscii::writeDouble(double value) { putNumber<ioNumberText::writeDouble>(value); }

void ioWriteContextAscii::writeCString(char const * text) {
    put("\"", 1);
    char const * const given = text ? text : "";
    for (char const * begin = given;;) {
        char const * end = begin;
        while (*end && !ioIsEscaped(*end)) {
            ++end;
        }
        put(begin, static_cast<std::size_t>(end - begin));
        if (!*end) {
            break;
        }
        ioWriteContextAscii::writeRawChar(*end);
        begin = end + 1;
    }
    put("\" ", 2);
}

void ioWriteContextAscii::writeRawChar(char c) {
    char const text[] = {'\\', c};
    if (ioIsEscaped(c)) {
        put(text, 2);
    } else {
        put(text + 1, 1);
    }
}

// Through the virtual writers of the elements, whose debug form gives each its own tag.
#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    void ioWriteContextAscii::write##name##Array(type const * values, int count) {                                     \
        for (int i = 0; i < count; ++i) {                                                                              \
            write##name(values[i]);                                                                                    \
        }                                                                                                              \
    }
IO_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE
