#include "Base/Strings/qvStringString.h"

namespace qvString {

unsigned const String::npos;

String::~String() = default;

bool String::isEmpty() const { return !(length() > 0); }
bool String::isNull() const { return isEmpty(); }
unsigned String::first() const { return 0; }
unsigned String::last() const { return isEmpty() ? 0 : length() - 1; }

bool String::doBoundsCheck(unsigned pos) const { return pos < length(); }
bool String::doBoundsCheck(unsigned pos, unsigned n) const {
    return doBoundsCheck(pos) && (n == npos || n <= length());
}

} // namespace qvString
