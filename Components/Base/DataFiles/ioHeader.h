// The header at the front of every packet file, and the forms that a packet file can have.

#ifndef ioHeader_h
#define ioHeader_h

#include "Base/qvBaseConfig.h"

class ioBufferedStreamInput;
class ioBufferedStreamOutput;

// The form of a file, as its header numbers it. In the debug forms every field carries a tag of its type.
enum ioWriteMethod : int { ioWriteAscii = 0, ioWriteBinary = 1, ioWriteAsciiDebug = 2, ioWriteBinaryDebug = 3 };

// How a file is to be read on this machine.
enum ioReadMethod : int {
    ioReadInvalid = 0,
    ioReadBinarySameEndian = 1,
    ioReadBinarySwapped = 2,
    ioReadAscii = 3,
    ioReadBinaryDebugSameEndian = 4,
    ioReadBinaryDebugSwapped = 5,
    ioReadAsciiDebug = 6
};

// The five header lines: magic, version, byte order and form, sizes of the types, end. A small value.
class QV_EXPORT ioHeader {
public:
    // Not valid; to be read.
    ioHeader();
    // Valid, in the byte order of this machine.
    explicit ioHeader(ioWriteMethod method);

    void writeHeader(ioBufferedStreamOutput & stream) const;
    // False for another magic line, a binary file whose sizes are not ours, and a stream that ends too early.
    bool readHeader(ioBufferedStreamInput & stream);
    // ioReadInvalid for a method that is none of the four.
    ioReadMethod determineReadMethod() const;

    bool isValid() const { return valid_; }
    bool isLittleEndian() const { return littleEndian_; }
    // An ioWriteMethod, or -1.
    int getMethod() const { return method_; }

private:
    static bool systemIsLittleEndian();
    bool isBinary() const { return method_ == ioWriteBinary || method_ == ioWriteBinaryDebug; }

    bool valid_;
    bool littleEndian_;
    int method_;
};

#endif
