// Turns the codes of a compressed stream back into bytes.

#ifndef ioLzwDecoder_h
#define ioLzwDecoder_h

#include "Base/DataFiles/Internal/ioLzwFormat.h"

#include <cstdint>
#include <memory>

class ioBuffer;

// Takes whole groups from its source and none behind the end code, so that the source is left at the first byte behind
// the stream.
class ioLzwDecoder {
public:
    enum class State {
        running,
        ended,  // the end code has come
        cut,    // the source gave no further code
        refused // what no writer makes: another header, or a code that stands for nothing
    };

    // Null where there is no memory.
    static std::unique_ptr<ioLzwDecoder> make();

    // Delivers up to count bytes, less only where the state is not running any more. Bytes may be written anywhere in
    // the count bytes.
    int decode(char * bytes, int count, ioBuffer & source);
    State state() const { return state_; }
    // Takes the next code if it is the end code. Any other code is lost.
    void takeEnd(ioBuffer & source);

private:
    static constexpr int pieceSize = 8;

    // A string is that of its ancestor, which is a multiple of the pieces long, and one more piece of 1 to 8 bytes. So
    // strings are put together eight bytes at a time and not one.
    struct String {
        std::uint64_t piece; // the first byte lowest
        std::uint16_t ancestor;
        std::uint16_t length;
    };

    ioLzwDecoder();
    void readHeader(ioBuffer & source);
    int nextCode(ioBuffer & source);
    bool readGroup(ioBuffer & source);
    int codeOfString(ioBuffer & source);
    static String followed(String const & string, int code, char last);
    void expand(String const & string, char * to) const;
    int decodeRun(char * bytes, int count, ioBuffer & source);
    int decodeOne(char * bytes, int count, ioBuffer & source);
    int drain(char * bytes, int count);

    static constexpr int noCode = -1;

    State state_ = State::running;
    bool started_ = false;
    bool clearing_ = false;
    int oldCode_ = noCode;
    int nextFree_ = ioLzw::firstFreeCode;
    ioLzw::Width width_;
    int groupPosition_ = 0;
    int groupEnd_ = 0;
    std::uint16_t group_[ioLzw::codesInGroup];
    // The string that did not fit the caller's bytes, from where it has been delivered to.
    int heldPosition_ = 0;
    int heldEnd_ = 0;
    String strings_[ioLzw::codeLimit];
    // The longest string has a byte for each code above the end code, and one; pieces are stored whole.
    char held_[ioLzw::codeLimit + pieceSize];
};

#endif
