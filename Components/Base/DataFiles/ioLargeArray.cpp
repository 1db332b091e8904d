#include "Base/DataFiles/ioLargeArray.h"

#include "Base/DataFiles/Internal/ioFieldTypes.h"
#include "Base/DataFiles/Internal/ioWriteContextBinary.h"
#include "Base/DataFiles/ioReadContext.h"
#include "Base/DataFiles/ioWriteContext.h"

#include <algorithm>
#include <type_traits>

namespace {

// A parcel is built like any packet, but where its elements go into the file as they lie in memory they are spared
// the way through the packet's buffer. Then the array writer is called for no elements: it puts the debug form's tag.
template <typename T>
void writeParcels(ioWriteContext & context, char const * typeName, void const * owner, int count, T const * data,
                  void (ioWriteContext::*writeArray)(T const *, int)) {
    auto * const binary = dynamic_cast<ioWriteContextBinary *>(&context);
    bool const direct = binary && binary->writesNativeArrays() && !std::is_same_v<T, bool>;
    for (int start = 0, left = count; left > 0;) {
        int const n = std::min(left, ioMaxParcelElements);
        context.startPacket(typeName, nullptr);
        context.writeReference(owner, false);
        context.writeInt(start);
        context.writeInt(n);
        if (direct) {
            (context.*writeArray)(data + start, 0);
            binary->endPacketWith(data + start, static_cast<std::size_t>(n) * sizeof(T));
        } else {
            (context.*writeArray)(data + start, n);
            context.endPacket();
        }
        start += n;
        left -= n;
    }
}

bool liesWithin(int start, int count, int capacity) {
    return start >= 0 && count >= 1 && count <= ioMaxParcelElements && count <= capacity && start <= capacity - count;
}

} // namespace

#define IO_DEFINE(name, type, tag, arrayTag)                                                                           \
    void ioWriteLargeArray(ioWriteContext & context, char const * typeName, void const * owner, int count,             \
                           type const * data) {                                                                        \
        writeParcels(context, typeName, owner, count, data, &ioWriteContext::write##name##Array);                      \
    }                                                                                                                  \
    void ioReadArrayParcel(ioReadContext & context, type * data) {                                                     \
        int const start = context.readInt();                                                                           \
        int const count = context.readInt();                                                                           \
        context.read##name##Array(data + start, count);                                                                \
    }                                                                                                                  \
    void ioReadArrayParcel(ioReadContext & context, type * data, int capacity) {                                       \
        int const start = context.readInt();                                                                           \
        int const count = context.readInt();                                                                           \
        if (liesWithin(start, count, capacity)) {                                                                      \
            context.read##name##Array(data + start, count);                                                            \
        } else {                                                                                                       \
            context.badPacket();                                                                                       \
        }                                                                                                              \
    }
IO_FIELD_TYPES(IO_DEFINE)
#undef IO_DEFINE
