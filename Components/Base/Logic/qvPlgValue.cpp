#include "Base/Logic/qvPlgValue.h"

#include <ostream>

namespace qvPlg {

Value::~Value() = default;

int compare(Value const & a, Value const & b) {
    if (a.getType() != b.getType()) {
        if (int const order = std::strcmp(a.getType(), b.getType()))
            return order < 0 ? -1 : 1;
    }
    return a.lessThan(b) ? -1 : int(b.lessThan(a));
}

std::ostream & operator<<(std::ostream & stream, Value const & value) {
    value.print(stream);
    return stream;
}

} // namespace qvPlg
