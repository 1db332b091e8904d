// What the index operators of the two bit fields give.

#ifndef qvUtilBitReference_h
#define qvUtilBitReference_h

#include "Base/qvBaseConfig.h"

namespace qvUtil {

class BitField;
class BitFieldAuto;

/// One bit of a field: reading it reads the bit, assigning to it sets the bit. It is used at once, while the field
/// lives; copying it copies no bit, assigning one to another does.
template <class Field>
class BitReference {
public:
    BitReference(Field & field, int i) : field_(&field), i_(i) {}
    BitReference(BitReference const &) = default;
    ~BitReference() = default;

    operator bool() const { return field_->testBit(i_); }

    BitReference & operator=(bool value) {
        field_->setBit(i_, value);
        return *this;
    }
    BitReference & operator=(BitReference const & other) { return *this = static_cast<bool>(other); }

private:
    Field * field_;
    int i_;
};

using BitRef = BitReference<BitField>;
using BitRefAuto = BitReference<BitFieldAuto>;

} // namespace qvUtil

#endif
