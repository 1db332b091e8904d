#include "Base/DataFiles/Internal/ioReadContextDebug.h"

#include "Base/DataFiles/ioPacketFileError.h"

namespace {

char const * nameOfTag(char tag) {
    switch (tag) {
#define IO_NAME(name, type, fieldTag, arrayTag)                                                                        \
    case fieldTag:                                                                                                     \
        return #name;                                                                                                  \
    case arrayTag:                                                                                                     \
        return #name "Array";
        IO_FIELD_TYPES(IO_NAME)
#undef IO_NAME
    case ioCStringTag:
        return "CString";
    case ioReferenceTag:
        return "Reference";
    default:
        return "(invalid type)";
    }
}

} // namespace

void ioReportTypeMismatch(ioContext & context, char got, char expected) {
    ioPacketFileError("Packet file type mismatch:\n");
    ioPacketFileError("   got: %s (%02x)\n", nameOfTag(got), static_cast<unsigned>(static_cast<unsigned char>(got)));
    ioPacketFileError("   expected: %s (%02x)\n", nameOfTag(expected),
                      static_cast<unsigned>(static_cast<unsigned char>(expected)));
    context.fatalError();
}
