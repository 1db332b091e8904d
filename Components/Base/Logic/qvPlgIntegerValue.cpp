#include "Base/Logic/qvPlgIntegerValue.h"

#include <ostream>

namespace qvPlg {

namespace {

constexpr char integerType[] = "integer";

} // namespace

IntegerValue::IntegerValue() : Value(integerType), value_(0), null_(true) {}

IntegerValue::IntegerValue(int value) : Value(integerType), value_(value), null_(false) {}

bool IntegerValue::lessThan(Value const & other) const {
    return hasTypeOf(other) && value_ < static_cast<IntegerValue const &>(other).value_;
}

void IntegerValue::assign(Value const & other) {
    if (!hasTypeOf(other))
        return;
    IntegerValue const & number = static_cast<IntegerValue const &>(other);
    value_ = number.value_;
    null_ = number.null_;
}

void IntegerValue::print(std::ostream & stream) const {
    if (null_)
        stream << "(null)";
    else
        stream << value_;
}

} // namespace qvPlg
