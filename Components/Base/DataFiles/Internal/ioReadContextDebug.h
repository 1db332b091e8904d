// The debug form of a reader: it tests the tag in front of each field and each array.

#ifndef ioReadContextDebug_h
#define ioReadContextDebug_h

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/ioReadContext.h"

// Reports a tag that is not the one wanted; then the process ends by the context's fatal path.
[[noreturn]] void ioReportTypeMismatch(ioContext & context, char got, char expected);

template <typename Base>
class ioReadContextDebug : public Base {
public:
    ioReadContextDebug(ioBufferedStreamInput & stream, ioReadMethod method) : Base(stream, method) {}

#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    type read##name() override {                                                                                       \
        takeTag(tag);                                                                                                  \
        return Base::read##name();                                                                                     \
    }                                                                                                                  \
    void read##name##Array(type * values, int count) override {                                                        \
        takeTag(arrayTag);                                                                                             \
        Base::read##name##Array(values, count);                                                                        \
    }                                                                                                                  \
    using ioReadContext::read##name;
    IO_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE

    char const * readCString() override {
        takeTag(ioCStringTag);
        return Base::readCString();
    }

    int readReference() override {
        takeTag(ioReferenceTag);
        return Base::readReference();
    }

private:
    // Where no field stands there is no tag either; the base answers for the field.
    void takeTag(char expected) {
        if (this->atFieldEnd()) {
            return;
        }
        char const got = this->readRawChar();
        bool const isTag = static_cast<unsigned char>(got) < 0x80;
        if (isTag && got != expected) {
            ioReportTypeMismatch(*this, got, expected);
        }
    }
};

#endif
