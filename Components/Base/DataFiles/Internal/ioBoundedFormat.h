// A formatted text of at most 1023 bytes, cut where it is longer.

#ifndef ioBoundedFormat_h
#define ioBoundedFormat_h

#include <cstdarg>

class ioBoundedFormat {
public:
    ioBoundedFormat(char const * format, va_list arguments);
    char const * text() const { return text_; }
    char * text() { return text_; }

private:
    char text_[1024];
};

#endif
