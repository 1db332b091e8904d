// The text among the values.

#ifndef qvPlgStringValue_h
#define qvPlgStringValue_h

#include "Base/Logic/qvPlgValue.h"
#include "Base/Strings/qvStringCString.h"

namespace qvPlg {

// A CString, or a variable for one, in the order of CString::compare. Its type is "string". `lessThan` and `assign`
// take values of this type; with one of another type `lessThan` is false and `assign` does nothing.
class QV_EXPORT StringValue : public Value {
public:
    // Null, with an empty string as its data.
    StringValue();
    explicit StringValue(qvString::CString const & value);

    bool lessThan(Value const & other) const override;
    bool isNull() const override { return null_; }
    void setNull() override { null_ = true; }
    void assign(Value const & other) override;

    // The data, also of a null value.
    qvString::CString const & get() const { return value_; }
    char const * asChar() const { return value_.asChar(); }

protected:
    // As it stands, "(null)" when null.
    void print(std::ostream & stream) const override;

private:
    qvString::CString value_;
    bool null_;
};

} // namespace qvPlg

#endif
