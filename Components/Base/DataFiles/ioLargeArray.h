// Arrays of any length in packet files, cut into parcels: runs of small packets that all point at the owner of the
// array.

#ifndef ioLargeArray_h
#define ioLargeArray_h

#include "Base/qvBaseConfig.h"

#include <cstdint>

class ioReadContext;
class ioWriteContext;

// The most elements that one parcel holds.
inline constexpr int ioMaxParcelElements = 1024;

// Writes count elements as parcels, packets of the named type, which must be registered. A parcel has no reference of
// its own; its fields are a reference to the owner, the index of its first element (Int), the number of its elements
// (Int), and these. A count below 1 writes nothing. The total is the caller's to write, in an earlier packet.
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 bool const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 char const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 unsigned char const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 short const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 unsigned short const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 int const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 unsigned const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 std::int64_t const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 std::uint64_t const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 float const * data);
QV_EXPORT void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,
                                 double const * data);

// Takes the rest of a parcel, from within the read of its packet type, which has read the reference to the owner
// before. The elements go where they belong in the array at data. Nothing is tested: for files of one's own writing.
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, bool * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, char * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, unsigned char * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, short * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, unsigned short * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, int * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, unsigned * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, std::int64_t * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, std::uint64_t * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, float * data);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, double * data);

// The same for files from anywhere. The capacity is the number of elements of the array. A parcel that does not lie
// in it, or whose count is not 1 to 1024, stores nothing and makes the packet bad.
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, bool * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, char * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, unsigned char * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, short * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, unsigned short * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, int * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, unsigned * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, std::int64_t * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, std::uint64_t * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, float * data, int capacity);
QV_EXPORT void ioReadArrayParcel(ioReadContext & context, double * data, int capacity);

#endif
