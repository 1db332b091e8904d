// Text for people: standard output, and bytes of a file made harmless to look at.

#ifndef Text_h
#define Text_h

#include <cstddef>
#include <string>
#include <string_view>

// Collects text and hands it to standard output in large pieces.
class Output {
public:
    Output & operator<<(std::string_view text);
    Output & operator<<(std::size_t number);
    // A number or a text at the right end of so many columns.
    void rightAligned(std::size_t number, std::size_t columns);
    void rightAligned(std::string_view text, std::size_t columns);
    void blanks(std::size_t count);
    // So many hexadecimal digits at least, in lower case.
    void hexadecimal(std::size_t number, std::size_t digits);
    // Hands on what is left. False when standard output has failed, now or before.
    bool flush();

private:
    void flushWhenFull();

    std::string text_;
};

// The text with everything escaped that a terminal could take for a command: characters that do not print, bytes that
// are not UTF-8, and the double quote and the backslash too.
std::string printable(std::string_view text);

#endif
