// What is wrong with a file, and where.

#ifndef Fault_h
#define Fault_h

#include <cstddef>
#include <string>

// Thrown by everything that takes a packet file apart. The offset counts bytes from the start of the file.
struct Fault {
    std::size_t offset;
    std::string reason;
};

#endif
