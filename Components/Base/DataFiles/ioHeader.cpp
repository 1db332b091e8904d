#include "Base/DataFiles/ioHeader.h"

#include "Base/DataFiles/ioBufferedStreamInput.h"
#include "Base/DataFiles/ioBufferedStreamOutput.h"

#include <algorithm>
#include <bit>
#include <iterator>

namespace {

constexpr int formatVersion = 1;
// char, short, int, 64-bit integer, float, double; the seventh is a pointer's and nothing depends on it.
constexpr int typeSizes[] = {1, 2, 4, 8, 4, 8, 4};
constexpr int numTestedSizes = 6;

} // namespace

ioHeader::ioHeader() : valid_(false), littleEndian_(false), method_(-1) {}

ioHeader::ioHeader(ioWriteMethod method) : valid_(true), littleEndian_(systemIsLittleEndian()), method_(method) {}

bool ioHeader::systemIsLittleEndian() { return std::endian::native == std::endian::little; }

void ioHeader::writeHeader(ioBufferedStreamOutput & stream) const {
    stream.writeString("^@\n");
    stream.printf("%d\n", formatVersion);
    stream.printf("%d %d 1\n", littleEndian_ ? 1 : 0, method_);
    char const * separator = "";
    for (int const size : typeSizes) {
        stream.printf("%s%d", separator, size);
        separator = " ";
    }
    stream.writeString("\n@\n");
}

bool ioHeader::readHeader(ioBufferedStreamInput & stream) {
    valid_ = true;
    for (char const wanted : {'^', '@', '\n'}) {
        valid_ = stream.readChar() == wanted && valid_;
    }
    if (!valid_) {
        return false;
    }
    stream.readInt(); // the version
    littleEndian_ = stream.readInt() != 0;
    method_ = stream.readInt();
    if (method_ < ioWriteAscii || method_ > ioWriteBinaryDebug) {
        method_ = -1;
    }
    int const formatFlag = stream.readInt();
    int sizes[std::size(typeSizes)];
    for (int & size : sizes) {
        size = stream.readInt();
    }
    if (isBinary() && (formatFlag == 0 || !std::equal(sizes, sizes + numTestedSizes, typeSizes))) {
        valid_ = false;
    }
    while (stream.readChar() != '@') {
        if (!stream.good()) {
            valid_ = false;
            return false;
        }
    }
    stream.readChar();
    valid_ = valid_ && stream.good();
    return valid_;
}

ioReadMethod ioHeader::determineReadMethod() const {
    bool const sameOrder = littleEndian_ == systemIsLittleEndian();
    switch (method_) {
    case ioWriteAscii:
        return ioReadAscii;
    case ioWriteBinary:
        return sameOrder ? ioReadBinarySameEndian : ioReadBinarySwapped;
    case ioWriteAsciiDebug:
        return ioReadAsciiDebug;
    case ioWriteBinaryDebug:
        return sameOrder ? ioReadBinaryDebugSameEndian : ioReadBinaryDebugSwapped;
    default:
        return ioReadInvalid;
    }
}
