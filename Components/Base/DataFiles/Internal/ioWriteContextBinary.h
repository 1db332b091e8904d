// The writer of the binary form: fields are the machine's own bytes.

#ifndef ioWriteContextBinary_h
#define ioWriteContextBinary_h

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioPacketFileBinaryBuffer.h"
#include "Base/DataFiles/ioWriteContext.h"

class ioWriteContextBinary : public ioWriteContext {
public:
    explicit ioWriteContextBinary(ioBufferedStreamOutput & stream);

#define IO_DECLARE(name, type, tag, arrayTag)                                                                          \
    void write##name(type value) override;                                                                             \
    void write##name##Array(type const * values, int count) override;
    IO_FIELD_TYPES(IO_DECLARE)
#undef IO_DECLARE

    void writeCString(char const * text) override;
    void writeRawChar(char c) override;
    ioHeader getHeader() const override;

    // Whether the elements of arrays go into the file as they lie in memory.
    virtual bool writesNativeArrays() const { return true; }
    // Ends the packet with so many more bytes, which go to the stream without passing the packet's buffer.
    void endPacketWith(void const * bytes, std::size_t count);

protected:
    ioPacketFileBuffer * newBuffer() override;
    void setBuffer(ioPacketFileBuffer * buffer) override;

private:
    void put(void const * bytes, std::size_t count);
    template <typename T>
    void putArray(T const * values, int count);

    ioPacketFileBinaryBuffer outside_; // has room for nothing
    ioPacketFileBinaryBuffer * buffer_;
};

#endif
