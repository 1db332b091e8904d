// Turns bytes into the codes of a compressed stream.

#ifndef ioLzwEncoder_h
#define ioLzwEncoder_h

#include "Base/DataFiles/Internal/ioLzwFormat.h"

#include <cstdint>
#include <memory>

// The bytes of the stream gather in output(), from where the caller takes them after each call.
//
// The strings seen are kept in lists that are reached by a hash of (string, next byte). Which strings are known, and
// with it the stream, is defined by a table of another kind, of 69001 slots with double hashing: they agree but for the
// string of two zero bytes, see Slots.
class ioLzwEncoder {
public:
    static constexpr int maxInput = 4096;

    // Null where there is no memory.
    static std::unique_ptr<ioLzwEncoder> make();

    // Takes at most maxInput bytes.
    void encode(char const * bytes, int count);
    // Ends the stream with its end code; nothing may follow.
    void end();

    char const * output() const { return output_; }
    int outputSize() const { return static_cast<int>(outputEnd_ - output_); }
    void takeOutput() { outputEnd_ = output_; }

private:
    // A string is its parent with one byte more. Lists end with 0, which is no code of a longer string.
    struct String {
        std::uint16_t parent;
        std::uint16_t next;
    };

    // The first string of a list: its code and its parent together, so that most searches end where they begin.
    struct Home {
        std::uint16_t parent;
        std::uint16_t code;
    };

    // The slots of the defining table, without what is in them. A slot counts as free there when its key is not above
    // 0, and two zero bytes have key 0: a later string whose search ends at that slot takes it over, and the two zeros
    // are forgotten. Nothing else depends on slots.
    class Slots {
    public:
        void clear();
        void store(unsigned key);
        bool hasTwoZeros() const { return zeroSlot_ >= 0; }

    private:
        static constexpr int numSlots = 69001;
        bool isAboveZero(int slot) const { return (used_[slot / 64] >> (slot % 64) & 1) != 0; }

        std::uint64_t used_[numSlots / 64 + 1];
        int zeroSlot_;
    };

    friend struct ioLzwEncoderCounters; // tests

    ioLzwEncoder();
    bool knowsTwoZeros();
    void addHomes();
    void add(unsigned home, unsigned parent, unsigned byte, unsigned last);
    void testRatio(std::int64_t input);
    void clearStrings();
    void put(int code);
    void writeGroup();

    // As long as there are few strings, few homes are cleared and stay close.
    static constexpr unsigned firstHomes = 4096;
    static constexpr unsigned mostHomes = 65536;
    static constexpr int noCode = -1;
    static constexpr std::uint16_t endOfList = 0;
    // Nothing has the end code for its parent.
    static constexpr Home emptyHome{ioLzw::endCode, endOfList};
    static constexpr int checkInterval = 10000;

    // Codes of two bytes at most for each byte of input, a clear code, and a padded group for each width.
    static constexpr int outputCapacity = 2 * (maxInput + 2) + 32 * ioLzw::maxWidth;

    int current_ = noCode;
    int nextFree_ = ioLzw::firstFreeCode;
    ioLzw::Width width_;
    bool clearing_ = false;
    // The two zeros stand in no list. Whether their last code is forgotten is worked out when it is asked for, from the
    // codes behind those that the slots have been told.
    int twoZeros_ = noCode;
    int followed_ = ioLzw::firstFreeCode;
    std::int64_t input_ = 0;
    std::int64_t outputBytes_ = 0; // of full groups
    std::int64_t checkpoint_ = checkInterval;
    std::int64_t ratio_ = 0;
    int inGroup_ = 0;
    std::uint16_t group_[ioLzw::codesInGroup];
    char * outputEnd_;
    char output_[outputCapacity];
    Slots slots_;
    unsigned homeMask_ = firstHomes - 1;
    Home homes_[mostHomes];
    String strings_[ioLzw::codeLimit];
    unsigned char lastBytes_[ioLzw::codeLimit];
};

#endif
