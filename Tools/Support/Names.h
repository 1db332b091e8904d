// Names between the command line, the file system and the library.

#ifndef Names_h
#define Names_h

#include "Base/Strings/qvStringIString.h"

#include <string>

// The library's form of a name that the system or the user gave: UTF-8, in which every byte that is none travels as the
// unit 0xDC00 and the byte.
qvString::IString nameOf(std::string const & bytes);

// The same way back.
std::string bytesOf(qvString::IString const & name);

// Whether there are such bytes in it.
bool hasStrangeBytes(qvString::IString const & name);

// For people: UTF-8, with control characters and strange bytes as \xNN.
std::string shown(qvString::IString const & name);
std::string shown(std::string const & bytes);

#endif
