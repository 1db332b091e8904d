// The texts of the system's errors, for messages that quote the system.

#ifndef SystemErrorText_h
#define SystemErrorText_h

#include "Base/Strings/qvStringIString.h"

namespace qvUtil {

/// The system's own text for one of its error numbers, or one that says that the number is not known.
qvString::IString systemErrorText(unsigned code);

/// The text for the last failed system call, or socket call, of this thread. To be asked for before any other call is
/// made.
qvString::IString lastErrorText();
qvString::IString lastSocketErrorText();

} // namespace qvUtil

#endif
