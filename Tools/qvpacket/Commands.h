// What the program does with a file. Each throws a Fault at what no writer writes.

#ifndef Commands_h
#define Commands_h

#include "PacketFile.h"
#include "Text.h"

// The form of the file, and its packets by type. Does not look into the packets. At a Fault in a later packet the
// table of those in front of it is still printed.
void show(PacketFile & file, Output & output);

// Goes through the whole file and prints nothing.
void check(PacketFile & file);

// Everything that is in the file, indented by nesting.
void dump(PacketFile & file, Output & output);

// The words for the form and the byte order.
std::string_view nameOfForm(PacketFile const & file);
std::string_view nameOfByteOrder(PacketFile const & file);
// The type's name made harmless, or "type N" in a file without a registry.
std::string nameOfType(PacketFile const & file, std::int64_t type);

#endif
