// What is wrong with a file, and where.

#ifndef Fault_h
#define Fault_h

#include <cstddef>
#include <string>

// Thrown by everything that takes a packet file apart. The offset counts bytes from the start of the file. Bodies are
// taken for what the writers of fields make: characters that a program wrote raw cannot be told from damage.
struct Fault {
    std::size_t offset;
    std::string reason;
};

#endif
