// The writer of the ASCII form: fields are text, each with one blank behind it.

#ifndef ioWriteContextAscii_h
#define ioWriteContextAscii_h

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioPacketFileAsciiBuffer.h"
#include "Base/DataFiles/ioWriteContext.h"

class ioWriteContextAscii : public ioWriteContext {
public:
    explicit ioWriteContextAscii(ioBufferedStreamOutput & stream);

#define IO_DECLARE(name, type, tag, arrayTag)                                                                          \
    void write##name(type value) override;                                                                             \
    void write##name##Array(type const * values, int count) override;
    IO_FIELD_TYPES(IO_DECLARE)
#undef IO_DECLARE

    void writeCString(char const * text) override;
    void writeRawChar(char c) override;
    ioHeader getHeader() const override;

protected:
    ioPacketFileBuffer * newBuffer() override;
    void setBuffer(ioPacketFileBuffer * buffer) override;

private:
    void put(char const * text, std::size_t length);
    void refuse();
    template <auto write, typename T>
    void putNumber(T value);

    ioPacketFileAsciiBuffer outside_; // has room for nothing
    ioPacketFileAsciiBuffer * buffer_;
};

#endif
