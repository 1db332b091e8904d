#ifndef qvLinearClamped_h
#define qvLinearClamped_h

namespace qvLinear {

// A NaN stays one.
inline double clamped(double value, double lo, double hi) { return value < lo ? lo : value > hi ? hi : value; }

} // namespace qvLinear

#endif
