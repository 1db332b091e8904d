// Places rectangles into one bin without overlap: for texture atlases, sheets of glyphs and the like.

#ifndef qvUtilPack_h
#define qvUtilPack_h

#include "Base/Containers/qvVector.h"
#include "Base/Utility/qvUtilIntRange2d.h"
#include "Base/qvBaseConfig.h"

#include <cstdint>

namespace qvUtil {

/// Places items into the bin in their order, each in the first free part in which it fits, and cuts what is left of
/// that part in two. Each item that fits gets its place as its min. After the first one that does not fit none is
/// tried. The result is the area of all items that were not placed, INT_MAX if it is more: 0 means that everything
/// fits, apart from items without any area. A negative size counts as 0, and becomes that.
///
/// The memory is that of up to four nodes for each item; the time grows with n to n * n, depending on how many parts
/// are too small for what comes later. Items that are sorted by their larger side, largest first, fill the bin best.
QV_EXPORT int pack(qv::vector<IntRange2d> & items, IntRange2d const & bin);

/// Chooses the bin: sorts the items by their larger side (with the installed thread pool) and enlarges a bin that could
/// just hold their area until they fit. The items get their places where they stand in the vector. The result lies at
/// 0, 0; with `powerOfTwo` its sides are powers of two (one that would be above 2^30 is INT_MAX), without it is the
/// smallest square around what was placed. No items give an empty range.
///
/// A bin that would outgrow an int is not enlarged any more: what does not fit keeps its min, and `*left`, if it is
/// given, gets the area of that, which is 0 otherwise.
QV_EXPORT IntRange2d pack(qv::vector<IntRange2d> & items, bool powerOfTwo, std::int64_t * left = nullptr);

} // namespace qvUtil

#endif
