// The typed values of the logic engine, which are its variables too.

#ifndef qvPlgValue_h
#define qvPlgValue_h

#include "Base/Utility/qvReferenceCount.h"
#include "Base/qvBaseConfig.h"

#include <cstring>
#include <iosfwd>

namespace qvPlg {

// A value is held through qv::Reference<Value>. In the null state it is a variable: a query binds it, by assigning to
// it, and sets it back to null when it goes on. The same object in several clauses is the same variable; there are no
// names. `==` and `!=` on references to values build expressions (qvPlgExpression.h) and compare no addresses.
//
// The text of the type stands for the class: values whose types have the same text must be of one class, or of classes
// that take each other's values. The order of the virtual operations is what subclasses in other modules rely on.
class QV_EXPORT Value : public qv::ReferenceCount {
public:
    using isComparedAsOperand = Value;

    // The text is not copied and must outlive the value; null counts as "".
    explicit Value(char const * type) : type_(type ? type : "") {}
    Value(Value const &) = default;
    Value & operator=(Value const &) = default;
    ~Value() override;

    // An order of the data of values of this type, which also nulls have.
    virtual bool lessThan(Value const & other) const = 0;
    virtual bool isNull() const = 0;
    // The data stay and are what the order still goes by.
    virtual void setNull() = 0;
    // Takes the data of a value of this type, and whether it is null.
    virtual void assign(Value const & other) = 0;

    char const * getType() const { return type_; }
    bool hasTypeOf(Value const & other) const { return type_ == other.type_ || std::strcmp(type_, other.type_) == 0; }

protected:
    virtual void print(std::ostream & stream) const = 0;

private:
    friend QV_EXPORT std::ostream & operator<<(std::ostream & stream, Value const & value);

    char const * type_;
};

// -1, 0 or 1: by the texts of the types, byte by byte, then by `lessThan`.
QV_EXPORT int compare(Value const & a, Value const & b);

QV_EXPORT std::ostream & operator<<(std::ostream & stream, Value const & value);

} // namespace qvPlg

#endif
