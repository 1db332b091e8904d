#include "Base/DataFiles/ioReferenceMap.h"

#include "Base/DataFiles/Internal/ioReferenceMapImpl.h"

ioReferenceMap::~ioReferenceMap() = default;

ioReferenceMap * ioPacketFileNewReferenceMap() { return new ioReferenceMapImpl; }
