#include "Base/DataFiles/Internal/ioWriteContextBinary.h"

#include <cstring>
#include <memory>

ioWriteContextBinary::ioWriteContextBinary(ioBufferedStreamOutput & stream)
    : ioWriteContext(stream), buffer_(&outside_) {}

ioPacketFileBuffer * ioWriteContextBinary::newBuffer() {
    auto created = std::make_unique<ioPacketFileBinaryBuffer>();
    created->allocate();
    return created.release();
}

void ioWriteContextBinary::setBuffer(ioPacketFileBuffer * buffer) {
    buffer_ = buffer ? static_cast<ioPacketFileBinaryBuffer *>(buffer) : &outside_;
}

void ioWriteContextBinary::endPacketWith(void const * bytes, std::size_t count) {
    buffer_->setTrailer(bytes, count);
    endPacket();
}

ioHeader ioWriteContextBinary::getHeader() const { return ioHeader(ioWriteBinary); }

inline void ioWriteContextBinary::put(void const * bytes, std::size_t count) {
    if (!buffer_->put(bytes, count)) [[unlikely]] {
        buffer_->fail();
        setStatus(ioFailed);
    }
}

template <typename T>
void ioWriteContextBinary::putArray(T const * values, int count) {
    if (count > 0) {
        put(values, static_cast<std::size_t>(count) * sizeof(T));
    }
}

void ioWriteContextBinary::writeBool(bool value) {
    char const byte = value ? 1 : 0;
    put(&byte, 1);
}

void ioWriteContextBinary::writeBoolArray(bool const * values, int count) {
    for (int i = 0; i < count; ++i) {
        writeBool(values[i]);
    }
}

#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    void ioWriteContextBinary::write##name(type value) { put(&value, sizeof value); }                                  \
    void ioWriteContextBinary::write##name##Array(type const * values, int count) { putArray(values, count); }
IO_DEFINE(Char, char, 'c', '1')
IO_DEFINE(UChar, unsigned char, 'C', '2')
IO_ORDERED_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE

void ioWriteContextBinary::writeCString(char const * text) {
    char const * const given = text ? text : "";
    put(given, std::strlen(given) + 1);
}

void ioWriteContextBinary::writeRawChar(char c) { put(&c, 1); }
