// The number among the values.

#ifndef qvPlgIntegerValue_h
#define qvPlgIntegerValue_h

#include "Base/Logic/qvPlgValue.h"

namespace qvPlg {

// An int, or a variable for one. Its type is "integer". `lessThan` and `assign` take values of this type; with one of
// another type `lessThan` is false and `assign` does nothing.
class QV_EXPORT IntegerValue : public Value {
public:
    // Null, with 0 as its data.
    IntegerValue();
    explicit IntegerValue(int value);

    bool lessThan(Value const & other) const override;
    bool isNull() const override { return null_; }
    void setNull() override { null_ = true; }
    void assign(Value const & other) override;

    // The data, also of a null value.
    int get() const { return value_; }

protected:
    // In decimal digits, "(null)" when null.
    void print(std::ostream & stream) const override;

private:
    int value_;
    bool null_;
};

} // namespace qvPlg

#endif
