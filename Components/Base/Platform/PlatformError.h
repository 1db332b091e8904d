// The system's error numbers and its own texts for them.

#ifndef PlatformError_h
#define PlatformError_h

#include <cstddef>

namespace qvPlatform {

/// The number that the last failed system call of this thread left. To be asked for before anything else is called.
unsigned lastErrorNumber();

/// The same for the last failed socket call, which some systems number apart.
unsigned lastSocketErrorNumber();

/// Room for the longest of the system's texts.
inline constexpr std::size_t maxErrorTextSize = 256;

/// Writes the system's text for an error number, in the multibyte encoding. False when the system knows no such number.
/// Any number of threads may call this at once.
bool errorText(unsigned number, char (&text)[maxErrorTextSize]);

} // namespace qvPlatform

#endif
