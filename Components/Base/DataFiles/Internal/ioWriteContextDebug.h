// The debug form of a writer: each field and each array has its tag in front.

#ifndef ioWriteContextDebug_h
#define ioWriteContextDebug_h

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/ioWriteContext.h"

// Tags nest where one writer goes through another: the elements of an ASCII array, the number of a reference.
template <typename Base, int method>
class ioWriteContextDebug : public Base {
public:
    explicit ioWriteContextDebug(ioBufferedStreamOutput & stream) : Base(stream) {}

    using Base::writeReference;
    void writeReference(int reference, bool define) override {
        this->writeRawChar(ioReferenceTag);
        Base::writeReference(reference, define);
    }

#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    void write##name(type value) override {                                                                            \
        this->writeRawChar(tag);                                                                                       \
        Base::write##name(value);                                                                                      \
    }                                                                                                                  \
    void write##name##Array(type const * values, int count) override {                                                 \
        this->writeRawChar(arrayTag);                                                                                  \
        Base::write##name##Array(values, count);                                                                       \
    }
    IO_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE

    void writeCString(char const * text) override {
        this->writeRawChar(ioCStringTag);
        Base::writeCString(text);
    }

    ioHeader getHeader() const override { return ioHeader(static_cast<ioWriteMethod>(method)); }
};

#endif
