// What was built: data symbols that a program can also look up by their plain names. For C too.

#ifndef qvUtilBuildIdentity_h
#define qvUtilBuildIdentity_h

#include "Base/qvBaseConfig.h"

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

// The time is SOURCE_DATE_EPOCH when the build has it in its environment, else the time of the commit that was built.
// Without either all of the following are zeros in their form.

// Seconds since 1970.
QV_EXPORT extern int64_t const gBuildTime;
// The same time in UTC, year, month, day, hour and minute: "2024 02 29 23 59".
QV_EXPORT extern char const * const gBuildDate;
// The same again, for a name: "202402292359".
QV_EXPORT extern char const gCutIdentifier[13];
// The number of commits up to the one that was built, as six digits.
QV_EXPORT extern char const * const gBuildChangeSet;

// A text of the builder's choice, empty unless one was given to the build.
QV_EXPORT extern char const * const gBuildDirectory;

#ifdef __cplusplus
}
#endif

#endif
