// The trace of the undo history: a text file that tells every transition of managers, groups and commands. For C too.

#ifndef qvUndoReport_h
#define qvUndoReport_h

#include "Base/qvBaseConfig.h"

#ifdef __cplusplus
extern "C" {
#endif

// Opens a file for the trace, in place of an earlier one, and writes a separator at its end. The name is in the
// multibyte encoding. If the file cannot be opened, or the name is null, tracing is off, as it is at first. The file is
// closed when the library is unloaded.
QV_EXPORT void qvUndoReportInit(char const * path);

// Writes a line of the trace, in the formats of qvStringFormat.h, and hands it to the system at once. It is cut behind
// 1023 bytes. Without a trace file nothing happens. The trace belongs to one thread at a time.
QV_EXPORT void qvUndoReport(char const * format, ...);

#ifdef __cplusplus
}
#endif

#endif
