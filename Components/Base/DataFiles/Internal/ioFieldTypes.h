// The field types of a packet with their tags in the debug forms, as a list for what is the same for all of them.

#ifndef ioFieldTypes_h
#define ioFieldTypes_h

#include <cstdint>

// X(name in the operations, C++ type, tag of a field, tag of an array)
#define IO_FIELD_TYPES(X)                                                                                              \
    X(Bool, bool, 'b', 'B')                                                                                            \
    X(Char, char, 'c', '1')                                                                                            \
    X(UChar, unsigned char, 'C', '2')                                                                                  \
    X(Short, short, 'h', '3')                                                                                          \
    X(UShort, unsigned short, 'H', '4')                                                                                \
    X(Int, int, 'i', '5')                                                                                              \
    X(UInt, unsigned, 'I', '6')                                                                                        \
    X(Int64, std::int64_t, 'l', '7')                                                                                   \
    X(UInt64, std::uint64_t, 'L', '8')                                                                                 \
    X(Float, float, 'f', '9')                                                                                          \
    X(Double, double, 'd', '0')

// Those whose binary form depends on the byte order.
#define IO_ORDERED_FIELD_TYPES(X)                                                                                      \
    X(Short, short, 'h', '3')                                                                                          \
    X(UShort, unsigned short, 'H', '4')                                                                                \
    X(Int, int, 'i', '5')                                                                                              \
    X(UInt, unsigned, 'I', '6')                                                                                        \
    X(Int64, std::int64_t, 'l', '7')                                                                                   \
    X(UInt64, std::uint64_t, 'L', '8')                                                                                 \
    X(Float, float, 'f', '9')                                                                                          \
    X(Double, double, 'd', '0')

inline constexpr char ioCStringTag = 's';
inline constexpr char ioReferenceTag = 'r';

// What stands in front of a chunk and a sub-packet in the binary forms.
inline constexpr char ioBinaryChunkMarker = ',';
inline constexpr char ioBinarySubPacketMarker = '.';

// What encloses a chunk and a sub-packet in the ASCII forms.
inline constexpr char ioAsciiChunkStart[] = "\n  [ ";
inline constexpr char ioAsciiChunkEnd[] = "] ";
inline constexpr char ioAsciiSubPacketStart[] = "\n  < ";
inline constexpr char ioAsciiSubPacketEnd[] = "> ";

// Whether the ASCII forms write the character with a backslash in front.
constexpr bool ioIsEscaped(char c) {
    switch (c) {
    case '"':
    case '<':
    case '>':
    case '[':
    case '\\':
    case ']':
    case '{':
    case '}':
        return true;
    default:
        return false;
    }
}

#endif
