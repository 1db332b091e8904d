// The types of the fields in a packet and the tags that stand in front of them in the debug forms.

#ifndef FieldType_h
#define FieldType_h

#include <cstdint>

enum class FieldKind { integer, real, text, reference, array };

struct FieldType {
    char tag;
    char const * name;
    FieldKind kind;
    int width;        // bytes of an integer or a real in the binary forms
    std::int64_t low; // the limits of an integer
    std::uint64_t high;
    char elementTag; // of an array: the field type of its elements
};

// The type with that tag, null when there is none.
FieldType const * fieldTypeOf(char tag);

#endif
