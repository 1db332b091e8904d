// The hash functions for text and memory.

#ifndef qvHashFunction_h
#define qvHashFunction_h

#include "Base/qvBaseConfig.h"

namespace qv {

/*
 * Hash values for use in memory only: they are no part of any file format. The functions keep no state. They are fast
 * and spread well, but they do not withstand somebody who looks for collisions.
 *
 * Counts below 1 give 0. The terminated form gives other values than the byte forms do for the same text.
 */
QV_EXPORT unsigned hashfunction(unsigned char const * p, int n);        // n bytes
QV_EXPORT unsigned hashfunction(char const * text);                     // up to the terminating zero
QV_EXPORT unsigned hashfunction(unsigned const * p, int n);             // n 32-bit words
QV_EXPORT unsigned hashfunction(wchar_t const * p, int n);              // n UTF-16 units, as their bytes
QV_EXPORT unsigned hashfunction(char const * first, char const * last); // the bytes of a range

} // namespace qv

#endif
