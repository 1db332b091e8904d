// The block cipher of enciphered streams, as free functions, for C too.

#ifndef ioBlockCipher_h
#define ioBlockCipher_h

#include "Base/qvBaseConfig.h"

// RC6 with 32-bit words and 20 rounds on blocks of 16 bytes, with a key expansion of the library's own; a block holds
// its four words in the order A, B, C, D, in the machine's byte order. It hides data from a casual look. It is no
// protection where data must be kept secret: blocks stand for themselves, and nothing tells when one was changed.
//
// The expansions give a table of 44 words in memory that all callers share: copy it at once, and do not expand two
// keys at a time in two threads.
#ifdef __cplusplus
extern "C" {
#endif

// Expands a key of eight 32-bit words, all of which are read. The words with index 0 to length / 8 take part; a length
// outside 8 to 56 is taken as the nearer of the two.
QV_EXPORT unsigned const * fdblarccos2_(void const * key, int length);

// Expands a key of so many bits, of which the lengthInBits / 8 whole bytes are read. Full 32-bit words of it take part.
// A length outside 32 to 256 is taken as the nearer of the two.
QV_EXPORT unsigned const * fdblarctan2_(void const * key, int lengthInBits);

// Enciphers and deciphers one block of 16 bytes with a table of 44 words. `in` and `out` may be the same, and need no
// alignment.
QV_EXPORT void fdblhypsin2_(void const * in, void * out, unsigned const * table);
QV_EXPORT void fdblhypcos2_(void const * in, void * out, unsigned const * table);

#ifdef __cplusplus
}
#endif

#endif
