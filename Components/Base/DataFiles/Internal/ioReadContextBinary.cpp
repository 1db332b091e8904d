#include "Base/DataFiles/Internal/ioReadContextBinary.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <memory>

namespace {

template <std::size_t size>
struct Bits;
template <>
struct Bits<2> {
    using Type = std::uint16_t;
};
template <>
struct Bits<4> {
    using Type = std::uint32_t;
};
template <>
struct Bits<8> {
    using Type = std::uint64_t;
};

// The value of bytes that stand in the other order.
template <typename T>
T reversed(T value) {
    using Type = typename Bits<sizeof(T)>::Type;
    Type const from = std::bit_cast<Type>(value);
    Type to = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        to = static_cast<Type>(to << 8 | ((from >> (8 * i)) & 0xFF));
    }
    return std::bit_cast<T>(to);
}

template <ioByteOrder order, typename T>
T ordered(T value) {
    return order == ioByteOrder::same ? value : reversed(value);
}

} // namespace

ioReadContextBinary::ioReadContextBinary(ioBufferedStreamInput & stream, ioReadMethod method)
    : ioReadContext(stream, method), buffer_(&outside_) {}

ioPacketFileBuffer * ioReadContextBinary::newBuffer() {
    auto created = std::make_unique<ioPacketFileBinaryBuffer>();
    created->allocate();
    return created.release();
}

void ioReadContextBinary::setBuffer(ioPacketFileBuffer * buffer) {
    buffer_ = buffer ? static_cast<ioPacketFileBinaryBuffer *>(buffer) : &outside_;
}

void ioReadContextBinary::missingField() {
    if (!buffer_->endOfFields()) {
        badPacket();
    }
}

bool ioReadContextBinary::chunkHasData() { return buffer_->readChunkValid(); }

bool ioReadContextBinary::readBool() {
    char const * const byte = take(1);
    return byte && *byte != 0;
}

char ioReadContextBinary::readChar() {
    char const * const byte = take(1);
    return byte ? *byte : char{0};
}

unsigned char ioReadContextBinary::readUChar() { return static_cast<unsigned char>(ioReadContextBinary::readChar()); }

char ioReadContextBinary::readRawChar() { return ioReadContextBinary::readChar(); }

char const * ioReadContextBinary::readCString() {
    buffer_->own(); // the text stays until the next packet is read, whatever becomes of the stream
    char const * const text = buffer_->at();
    std::size_t const left = buffer_->available();
    void const * const terminator = left > 0 ? std::memchr(text, 0, left) : nullptr;
    if (!terminator) {
        missingField();
        return "";
    }
    buffer_->advance(static_cast<std::size_t>(static_cast<char const *>(terminator) - text) + 1);
    return text;
}

int ioReadContextBinary::takeArray(void * values, int count, std::size_t size) {
    if (count < 1) {
        return 0;
    }
    auto const wanted = static_cast<std::size_t>(count);
    std::size_t const there = std::min(wanted, buffer_->available() / size);
    if (there > 0) {
        std::memcpy(values, buffer_->at(), there * size);
        buffer_->advance(there * size);
    }
    if (there < wanted) {
        std::memset(static_cast<char *>(values) + there * size, 0, (wanted - there) * size);
        missingField();
    }
    return static_cast<int>(there);
}

// Element by element through the virtual reader, whose debug form takes a tag from each.
void ioReadContextBinary::readBoolArray(bool * values, int count) {
    for (int i = 0; i < count; ++i) {
        values[i] = readBool();
    }
}

void ioReadContextBinary::readCharArray(char * values, int count) { takeArray(values, count, 1); }

void ioReadContextBinary::readUCharArray(unsigned char * values, int count) { takeArray(values, count, 1); }

template <ioByteOrder order>
ioReadContextBinaryOrdered<order>::ioReadContextBinaryOrdered(ioBufferedStreamInput & stream, ioReadMethod method)
    : ioReadContextBinary(stream, method) {}

template <ioByteOrder order>
template <typename T>
T ioReadContextBinaryOrdered<order>::takeValue() {
    char const * const bytes = take(sizeof(T));
    if (!bytes) [[unlikely]] {
        return 0;
    }
    T value;
    std::memcpy(&value, bytes, sizeof value);
    return ordered<order>(value);
}

template <ioByteOrder order>
template <typename T>
void ioReadContextBinaryOrdered<order>::takeValues(T * values, int count) {
    int const there = takeArray(values, count, sizeof(T));
    if constexpr (order == ioByteOrder::swapped) {
        std::transform(values, values + there, values, reversed<T>);
    }
}

#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    template <ioByteOrder order>                                                                                       \
    type ioReadContextBinaryOrdered<order>::read##name() {                                                             \
        return takeValue<type>();                                                                                      \
    }                                                                                                                  \
    template <ioByteOrder order>                                                                                       \
    void ioReadContextBinaryOrdered<order>::read##name##Array(type * values, int count) {                              \
        takeValues(values, count);                                                                                     \
    }
IO_ORDERED_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE

template <ioByteOrder order>
void ioReadContextBinaryOrdered<order>::readStreamInts(ioBufferedStreamInput & stream, std::int32_t * values,
                                                       int count) {
    constexpr int size = sizeof *values;
    int const there = stream.readData(reinterpret_cast<char *>(values), count * size) / size;
    std::fill(values + there, values + count, 0);
    if constexpr (order == ioByteOrder::swapped) {
        std::transform(values, values + there, values, reversed<std::int32_t>);
    }
}

template class ioReadContextBinaryOrdered<ioByteOrder::same>;
template class ioReadContextBinaryOrdered<ioByteOrder::swapped>;
