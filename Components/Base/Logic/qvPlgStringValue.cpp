#include "Base/Logic/qvPlgStringValue.h"

#include <ostream>
#include <string_view>

namespace qvPlg {

namespace {

constexpr char stringType[] = "string";

} // namespace

StringValue::StringValue() : Value(stringType), null_(true) {}

StringValue::StringValue(qvString::CString const & value) : Value(stringType), value_(value), null_(false) {}

bool StringValue::lessThan(Value const & other) const {
    return hasTypeOf(other) && value_.compare(static_cast<StringValue const &>(other).value_) < 0;
}

void StringValue::assign(Value const & other) {
    if (!hasTypeOf(other))
        return;
    StringValue const & text = static_cast<StringValue const &>(other);
    value_.assign(text.value_);
    null_ = text.null_;
}

void StringValue::print(std::ostream & stream) const {
    if (null_)
        stream << "(null)";
    else
        stream << std::string_view(value_);
}

} // namespace qvPlg
