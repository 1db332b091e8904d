// The conversions between narrow and wide text on any bytes: what each gives is consistent with what the others give,
// in size, in losses and in text. The first byte chooses the locale and how the others are looked at.

#include "Base/Strings/qvStringEncoding.h"
#include "Base/Strings/qvStringFormat.h"
#include "Base/Strings/qvStringIString.h"

#include <clocale>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using namespace qvString;

constexpr unsigned terminated = static_cast<unsigned>(-1);

void require(bool condition) {
    if (!condition)
        std::abort();
}

// Buffers of exactly the size that is told to the converters, so that one element too many is seen.
template <class Char>
struct Buffer {
    explicit Buffer(unsigned n) : size(n), data(new Char[n]) {}
    bool equals(Char const * other, unsigned n) const { return std::memcmp(data.get(), other, n * sizeof(Char)) == 0; }

    unsigned size;
    std::unique_ptr<Char[]> data;
};

void fromUtf8(char const * text, unsigned length) {
    bool ok;
    unsigned const count = UTF8toWCS(text, length, nullptr, 0, true, &ok);
    require((count == 0) == (length == 0) && count <= length);
    Buffer<wchar_t> exact(count);
    Buffer<wchar_t> roomy(length);
    bool okAgain;
    require(UTF8toWCS(text, length, exact.data.get(), count, true, &okAgain) == count && okAgain == ok);
    require(UTF8toWCS(text, length, roomy.data.get(), length, true, &okAgain) == count && okAgain == ok);
    require(roomy.equals(exact.data.get(), count));
    require(count == 0 || UTF8toWCS(text, length, roomy.data.get(), count - 1, true, nullptr) == 0);

    // What was decoded is well-formed, and only well-formed text comes back as it was.
    unsigned const size = WCStoUTF8(exact.data.get(), count, nullptr, 0, &okAgain);
    Buffer<char> back(size);
    require(WCStoUTF8(exact.data.get(), count, back.data.get(), size, &okAgain) == size && okAgain);
    require((size == length && back.equals(text, length)) == ok);
    Buffer<wchar_t> again(count);
    require(UTF8toWCS(back.data.get(), size, again.data.get(), count, true, &okAgain) == count && okAgain);
    require(again.equals(exact.data.get(), count));
}

void fromUnits(wchar_t const * units, unsigned length) {
    bool ok;
    unsigned const size = WCStoUTF8(units, length, nullptr, 0, &ok);
    require(ok && size >= length && size <= 3 * length);
    Buffer<char> exact(size);
    Buffer<char> roomy(3 * length);
    require(WCStoUTF8(units, length, exact.data.get(), size, &ok) == size);
    require(WCStoUTF8(units, length, roomy.data.get(), 3 * length, &ok) == size);
    require(roomy.equals(exact.data.get(), size));
    // It comes back with the surrogates that stood alone replaced.
    Buffer<wchar_t> back(length);
    require(UTF8toWCS(exact.data.get(), size, back.data.get(), length, true, &ok) == length && ok);
    for (unsigned i = 0; i < length; ++i)
        require(back.data[i] == units[i] || (back.data[i] == 0xFFFD && (units[i] & 0xF800) == 0xD800));
}

void fromMultibyte(std::string const & text) {
    bool ok;
    unsigned const count = MBStoWCS(text.c_str(), terminated, nullptr, 0, &ok);
    require((count == 0) == (text[0] == '\0'));
    require(getMultiByteStringSize(nullptr, text.c_str(), 0) == (ok ? count : terminated));
    Buffer<wchar_t> units(count + 1);
    bool okAgain;
    require(MBStoWCS(text.c_str(), terminated, units.data.get(), count + 1, &okAgain) == count && okAgain == ok);
    require(units.data[count] == 0);

    unsigned const size = WCStoMBS(units.data.get(), terminated, nullptr, 0, &okAgain);
    require(okAgain);
    Buffer<char> back(size + 1);
    require(WCStoMBS(units.data.get(), terminated, back.data.get(), size + 1, &okAgain) == size);
    require(!ok || std::strcmp(back.data.get(), text.c_str()) == 0);

    // Formatting converts in the same way.
    IString formatted;
    require(formatted.format(L"%s", text.c_str()) == (count == 0 ? IString::npos : count));
    require(formatted.compare(units.data.get()) == 0);
    CString narrow;
    require(narrow.format("%S", units.data.get()) == (size == 0 ? CString::npos : size));
    require(narrow.compare(back.data.get()) == 0);
}

void formatted(std::string const & text, wchar_t const * wide, unsigned number) {
    wchar_t units[64];
    char bytes[64];
    int const width = static_cast<int>(number % 70);
    int const precision = static_cast<int>(number / 70 % 20) - 1;
    int const wideLength =
        KT_swprintf(units, 64, L"%*.*hs|%-*.*ls", width, precision, text.c_str(), width, precision, wide);
    int const length = KT_snprintf(bytes, 64, "%*.*hs|%-*.*ls", width, precision, text.c_str(), width, precision, wide);
    require(wideLength >= -1 && wideLength < 63 && length >= -1 && length < 63);
    require(length == -1 || length >= 2 * width + 1);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const * data, std::size_t size) {
    if (size == 0)
        return 0;
    std::setlocale(LC_ALL, (data[0] & 1) != 0 ? "C.UTF-8" : "C");
    std::string const text(reinterpret_cast<char const *>(data + 1), size - 1);
    unsigned const length = static_cast<unsigned>(text.size());
    Buffer<wchar_t> wide(length / 2 + 1);
    std::memcpy(wide.data.get(), text.data(), length / 2 * sizeof(wchar_t));
    wide.data[length / 2] = 0;

    fromUtf8(text.data(), length);
    fromUnits(wide.data.get(), length / 2);
    fromMultibyte(text);
    formatted(text, wide.data.get(), data[0] * 7U);

    bool ok;
    IString const string(text.c_str(), UTF8, &ok);
    bool const hasMark = detectUTF8BOM(text.c_str(), -1) == 3;
    require(!ok || std::strcmp(string.asUTF8(), text.c_str() + (hasMark ? 3 : 0)) == 0);
    return 0;
}
