// Allocations of the whole program are counted and can be made to fail.

#ifndef CountingNew_h
#define CountingNew_h

extern long allocations;
extern long failingAllocation; // counted down by each allocation; the one that takes it to 0 fails

#endif
