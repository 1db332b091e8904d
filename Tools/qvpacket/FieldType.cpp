#include "FieldType.h"

#include <array>
#include <limits>

namespace {

template <typename T>
constexpr FieldType integer(char tag, char const * name) {
    return {tag, name, FieldKind::integer, sizeof(T), std::numeric_limits<T>::min(), std::numeric_limits<T>::max(), 0};
}

template <typename T>
constexpr FieldType real(char tag, char const * name) {
    return {tag, name, FieldKind::real, sizeof(T), 0, 0, 0};
}

constexpr FieldType array(char tag, char const * name, char elementTag) {
    return {tag, name, FieldKind::array, 0, 0, 0, elementTag};
}

constexpr FieldType fieldTypes[] = {
    integer<bool>('b', "Bool"),
    integer<signed char>('c', "Char"),
    integer<unsigned char>('C', "UChar"),
    integer<std::int16_t>('h', "Short"),
    integer<std::uint16_t>('H', "UShort"),
    integer<std::int32_t>('i', "Int"),
    integer<std::uint32_t>('I', "UInt"),
    integer<std::int64_t>('l', "Int64"),
    integer<std::uint64_t>('L', "UInt64"),
    real<float>('f', "Float"),
    real<double>('d', "Double"),
    {'s', "CString", FieldKind::text, 0, 0, 0, 0},
    {'r', "Reference", FieldKind::reference, 0, 0, 0, 0},
    array('B', "BoolArray", 'b'),
    array('1', "CharArray", 'c'),
    array('2', "UCharArray", 'C'),
    array('3', "ShortArray", 'h'),
    array('4', "UShortArray", 'H'),
    array('5', "IntArray", 'i'),
    array('6', "UIntArray", 'I'),
    array('7', "Int64Array", 'l'),
    array('8', "UInt64Array", 'L'),
    array('9', "FloatArray", 'f'),
    array('0', "DoubleArray", 'd'),
};

constexpr std::array<std::int8_t, 256> makeIndex() {
    std::array<std::int8_t, 256> index{};
    index.fill(-1);
    std::int8_t place = 0;
    for (FieldType const & type : fieldTypes) {
        index[static_cast<unsigned char>(type.tag)] = place++;
    }
    return index;
}

constexpr std::array<std::int8_t, 256> placeOfTag = makeIndex();

} // namespace

FieldType const * fieldTypeOf(char tag) {
    int const place = placeOfTag[static_cast<unsigned char>(tag)];
    return place < 0 ? nullptr : &fieldTypes[place];
}
