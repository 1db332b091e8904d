// The 48-bit random generators, for C too.

#ifndef qvLinearRandom_h
#define qvLinearRandom_h

#include "Base/qvBaseConfig.h"

/*
 * Generators that give the same numbers everywhere. They are called from C by these names, and from C++ as
 * qvLinear::drand48() and so on; those of the system, by the same names, are others and stay untouched.
 *
 * A state is 48 bits in three words, the lowest first. All but qv_erand48 work on one state for the whole process,
 * which has no lock.
 */
#ifdef __cplusplus
extern "C" {
#endif

// A number in [0, 1), a multiple of 2^-48, from the next step of the process's state, or of the caller's.
QV_EXPORT double qv_drand48(void);
QV_EXPORT double qv_erand48(unsigned short x[3]);
// An integer from 0 to 2^31 - 1.
QV_EXPORT long qv_lrand48(void);
// Sets the state from bits 0 to 31 of the seed.
QV_EXPORT void qv_srand48(long seed);
// Sets the state from the array, and gives what it was before, in static storage that the next call overwrites. That
// array may be given back in order to go on from there.
QV_EXPORT unsigned short * qv_seed48(unsigned short v[3]);

#ifdef __cplusplus
}

namespace qvLinear {

inline double drand48() { return qv_drand48(); }
inline double erand48(unsigned short x[3]) { return qv_erand48(x); }
inline long lrand48() { return qv_lrand48(); }
inline void srand48(long seed) { qv_srand48(seed); }
inline unsigned short * seed48(unsigned short v[3]) { return qv_seed48(v); }

} // namespace qvLinear
#endif

#endif
