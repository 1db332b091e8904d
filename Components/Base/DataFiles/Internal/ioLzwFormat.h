// The compressed stream: a variant of the .Z format of the Unix compress utility, in block mode with codes of up to 16
// bits. Code 257 ends the stream, so the first free code is 258, and the last group is padded to a whole one.
//
// A stream is the three header bytes and groups of eight codes of one width, packed from the least significant bit on,
// so that a group takes as many bytes as a code has bits. Where the width changes, behind a clear code and at the end,
// the group begun is filled up with zero bits, and a new one begins.

#ifndef ioLzwFormat_h
#define ioLzwFormat_h

namespace ioLzw {

inline constexpr char header[] = {'\x1F', '\x9D', '\x90'};
inline constexpr int headerSize = sizeof header;

inline constexpr int clearCode = 256;
inline constexpr int endCode = 257;
inline constexpr int firstFreeCode = 258;
inline constexpr int codeLimit = 65536;

inline constexpr int codesInGroup = 8;
inline constexpr int maxWidth = 16;

// The width of the codes at hand.
struct Width {
    int bits = 9;
    int largestCode = 511;

    void grow() {
        ++bits;
        largestCode = bits == maxWidth ? codeLimit : (1 << bits) - 1;
    }
};

} // namespace ioLzw

#endif
