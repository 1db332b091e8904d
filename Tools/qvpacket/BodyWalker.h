// The walk through the body of a packet, for whoever looks at what is in it or only wants to know that it is sound.

#ifndef BodyWalker_h
#define BodyWalker_h

#include "FieldType.h"
#include "PacketFile.h"

#include <cstddef>
#include <string_view>

enum class Container { chunk, subPacket };

inline char const * nameOf(Container container) { return container == Container::chunk ? "chunk" : "sub-packet"; }

// Told what the walk meets, in the order of the file. Texts are valid during the call only.
class BodyVisitor {
public:
    virtual ~BodyVisitor() = default;

    // A number that the form gives a type, as text.
    virtual void number(FieldType const &, std::string_view) {}
    // A number of the ASCII form, where nothing tells its type.
    virtual void untypedNumber(std::string_view) {}
    // A string without its escapes.
    virtual void string(std::string_view) {}
    // An array begins. Its elements follow as numbers or, where they are raw, in bytes(). The file does not tell how
    // many they are.
    virtual void array(FieldType const &) {}
    // Where the file cannot be told apart into fields.
    virtual void bytes(std::size_t /*offset*/, std::string_view) {}
    virtual void enter(Container) {}
    virtual void leave(Container) {}
};

// Walks through a packet of the file. A packet with a reference begins with it, as a number of type Reference. Throws
// a Fault at what no writer writes; what came before has been told by then.
//
// ASCII forms: every field, chunk and sub-packet. Binary debug form: the same, but from a raw array to the end of its
// chunk, sub-packet or packet there are only bytes. Binary form: the reference and bytes.
void walkBody(PacketFile const & file, Packet const & packet, BodyVisitor & visitor);

// The walks of the two encodings, parts of walkBody.
void walkAsciiBody(PacketFile const & file, Packet const & packet, BodyVisitor & visitor);
void walkBinaryBody(PacketFile const & file, Packet const & packet, BodyVisitor & visitor);

// The reference of a packet stands for an object, so it cannot be 0; no reference reaches the numbers that readers
// refuse.
void checkReference(std::size_t offset, std::uint64_t reference, bool ofPacket);

#endif
