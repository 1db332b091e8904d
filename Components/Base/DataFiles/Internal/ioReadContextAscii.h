// The reader of the ASCII form.

#ifndef ioReadContextAscii_h
#define ioReadContextAscii_h

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioPacketFileAsciiBuffer.h"
#include "Base/DataFiles/ioReadContext.h"

class ioReadContextAscii : public ioReadContext {
public:
    ioReadContextAscii(ioBufferedStreamInput & stream, ioReadMethod method);

#define IO_DECLARE(name, type, tag, arrayTag)                                                                          \
    type read##name() override;                                                                                        \
    void read##name##Array(type * values, int count) override;                                                         \
    using ioReadContext::read##name;
    IO_FIELD_TYPES(IO_DECLARE)
#undef IO_DECLARE

    bool chunkHasData() override;
    char const * readCString() override;
    char readRawChar() override;

protected:
    ioPacketFileBuffer * newBuffer() override;
    void setBuffer(ioPacketFileBuffer * buffer) override;
    bool atFieldEnd() const { return buffer_->atFieldEnd(); }

private:
    void missingField();
    bool findQuote();
    template <auto parse>
    auto takeNumber();

    ioPacketFileAsciiBuffer outside_; // holds nothing
    ioPacketFileAsciiBuffer * buffer_;
};

#endif
