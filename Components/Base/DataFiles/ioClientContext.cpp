#include "Base/DataFiles/ioClientContext.h"

ioClientReadContext::~ioClientReadContext() = default;

void ioClientReadContext::prePacketRead() {}

void ioClientReadContext::postPacketRead() {}
