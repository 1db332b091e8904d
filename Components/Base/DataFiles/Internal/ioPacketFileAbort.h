// The last act before a fatal error ends the process.

#ifndef ioPacketFileAbort_h
#define ioPacketFileAbort_h

// Calls what ioPacketFileAbortInit has installed, if anything. May throw.
void ioPacketFileRunAbortHook();

#endif
