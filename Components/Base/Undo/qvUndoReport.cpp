#include "Base/Undo/qvUndoReport.h"

#include "Base/Strings/qvStringFormat.h"
#include "Base/Undo/Internal/qvUndoReportFile.h"

#include <cstdarg>

void qvUndoReportInit(char const * path) {
    qvUndo::reportFile.close();
    if (path)
        qvUndo::reportFile.open(path);
    qvUndoReport("\n------------------------------\n\n");
}

void qvUndoReport(char const * format, ...) {
    if (!qvUndo::reportFile.isOpen())
        return;
    char line[1024];
    line[0] = '\0';
    std::va_list args;
    va_start(args, format);
    KT_vsnprintf(line, sizeof line, format, args);
    va_end(args);
    line[sizeof line - 1] = '\0';
    qvUndo::reportFile.write(line);
}
