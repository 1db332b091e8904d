// The readers of the binary forms.

#ifndef ioReadContextBinary_h
#define ioReadContextBinary_h

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioPacketFileBinaryBuffer.h"
#include "Base/DataFiles/ioReadContext.h"

// What does not depend on the file's byte order.
class ioReadContextBinary : public ioReadContext {
public:
    bool chunkHasData() override;
    bool readBool() override;
    char readChar() override;
    unsigned char readUChar() override;
    char const * readCString() override;
    void readBoolArray(bool * values, int count) override;
    void readCharArray(char * values, int count) override;
    void readUCharArray(unsigned char * values, int count) override;
    char readRawChar() override;

    // 32-bit integers of a packet's frame, straight from the stream; 0 for those that are not there as a whole.
    virtual void readStreamInts(ioBufferedStreamInput & stream, std::int32_t * values, int count) = 0;

    using ioReadContext::readBool;
    using ioReadContext::readChar;
    using ioReadContext::readUChar;

protected:
    ioReadContextBinary(ioBufferedStreamInput & stream, ioReadMethod method);

    ioPacketFileBuffer * newBuffer() override;
    void setBuffer(ioPacketFileBuffer * buffer) override;
    bool atFieldEnd() const { return buffer_->atFieldEnd(); }

    // The bytes of one value, null where it is not there.
    char const * take(std::size_t count) {
        if (buffer_->available() < count) [[unlikely]] {
            missingField();
            return nullptr;
        }
        char const * const bytes = buffer_->at();
        buffer_->advance(count);
        return bytes;
    }
    // As many of the elements as are there; the rest becomes 0. Gives their number.
    int takeArray(void * values, int count, std::size_t size);

private:
    void missingField();

    ioPacketFileBinaryBuffer outside_; // holds nothing
    ioPacketFileBinaryBuffer * buffer_;
};

enum class ioByteOrder { same, swapped };

template <ioByteOrder order>
class ioReadContextBinaryOrdered : public ioReadContextBinary {
public:
    ioReadContextBinaryOrdered(ioBufferedStreamInput & stream, ioReadMethod method);

#define IO_DECLARE(name, type, tag, arrayTag)                                                                          \
    type read##name() override;                                                                                        \
    void read##name##Array(type * values, int count) override;                                                         \
    using ioReadContext::read##name;
    IO_ORDERED_FIELD_TYPES(IO_DECLARE)
#undef IO_DECLARE

    void readStreamInts(ioBufferedStreamInput & stream, std::int32_t * values, int count) override;

private:
    template <typename T>
    T takeValue();
    template <typename T>
    void takeValues(T * values, int count);
};

using ioReadContextBinarySameEndian = ioReadContextBinaryOrdered<ioByteOrder::same>;
using ioReadContextBinarySwapped = ioReadContextBinaryOrdered<ioByteOrder::swapped>;

#endif
